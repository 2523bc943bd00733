package orva.imagej;

import ij.gui.GenericDialog;
import ij.gui.Overlay;
import ij.gui.PointRoi;
import ij.process.ImageProcessor;
import java.awt.Color;
import java.util.List;
import java.util.Map;
import java.util.SortedMap;
import orva.CircularVoting;
import orva.VoteCenter;
import orva.VoteSettings.Polarity;

/**
 * The ImageJ command Plugins &gt; Orva &gt; Circular Voting...: marks the centers of round objects
 * in the current slice or in all of a stack. The results are a multi-point selection, a row of the
 * results table for each center, and an overlay of circles.
 *
 * <p>A color image counts by its gray values. One of 16 or 32 bits counts by its values, or by its
 * display range in a macro with the keys of {@link orva.Settings}. An area selection limits the
 * centers to it.
 */
public final class CircularVotingPlugin extends SearchPlugin<List<VoteCenter>> {
  private static final String OVERLAY = "orva centers";
  private static final int LARGE = 4; // of ImageJ's point sizes

  private static Choice last = Choice.USUAL;

  private volatile Choice choice;

  /** Called by ImageJ. */
  public CircularVotingPlugin() {
    super("Circular Voting", OVERLAY);
  }

  @Override
  void readOptions(MacroOptions options) {
    choice = Choice.of(options);
  }

  @Override
  void addFields(GenericDialog dialog) {
    dialog.addNumericField(
        Choice.label(Choice.RADIUS), last.settings().maxRadius(), 0, 6, "pixels");
    dialog.addNumericField(
        Choice.label(Choice.THRESHOLD), last.threshold(), 2, 6, "of the strongest vote");
    dialog.addNumericField(
        Choice.label(Choice.SIGMA), last.sigma(), 2, 6, "pixels (0: by the radius)");
    dialog.addCheckbox(Choice.label(Choice.DARK) + " objects", last.dark());
    addStackBox(dialog, last.stack());
  }

  @Override
  void readFields(GenericDialog dialog) {
    double radius = dialog.getNextNumber();
    double threshold = dialog.getNextNumber();
    double sigma = dialog.getNextNumber();
    boolean dark = dialog.getNextBoolean();
    choice = Choice.of(radius, threshold, sigma, dark, nextStackBox(dialog));
  }

  @Override
  void remember() {
    last = choice;
  }

  @Override
  boolean searchesStack() {
    return choice.stack();
  }

  @Override
  List<VoteCenter> search(ImageProcessor ip, int slice) {
    return find(ip, slice).stream().filter(c -> isSelected(ip, c.x(), c.y())).toList();
  }

  /** ImageJ takes back what a preview selects. */
  @Override
  void preview(int slice, List<VoteCenter> centers) {
    select(Map.of(slice, centers));
  }

  private List<VoteCenter> find(ImageProcessor ip, int slice) {
    GrayValues gray = new GrayValues(image());
    int height = ip.getHeight();
    int width = ip.getWidth();
    if (choice.former() != null) {
      return CircularVoting
          .find(gray.shown(ip, slice, choice.dark()), height, width, choice.former())
          .stream()
          .map(c -> new VoteCenter(c.x(), c.y(), c.weight()))
          .toList();
    }
    Polarity polarity = choice.dark() != gray.areInverted(ip) ? Polarity.DARK : Polarity.BRIGHT;
    return CircularVoting.find(
        gray.stored(ip), height, width, choice.settings().withPolarity(polarity));
  }

  @Override
  void show(SortedMap<Integer, List<VoteCenter>> found) {
    select(found);
    addOverlay(found);
    fillTable(table -> found.forEach((slice, centers) -> {
      for (VoteCenter c : centers) {
        table.incrementCounter();
        table.addValue("slice", slice);
        table.addValue("x", c.x());
        table.addValue("y", c.y());
        table.addValue("weight", c.weight());
      }
    }));
  }

  private void select(Map<Integer, List<VoteCenter>> centers) {
    PointRoi points = new PointRoi();
    centers.forEach((slice, list) -> list.forEach(c -> add(points, c, slice)));
    if (points.size() > 0) {
      image().setRoi(points);
    } else {
      image().deleteRoi();
    }
  }

  private void addOverlay(Map<Integer, List<VoteCenter>> found) {
    Overlay overlay = otherElements(image().getOverlay());
    found.forEach((slice, centers) -> {
      PointRoi circles = new PointRoi();
      centers.forEach(c -> add(circles, c, slice));
      circles.setName(OVERLAY);
      circles.setPointType(PointRoi.CIRCLE);
      circles.setSize(LARGE); // around the points of the selection
      circles.setStrokeColor(Color.ORANGE);
      if (image().getStackSize() > 1)
        circles.setPosition(slice);
      if (circles.size() > 0)
        overlay.add(circles);
    });
    image().setOverlay(overlay.size() > 0 ? overlay : null);
  }

  private void add(PointRoi points, VoteCenter c, int slice) {
    points.addPoint(c.x(), c.y(), image().getStackSize() > 1 ? slice : 0);
  }
}
