package orva.imagej;

import ij.IJ;
import ij.ImagePlus;
import ij.Macro;
import ij.gui.DialogListener;
import ij.gui.GenericDialog;
import ij.gui.Overlay;
import ij.gui.Roi;
import ij.macro.Interpreter;
import ij.measure.ResultsTable;
import ij.plugin.filter.Analyzer;
import ij.plugin.filter.ExtendedPlugInFilter;
import ij.plugin.filter.PlugInFilterRunner;
import ij.process.ImageProcessor;
import java.awt.AWTEvent;
import java.awt.GraphicsEnvironment;
import java.awt.HeadlessException;
import java.awt.Rectangle;
import java.util.Collections;
import java.util.SortedMap;
import java.util.TreeMap;
import java.util.concurrent.CancellationException;
import java.util.function.Consumer;
import orva.Progress;

/**
 * A command that searches the current slice or all of a stack, by the settings of a dialog or of a
 * macro.
 *
 * @param <R> what the search of a slice returns
 */
abstract class SearchPlugin<R> implements ExtendedPlugInFilter, DialogListener {
  private static final int CHEAP_PIXELS = 1 << 20;
  private static final int FLAGS = DOES_ALL | NO_CHANGES | PARALLELIZE_STACKS | FINAL_PROCESSING;

  private final String title;
  private final String overlayName;
  private final SortedMap<Integer, R> found = Collections.synchronizedSortedMap(new TreeMap<>());
  private ImagePlus imp;
  private PlugInFilterRunner runner;
  private final SliceProgress progress = new SliceProgress();
  private volatile boolean previewing;
  private volatile boolean stopped;
  private volatile String failure;

  /** Elements of the overlay with this name are those of an earlier search. */
  SearchPlugin(String title, String overlayName) {
    this.title = title;
    this.overlayName = overlayName;
  }

  /**
   * Takes the settings of a macro.
   *
   * @throws IllegalArgumentException when one cannot be used
   */
  abstract void readOptions(MacroOptions options);

  abstract void addFields(GenericDialog dialog);

  /**
   * Takes the settings of the dialog.
   *
   * @throws IllegalArgumentException when one cannot be used
   */
  abstract void readFields(GenericDialog dialog);

  /** The dialog starts with the settings of this one the next time. */
  abstract void remember();

  abstract boolean searchesStack();

  abstract R search(ImageProcessor ip, int slice);

  /** Called by a thread of its own while the dialog is open. */
  abstract void preview(int slice, R result);

  /** Called when there is no preview any more. */
  void endPreview() {}

  /**
   * Shows what was found by slice.
   *
   * @throws IllegalStateException when it cannot be shown
   */
  abstract void show(SortedMap<Integer, R> results);

  final ImagePlus image() {
    return imp;
  }

  final String overlayName() {
    return overlayName;
  }

  @Override
  public final int setup(String arg, ImagePlus image) {
    if ("final".equals(arg)) {
      finish();
      return DONE;
    }
    imp = image;
    return FLAGS;
  }

  private void finish() {
    progress.end();
    if (stopped) {
      IJ.showStatus("!" + title + ": stopped"); // else ImageJ shows the time taken
      return;
    }
    try {
      if (failure == null)
        show(found);
    } catch (IllegalStateException e) {
      failure = e.getMessage();
    }
    if (failure != null)
      fail(failure);
  }

  /**
   * Asks for the settings, or takes them from the macro that calls the command. An error waits for
   * the end: the runner goes on after an exception here.
   */
  @Override
  public final int showDialog(ImagePlus image, String command, PlugInFilterRunner filterRunner) {
    runner = filterRunner;
    String options = Macro.getOptions();
    try {
      if (options != null || GraphicsEnvironment.isHeadless()) {
        readOptions(new MacroOptions(options == null ? "" : options));
      } else if (!ask()) {
        return DONE;
      }
    } catch (IllegalArgumentException e) {
      failure = e.getMessage();
      return FLAGS;
    }
    return searchesStack() && imp.getStackSize() > 1 ? FLAGS | DOES_STACKS : FLAGS;
  }

  /** False when the user cancels. */
  private boolean ask() {
    GenericDialog dialog = new GenericDialog(title);
    addFields(dialog);
    if ((long) imp.getWidth() * imp.getHeight() <= CHEAP_PIXELS)
      dialog.addPreviewCheckbox(runner);
    dialog.addDialogListener(this);
    previewing = true;
    dialog.showDialog();
    previewing = false;
    endPreview();
    if (dialog.wasCanceled())
      return false;
    remember();
    return true;
  }

  /** Reads the dialog; false, which disables its OK, for values that cannot be used. */
  @Override
  public final boolean dialogItemChanged(GenericDialog dialog, AWTEvent event) {
    try {
      readFields(dialog);
      return true;
    } catch (IllegalArgumentException e) {
      IJ.showStatus(e.getMessage());
      return false;
    }
  }

  final void addStackBox(GenericDialog dialog, boolean on) {
    if (imp.getStackSize() > 1)
      dialog.addCheckbox(Choice.label(Choice.STACK) + " of " + imp.getStackSize() + " images", on);
  }

  final boolean nextStackBox(GenericDialog dialog) {
    return imp.getStackSize() > 1 && dialog.getNextBoolean();
  }

  @Override
  public final void setNPasses(int passes) {
    progress.begin(passes);
  }

  /**
   * Searches a slice. The progress bar shows how far the search has come, and Escape stops it, as
   * does a change of the settings that it is a preview of.
   */
  @Override
  public final void run(ImageProcessor ip) {
    if (failure != null || stopped)
      return;
    int slice = runner.getSliceNumber();
    if (slice < 1)
      slice = imp.getCurrentSlice();
    boolean isPreview = previewing;
    try {
      R result = searchWatched(ip, slice, isPreview);
      if (isPreview) {
        preview(slice, result);
      } else {
        found.put(slice, result);
      }
    } catch (CancellationException e) {
      stopped = !isPreview;
    } catch (RuntimeException | LinkageError | OutOfMemoryError e) {
      if (!isPreview) // it comes again when the user accepts the settings
        failure = e.getMessage() == null ? e.toString() : e.getMessage();
    }
  }

  private R searchWatched(ImageProcessor ip, int slice, boolean isPreview) {
    Progress.Listener listener = isPreview ? (step, share)
        -> !Thread.currentThread().isInterrupted()
        : (step, share) -> {
      progress.show(slice, share);
      return !IJ.escapePressed();
    };
    return Progress.during(listener, () -> search(ip, slice));
  }

  static boolean isSelected(ImageProcessor ip, int x, int y) {
    Rectangle area = ip.getRoi();
    ImageProcessor mask = ip.getMask();
    return area.contains(x, y) && (mask == null || mask.get(x - area.x, y - area.y) != 0);
  }

  /**
   * A new overlay of those elements of one that are not of an earlier search; of null an empty
   * one.
   */
  final Overlay otherElements(Overlay all) {
    if (all == null)
      return new Overlay();
    Overlay others = all.create();
    for (Roi roi : all.toArray()) {
      if (!overlayName.equals(roi.getName()))
        others.add(roi);
    }
    return others;
  }

  /** Replaces the contents of the results table unless the user keeps them. */
  static void fillTable(Consumer<ResultsTable> rows) {
    if (!Analyzer.resetCounter())
      return;
    ResultsTable table = Analyzer.getResultsTable();
    rows.accept(table);
    table.show("Results");
  }

  /** Tells the user, and ends the macro if one runs. */
  private void fail(String message) {
    if (!GraphicsEnvironment.isHeadless()) {
      IJ.error(title, message);
      return;
    }
    IJ.log(title + ": " + message);
    Interpreter macro = Interpreter.getInstance();
    if (macro == null)
      return;
    try {
      macro.abort(message);
    } catch (HeadlessException e) {
      // The macro has ended. Only ImageJ's own message needs a screen.
    }
  }
}
