import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.Executer;
import ij.IJ;
import ij.ImagePlus;
import ij.ImageStack;
import ij.gui.GenericDialog;
import ij.gui.Overlay;
import ij.gui.Roi;
import ij.plugin.filter.Analyzer;
import ij.plugin.frame.Recorder;
import ij.plugin.frame.RoiManager;
import ij.process.ByteProcessor;
import java.awt.Button;
import java.awt.Checkbox;
import java.awt.Choice;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import orva.FindSettings;
import orva.FindSettings.Polarity;

/** The dialog of Find Objects..., its preview, the status line and the ROI manager, on a screen. */
class IjFindDisplayTest {
  private static final String SAMPLE = "dsb_sparse_a";
  private static final FindSettings OPEN = new FindSettings();
  private static Path home;

  @BeforeAll
  static void start() throws Exception {
    home = IjScreen.install();
    IjScreen.start(home);
  }

  @AfterAll
  static void remove() throws Exception {
    IjScreen.remove(home);
  }

  @AfterEach
  void close() throws Exception {
    GenericDialog open = IjScreen.openDialog();
    if (open != null)
      IjScreen.press(open.getButtons()[1]);
    IjScreen.closeImages();
  }

  private static ImagePlus show(ImagePlus image) {
    image.show();
    return image;
  }

  /** As a click in the menu does, with these values in the dialog. */
  private static GenericDialog call(ImagePlus image, String radius, String polarity, String score)
      throws Exception {
    Analyzer.setUnsavedMeasurements(false); // else ImageJ asks whether to save the former table
    new Executer(IjCommand.FIND, image);
    GenericDialog dialog = IjScreen.dialog();
    IjScreen.typeText(dialog, radius);
    IjScreen.type(dialog, 0, score);
    IjScreen.choose(dialog, polarity);
    IjScreen.tick(manager(dialog), false);
    return dialog;
  }

  private static Checkbox manager(GenericDialog dialog) {
    return IjScreen.box(dialog, "Add to ROI manager");
  }

  private static void accept(ImagePlus image, GenericDialog dialog) throws Exception {
    IjScreen.finish(image, dialog.getButtons()[0]);
  }

  private static List<String> expected(FindSettings settings) throws Exception {
    List<String> rows = IjFound.expected(1, SAMPLE, settings);
    assertFalse(rows.isEmpty());
    return rows;
  }

  private static void awaitCircles(ImagePlus image, List<String> rows) throws Exception {
    List<String> circles = IjFound.asCircles(rows);
    IjScreen.await(
        rows.size() + " circles", () -> IjFound.circles(image.getOverlay(), 1).equals(circles));
  }

  @Test
  void okRunsWithTheValuesOfTheDialog() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    GenericDialog dialog = call(image, "0", "estimate", "0.5");
    assertEquals(List.of("Add to ROI manager", " Preview"), IjScreen.boxes(dialog));
    accept(image, dialog);
    assertEquals(expected(OPEN), IjFound.rows());
    awaitCircles(image, expected(OPEN));
    assertNull(RoiManager.getInstance2());
    accept(image, call(image, "15.5", "bright", "0.6"));
    assertEquals(expected(OPEN.withRadius(15.5f).withMinScore(0.6f).withPolarity(Polarity.BRIGHT)),
        IjFound.rows());
  }

  @Test
  void theStatusLineSaysWhatWasEstimated() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    accept(image, call(image, "0", "estimate", "0.5"));
    FoundByCommand found = FoundByCommand.in(IjCommand.sample(SAMPLE), OPEN);
    String start = String.format("%d bright objects of radius about %.1f pixels, confidence %.2f",
        found.objects().size(), Double.parseDouble(found.radius()),
        Double.parseDouble(found.confidence()));
    IjScreen.awaitStatus(start);
    IJ.wait(300); // the end of the command shows nothing else
    IjScreen.awaitStatus(start);
  }

  /** As the command does from the same confidence. */
  @Test
  void theStatusLineSaysThatAConfidenceIsLow() throws Exception {
    ByteProcessor ip = IjCommand.spots(200, 100, 20, 25, 50, 25, 80, 25, 110, 25, 140, 25, 170, 25);
    ip.add(50);
    ip.setValue(0);
    for (int x = 20; x <= 140; x += 30) ip.fillOval(x - 6, 64, 13, 13);
    ImagePlus image = show(new ImagePlus("mixed", ip));
    accept(image, call(image, "0", "estimate", "0.5"));
    assertEquals(6, IjFound.rows().size());
    IjScreen.awaitStatus("6 bright objects of radius about 6.");
    IjScreen.awaitStatusEnd("; this is low: check the outlines, or set radius and polarity");
    ip.setValue(50);
    ip.fillRect(70, 60, 100, 30);
    accept(image, call(image, "0", "estimate", "0.5"));
    assertEquals(6, IjFound.rows().size());
    IjScreen.awaitStatusEnd("confidence 0.75");
  }

  @Test
  void theStatusLineSaysThatNothingWasFound() throws Exception {
    ImagePlus image = show(new ImagePlus("empty", new ByteProcessor(80, 60)));
    accept(image, call(image, "0", "estimate", "0.5"));
    IjScreen.awaitStatus("No objects found");
    assertEquals(List.of(), IjFound.rows());
  }

  @Test
  void thePreviewFollowsTheValuesAndGoesWithItsTick() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    Overlay former = new Overlay(new Roi(3, 4, 5, 6));
    image.setOverlay(former);
    List<String> many = expected(OPEN);
    List<String> few = expected(OPEN.withMinScore(0.99f));
    assertTrue(few.size() < many.size());
    GenericDialog dialog = call(image, "0", "estimate", "0.5");
    IjScreen.tick(dialog.getPreviewCheckbox(), true);
    awaitCircles(image, many);
    assertEquals(many.size() + 1, image.getOverlay().size());
    IjScreen.awaitStatus(many.size() + " bright objects of radius about");
    IjScreen.type(dialog, 0, "0.99");
    awaitCircles(image, few);
    IjScreen.tick(dialog.getPreviewCheckbox(), false);
    IjScreen.await("the former overlay", () -> image.getOverlay() == former);
    assertEquals(List.of(), IjFound.rows());
    IjScreen.tick(dialog.getPreviewCheckbox(), true);
    awaitCircles(image, few);
    accept(image, dialog);
    assertEquals(few, IjFound.rows());
    awaitCircles(image, few);
  }

  @Test
  void cancelKeepsTheOverlayTheSelectionAndTheTable() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    Overlay former = new Overlay(new Roi(3, 4, 5, 6));
    Roi selection = new Roi(10, 10, 100, 120);
    image.setOverlay(former);
    image.setRoi(selection);
    GenericDialog dialog = call(image, "0", "estimate", "0.5");
    IjScreen.tick(dialog.getPreviewCheckbox(), true);
    IjScreen.await("the preview", () -> image.getOverlay() != former);
    IjScreen.finish(image, dialog.getButtons()[1]);
    assertEquals(former, image.getOverlay());
    assertEquals(1, former.size());
    assertEquals(selection, image.getRoi());
    assertEquals(List.of(), IjFound.rows());
  }

  @Test
  void aValueOutOfItsRangeCannotBeAccepted() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    GenericDialog dialog = call(image, "0", "estimate", "0.5");
    Button ok = dialog.getButtons()[0];
    for (String wrong : List.of("-1", "abc", "", "9:5", "5:", "5:7:9")) {
      IjScreen.typeText(dialog, wrong);
      IjScreen.await("no OK for " + wrong, () -> !ok.isEnabled());
      IjScreen.typeText(dialog, "0");
      IjScreen.await("OK", () -> ok.isEnabled());
    }
    IjScreen.type(dialog, 0, "1.5");
    IjScreen.await("no OK for the score", () -> !ok.isEnabled());
    IjScreen.finish(image, dialog.getButtons()[1]);
  }

  @Test
  void theRoiManagerHoldsTheCirclesOnRequest() throws Exception {
    ImageStack slices = new ImageStack(256, 256);
    for (int i = 0; i < 2; i++) slices.addSlice(IjCommand.open(SAMPLE).getProcessor());
    ImagePlus stack = show(new ImagePlus("stack", slices));
    GenericDialog dialog = call(stack, "0", "estimate", "0.5");
    IjScreen.tick(manager(dialog), true);
    IjScreen.tick(IjScreen.box(dialog, "Stack"), true);
    accept(stack, dialog);
    List<String> expected = IjFound.asCircles(IjFound.rows());
    IjScreen.awaitStatus(expected.size() + " objects in 2 images");
    RoiManager manager = RoiManager.getInstance2();
    try {
      assertEquals(expected,
          Arrays.stream(manager.getRoisAsArray())
              .map(roi -> roi.getPosition() + " " + IjFound.circle(roi))
              .toList());
      assertFalse(expected.isEmpty());
    } finally {
      manager.close();
    }
  }

  @Test
  void theRecorderKeepsTheOptions() throws Exception {
    Recorder recorder = new Recorder();
    try {
      ImagePlus image = show(IjCommand.open(SAMPLE));
      accept(image, call(image, "0", "estimate", "0.5"));
      IjScreen.awaitRecord(recorder, IjCommand.FIND, "radius=0 polarity=estimate min_score=0.5");
      GenericDialog dialog = call(image, "5:15.5", "dark", "0.1");
      IjScreen.tick(manager(dialog), true);
      accept(image, dialog);
      RoiManager.getInstance2().close();
      assertFalse(recorder.getText().contains("roiManager"), recorder.getText());
      IjScreen.awaitRecord(
          recorder, IjCommand.FIND, "radius=5:15.5 polarity=dark min_score=0.1 add");

      new Executer(IjCommand.FIND, image);
      Analyzer.setUnsavedMeasurements(false);
      dialog = IjScreen.dialog();
      assertEquals("5:15.5", IjScreen.textField(dialog).getText());
      assertEquals(List.of("0.10"), IjScreen.texts(dialog));
      assertEquals("dark", ((Choice) dialog.getChoices().get(0)).getSelectedItem());
      assertTrue(manager(dialog).getState());
      IjScreen.finish(image, dialog.getButtons()[1]);
    } finally {
      recorder.close();
    }
  }

  @Test
  void aMacroShowsItsOwnStatusAfterwards() throws Exception {
    IJ.runMacro("open('" + IjCommand.sample(SAMPLE) + "'); run('Find Objects...', 'radius=0');"
        + "showStatus('my own');");
    assertEquals(expected(OPEN), IjFound.rows());
    IjScreen.awaitStatus("my own");
  }
}
