import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.stream.Stream;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import orva.CircularVoting;
import orva.VoteCenter;
import orva.VoteSettings;
import orva.VoteSettings.Polarity;

/** The same settings find the same centers in every way to search. */
class SameCentersTest {
  private static final Path IMAGES = Path.of(System.getProperty("orva.source"), "data/images");

  @BeforeAll
  static void register() {
    System.setProperty("java.awt.headless", "true");
    IjCommand.registerWithoutScreen();
  }

  static List<Path> images() throws IOException {
    try (Stream<Path> files = Files.list(IMAGES)) {
      return files.filter(file -> file.toString().endsWith(".pgm")).sorted().toList();
    }
  }

  @Test
  void thereAreImages() throws Exception {
    assertTrue(images().size() >= 4);
  }

  @ParameterizedTest
  @MethodSource("images")
  void fourWaysAgreeOnTheRadiusOfTheGuide(Path image) throws Exception {
    List<VoteCenter> byCommand = Expected.byCommand(List.of(System.getProperty("orva.command"),
        "vote", "--quiet", "--max-radius", "36", image.toString()));
    assertFalse(byCommand.isEmpty());
    List<String> places = byCommand.stream().map(c -> c.x() + " " + c.y()).toList();
    Program.Result example =
        Program.run(List.of(System.getProperty("orva.votingExample"), image.toString()));
    assertEquals(0, example.status(), example::err);
    assertEquals(places, example.out().lines().toList());
    assertEquals(places, byMacro(image, "max_radius=36"));
    assertEquals(byCommand, byJava(image, VoteSettings.ofRadius(36)));
  }

  @ParameterizedTest
  @MethodSource("images")
  void commandMacroAndJavaAgreeOnOtherSettings(Path image) throws Exception {
    VoteSettings settings =
        VoteSettings.ofRadius(17).withRelativeThreshold(0.15f).withSigma(1.5f).withPolarity(
            Polarity.DARK);
    List<VoteCenter> byCommand = Expected.centers(image, settings);
    assertFalse(byCommand.isEmpty());
    assertEquals(byCommand.stream().map(c -> c.x() + " " + c.y()).toList(),
        byMacro(image, "max_radius=17 relative_threshold=0.15 sigma=1.5 dark"));
    assertEquals(byCommand, byJava(image, settings));
  }

  private static List<String> byMacro(Path image, String options) {
    return IJ
        .runMacro("open('" + image + "'); run('Circular Voting...', '" + options + "');"
            + "s = ''; for (i = 0; i < nResults; i++)"
            + " s = s + getResult('x', i) + ' ' + getResult('y', i) + '\\n'; return s;")
        .lines()
        .toList();
  }

  private static List<VoteCenter> byJava(Path file, VoteSettings settings) throws IOException {
    Pgm image = Pgm.read(file);
    return CircularVoting.find(image.grays(), image.height(), image.width(), settings);
  }
}
