package orva.imagej;

import ij.IJ;
import ij.ImagePlus;
import ij.Macro;
import ij.gui.DialogListener;
import ij.gui.GenericDialog;
import ij.gui.Overlay;
import ij.gui.PointRoi;
import ij.gui.Roi;
import ij.macro.Interpreter;
import ij.measure.ResultsTable;
import ij.plugin.filter.Analyzer;
import ij.plugin.filter.ExtendedPlugInFilter;
import ij.plugin.filter.PlugInFilterRunner;
import ij.process.ImageProcessor;
import java.awt.AWTEvent;
import java.awt.Color;
import java.awt.GraphicsEnvironment;
import java.awt.HeadlessException;
import java.awt.Rectangle;
import java.util.Collections;
import java.util.List;
import java.util.Map;
import java.util.SortedMap;
import java.util.TreeMap;
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
public final class CircularVotingPlugin implements ExtendedPlugInFilter, DialogListener {
  private static final String TITLE = "Circular Voting";
  private static final String OVERLAY = "orva centers";
  private static final int LARGE = 4; // of ImageJ's point sizes
  private static final int CHEAP_PIXELS = 1 << 20;
  private static final int FLAGS = DOES_ALL | NO_CHANGES | PARALLELIZE_STACKS | FINAL_PROCESSING;

  private static Choice last = Choice.USUAL;

  private final SortedMap<Integer, List<VoteCenter>> found =
      Collections.synchronizedSortedMap(new TreeMap<>());
  private ImagePlus imp;
  private PlugInFilterRunner runner;
  private volatile Choice choice;
  private volatile boolean previewing;
  private volatile String failure;

  @Override
  public int setup(String arg, ImagePlus image) {
    if ("final".equals(arg)) {
      showResults();
      return DONE;
    }
    imp = image;
    return FLAGS;
  }

  /**
   * Asks for the settings, or takes them from the macro that calls the command. An error waits for
   * the end: the runner goes on after an exception here.
   */
  @Override
  public int showDialog(ImagePlus image, String command, PlugInFilterRunner filterRunner) {
    runner = filterRunner;
    String options = Macro.getOptions();
    try {
      if (options != null || GraphicsEnvironment.isHeadless()) {
        choice = Choice.of(options == null ? "" : options);
      } else if (!ask()) {
        return DONE;
      }
    } catch (IllegalArgumentException e) {
      failure = e.getMessage();
      return FLAGS;
    }
    return choice.stack() && imp.getStackSize() > 1 ? FLAGS | DOES_STACKS : FLAGS;
  }

  /** False when the user cancels. */
  private boolean ask() {
    GenericDialog dialog = new GenericDialog(TITLE);
    dialog.addNumericField(
        Choice.label(Choice.RADIUS), last.settings().maxRadius(), 0, 6, "pixels");
    dialog.addNumericField(
        Choice.label(Choice.THRESHOLD), last.threshold(), 2, 6, "of the strongest vote");
    dialog.addNumericField(
        Choice.label(Choice.SIGMA), last.sigma(), 2, 6, "pixels (0: by the radius)");
    dialog.addCheckbox(Choice.label(Choice.DARK) + " objects", last.dark());
    if (imp.getStackSize() > 1)
      dialog.addCheckbox(
          Choice.label(Choice.STACK) + " of " + imp.getStackSize() + " images", last.stack());
    if ((long) imp.getWidth() * imp.getHeight() <= CHEAP_PIXELS)
      dialog.addPreviewCheckbox(runner);
    dialog.addDialogListener(this);
    previewing = true;
    dialog.showDialog();
    previewing = false;
    if (dialog.wasCanceled())
      return false;
    last = choice;
    return true;
  }

  /** Reads the dialog; false, which disables its OK, for values that cannot be used. */
  @Override
  public boolean dialogItemChanged(GenericDialog dialog, AWTEvent event) {
    try {
      double radius = dialog.getNextNumber();
      double threshold = dialog.getNextNumber();
      double sigma = dialog.getNextNumber();
      boolean dark = dialog.getNextBoolean();
      boolean stack = imp.getStackSize() > 1 && dialog.getNextBoolean();
      choice = Choice.of(radius, threshold, sigma, dark, stack);
      return true;
    } catch (IllegalArgumentException e) {
      IJ.showStatus(e.getMessage());
      return false;
    }
  }

  @Override
  public void setNPasses(int passes) {}

  /** Searches a slice. ImageJ takes back what a preview selects. */
  @Override
  public void run(ImageProcessor ip) {
    if (failure != null)
      return;
    int slice = runner.getSliceNumber();
    if (slice < 1)
      slice = imp.getCurrentSlice();
    boolean preview = previewing;
    try {
      List<VoteCenter> centers = find(ip, slice).stream().filter(c -> isSelected(ip, c)).toList();
      if (preview) {
        select(Map.of(slice, centers));
      } else {
        found.put(slice, centers);
      }
    } catch (RuntimeException | LinkageError | OutOfMemoryError e) {
      if (!preview) // it comes again when the user accepts the settings
        failure = e.getMessage() == null ? e.toString() : e.getMessage();
    }
  }

  private List<VoteCenter> find(ImageProcessor ip, int slice) {
    GrayValues gray = new GrayValues(imp);
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

  private static boolean isSelected(ImageProcessor ip, VoteCenter c) {
    Rectangle area = ip.getRoi();
    ImageProcessor mask = ip.getMask();
    return area.contains(c.x(), c.y())
        && (mask == null || mask.get(c.x() - area.x, c.y() - area.y) != 0);
  }

  private void showResults() {
    if (failure != null) {
      fail(failure);
      return;
    }
    select(found);
    addOverlay();
    if (!Analyzer.resetCounter())
      return; // the user keeps the former table
    ResultsTable table = Analyzer.getResultsTable();
    found.forEach((slice, centers) -> {
      for (VoteCenter c : centers) {
        table.incrementCounter();
        table.addValue("slice", slice);
        table.addValue("x", c.x());
        table.addValue("y", c.y());
        table.addValue("weight", c.weight());
      }
    });
    table.show("Results");
  }

  /** Tells the user, and ends the macro if one runs. */
  private static void fail(String message) {
    if (!GraphicsEnvironment.isHeadless()) {
      IJ.error(TITLE, message);
      return;
    }
    IJ.log(TITLE + ": " + message);
    Interpreter macro = Interpreter.getInstance();
    if (macro == null)
      return;
    try {
      macro.abort(message);
    } catch (HeadlessException e) {
      // The macro has ended. Only ImageJ's own message needs a screen.
    }
  }

  private void select(Map<Integer, List<VoteCenter>> centers) {
    PointRoi points = new PointRoi();
    centers.forEach((slice, list) -> list.forEach(c -> add(points, c, slice)));
    if (points.size() > 0) {
      imp.setRoi(points);
    } else {
      imp.deleteRoi();
    }
  }

  private void addOverlay() {
    Overlay overlay = imp.getOverlay() == null ? new Overlay() : imp.getOverlay();
    for (Roi roi : overlay.toArray()) {
      if (OVERLAY.equals(roi.getName()))
        overlay.remove(roi);
    }
    found.forEach((slice, centers) -> {
      PointRoi circles = new PointRoi();
      centers.forEach(c -> add(circles, c, slice));
      circles.setName(OVERLAY);
      circles.setPointType(PointRoi.CIRCLE);
      circles.setSize(LARGE); // around the points of the selection
      circles.setStrokeColor(Color.ORANGE);
      if (imp.getStackSize() > 1)
        circles.setPosition(slice);
      if (circles.size() > 0)
        overlay.add(circles);
    });
    imp.setOverlay(overlay.size() > 0 ? overlay : null);
  }

  private void add(PointRoi points, VoteCenter c, int slice) {
    points.addPoint(c.x(), c.y(), imp.getStackSize() > 1 ? slice : 0);
  }
}
