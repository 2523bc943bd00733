package orva.imagej;

import ij.IJ;
import ij.Macro;
import ij.gui.GenericDialog;
import ij.gui.Overlay;
import ij.gui.Roi;
import ij.plugin.frame.RoiManager;
import ij.process.ImageProcessor;
import java.awt.Color;
import java.awt.HeadlessException;
import java.util.List;
import java.util.Locale;
import java.util.SortedMap;
import orva.FindSettings;
import orva.SettingsEstimate;

/**
 * A command that finds objects of unknown size and brightness. The results are a row of the results
 * table and an outline in the overlay for each object, on request also in the ROI manager; the
 * status line says what was estimated.
 */
abstract class DetectionPlugin extends SearchPlugin<Detection> {
  private static final float LOW_CONFIDENCE = 0.6f; // below it the user should check

  private final List<String> columns;
  private volatile FindChoice choice;
  private Overlay former;
  private boolean isShowingPreview;

  /**
   * Names the results.
   *
   * @param columns of the results table, after that of the slice
   */
  DetectionPlugin(String title, String overlayName, List<String> columns) {
    super(title, overlayName);
    this.columns = columns;
  }

  /** What the dialog starts with. */
  abstract FindChoice last();

  /** Takes the settings that only this command has from a macro. */
  void readOwnOptions(MacroOptions options) {}

  void addOwnFields(GenericDialog dialog) {}

  void readOwnFields(GenericDialog dialog) {}

  /** Searches these pixel values of a slice; the polarity of the settings is theirs. */
  abstract Detection search(float[] pixels, ImageProcessor ip, FindSettings settings);

  /** Shows an image that only this command makes. */
  void showImage(SortedMap<Integer, Detection> found) {}

  /** Of the outlines in the ROI manager; null for the name that the manager gives. */
  String nameInManager(int slice, Detection.Shown object) {
    return null;
  }

  final FindChoice choice() {
    return choice;
  }

  @Override
  final void readOptions(MacroOptions options) {
    choice = FindChoice.of(options);
    readOwnOptions(options);
  }

  /** ImageJ makes the keys of macros of the first words, in lower case. */
  @Override
  final void addFields(GenericDialog dialog) {
    FindChoice last = last();
    dialog.addStringField(Choice.label(FindChoice.RADIUS), last.radius(), 8);
    dialog.setInsets(0, 20, 5);
    dialog.addMessage("pixels, or a range A:B (0: estimate)");
    dialog.addChoice(Choice.label(FindChoice.POLARITY), FindChoice.polarities(),
        FindChoice.name(last.settings().polarity()));
    dialog.addNumericField(Choice.label(FindChoice.MIN_SCORE), last.minScore(), 2, 6, "0 to 1");
    addOwnFields(dialog);
    dialog.addCheckbox(Choice.label(FindChoice.MANAGER) + " to ROI manager", last.manager());
    addStackBox(dialog, last.stack());
    former = image().getOverlay();
  }

  @Override
  final void readFields(GenericDialog dialog) {
    if (dialog.getPreviewCheckbox() != null)
      allowPreview(dialog.getPreviewCheckbox().getState());
    String radius = dialog.getNextString();
    String polarity = dialog.getNextChoice();
    double minScore = dialog.getNextNumber();
    readOwnFields(dialog);
    boolean manager = dialog.getNextBoolean();
    choice = FindChoice.of(radius, polarity, minScore, nextStackBox(dialog), manager);
  }

  @Override
  final boolean searchesStack() {
    return choice.stack();
  }

  @Override
  final Detection search(ImageProcessor ip, int slice) {
    GrayValues gray = new GrayValues(image());
    float[] pixels = gray.stored(ip);
    FindSettings settings = choice.settings();
    if (!gray.areInverted(ip))
      return search(pixels, ip, settings);
    return search(pixels, ip, settings.withPolarity(Detection.opposite(settings.polarity())))
        .inverted();
  }

  /** Changes the overlay only while the preview is wanted. */
  @Override
  final synchronized void preview(int slice, Detection result) {
    if (!isShowingPreview)
      return;
    Overlay overlay = otherElements(former);
    result.objects().forEach(object -> overlay.add(element(slice, object)));
    image().setOverlay(overlay);
    IJ.showStatus("!" + report(result)); // else ImageJ clears it at the end of the preview
  }

  private synchronized void allowPreview(boolean allowed) {
    if (isShowingPreview && !allowed)
      image().setOverlay(former);
    isShowingPreview = allowed;
  }

  @Override
  final void endPreview() {
    allowPreview(false);
  }

  @Override
  final void show(SortedMap<Integer, Detection> found) {
    if (choice.manager())
      fillManager(found);
    Overlay overlay = otherElements(image().getOverlay());
    found.forEach((slice, result) -> result.objects().forEach(o -> overlay.add(element(slice, o))));
    image().setOverlay(overlay.size() > 0 ? overlay : null);
    fillTable(table -> found.forEach((slice, result) -> {
      for (Detection.Shown object : result.objects()) {
        table.incrementCounter();
        table.addValue("slice", slice);
        for (int i = 0; i < columns.size(); i++) table.addValue(columns.get(i), object.row()[i]);
      }
    }));
    showImage(found);
    // Without the mark ImageJ would replace the text by the time taken; in a macro the mark would
    // suppress what the macro itself shows later.
    IJ.showStatus((Macro.getOptions() == null ? "!" : "") + report(found));
  }

  private void fillManager(SortedMap<Integer, Detection> found) {
    RoiManager manager;
    try {
      manager = RoiManager.getRoiManager();
    } catch (HeadlessException e) {
      throw new IllegalStateException("The ROI manager needs a display", e);
    }
    found.forEach((slice, result) -> {
      for (Detection.Shown object : result.objects()) {
        Roi roi = element(slice, object);
        roi.setName(nameInManager(slice, object));
        manager.addRoi(roi);
      }
    });
  }

  /** A copy of the outline for the overlay. */
  private Roi element(int slice, Detection.Shown object) {
    Roi roi = (Roi) object.outline().clone();
    roi.setName(overlayName());
    roi.setStrokeColor(Color.ORANGE);
    if (image().getStackSize() > 1)
      roi.setPosition(slice);
    return roi;
  }

  private static String report(SortedMap<Integer, Detection> found) {
    if (found.size() == 1)
      return report(found.get(found.firstKey()));
    int objects = found.values().stream().mapToInt(r -> r.objects().size()).sum();
    return counted(objects, "") + " in " + found.size() + " images";
  }

  /** What was found in one slice, and what was estimated. */
  private static String report(Detection result) {
    int n = result.objects().size();
    SettingsEstimate used = result.used();
    if (n == 0)
      return counted(0, "");
    return counted(n, FindChoice.name(used.polarity()) + " ")
        + String.format(Locale.ROOT, " of radius about %.1f pixels, confidence %.2f", used.radius(),
            used.confidence())
        + (used.confidence() < LOW_CONFIDENCE
                ? "; this is low: check the outlines, or set radius and polarity"
                : "");
  }

  private static String counted(int n, String kind) {
    return (n == 0 ? "No" : n) + " " + kind + (n == 1 ? "object" : "objects")
        + (n == 0 ? " found" : "");
  }
}
