import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import ij.ImagePlus;
import ij.ImageStack;
import ij.gui.OvalRoi;
import ij.gui.Overlay;
import ij.gui.Roi;
import ij.io.FileSaver;
import ij.measure.ResultsTable;
import ij.process.ImageProcessor;
import ij.process.ShortProcessor;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.stream.IntStream;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;
import orva.FindSettings;
import orva.FindSettings.Polarity;
import orva.SegmentResult;
import orva.SegmentSettings;
import orva.SegmentedObject;

/** Segment Objects... by macros, without a screen. */
class IjSegmentTest {
  private static final String SAMPLE = "dsb_sparse_a";
  private static final FindSettings OPEN = new FindSettings();
  private static final SegmentSettings ALL = new SegmentSettings();

  @TempDir Path folder;

  @BeforeAll
  static void register() {
    System.setProperty("java.awt.headless", "true");
    IjCommand.registerWithoutScreen();
  }

  @BeforeEach
  void clearTable() {
    ResultsTable.getResultsTable().reset(); // so that no rows of another test pass for these
  }

  private static SegmentResult expected(FindSettings settings, SegmentSettings kept)
      throws Exception {
    SegmentResult result = IjRegions.expected(SAMPLE, settings, kept);
    assertFalse(result.objects().isEmpty());
    return result;
  }

  /** The table, the label image and the outlines of a single image. */
  private static void assertShows(SegmentResult expected, ImagePlus image, ImagePlus labels) {
    assertEquals(IjRegions.rows(1, expected), IjRegions.rows());
    assertArrayEquals(expected.labels(), IjRegions.labels(labels.getProcessor()));
    assertArrayEquals(expected.labels(),
        IjRegions.filled(IjRegions.outlines(image), image.getWidth(), image.getHeight()));
  }

  @ParameterizedTest
  @ValueSource(strings = {"dsb_dense_a", "dsb_histw_a", "dsb_large_a", "dsb_sparse_a"})
  void aMacroWithoutOptionsSegmentsWhatJavaSegments(String sample) throws Exception {
    ImagePlus image = IjCommand.open(sample);
    ImagePlus labels = IjRegions.run(image, "");
    SegmentResult expected = IjRegions.expected(sample, OPEN, ALL);
    assertTrue(expected.objects().size() > 5);
    assertShows(expected, image, labels);
    assertEquals(" \tslice\t" + String.join("\t", SegmentedObject.COLUMNS),
        ResultsTable.getResultsTable().getColumnHeadings().stripTrailing());
    assertEquals("Labels of " + sample + ".pgm", labels.getTitle());
    assertEquals(16, labels.getBitDepth());
    assertEquals(0, labels.getDisplayRangeMin());
    assertEquals(expected.objects().size(), labels.getDisplayRangeMax());
    assertEquals(expected.objects().size(), image.getOverlay().size());
    assertNull(image.getRoi());
    assertFalse(image.isLocked());
    assertFalse(image.changes);
  }

  @Test
  void everyKeyIsASettingOfTheCommand() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    SegmentResult open = expected(OPEN, ALL);
    for (String options : List.of("radius=0", "polarity=estimate", "min_score=0.5", "min_area=0",
             "max_area=0", "max_area=100000"))
      assertShows(open, image, IjRegions.run(image, options));
    Map<String, SegmentResult> others = Map.of("radius=15.5", expected(OPEN.withRadius(15.5f), ALL),
        "radius=5.5:7", expected(OPEN.withMinRadius(5.5f).withMaxRadius(7), ALL), "min_score=.99",
        expected(OPEN.withMinScore(0.99f), ALL), "min_area=150",
        expected(OPEN, ALL.withMinArea(150)), "max_area=200", expected(OPEN, ALL.withMaxArea(200)),
        "exclude_border", expected(OPEN, ALL.withExcludeBorder(true)),
        "min_area=100 max_area=200 exclude_border min_score=0.8",
        expected(OPEN.withMinScore(0.8f), new SegmentSettings(100, 200f, true)));
    others.forEach((options, result) -> {
      assertNotEquals(IjRegions.rows(1, open), IjRegions.rows(1, result), options);
      assertShows(result, image, IjRegions.run(image, options));
    });
    ImagePlus mixed = IjCommand.open("dsb_histw_a");
    assertShows(IjRegions.expected("dsb_histw_a", OPEN.withPolarity(Polarity.BRIGHT), ALL), mixed,
        IjRegions.run(mixed, "polarity=bright"));
  }

  @Test
  void theLabelImageIsTheActiveOneAfterwards() throws Exception {
    String title =
        IJ.runMacro("setBatchMode(true); open('" + IjCommand.sample(SAMPLE) + "'); a = 200;"
            + "run('Segment Objects...', 'max_area=&a'); return getTitle();");
    assertEquals("Labels of " + SAMPLE + ".pgm", title);
    assertEquals(IjRegions.rows(1, expected(OPEN, ALL.withMaxArea(200))), IjRegions.rows());
  }

  @Test
  void labelsSurviveAFile() throws Exception {
    ImagePlus labels = IjRegions.run(IjCommand.open(SAMPLE), "");
    String tiff = folder.resolve("labels.tif").toString();
    String png = folder.resolve("labels.png").toString();
    IJ.save(labels, tiff);
    assertTrue(new FileSaver(labels).saveAsPng(png));
    for (String file : List.of(tiff, png)) {
      ImagePlus read = IJ.openImage(file);
      assertEquals(16, read.getBitDepth());
      assertArrayEquals(expected(OPEN, ALL).labels(), IjRegions.labels(read.getProcessor()));
    }
  }

  @Test
  void thePolarityIsThatOnTheScreen() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    image.getProcessor().invertLut();
    assertShows(expected(OPEN, ALL), image, IjRegions.run(image, ""));
    assertShows(expected(OPEN.withPolarity(Polarity.BRIGHT), ALL), image,
        IjRegions.run(image, "polarity=dark"));
  }

  @Test
  void theLabelImageHasTheScaleButNoCalibrationOfGrays() throws Exception {
    ShortProcessor wide = IjCommand.open(SAMPLE).getProcessor().convertToShortProcessor(false);
    ImagePlus image = new ImagePlus("signed", wide);
    image.getCalibration().setSigned16BitCalibration();
    image.getCalibration().pixelWidth = 0.25;
    image.getCalibration().setUnit("mm");
    ImagePlus labels = IjRegions.run(image, "");
    assertEquals(0.25, labels.getCalibration().pixelWidth);
    assertEquals("mm", labels.getCalibration().getUnit());
    assertFalse(labels.getCalibration().calibrated());
    assertTrue(image.getCalibration().calibrated());
    assertArrayEquals(expected(OPEN, ALL).labels(), IjRegions.labels(labels.getProcessor()));
  }

  @Test
  void anAreaSelectionLimitsTheRegions() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    SegmentResult all = expected(OPEN, ALL);
    for (Roi area : List.of(new Roi(30, 20, 150, 120), new OvalRoi(30, 20, 150, 120))) {
      List<SegmentedObject> inside = all.objects()
                                         .stream()
                                         .filter(o
                                             -> area.contains((int) Math.round(o.centroidColumn()),
                                                 (int) Math.round(o.centroidRow())))
                                         .toList();
      assertTrue(!inside.isEmpty() && inside.size() < all.objects().size());
      image.setRoi(area);
      ImagePlus labels = IjRegions.run(image, "");
      int[] expected = all.labels().clone();
      for (int i = 0; i < expected.length; i++)
        expected[i] = 1 + inside.stream().map(SegmentedObject::label).toList().indexOf(expected[i]);
      assertArrayEquals(expected, IjRegions.labels(labels.getProcessor()));
      assertArrayEquals(expected,
          IjRegions.filled(IjRegions.outlines(image), image.getWidth(), image.getHeight()));
      assertEquals(IntStream.rangeClosed(1, inside.size()).boxed().toList(),
          IjRegions.rows().stream().map(IjSegmentTest::label).toList());
      assertEquals(inside.stream().map(o -> (int) o.area()).toList(),
          IntStream.range(0, inside.size())
              .mapToObj(i -> (int) ResultsTable.getResultsTable().getValue("area", i))
              .toList());
      assertEquals(area, image.getRoi());
    }
  }

  private static int label(String row) {
    return (int) Double.parseDouble(row.substring(row.indexOf('[') + 1, row.indexOf(',')));
  }

  @Test
  void anEmptyImageHasNoRegions() {
    ImagePlus image = IjCommand.open(SAMPLE);
    IjRegions.run(image, "");
    assertFalse(IjRegions.rows().isEmpty());
    image.getProcessor().set(7);
    ImagePlus labels = IjRegions.run(image, "");
    assertEquals(List.of(), IjRegions.rows());
    assertNull(image.getOverlay());
    assertArrayEquals(
        new int[image.getWidth() * image.getHeight()], IjRegions.labels(labels.getProcessor()));
    assertEquals(16, labels.getBitDepth());
  }

  @Test
  void otherElementsOfTheOverlayStay() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    Roi mine = new Roi(3, 4, 5, 6);
    image.setOverlay(new Overlay(mine));
    int circles = IjFound.run(image, "").size();
    IjRegions.run(image, "");
    IjRegions.run(image, "");
    assertEquals(1 + circles + IjRegions.rows().size(), image.getOverlay().size());
    assertTrue(image.getOverlay().contains(mine));
  }

  @Test
  void aStackIsSegmentedSliceBySlice() throws Exception {
    ImageProcessor first = IjCommand.open(SAMPLE).getProcessor();
    ImageStack slices = new ImageStack(first.getWidth(), first.getHeight());
    slices.addSlice("first", first);
    slices.addSlice("blank", first.createProcessor(first.getWidth(), first.getHeight()));
    slices.addSlice("third", first.duplicate());
    ImagePlus stack = new ImagePlus("stack", slices);
    stack.setDimensions(1, 1, 3);
    SegmentResult one = expected(OPEN, ALL);
    List<String> rows = new ArrayList<>(IjRegions.rows(1, one));
    rows.addAll(IjRegions.rows(3, one));
    ImagePlus labels = IjRegions.run(stack, "stack");
    assertEquals(rows, IjRegions.rows());
    assertArrayEquals(new int[] {256, 256, 1, 1, 3}, labels.getDimensions());
    assertArrayEquals(one.labels(), IjRegions.labels(labels.getStack().getProcessor(1)));
    assertArrayEquals(
        new int[one.labels().length], IjRegions.labels(labels.getStack().getProcessor(2)));
    assertArrayEquals(one.labels(), IjRegions.labels(labels.getStack().getProcessor(3)));
    assertEquals("third", labels.getStack().getSliceLabel(3));
    int n = one.objects().size();
    assertEquals(IntStream.range(0, 2 * n).mapToObj(i -> i < n ? 1 : 3).toList(),
        IjRegions.outlines(stack).stream().map(Roi::getPosition).toList());

    stack.setSlice(3);
    labels = IjRegions.run(stack, "");
    assertEquals(IjRegions.rows(3, one), IjRegions.rows());
    assertEquals(1, labels.getStackSize());
    assertArrayEquals(one.labels(), IjRegions.labels(labels.getProcessor()));
  }

  @ParameterizedTest
  @CsvSource({"radius=-1, 'The radius must be above 0, not -1'",
      "min_area=-1, 'The minimum area must be at least 0, not -1'",
      "min_area=abc, 'min_area must be a number, not abc'",
      "max_area=-2.5, 'The maximum area must be at least 0, not -2.5'",
      "min_area=9 max_area=5, 'The maximum area must be at least 9, not 5'",
      "max_area=many, 'max_area must be a number, not many'",
      "add, 'The ROI manager needs a display'"})
  void
  aWrongOptionIsNamedAndChangesNothing(String option, String message) throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    IjRegions.run(image, "");
    List<String> rows = IjRegions.rows();
    Overlay overlay = image.getOverlay();
    assertEquals("Segment Objects: " + message + System.lineSeparator(),
        IjCommand.printed(() -> assertNull(IjRegions.run(image, option))));
    assertEquals(rows, IjRegions.rows());
    assertEquals(overlay, image.getOverlay());
    assertFalse(image.isLocked());
  }
}
