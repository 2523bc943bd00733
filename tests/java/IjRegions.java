import static org.junit.jupiter.api.Assertions.assertEquals;

import ij.IJ;
import ij.ImagePlus;
import ij.gui.Roi;
import ij.macro.Interpreter;
import ij.measure.ResultsTable;
import ij.process.ImageProcessor;
import java.awt.Rectangle;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import orva.FindSettings;
import orva.Objects;
import orva.SegmentResult;
import orva.SegmentSettings;
import orva.SegmentedObject;

/** The table, the labels and the outlines of Segment Objects... */
final class IjRegions {
  private IjRegions() {}

  /** Without a screen. The result is the label image, null where there is none. */
  static ImagePlus run(ImagePlus image, String options) {
    Interpreter.batchMode = true;
    try {
      for (ImagePlus shown = Interpreter.getLastBatchModeImage(); shown != null;
           shown = Interpreter.getLastBatchModeImage())
        Interpreter.removeBatchModeImage(shown); // of an earlier run
      IJ.run(image, IjCommand.SEGMENT, options);
      return Interpreter.getLastBatchModeImage();
    } finally {
      Interpreter.batchMode = false;
    }
  }

  /** The rows of the results table: slice and measurements. */
  static List<String> rows() {
    ResultsTable table = ResultsTable.getResultsTable();
    List<String> rows = new ArrayList<>();
    for (int i = 0; i < table.size(); i++) {
      double[] values = new double[SegmentedObject.COLUMNS.size()];
      for (int k = 0; k < values.length; k++)
        values[k] = table.getValue(SegmentedObject.COLUMNS.get(k), i);
      rows.add(row((int) table.getValue("slice", i), values));
    }
    return rows;
  }

  /** The rows of a result. */
  static List<String> rows(int slice, SegmentResult result) {
    return result.objects().stream().map(o -> row(slice, o.values())).toList();
  }

  private static String row(int slice, double[] values) {
    return slice + " " + Arrays.toString(values);
  }

  static SegmentResult expected(String sample, FindSettings settings, SegmentSettings kept)
      throws Exception {
    Pgm image = Pgm.read(IjCommand.sample(sample));
    return Objects.segment(image.grays(), image.height(), image.width(), settings, kept);
  }

  static int[] labels(ImageProcessor ip) {
    return SegmentedByCommand.pixels(ip).stream().mapToInt(Integer::intValue).toArray();
  }

  /** The pixels that the outlines enclose, with the place of each in the list, from 1. */
  static int[] filled(List<Roi> outlines, int width, int height) {
    int[] pixels = new int[width * height];
    for (int k = 0; k < outlines.size(); k++) {
      Roi roi = outlines.get(k);
      Rectangle box = roi.getBounds();
      ImageProcessor mask = roi.getMask();
      for (int y = 0; y < box.height; y++) {
        for (int x = 0; x < box.width; x++) {
          if (mask != null && mask.get(x, y) == 0)
            continue;
          int i = (box.y + y) * width + box.x + x;
          assertEquals(0, pixels[i], "two outlines enclose a pixel");
          pixels[i] = k + 1;
        }
      }
    }
    return pixels;
  }

  /** The outlines among the elements of an overlay. */
  static List<Roi> outlines(ImagePlus image) {
    return image.getOverlay() == null ? List.of()
                                      : Arrays.stream(image.getOverlay().toArray())
                                            .filter(roi -> "orva regions".equals(roi.getName()))
                                            .toList();
  }
}
