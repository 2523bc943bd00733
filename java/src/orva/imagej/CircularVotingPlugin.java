package orva.imagej;

import ij.CompositeImage;
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
import ij.process.ByteProcessor;
import ij.process.ColorProcessor;
import ij.process.ImageProcessor;
import ij.process.LUT;
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
import orva.Center;
import orva.CircularVoting;
import orva.Settings;

/**
 * The ImageJ command Plugins &gt; Orva &gt; Circular Voting...: marks the centers of round objects
 * in the current slice or in all of a stack. The results are a multi-point selection, a row of the
 * results table for each center, and an overlay of circles.
 *
 * <p>A colour image counts by its grey values, and one of 16 or 32 bits by its display range. An
 * area selection limits the centers to it.
 */
public final class CircularVotingPlugin implements ExtendedPlugInFilter, DialogListener {
  private static final String TITLE = "Circular Voting";
  private static final String OVERLAY = "orva centers";
  private static final int LARGE = 4; // of ImageJ's point sizes
  private static final int CHEAP_PIXELS = 1 << 20;
  private static final int FLAGS = DOES_ALL | NO_CHANGES | PARALLELIZE_STACKS | FINAL_PROCESSING;

  // The keys of macros, which must stay as they are; capitalised they are the dialog's labels.
  private static final String RADIUS = "max_radius";
  private static final String THRESHOLD = "threshold";
  private static final String SCALE = "scale";
  private static final String DARK = "dark";
  private static final String STACK = "stack";

  /** What the user chooses. */
  private record Choice(Settings settings, boolean dark, boolean stack) {}

  private static final Choice USUAL = new Choice(new Settings(20), false, false);
  private static Choice last = USUAL;

  private final SortedMap<Integer, List<Center>> found =
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
        choice = read(options == null ? "" : options);
      } else if (!ask()) {
        return DONE;
      }
    } catch (IllegalArgumentException e) {
      failure = e.getMessage();
      return FLAGS;
    }
    return choice.stack() && imp.getStackSize() > 1 ? FLAGS | DOES_STACKS : FLAGS;
  }

  private static Choice read(String options) {
    Settings usual = USUAL.settings();
    Settings settings = new Settings(option(options, RADIUS, usual.maxRadius()),
        option(options, THRESHOLD, usual.threshold()), option(options, SCALE, usual.scale()));
    List<String> words = List.of(options.split(" "));
    return new Choice(settings, words.contains(DARK), words.contains(STACK));
  }

  private static int option(String options, String key, int usual) {
    String value = Macro.getValue(options, key, String.valueOf(usual));
    try {
      return whole(key, Double.parseDouble(value));
    } catch (NumberFormatException e) {
      throw new IllegalArgumentException(key + " must be a number, not " + value, e);
    }
  }

  private static int whole(String key, double value) {
    if (value == (int) value)
      return (int) value;
    throw new IllegalArgumentException(key + " must be a whole number, not " + value);
  }

  /** False when the user cancels. */
  private boolean ask() {
    Settings first = last.settings();
    GenericDialog dialog = new GenericDialog(TITLE);
    dialog.addNumericField(label(RADIUS), first.maxRadius(), 0, 6, "pixels");
    dialog.addNumericField(label(THRESHOLD), first.threshold(), 0, 6, "votes");
    dialog.addNumericField(label(SCALE), first.scale(), 0, 6, "pixels");
    dialog.addCheckbox(label(DARK) + " objects", last.dark());
    if (imp.getStackSize() > 1)
      dialog.addCheckbox(label(STACK) + " of " + imp.getStackSize() + " images", last.stack());
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

  private static String label(String key) {
    return Character.toUpperCase(key.charAt(0)) + key.substring(1);
  }

  /** Reads the dialog; false, which disables its OK, for values that can not be used. */
  @Override
  public boolean dialogItemChanged(GenericDialog dialog, AWTEvent event) {
    try {
      Settings settings = new Settings(whole(RADIUS, dialog.getNextNumber()),
          whole(THRESHOLD, dialog.getNextNumber()), whole(SCALE, dialog.getNextNumber()));
      boolean dark = dialog.getNextBoolean();
      choice = new Choice(settings, dark, imp.getStackSize() > 1 && dialog.getNextBoolean());
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
      List<Center> centers =
          CircularVoting.find(grey(ip, slice), ip.getHeight(), ip.getWidth(), choice.settings())
              .stream()
              .filter(c -> isSelected(ip, c))
              .toList();
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

  private static boolean isSelected(ImageProcessor ip, Center c) {
    Rectangle area = ip.getRoi();
    ImageProcessor mask = ip.getMask();
    return area.contains(c.x(), c.y())
        && (mask == null || mask.get(c.x() - area.x, c.y() - area.y) != 0);
  }

  /** The grey levels that are searched: bright objects are bright in them. */
  private int[] grey(ImageProcessor ip, int slice) {
    ImageProcessor shown = ip;
    boolean inverted = choice.dark() != imp.isInvertedLut();
    if (ip instanceof ByteProcessor) {
      if (isColorMap(ip)) {
        shown = ip.convertToRGB();
        inverted = choice.dark();
      }
    } else if (!(ip instanceof ColorProcessor)) {
      shown = ip.duplicate();
      setDisplayRange(shown, slice);
    }
    byte[] bytes = (byte[]) shown.convertToByteProcessor(true).getPixels();
    int flip = inverted ? 0xFF : 0;
    int[] grey = new int[bytes.length];
    for (int i = 0; i < grey.length; i++) grey[i] = (bytes[i] & 0xFF) ^ flip;
    return grey;
  }

  /** Whether the pixels name colours. Else a colour table only tints their values. */
  private boolean isColorMap(ImageProcessor ip) {
    return !imp.isComposite() && ip.isColorLut() && !ip.isPseudoColorLut();
  }

  /** Every channel of a composite image has a display range of its own. */
  private void setDisplayRange(ImageProcessor ip, int slice) {
    if (imp instanceof CompositeImage composite) {
      LUT channel = composite.getChannelLut(imp.convertIndexToPosition(slice)[0]);
      ip.setMinAndMax(channel.min, channel.max);
    } else {
      ip.setMinAndMax(imp.getDisplayRangeMin(), imp.getDisplayRangeMax());
    }
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
      for (Center c : centers) {
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

  private void select(Map<Integer, List<Center>> centers) {
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

  private void add(PointRoi points, Center c, int slice) {
    points.addPoint(c.x(), c.y(), imp.getStackSize() > 1 ? slice : 0);
  }
}
