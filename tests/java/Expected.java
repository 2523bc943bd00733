import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.IntStream;
import orva.Center;
import orva.Settings;
import orva.VoteCenter;
import orva.VoteSettings;

/** What the C++ interface and the orva command find. */
final class Expected {
  private Expected() {}

  static List<Center> centers(Path image, Settings settings, boolean dark)
      throws IOException, InterruptedException {
    List<String> command =
        new ArrayList<>(List.of(System.getProperty("orva.expected"), image.toString(),
            "" + settings.maxRadius(), "" + settings.threshold(), "" + settings.scale()));
    if (dark)
      command.add("dark");
    Program.Result result = Program.run(command);
    assertEquals(0, result.status(), () -> command + " " + result.err());
    return result.out().lines().map(Expected::center).toList();
  }

  static List<Center> centers(Pgm image, Settings settings)
      throws IOException, InterruptedException {
    Path file = Files.createTempFile("orva-", ".pgm");
    try {
      image.write(file);
      return centers(file, settings, false);
    } finally {
      Files.delete(file);
    }
  }

  /** By the command. */
  static List<VoteCenter> centers(Path image, VoteSettings s)
      throws IOException, InterruptedException {
    List<String> command = new ArrayList<>(List.of(System.getProperty("orva.command"), "vote",
        "--quiet", "--polarity", s.polarity().name().toLowerCase(), "--min-radius",
        "" + s.minRadius(), "--max-radius", "" + s.maxRadius(), "--power", "" + s.power()));
    if (s.coneWidth() != null)
      command.addAll(List.of("--cone-width", "" + s.coneWidth()));
    if (s.sigma() != null)
      command.addAll(List.of("--sigma", "" + s.sigma()));
    command.addAll(s.gradient() == null ? List.of("--relative-gradient", "" + s.relativeGradient())
                                        : List.of("--gradient", "" + s.gradient()));
    command.addAll(s.threshold() == null
            ? List.of("--relative-threshold", "" + s.relativeThreshold())
            : List.of("--threshold", "" + s.threshold()));
    if (s.edges())
      command.add("--edges");
    command.add(image.toString());
    return byCommand(command);
  }

  /** The table that the command prints. */
  static List<VoteCenter> byCommand(List<String> command) throws IOException, InterruptedException {
    Program.Result result = Program.run(command);
    assertEquals(0, result.status(), () -> command + " " + result.err());
    List<String> lines = result.out().lines().toList();
    assertEquals("x,y,weight", lines.get(0));
    return lines.stream().skip(1).map(line -> line.split(",")).map(Expected::voteCenter).toList();
  }

  private static VoteCenter voteCenter(String[] values) {
    return new VoteCenter(
        Integer.parseInt(values[0]), Integer.parseInt(values[1]), Float.parseFloat(values[2]));
  }

  /** As the native method returns them. */
  static int[] triples(List<Center> centers) {
    return centers.stream().flatMapToInt(c -> IntStream.of(c.y(), c.x(), c.weight())).toArray();
  }

  private static Center center(String line) {
    String[] values = line.split(" ");
    return new Center(
        Integer.parseInt(values[0]), Integer.parseInt(values[1]), Integer.parseInt(values[2]));
  }
}
