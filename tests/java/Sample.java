import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;

/** A sample image of the project. */
record Sample(Path file, double medianRadius, boolean dark) {
  static List<Sample> all() throws IOException {
    Path data = Path.of(System.getProperty("orva.source"), "data");
    List<String> lines = Files.readAllLines(data.resolve("index.csv"));
    List<String> names = List.of(lines.get(0).split(","));
    return lines.stream()
        .skip(1)
        .map(line -> line.split(","))
        .map(values
            -> new Sample(data.resolve("images/" + values[names.indexOf("name")] + ".pgm"),
                Double.parseDouble(values[names.indexOf("median_radius")]),
                values[names.indexOf("polarity")].equals("dark")))
        .toList();
  }

  /** With bright objects. */
  Pgm bright() throws IOException {
    Pgm image = Pgm.read(file);
    return dark ? image.inverted() : image;
  }
}
