import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.Executer;
import ij.IJ;
import ij.ImagePlus;
import ij.ImageStack;
import ij.WindowManager;
import ij.gui.GenericDialog;
import ij.gui.Overlay;
import ij.gui.Roi;
import ij.plugin.filter.Analyzer;
import ij.plugin.frame.Recorder;
import ij.plugin.frame.RoiManager;
import java.awt.Button;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.stream.IntStream;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import orva.FindSettings;
import orva.SegmentResult;
import orva.SegmentSettings;

/** Segment Objects... on a screen: dialog, preview, windows, ROI manager and recorder. */
class IjSegmentDisplayTest {
  private static final String SAMPLE = "dsb_sparse_a";
  private static final String LABELS = "Labels of " + SAMPLE + ".pgm";
  private static final FindSettings OPEN = new FindSettings();
  private static final SegmentSettings ALL = new SegmentSettings();
  private static final List<String> first = new ArrayList<>(); // dialog's values
  private static Path home;

  @BeforeAll
  static void start() throws Exception {
    home = IjScreen.install();
    IjScreen.start(home);
    ImagePlus image = show(IjCommand.open(SAMPLE));
    GenericDialog dialog = open(image);
    first.add(IjScreen.textField(dialog).getText());
    first.addAll(IjScreen.texts(dialog));
    for (String box : List.of("Exclude border", "Add to ROI manager"))
      first.add("" + IjScreen.box(dialog, box).getState());
    IjScreen.finish(image, dialog.getButtons()[1]);
    IjScreen.closeImages();
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
    if (RoiManager.getInstance2() != null)
      RoiManager.getInstance2().close();
  }

  private static ImagePlus show(ImagePlus image) {
    image.show();
    return image;
  }

  private static GenericDialog open(ImagePlus image) throws Exception {
    Analyzer.setUnsavedMeasurements(false); // else ImageJ asks whether to save the former table
    new Executer(IjCommand.SEGMENT, image);
    return IjScreen.dialog();
  }

  /** The dialog with these values. */
  private static GenericDialog call(ImagePlus image, String radius, String minScore, String minArea,
      String maxArea, boolean excludesBorder, boolean fillsManager) throws Exception {
    GenericDialog dialog = open(image);
    IjScreen.typeText(dialog, radius);
    IjScreen.type(dialog, 0, minScore);
    IjScreen.type(dialog, 1, minArea);
    IjScreen.type(dialog, 2, maxArea);
    IjScreen.tick(IjScreen.box(dialog, "Exclude border"), excludesBorder);
    IjScreen.tick(IjScreen.box(dialog, "Add to ROI manager"), fillsManager);
    return dialog;
  }

  private static GenericDialog call(ImagePlus image) throws Exception {
    return call(image, "0", "0.5", "0", "0", false, false);
  }

  private static void accept(ImagePlus image, GenericDialog dialog) throws Exception {
    IjScreen.finish(image, dialog.getButtons()[0]);
  }

  private static SegmentResult expected(FindSettings settings, SegmentSettings kept)
      throws Exception {
    SegmentResult result = IjRegions.expected(SAMPLE, settings, kept);
    assertFalse(result.objects().isEmpty());
    return result;
  }

  private static int[] labels() throws Exception {
    ImagePlus image = IjScreen.await("the label image", () -> WindowManager.getImage(LABELS));
    return IjRegions.labels(image.getProcessor());
  }

  private static void awaitOutlines(ImagePlus image, SegmentResult result) throws Exception {
    IjScreen.await(result.objects().size() + " outlines",
        () -> IjRegions.outlines(image).size() == result.objects().size());
    assertArrayEquals(result.labels(),
        IjRegions.filled(IjRegions.outlines(image), image.getWidth(), image.getHeight()));
  }

  @Test
  void theFirstDialogTellsNothingAndFillsTheManager() {
    assertEquals(List.of("0", "0.50", "0", "0", "false", "true"), first);
  }

  @Test
  void okShowsLabelsOutlinesAndTable() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    GenericDialog dialog = call(image);
    assertEquals(
        List.of("Exclude border", "Add to ROI manager", " Preview"), IjScreen.boxes(dialog));
    accept(image, dialog);
    SegmentResult expected = expected(OPEN, ALL);
    assertEquals(IjRegions.rows(1, expected), IjRegions.rows());
    assertArrayEquals(expected.labels(), labels());
    assertEquals(LABELS, WindowManager.getCurrentImage().getTitle());
    awaitOutlines(image, expected);
    String status = expected.objects().size() + " bright objects of radius about";
    IjScreen.awaitStatus(status);
    IJ.wait(300); // the windows show nothing else
    IjScreen.awaitStatus(status);
    assertNull(RoiManager.getInstance2());
  }

  @Test
  void everyFieldIsASetting() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    accept(image, call(image, "5.5:7.5", "0.6", "130", "200", true, false));
    SegmentResult expected =
        expected(OPEN.withMinRadius(5.5f).withMaxRadius(7.5f).withMinScore(0.6f),
            new SegmentSettings(130, 200f, true));
    assertEquals(IjRegions.rows(1, expected), IjRegions.rows());
    assertArrayEquals(expected.labels(), labels());
  }

  @Test
  void theRoiManagerNumbersTheOutlines() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    accept(image, call(image, "0", "0.5", "0", "0", false, true));
    SegmentResult expected = expected(OPEN, ALL);
    Roi[] rois = RoiManager.getInstance2().getRoisAsArray();
    assertEquals(IntStream.rangeClosed(1, expected.objects().size()).mapToObj(k -> "" + k).toList(),
        Arrays.stream(rois).map(Roi::getName).toList());
    assertArrayEquals(
        expected.labels(), IjRegions.filled(List.of(rois), image.getWidth(), image.getHeight()));
  }

  @Test
  void inAStackTheManagerNamesTheSlices() throws Exception {
    ImageStack slices = new ImageStack(256, 256);
    for (int i = 0; i < 2; i++) slices.addSlice(IjCommand.open(SAMPLE).getProcessor());
    ImagePlus stack = show(new ImagePlus("stack", slices));
    GenericDialog dialog = call(stack, "0", "0.5", "0", "0", false, true);
    IjScreen.tick(IjScreen.box(dialog, "Stack"), true);
    accept(stack, dialog);
    int n = expected(OPEN, ALL).objects().size();
    Roi[] rois = RoiManager.getInstance2().getRoisAsArray();
    assertEquals(IntStream.range(0, 2 * n).mapToObj(i -> (i / n + 1) + "-" + (i % n + 1)).toList(),
        Arrays.stream(rois).map(Roi::getName).toList());
    assertEquals(IntStream.range(0, 2 * n).mapToObj(i -> i / n + 1).toList(),
        Arrays.stream(rois).map(Roi::getPosition).toList());
    assertEquals(2, WindowManager.getImage("Labels of stack").getStackSize());
    dialog = call(stack);
    IjScreen.tick(IjScreen.box(dialog, "Stack"), false);
    accept(stack, dialog);
  }

  @Test
  void thePreviewShowsTheOutlinesAndCancelRemovesThem() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    Overlay former = new Overlay(new Roi(3, 4, 5, 6));
    image.setOverlay(former);
    GenericDialog dialog = call(image);
    IjScreen.tick(dialog.getPreviewCheckbox(), true);
    awaitOutlines(image, expected(OPEN, ALL));
    IjScreen.type(dialog, 1, "150");
    awaitOutlines(image, expected(OPEN, ALL.withMinArea(150)));
    IjScreen.finish(image, dialog.getButtons()[1]);
    assertEquals(former, image.getOverlay());
    assertEquals(List.of(), IjRegions.rows());
    assertNull(WindowManager.getImage(LABELS));
  }

  @Test
  void aValueOutOfItsRangeCannotBeAccepted() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    GenericDialog dialog = call(image);
    Button ok = dialog.getButtons()[0];
    for (int field : new int[] {1, 2}) {
      for (String wrong : List.of("-1", "abc", "")) {
        IjScreen.type(dialog, field, wrong);
        IjScreen.await("no OK for " + wrong, () -> !ok.isEnabled());
        IjScreen.type(dialog, field, "0");
        IjScreen.await("OK", () -> ok.isEnabled());
      }
    }
    IjScreen.finish(image, dialog.getButtons()[1]);
  }

  @Test
  void aRecordedMacroRepeatsTheCommand() throws Exception {
    Recorder recorder = new Recorder();
    try {
      ImagePlus image = show(IjCommand.open(SAMPLE));
      accept(image, call(image, "5.5:7.5", "0.6", "130", "200", true, true));
      String options = "radius=5.5:7.5 polarity=estimate min_score=0.6 min_area=130 max_area=200"
          + " exclude_border add";
      IjScreen.awaitRecord(recorder, IjCommand.SEGMENT, options);
      assertFalse(recorder.getText().contains("roiManager"), recorder.getText());
      List<String> rows = IjRegions.rows();
      int[] labels = labels();
      IjScreen.closeImages();
      RoiManager.getInstance2().close();
      IJ.runMacro("open('" + IjCommand.sample(SAMPLE) + "');"
          + "run('Segment Objects...', '" + options + "');");
      assertEquals(rows, IjRegions.rows());
      assertArrayEquals(labels, labels());
      assertEquals(rows.size(), RoiManager.getInstance2().getCount());
    } finally {
      recorder.close();
    }
  }
}
