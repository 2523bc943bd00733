import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertLinesMatch;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.io.OutputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.jar.JarEntry;
import java.util.jar.JarFile;
import java.util.jar.JarOutputStream;
import java.util.regex.Pattern;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** Which library a Java machine of its own loads. */
class LibraryLoadingTest {
  private static final String JAR = System.getProperty("orva.jar");
  private static final Path BUILT = Path.of(System.getProperty("orva.library"));
  private static final String FOUND = "found: [14, 22], 1 center";
  private static final String FAILED = "failed: java.lang.UnsatisfiedLinkError: "
      + "The native library of orva could not be loaded. Tried:";
  private static final String PACKED = "/natives/linux_64/liborva.so";
  private static final String NUMBERED = "/liborva-\\d+\\.\\d+\\.\\d+-\\d+\\.so";

  @TempDir Path folder;
  private Path temporary;

  @BeforeEach
  void makeFolderForTemporaryFiles() throws IOException {
    temporary = Files.createDirectory(folder.resolve("tmp"));
  }

  private List<String> report(String jar, String libraryPath, Path temporaryFolder)
      throws Exception {
    return report(jar, libraryPath, temporaryFolder, 1);
  }

  private List<String> report(String jar, String libraryPath, Path temporaryFolder, int threads)
      throws Exception {
    // The Java machine warns of libraries that it cannot load; only the jar's own lines count here.
    List<String> options = List.of("-XX:+UnlockDiagnosticVMOptions", "-XX:-PrintWarnings",
        "-Djava.library.path=" + libraryPath, "-Djava.io.tmpdir=" + temporaryFolder);
    Program.Result result =
        Program.run(Program.java(jar, options, "ReportLoading", "" + threads), folder.toFile());
    assertEquals("", result.err());
    assertEquals(0, result.status());
    return result.out().lines().toList();
  }

  private String folderWith(String name, Path library) throws IOException {
    Path path = Files.createDirectory(folder.resolve(name));
    Files.copy(library, path.resolve("liborva.so"));
    return path.toString();
  }

  private String folderWithText(String name) throws IOException {
    Path path = Files.createDirectory(folder.resolve(name));
    Files.writeString(path.resolve("liborva.so"),
        "This is not a library, although it is long "
            + "enough to hold the first bytes of one, by which the loader knows it.");
    return path.toString();
  }

  /** What is reported when the library comes from the jar. */
  private List<String> fromTheJar() {
    return List.of(FOUND, FOUND,
        "mapped: " + Pattern.quote(temporary.toString()) + NUMBERED + " \\(deleted\\)",
        "temporary files: 0");
  }

  @Test
  void theJarAloneIsEnoughAndLeavesNoFile() throws Exception {
    assertLinesMatch(fromTheJar(), report(JAR, "", temporary));
    assertEquals(0, temporary.toFile().list().length);
  }

  @Test
  void anInstalledLibraryComesBeforeTheJars() throws Exception {
    String installed = folderWith("installed", BUILT);
    assertEquals(
        List.of(FOUND, FOUND, "mapped: " + installed + "/liborva.so", "temporary files: 0"),
        report(JAR, installed, temporary));
  }

  @Test
  void anInstalledLibraryNeedsNoTemporaryFile() throws Exception {
    assertEquals(List.of(FOUND, FOUND, "mapped: " + BUILT.toRealPath()),
        report(JAR, BUILT.getParent().toString(), folder.resolve("missing")));
  }

  @Test
  void theFirstFolderWithALibraryCounts() throws Exception {
    String first = folderWith("first", BUILT);
    String second = folderWith("second", BUILT);
    String path =
        folder.resolve("none") + ":" + folderWithText("broken") + ":" + first + ":" + second;
    assertEquals(List.of(FOUND, FOUND, "mapped: " + first + "/liborva.so", "temporary files: 0"),
        report(JAR, path, temporary));
  }

  @Test
  void aFolderMayBeRelative() throws Exception {
    String installed = folderWith("installed", BUILT);
    assertEquals(
        List.of(FOUND, FOUND, "mapped: " + installed + "/liborva.so", "temporary files: 0"),
        report(JAR, "installed", temporary));
  }

  @Test
  void aBrokenLibraryIsPassedOver() throws Exception {
    assertLinesMatch(fromTheJar(), report(JAR, folderWithText("broken"), temporary));
  }

  @Test
  void aFolderInPlaceOfTheLibraryIsPassedOver() throws Exception {
    Files.createDirectories(folder.resolve("odd/liborva.so"));
    assertLinesMatch(fromTheJar(), report(JAR, folder.resolve("odd").toString(), temporary));
  }

  @ParameterizedTest
  @ValueSource(strings = {"orva.without.java", "orva.older"})
  void aLibraryWithoutTheEntriesIsPassedOver(String library) throws Exception {
    String other = folderWith("other", Path.of(System.getProperty(library)));
    List<String> expected = new ArrayList<>(fromTheJar());
    expected.add(2, "mapped: " + Pattern.quote(other + "/liborva.so"));
    List<String> lines = new ArrayList<>(report(JAR, other, temporary));
    Collections.sort(expected.subList(2, 4));
    Collections.sort(lines.subList(2, lines.size() - 1));
    assertLinesMatch(expected, lines);
  }

  @Test
  void theLibraryIsLoadedOnceForAllThreads() throws Exception {
    List<String> expected = new ArrayList<>(Collections.nCopies(14, FOUND));
    expected.addAll(fromTheJar());
    assertLinesMatch(expected, report(JAR, "", temporary, 8));
  }

  @Test
  void aFailureListsEachPathWithItsReason() throws Exception {
    String broken = folderWithText("broken");
    String other = folderWith("other", Path.of(System.getProperty("orva.without.java")));
    Path missing = folder.resolve("missing");
    List<String> failure = List.of(FAILED, Pattern.quote("  " + missing + "/liborva.so: not there"),
        Pattern.quote("  " + broken + "/liborva.so: ") + ".*invalid ELF header.*",
        Pattern.quote("  " + other + "/liborva.so: ") + ".*compute.*",
        Pattern.quote("  " + PACKED + " of the class path, as a file in " + missing + ": ")
            + "java\\.nio\\.file\\.NoSuchFileException: .*");
    List<String> expected = twice(failure);
    expected.add(Pattern.quote("mapped: " + other + "/liborva.so"));
    assertLinesMatch(expected, report(JAR, missing + ":" + broken + ":" + other, missing));
  }

  @Test
  void anEmptyEntryOfTheLibraryPathIsNoFolder() throws Exception {
    Path missing = folder.resolve("missing");
    Files.copy(BUILT, folder.resolve("liborva.so")); // where the Java machine starts
    String packed =
        Pattern.quote("  " + PACKED + " of the class path, as a file in " + missing + ": ") + ".*";
    assertLinesMatch(twice(List.of(FAILED, packed)), report(JAR, "", missing));
    String none = "  " + missing + "/liborva.so: not there";
    assertLinesMatch(
        twice(List.of(FAILED, Pattern.quote(none), packed)), report(JAR, ":" + missing, missing));
  }

  @Test
  void aJarWithoutTheLibrarySaysSo() throws Exception {
    List<String> expected = twice(List.of(FAILED, "  " + PACKED + " of the class path: not there"));
    expected.add("temporary files: 0");
    assertEquals(expected, report(jarWith(null), "", temporary));
  }

  @Test
  void aJarWithABrokenLibrarySaysSoAndLeavesNoFile() throws Exception {
    List<String> expected = twice(List.of(
        FAILED, "  " + Pattern.quote(temporary.toString()) + NUMBERED + ": .*file too short.*"));
    expected.add("temporary files: 0");
    assertLinesMatch(expected, report(jarWith("broken"), "", temporary));
  }

  private static List<String> twice(List<String> lines) {
    List<String> all = new ArrayList<>(lines);
    all.addAll(lines);
    return all;
  }

  /** A copy of the jar with this text for its library, or with none. */
  private String jarWith(String library) throws IOException {
    Path copy = folder.resolve("copy.jar");
    try (JarFile jar = new JarFile(JAR); OutputStream file = Files.newOutputStream(copy);
         JarOutputStream out = new JarOutputStream(file, jar.getManifest())) {
      for (JarEntry entry : Collections.list(jar.entries())) {
        boolean isLibrary = ("/" + entry.getName()).equals(PACKED);
        if (entry.getName().equals(JarFile.MANIFEST_NAME) || isLibrary && library == null)
          continue;
        out.putNextEntry(new JarEntry(entry.getName()));
        out.write(isLibrary ? library.getBytes() : jar.getInputStream(entry).readAllBytes());
      }
    }
    return copy.toString();
  }

  /** The second of two cannot load an installed library, because the first has it. */
  @ParameterizedTest
  @ValueSource(booleans = {false, true})
  void twoClassLoadersOfOneProcessBothLoadTheLibrary(boolean installed) throws Exception {
    String path = installed ? folderWith("installed", BUILT) : "";
    List<String> options = List.of("-Djava.library.path=" + path, "-Djava.io.tmpdir=" + temporary);
    Program.Result result =
        Program.run(Program.java(System.getProperty("orva.classes"), options, "LoadTwice", JAR));
    List<String> lines = result.out().lines().toList();
    assertEquals(4, lines.size(), result::toString);
    assertTrue(lines.get(0).startsWith("[Center[x=22, y=14, weight="), result::toString);
    assertEquals(lines.get(0), lines.get(1));
    assertEquals(lines.get(0), lines.get(2));
    assertEquals("2 classes, 2 libraries", lines.get(3));
    assertEquals(0, temporary.toFile().list().length);
  }
}
