import ij.IJ;
import ij.ImagePlus;
import ij.gui.OvalRoi;
import ij.gui.Overlay;
import ij.gui.Roi;
import ij.measure.ResultsTable;
import java.awt.geom.Rectangle2D;
import java.util.ArrayList;
import java.util.List;
import orva.FindSettings;

/** The table and the circles of Find Objects..., and the same by the orva command. */
final class IjFound {
  private IjFound() {}

  /** The rows of the results table: slice, x, y, radius and score, rounded to thousandths. */
  static List<String> rows() {
    ResultsTable table = ResultsTable.getResultsTable();
    List<String> rows = new ArrayList<>();
    for (int i = 0; i < table.size(); i++) {
      StringBuilder row = new StringBuilder().append((int) table.getValue("slice", i));
      for (String column : List.of("x", "y", "radius", "score"))
        row.append(' ').append(FoundByCommand.rounded(table.getValue(column, i)));
      rows.add(row.toString());
    }
    return rows;
  }

  static List<String> run(ImagePlus image, String options) {
    IJ.run(image, IjCommand.FIND, options);
    return rows();
  }

  static List<String> expected(int slice, String sample, FindSettings settings) throws Exception {
    return FoundByCommand.in(IjCommand.sample(sample), settings)
        .objects()
        .stream()
        .map(o -> slice + " " + String.join(" ", o.subList(0, 4)))
        .toList();
  }

  /** Rows of the slice and the circles that show objects: of an image's overlay, for example. */
  static List<String> circles(Overlay overlay, int slice) {
    List<String> circles = new ArrayList<>();
    for (Roi roi : overlay == null ? new Roi[0] : overlay.toArray()) {
      if (roi instanceof OvalRoi && "orva objects".equals(roi.getName()))
        circles.add(slice + " " + circle(roi));
    }
    return circles;
  }

  /** Center and radius, to tenths. */
  static String circle(Roi roi) {
    Rectangle2D.Double box = roi.getFloatBounds();
    return String.format("%.1f %.1f %.1f", box.getCenterX() - 0.5, box.getCenterY() - 0.5,
        (box.width + box.height) / 4);
  }

  /** The same of a row. */
  static List<String> asCircles(List<String> rows) {
    return rows.stream()
        .map(row -> row.split(" "))
        .map(v
            -> String.format("%s %.1f %.1f %.1f", v[0], Double.parseDouble(v[1]),
                Double.parseDouble(v[2]), Double.parseDouble(v[3])))
        .toList();
  }
}
