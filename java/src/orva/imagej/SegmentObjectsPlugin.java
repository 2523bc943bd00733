package orva.imagej;

import ij.gui.GenericDialog;
import ij.process.ImageProcessor;
import java.util.ArrayList;
import java.util.List;
import java.util.SortedMap;
import orva.FindSettings;
import orva.Objects;
import orva.SegmentResult;
import orva.SegmentSettings;
import orva.SegmentedObject;

/**
 * The ImageJ command Plugins &gt; Orva &gt; Segment Objects...: finds objects as Find Objects...
 * does, and the region of each. The results are a label image in a window of its own, a row of
 * measurements in the results table and an outline in the overlay for each region; the status line
 * says what was estimated.
 *
 * <p>A color image counts by its gray values. An area selection limits the regions to those with
 * their centroid in it.
 */
public final class SegmentObjectsPlugin extends DetectionPlugin {
  // The keys of macros, which must stay as they are; capitalized they are the dialog's labels.
  private static final String MIN_AREA = "min_area";
  private static final String MAX_AREA = "max_area";
  private static final String EXCLUDE_BORDER = "exclude_border";

  private static FindChoice last = new FindChoice(new FindSettings(), false, true);
  private static SegmentSettings lastKept = new SegmentSettings();

  private volatile SegmentSettings kept;

  /** Called by ImageJ. */
  public SegmentObjectsPlugin() {
    super("Segment Objects", "orva regions", SegmentedObject.COLUMNS);
  }

  @Override
  FindChoice last() {
    return last;
  }

  @Override
  void remember() {
    last = choice();
    lastKept = kept;
  }

  @Override
  void readOwnOptions(MacroOptions options) {
    kept =
        kept(options.number(MIN_AREA, 0), options.number(MAX_AREA, 0), options.has(EXCLUDE_BORDER));
  }

  @Override
  void addOwnFields(GenericDialog dialog) {
    dialog.addNumericField(
        Choice.label(MIN_AREA), Choice.decimal(lastKept.minArea()), 0, 6, "pixels");
    dialog.addNumericField(Choice.label(MAX_AREA),
        lastKept.maxArea() == null ? 0 : Choice.decimal(lastKept.maxArea()), 0, 6,
        "pixels (0: no limit)");
    dialog.addCheckbox(Choice.label(EXCLUDE_BORDER), lastKept.excludeBorder());
  }

  @Override
  void readOwnFields(GenericDialog dialog) {
    double minArea = dialog.getNextNumber();
    double maxArea = dialog.getNextNumber();
    kept = kept(minArea, maxArea, dialog.getNextBoolean());
  }

  private static SegmentSettings kept(double minArea, double maxArea, boolean excludeBorder) {
    return new SegmentSettings(
        (float) minArea, maxArea == 0 ? null : (float) maxArea, excludeBorder);
  }

  @Override
  Detection search(float[] pixels, ImageProcessor ip, FindSettings settings) {
    int width = ip.getWidth();
    SegmentResult result = Objects.segment(pixels, ip.getHeight(), width, settings, kept);
    List<SegmentedObject> selected = result.objects()
                                         .stream()
                                         .filter(o
                                             -> isSelected(ip, (int) Math.round(o.centroidColumn()),
                                                 (int) Math.round(o.centroidRow())))
                                         .toList();
    LabelImage image = new LabelImage(result.labels(), width, selected);
    List<Detection.Shown> objects = new ArrayList<>();
    for (SegmentedObject o : selected) {
      double[] row = o.values();
      row[0] = objects.size() + 1; // labels are numbered without gaps
      objects.add(new Detection.Shown(image.outline(o), row));
    }
    return new Detection(result.used(), objects, image.renumbered());
  }

  @Override
  String nameInManager(int slice, Detection.Shown object) {
    int label = (int) object.row()[0];
    return choice().stack() && image().getStackSize() > 1 ? slice + "-" + label : "" + label;
  }

  @Override
  void showImage(SortedMap<Integer, Detection> found) {
    LabelImage.of(image(), found).show();
  }
}
