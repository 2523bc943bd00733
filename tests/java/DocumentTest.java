import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import java.awt.image.BufferedImage;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import orva.FindResult;
import orva.FindSettings;
import orva.Objects;
import orva.SegmentSettings;
import orva.SegmentedObject;
import orva.VoteCenter;
import orva.VoteSettings;

/** The examples of docs/java.md, as they stand. */
class DocumentTest {
  private static final Path SAMPLE = IjCommand.sample("dsb_large_a");

  @TempDir Path folder;

  @BeforeAll
  static void register() {
    System.setProperty("java.awt.headless", "true");
    IjCommand.registerWithoutScreen();
  }

  /** The first example of the document in this language that contains the text. */
  private static String example(String language, String part) throws Exception {
    String text = Files.readString(Path.of(System.getProperty("orva.source"), "docs/java.md"));
    Matcher matcher =
        Pattern.compile("^```" + language + "\n(.*?)^```$", Pattern.DOTALL | Pattern.MULTILINE)
            .matcher(text);
    String code = "";
    while (!code.contains(part)) {
      assertTrue(matcher.find(), language + " " + part);
      code = matcher.group(1);
    }
    return code;
  }

  /** What a program prints of the sample, with the jar alone on the class path. */
  private List<String> printedByProgram(String code) throws Exception {
    Path source = Files.writeString(folder.resolve("FindNuclei.java"), code);
    Path picture = folder.resolve("nuclei.png");
    BufferedImage image = IJ.openImage(SAMPLE.toString()).getProcessor().getBufferedImage();
    assertTrue(ImageIO.write(image, "png", picture.toFile()));
    Program.Result result =
        Program.run(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
            "-cp", System.getProperty("orva.jar"), source.toString(), picture.toString()));
    assertEquals(0, result.status(), result::err);
    return result.out().lines().toList();
  }

  /** What a macro prints of the sample. */
  private static List<String> printedByMacro(String code) {
    return IjCommand.printed(() -> IJ.runMacro("open(\"" + SAMPLE + "\");\n" + code))
        .lines()
        .toList();
  }

  private static FindResult found() throws Exception {
    Pgm image = Pgm.read(SAMPLE);
    FindResult found =
        Objects.find(image.grays(), image.height(), image.width(), new FindSettings());
    assertTrue(found.objects().size() > 20, found::toString);
    return found;
  }

  private static List<VoteCenter> centers() throws Exception {
    List<VoteCenter> centers = Expected.centers(SAMPLE, VoteSettings.ofRadius(36));
    assertTrue(centers.size() > 20, centers::toString);
    return centers;
  }

  @Test
  void theJavaProgramFindsTheNuclei() throws Exception {
    FindResult found = found();
    List<String> expected = new ArrayList<>();
    expected.add("BRIGHT objects of radius " + found.used().radius());
    found.objects().forEach(
        o -> expected.add(o.x() + " " + o.y() + " " + o.radius() + " " + o.score()));
    assertEquals(expected, printedByProgram(example("java", "class FindNuclei")));
  }

  /** The program with other code in place of its search. */
  private static String programWith(String imports, String code) throws Exception {
    String program = example("java", "class FindNuclei");
    return imports + program.substring(0, program.indexOf("    FindResult")) + code + "}\n}\n";
  }

  @Test
  void theVotingInJavaFindsTheCenters() throws Exception {
    String code = programWith("import java.util.List;\nimport orva.CircularVoting;\n"
            + "import orva.VoteCenter;\nimport orva.VoteSettings;\n",
        example("java", "CircularVoting.find")
            + "for (VoteCenter c : centers) System.out.println(c.x() + \" \" + c.y());\n");
    assertEquals(centers().stream().map(c -> c.x() + " " + c.y()).toList(), printedByProgram(code));
  }

  @Test
  void theListenerInJavaHearsTheSearch() throws Exception {
    List<String> lines = printedByProgram(programWith("import orva.Progress;\n",
        "boolean stopRequested = false;\n" + example("java", "Progress.during")
            + "System.out.println(result.objects().size());\n"));
    int last = lines.size() - 1;
    assertTrue(last > 10, lines::toString);
    for (String line : lines.subList(0, last)) assertTrue(line.matches("[a-z ]+ \\d+ %"), line);
    assertEquals("" + found().objects().size(), lines.get(last));
  }

  private static List<SegmentedObject> regions() throws Exception {
    Pgm image = Pgm.read(SAMPLE);
    List<SegmentedObject> regions = Objects
                                        .segment(image.grays(), image.height(), image.width(),
                                            new FindSettings(), new SegmentSettings())
                                        .objects();
    assertTrue(regions.size() > 20, regions::toString);
    return regions;
  }

  @Test
  void segmentingInJavaPrintsTheRegions() throws Exception {
    String code = programWith("import orva.SegmentResult;\nimport orva.SegmentSettings;\n"
            + "import orva.SegmentedObject;\n",
        example("java", "Objects.segment"));
    assertEquals(
        regions().stream().map(o -> o.label() + " " + o.area() + " " + o.meanIntensity()).toList(),
        printedByProgram(code));
  }

  @Test
  void theMacroOfSegmentObjectsPrintsTheRegions() throws Exception {
    assertEquals(
        regions()
            .stream()
            .map(o -> o.label() + " " + (int) o.area() + " " + asPrinted(o.meanIntensity()))
            .toList(),
        printedByMacro(example("javascript", "Segment Objects"))
            .stream()
            .map(line -> line + " ")
            .toList());
  }

  @Test
  void theMacroOfFindObjectsPrintsCentersAndRadii() throws Exception {
    assertEquals(found()
                     .objects()
                     .stream()
                     .map(o -> asPrinted(o.x()) + asPrinted(o.y()) + asPrinted(o.radius()))
                     .toList(),
        printedByMacro(example("javascript", "Find Objects"))
            .stream()
            .map(line -> line + " ")
            .toList());
  }

  /** As ImageJ prints a number in a macro. */
  private static String asPrinted(double number) {
    return IJ.d2s(number, 4).replaceFirst("\\.?0+$", "") + " ";
  }

  @Test
  void theMacroOfCircularVotingPrintsTheCenters() throws Exception {
    assertEquals(centers().stream().map(c -> c.x() + " " + c.y()).toList(),
        printedByMacro(example("javascript", "Circular Voting")));
  }
}
