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

  /** In place of the search of the program. */
  @Test
  void theVotingInJavaFindsTheCenters() throws Exception {
    String program = example("java", "class FindNuclei");
    String code = "import java.util.List;\nimport orva.CircularVoting;\nimport orva.VoteCenter;\n"
        + "import orva.VoteSettings;\n" + program.substring(0, program.indexOf("    FindResult"))
        + example("java", "CircularVoting.find")
        + "for (VoteCenter c : centers) System.out.println(c.x() + \" \" + c.y());\n}\n}\n";
    assertEquals(centers().stream().map(c -> c.x() + " " + c.y()).toList(), printedByProgram(code));
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
  private static String asPrinted(float number) {
    return IJ.d2s(number, 4).replaceFirst("\\.?0+$", "") + " ";
  }

  @Test
  void theMacroOfCircularVotingPrintsTheCenters() throws Exception {
    assertEquals(centers().stream().map(c -> c.x() + " " + c.y()).toList(),
        printedByMacro(example("javascript", "Circular Voting")));
  }
}
