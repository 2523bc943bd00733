package orva.imagej;

import ij.IJ;
import ij.Macro;
import ij.gui.GenericDialog;
import ij.gui.OvalRoi;
import ij.gui.Overlay;
import ij.gui.Roi;
import ij.plugin.frame.RoiManager;
import ij.process.ImageProcessor;
import java.awt.Color;
import java.awt.HeadlessException;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.SortedMap;
import orva.FindResult;
import orva.FindSettings.Polarity;
import orva.FoundObject;
import orva.Objects;
import orva.SettingsEstimate;

/**
 * The ImageJ command Plugins &gt; Orva &gt; Find Objects...: marks round objects of unknown size
 * and brightness in the current slice or in all of a stack. The results are a row of the results
 * table and a circle of the overlay for each object; the status line says what was estimated.
 *
 * <p>A color image counts by its gray values. An area selection limits the objects to those with
 * their center in it.
 */
public final class FindObjectsPlugin extends SearchPlugin<FindResult> {
  private static final String OVERLAY = "orva objects";
  private static final float LOW_CONFIDENCE = 0.3f; // from which down a user should look

  private static FindChoice last = FindChoice.USUAL;

  private volatile FindChoice choice;
  private Overlay former;
  private boolean isShowingPreview;

  /** Called by ImageJ. */
  public FindObjectsPlugin() {
    super("Find Objects", OVERLAY);
  }

  @Override
  void readOptions(String options) {
    choice = FindChoice.of(options);
  }

  /** ImageJ makes the keys of macros of the first words, in lower case. */
  @Override
  void addFields(GenericDialog dialog) {
    double radius = last.radius();
    dialog.addNumericField(
        "Radius", radius, radius == Math.rint(radius) ? 0 : 2, 6, "pixels (0: estimate)");
    dialog.addChoice(
        "Polarity", FindChoice.polarities(), FindChoice.name(last.settings().polarity()));
    dialog.addNumericField("Score at least", last.score(), 2, 6, "0 to 1");
    dialog.addCheckbox("Add to ROI manager", last.manager());
    addStackBox(dialog, last.stack());
    former = image().getOverlay();
  }

  @Override
  void readFields(GenericDialog dialog) {
    if (dialog.getPreviewCheckbox() != null)
      allowPreview(dialog.getPreviewCheckbox().getState());
    double radius = dialog.getNextNumber();
    String polarity = dialog.getNextChoice();
    double score = dialog.getNextNumber();
    boolean manager = dialog.getNextBoolean();
    choice = FindChoice.of(radius, polarity, score, nextStackBox(dialog), manager);
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
  FindResult search(ImageProcessor ip, int slice) {
    GrayValues gray = new GrayValues(image());
    boolean isInverted = gray.areInverted(ip);
    Polarity polarity = choice.settings().polarity();
    FindResult result = Objects.find(gray.stored(ip), ip.getHeight(), ip.getWidth(),
        choice.settings().withPolarity(isInverted ? opposite(polarity) : polarity));
    return new FindResult(isInverted ? inverted(result.used()) : result.used(),
        result.objects()
            .stream()
            .filter(o -> isSelected(ip, Math.round(o.x()), Math.round(o.y())))
            .toList());
  }

  /** As an inverting color table shows it. */
  private static SettingsEstimate inverted(SettingsEstimate e) {
    SettingsEstimate.RunnerUp second = e.runnerUp();
    return new SettingsEstimate(e.radius(), opposite(e.polarity()), e.confidence(),
        new SettingsEstimate.RunnerUp(
            second.radius(), opposite(second.polarity()), second.confidence()));
  }

  private static Polarity opposite(Polarity polarity) {
    if (polarity == null)
      return null;
    return polarity == Polarity.BRIGHT ? Polarity.DARK : Polarity.BRIGHT;
  }

  /** Changes the overlay only while the preview is wanted. */
  @Override
  synchronized void preview(int slice, FindResult result) {
    if (!isShowingPreview)
      return;
    Overlay overlay = otherElements(former);
    circles(slice, result).forEach(overlay::add);
    image().setOverlay(overlay);
    IJ.showStatus("!" + report(result)); // else ImageJ clears it at the end of the preview
  }

  private synchronized void allowPreview(boolean allowed) {
    if (isShowingPreview && !allowed)
      image().setOverlay(former);
    isShowingPreview = allowed;
  }

  @Override
  void endPreview() {
    allowPreview(false);
  }

  @Override
  void show(SortedMap<Integer, FindResult> found) {
    RoiManager manager = choice.manager() ? roiManager() : null;
    Overlay overlay = otherElements(image().getOverlay());
    found.forEach((slice, result) -> {
      for (Roi circle : circles(slice, result)) {
        overlay.add(circle);
        if (manager != null)
          manager.addRoi(unnamed(circle));
      }
    });
    image().setOverlay(overlay.size() > 0 ? overlay : null);
    fillTable(table -> found.forEach((slice, result) -> {
      for (FoundObject o : result.objects()) {
        table.incrementCounter();
        table.addValue("slice", slice);
        table.addValue("x", o.x());
        table.addValue("y", o.y());
        table.addValue("radius", o.radius());
        table.addValue("score", o.score());
      }
    }));
    // Without the mark ImageJ would replace the text by the time taken; in a macro the mark would
    // suppress what the macro itself shows later.
    IJ.showStatus((Macro.getOptions() == null ? "!" : "") + report(found));
  }

  private static RoiManager roiManager() {
    try {
      return RoiManager.getRoiManager();
    } catch (HeadlessException e) {
      throw new IllegalStateException("The ROI manager needs a display", e);
    }
  }

  /** The manager names it by its place. */
  private static Roi unnamed(Roi circle) {
    Roi copy = (Roi) circle.clone();
    copy.setName(null);
    return copy;
  }

  private List<Roi> circles(int slice, FindResult result) {
    List<Roi> circles = new ArrayList<>();
    for (FoundObject o : result.objects()) {
      // The centers of ImageJ's pixels are at halves.
      double left = o.x() + 0.5 - o.radius();
      double top = o.y() + 0.5 - o.radius();
      Roi circle = new OvalRoi(left, top, 2.0 * o.radius(), 2.0 * o.radius());
      circle.setName(OVERLAY);
      circle.setStrokeColor(Color.ORANGE);
      if (image().getStackSize() > 1)
        circle.setPosition(slice);
      circles.add(circle);
    }
    return circles;
  }

  private static String report(SortedMap<Integer, FindResult> found) {
    if (found.size() == 1)
      return report(found.get(found.firstKey()));
    int objects = found.values().stream().mapToInt(r -> r.objects().size()).sum();
    return counted(objects, "") + " in " + found.size() + " images";
  }

  /** What was found in one slice, and what was estimated. */
  private static String report(FindResult result) {
    int n = result.objects().size();
    SettingsEstimate used = result.used();
    if (n == 0)
      return counted(0, "");
    return counted(n, FindChoice.name(used.polarity()) + " ")
        + String.format(Locale.ROOT, " of radius about %.1f pixels, confidence %.2f", used.radius(),
            used.confidence())
        + (used.confidence() < LOW_CONFIDENCE
                ? "; this is low: check the circles, or set radius and polarity"
                : "");
  }

  private static String counted(int n, String kind) {
    return (n == 0 ? "No" : n) + " " + kind + (n == 1 ? "object" : "objects")
        + (n == 0 ? " found" : "");
  }
}
