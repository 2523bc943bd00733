package orva.imagej;

import ij.IJ;
import ij.ImagePlus;
import ij.Macro;
import ij.gui.DialogListener;
import ij.gui.GenericDialog;
import ij.gui.Overlay;
import ij.gui.PointRoi;
import ij.gui.Roi;
import ij.measure.ResultsTable;
import ij.plugin.filter.Analyzer;
import ij.plugin.filter.ExtendedPlugInFilter;
import ij.plugin.filter.PlugInFilterRunner;
import ij.process.ByteProcessor;
import ij.process.ColorProcessor;
import ij.process.ImageProcessor;
import java.awt.AWTEvent;
import java.awt.Color;
import java.awt.GraphicsEnvironment;
import java.util.Collections;
import java.util.List;
import java.util.Map;
import java.util.SortedMap;
import java.util.TreeMap;
import orva.Center;
import orva.CircularVoting;
import orva.Settings;

/**
 * The ImageJ command Plugins &gt; Orva &gt; Circular Voting...: marks the centres of round objects
 * in the current slice or in all of a stack. The results are a multi-point selection, a row of the
 * results table for each centre, and an overlay of circles.
 *
 * <p>A colour image counts by its grey values, and one of 16 or 32 bits by its display range.
 */
public final class CircularVotingPlugin implements ExtendedPlugInFilter, DialogListener {
  private static final String TITLE = "Circular Voting";
  private static final String OVERLAY = "orva centres";
  private static final int CHEAP_PIXELS = 1 << 20;
  private static final int FLAGS = DOES_ALL | NO_CHANGES | PARALLELIZE_STACKS | FINAL_PROCESSING;

  // The keys of macros, which must stay as they are; capitalised they are the dialog's labels.
  private static final String RADIUS = "max_radius";
  private static final String THRESHOLD = "threshold";
  private static final String SCALE = "scale";
  private static final String DARK = "dark";

  private static final Settings USUAL = new Settings(20);
  private static Settings lastSettings = USUAL;
  private static boolean lastDark;

  private final SortedMap<Integer, List<Center>> found =
      Collections.synchronizedSortedMap(new TreeMap<>());
  private ImagePlus imp;
  private Roi formerRoi;
  private PlugInFilterRunner runner;
  private Settings settings;
  private boolean dark;
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

  /** Asks for the settings, or takes them from the macro that calls the command. */
  @Override
  public int showDialog(ImagePlus image, String command, PlugInFilterRunner filterRunner) {
    runner = filterRunner;
    formerRoi = imp.getRoi();
    String options = Macro.getOptions();
    try {
      if (GraphicsEnvironment.isHeadless())
        return readOptions(options == null ? "" : options);
      if (!ask(options != null))
        return DONE;
    } catch (IllegalArgumentException e) {
      fail(e.getMessage());
      return DONE;
    }
    return IJ.setupDialog(imp, FLAGS);
  }

  /** Without a screen there is no dialog, so the macro's options are read here. */
  private int readOptions(String options) {
    settings = new Settings(option(options, RADIUS, USUAL.maxRadius()),
        option(options, THRESHOLD, USUAL.threshold()), option(options, SCALE, USUAL.scale()));
    List<String> words = List.of(options.split(" "));
    dark = words.contains(DARK);
    return words.contains("stack") && imp.getStackSize() > 1 ? FLAGS | DOES_STACKS : FLAGS;
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
  private boolean ask(boolean macro) {
    Settings first = macro ? USUAL : lastSettings;
    GenericDialog dialog = new GenericDialog(TITLE);
    dialog.addNumericField(label(RADIUS), first.maxRadius(), 0, 6, "pixels");
    dialog.addNumericField(label(THRESHOLD), first.threshold(), 0, 6, "votes");
    dialog.addNumericField(label(SCALE), first.scale(), 0, 6, "pixels");
    dialog.addCheckbox(label(DARK) + " objects", !macro && lastDark);
    if ((long) imp.getWidth() * imp.getHeight() <= CHEAP_PIXELS)
      dialog.addPreviewCheckbox(runner);
    dialog.addDialogListener(this);
    previewing = true;
    dialog.showDialog();
    previewing = false;
    if (dialog.wasCanceled()) {
      imp.setRoi(formerRoi);
      return false;
    }
    if (!macro) {
      lastSettings = settings;
      lastDark = dark;
    }
    return true;
  }

  private static String label(String key) {
    return Character.toUpperCase(key.charAt(0)) + key.substring(1);
  }

  /** Reads the dialog; false, which disables its OK, for values that can not be used. */
  @Override
  public boolean dialogItemChanged(GenericDialog dialog, AWTEvent event) {
    try {
      settings = new Settings(whole(RADIUS, dialog.getNextNumber()),
          whole(THRESHOLD, dialog.getNextNumber()), whole(SCALE, dialog.getNextNumber()));
    } catch (IllegalArgumentException e) {
      IJ.showStatus(e.getMessage());
      return false;
    }
    dark = dialog.getNextBoolean();
    if (!dialog.isPreviewActive())
      imp.setRoi(formerRoi);
    return true;
  }

  @Override
  public void setNPasses(int passes) {}

  @Override
  public void run(ImageProcessor ip) {
    int slice = runner.getSliceNumber();
    if (slice < 1)
      slice = imp.getCurrentSlice();
    try {
      List<Center> centers = CircularVoting.find(grey(ip), ip.getHeight(), ip.getWidth(), settings);
      if (previewing) {
        select(Map.of(slice, centers));
      } else {
        found.put(slice, centers);
      }
    } catch (IllegalArgumentException | LinkageError e) {
      failure = e.getMessage();
    }
  }

  /** The grey levels that are searched: bright objects are bright in them. */
  private int[] grey(ImageProcessor ip) {
    ImageProcessor shown = ip;
    if (ip instanceof ByteProcessor) {
      if (ip.isColorLut())
        shown = ip.convertToRGB();
    } else if (!(ip instanceof ColorProcessor)) {
      shown = ip.duplicate();
      shown.setMinAndMax(imp.getDisplayRangeMin(), imp.getDisplayRangeMax());
    }
    byte[] bytes = (byte[]) shown.convertToByteProcessor(true).getPixels();
    int invert = dark != imp.isInvertedLut() ? 0xFF : 0;
    int[] grey = new int[bytes.length];
    for (int i = 0; i < grey.length; i++) grey[i] = (bytes[i] & 0xFF) ^ invert;
    return grey;
  }

  private void showResults() {
    if (failure != null) {
      fail(failure);
      return;
    }
    if (!Analyzer.resetCounter())
      return; // the user keeps the former table
    select(found);
    addOverlay();
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
    IJ.showStatus(table.size() + " centres");
  }

  /** Ends the macro, if one runs. ImageJ can not tell an error without a screen. */
  private static void fail(String message) {
    if (GraphicsEnvironment.isHeadless())
      throw new IllegalStateException(TITLE + ": " + message);
    IJ.error(TITLE, message);
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
      circles.setStrokeColor(Color.ORANGE);
      if (imp.getStackSize() > 1)
        circles.setPosition(slice);
      if (circles.size() > 0)
        overlay.add(circles);
    });
    imp.setOverlay(overlay);
  }

  private void add(PointRoi points, Center c, int slice) {
    points.addPoint(c.x(), c.y(), imp.getStackSize() > 1 ? slice : 0);
  }
}
