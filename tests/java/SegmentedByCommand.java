import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import ij.process.ImageProcessor;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.IntStream;
import orva.FindSettings;
import orva.SegmentResult;
import orva.SegmentSettings;
import orva.SegmentedObject;

/**
 * What orva segment finds.
 *
 * @param labels of the pixels, row by row
 * @param rows of the table, with the score rounded to thousandths
 */
record SegmentedByCommand(List<Integer> labels, List<List<String>> rows) {
  static SegmentedByCommand in(Path image, FindSettings settings, SegmentSettings kept)
      throws IOException, InterruptedException {
    Path labels = Files.createTempFile("orva-labels-", ".tif");
    try {
      List<String> command = FoundByCommand.command("segment", settings);
      command.addAll(
          List.of("--labels", labels.toString(), "--min-area", "" + (long) kept.minArea()));
      if (kept.maxArea() != null)
        command.addAll(List.of("--max-area", "" + kept.maxArea()));
      if (kept.excludeBorder())
        command.add("--exclude-border");
      command.add(image.toString());
      Program.Result result = Program.run(command);
      assertEquals(0, result.status(), () -> command + " " + result.err());
      List<String> lines = result.out().lines().toList();
      assertEquals(String.join(",", SegmentedObject.COLUMNS), lines.get(0));
      return new SegmentedByCommand(pixels(IJ.openImage(labels.toString()).getProcessor()),
          lines.stream().skip(1).map(SegmentedByCommand::row).toList());
    } finally {
      Files.delete(labels);
    }
  }

  private static List<String> row(String line) {
    String[] values = line.split(",");
    assertTrue(List.of("true", "false").contains(values[values.length - 1]), line);
    double[] row = new double[values.length];
    for (int i = 0; i < row.length; i++) row[i] = value(values[i]);
    return row(row);
  }

  private static double value(String text) {
    return text.equals("true") ? 1 : text.equals("false") ? 0 : Double.parseDouble(text);
  }

  /** Every digit counts, except of the score. */
  static List<String> row(double[] values) {
    List<String> row = new ArrayList<>();
    for (int i = 0; i < values.length; i++)
      row.add(i == SegmentedObject.COLUMNS.indexOf("score") ? FoundByCommand.rounded(values[i])
                                                            : Double.toString(values[i]));
    return row;
  }

  /** The same of a result. */
  static SegmentedByCommand of(SegmentResult result) {
    return new SegmentedByCommand(IntStream.of(result.labels()).boxed().toList(),
        result.objects().stream().map(o -> row(o.values())).toList());
  }

  /** Whole pixel values of an image of any depth. */
  static List<Integer> pixels(ImageProcessor ip) {
    return IntStream.range(0, ip.getPixelCount())
        .mapToObj(i -> {
          float value = ip.getf(i);
          assertEquals(value, (int) value);
          return (int) value;
        })
        .toList();
  }
}
