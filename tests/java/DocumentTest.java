import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import java.awt.image.BufferedImage;
import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import orva.VoteCenter;
import orva.VoteSettings;

/** The examples of docs/java.md, as they stand. */
class DocumentTest {
  private static final Path SAMPLE = IjCommand.sample("dsb_large_a");

  @TempDir Path folder;

  /** The first example of the document in this language. */
  private static String example(String language) throws Exception {
    String text = Files.readString(Path.of(System.getProperty("orva.source"), "docs/java.md"));
    Matcher matcher =
        Pattern.compile("^```" + language + "\n(.*?)^```$", Pattern.DOTALL | Pattern.MULTILINE)
            .matcher(text);
    assertTrue(matcher.find(), language);
    return matcher.group(1);
  }

  /** With the jar alone on the class path. */
  @Test
  void theJavaExampleFindsTheNuclei() throws Exception {
    Path source = Files.writeString(folder.resolve("FindNuclei.java"), example("java"));
    Path picture = folder.resolve("nuclei.png");
    BufferedImage image = IJ.openImage(SAMPLE.toString()).getProcessor().getBufferedImage();
    assertTrue(ImageIO.write(image, "png", picture.toFile()));
    Program.Result result =
        Program.run(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
            "-cp", System.getProperty("orva.jar"), source.toString(), picture.toString()));
    assertEquals(0, result.status(), result::err);
    List<VoteCenter> centers = Expected.centers(SAMPLE, VoteSettings.ofRadius(36));
    assertTrue(centers.size() > 20, centers::toString);
    assertEquals(centers.stream().map(c -> c.x() + " " + c.y() + " " + c.weight()).toList(),
        result.out().lines().toList());
  }

  @Test
  void theMacroExampleFindsTheNuclei() throws Exception {
    System.setProperty("java.awt.headless", "true");
    IjCommand.registerWithoutScreen();
    PrintStream console = System.out;
    ByteArrayOutputStream printed = new ByteArrayOutputStream();
    System.setOut(new PrintStream(printed, true)); // where ImageJ prints without a screen
    try {
      IJ.runMacro("open(\"" + SAMPLE + "\");\n" + example("javascript"));
    } finally {
      System.setOut(console);
    }
    List<VoteCenter> centers = Expected.centers(SAMPLE, VoteSettings.ofRadius(36));
    assertTrue(centers.size() > 20, centers::toString);
    assertEquals(centers.stream().map(c -> c.x() + " " + c.y()).toList(),
        printed.toString().lines().toList());
  }
}
