import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.IntStream;
import orva.Center;
import orva.Settings;

/** What the C++ interface finds. */
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
