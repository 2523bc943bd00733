import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import ij.ImagePlus;
import ij.Undo;
import ij.WindowManager;
import ij.gui.OvalRoi;
import ij.gui.Overlay;
import ij.gui.Roi;
import ij.measure.ResultsTable;
import ij.process.ByteProcessor;
import ij.process.ColorProcessor;
import ij.process.FloatProcessor;
import ij.process.ImageProcessor;
import ij.process.LUT;
import ij.process.ShortProcessor;
import java.awt.Color;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import orva.VoteSettings;
import orva.VoteSettings.Polarity;

/** Single images, without a screen. */
class IjHeadlessTest {
  private static final String SAMPLE = "dsb_sparse_a";
  private static final String OPTIONS = "max_radius=20 relative_threshold=0.2 sigma=2";
  private static final VoteSettings SETTINGS =
      VoteSettings.ofRadius(20).withRelativeThreshold(0.2f).withSigma(2);
  /** The keys of macros before there was a relative threshold. */
  private static final String FORMER = "max_radius=20 threshold=80 scale=2";

  @BeforeAll
  static void register() {
    System.setProperty("java.awt.headless", "true");
    IjCommand.registerWithoutScreen();
  }

  @BeforeEach
  void clearTable() {
    ResultsTable.getResultsTable().reset(); // so that no rows of another test pass for these
  }

  private static List<String> expected() throws Exception {
    return expected(SETTINGS);
  }

  private static List<String> expectedDark() throws Exception {
    return expected(SETTINGS.withPolarity(Polarity.DARK));
  }

  private static List<String> expected(VoteSettings settings) throws Exception {
    List<String> rows = IjCommand.expected(1, IjCommand.sample(SAMPLE), settings);
    assertFalse(rows.isEmpty());
    return rows;
  }

  /** What the macros of before must still find. */
  private static List<String> formerly(String... dark) throws Exception {
    List<String> rows = IjCommand.expected(1, IjCommand.sample(SAMPLE), 20, 80, 2, dark);
    assertFalse(rows.isEmpty());
    return rows;
  }

  @Test
  void aMacroWithFormerKeysRunsAsBefore() throws Exception {
    String rows = IJ.runMacro("open('" + IjCommand.sample(SAMPLE) + "');"
        + "run('Circular Voting...', '" + FORMER + "');"
        + "s = ''; for (i = 0; i < nResults; i++) s = s + getResultString('slice', i) + ' ' +"
        + " getResultString('x', i) + ' ' + getResultString('y', i) + ' ' +"
        + " getResultString('weight', i) + '\\n';"
        + "return s;");
    assertEquals(formerly(), rows.lines().map(row -> row + ".0").toList());
    assertEquals(" \tslice\tx\ty\tweight",
        ResultsTable.getResultsTable().getColumnHeadings().stripTrailing());
  }

  @Test
  void theSelectionAndTheOverlayHoldTheCenters() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    IjCommand.run(image, OPTIONS);
    List<String> points =
        expected().stream().map(r -> r.split(" ")[1] + " " + r.split(" ")[2]).toList();
    assertEquals(Roi.POINT, image.getRoi().getType());
    assertEquals(points, points(image.getRoi()));
    assertEquals(1, image.getOverlay().size());
    assertEquals(points, points(image.getOverlay().get(0)));
    assertEquals(0, image.getOverlay().get(0).getPosition());
    assertEquals("orva centers", image.getOverlay().get(0).getName());
    assertFalse(image.isLocked());
  }

  private static List<String> points(Roi roi) {
    return Arrays.stream(roi.getContainedPoints()).map(p -> p.x + " " + p.y).toList();
  }

  @Test
  void darkObjectsAreFoundAsByTheCommand() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    assertEquals(expectedDark(), IjCommand.run(image, OPTIONS + " dark"));
    assertNotEquals(expected(), IjCommand.rows());
  }

  @Test
  void anInvertingColorTableShowsDarkPixelsBright() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    image.getProcessor().invertLut();
    assertEquals(expectedDark(), IjCommand.run(image, OPTIONS));
    assertEquals(expected(), IjCommand.run(image, OPTIONS + " dark"));
  }

  @Test
  void missingOptionsHaveTheirDefaults() throws Exception {
    List<String> rows = expected(VoteSettings.ofRadius(20));
    assertEquals(rows, IjCommand.run(IjCommand.open(SAMPLE), ""));
    assertEquals(rows, IjCommand.run(IjCommand.open(SAMPLE), "sigma=0 relative_threshold=.3"));
  }

  @Test
  void missingFormerKeysHaveTheirFormerDefaults() throws Exception {
    List<String> rows = IjCommand.expected(1, IjCommand.sample(SAMPLE), 20, 200, 3);
    assertFalse(rows.isEmpty());
    assertEquals(rows, IjCommand.run(IjCommand.open(SAMPLE), "threshold=200"));
    assertEquals(rows, IjCommand.run(IjCommand.open(SAMPLE), "scale=3"));
  }

  @Test
  void formerKeysSeeColorsAndRangesAsBefore() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    assertEquals(formerly("dark"), IjCommand.run(image, FORMER + " dark"));
    image.getProcessor().invertLut();
    assertEquals(formerly("dark"), IjCommand.run(image, FORMER));
    assertEquals(formerly(), IjCommand.run(image, FORMER + " dark"));
    ShortProcessor wide = IjCommand.open(SAMPLE).getProcessor().convertToShortProcessor(false);
    wide.multiply(100);
    wide.setMinAndMax(0, 25500);
    assertEquals(formerly(), IjCommand.run(new ImagePlus("16", wide), FORMER));
    FloatProcessor real = IjCommand.open(SAMPLE).getProcessor().convertToFloatProcessor();
    real.setMinAndMax(0, 255);
    assertEquals(formerly(), IjCommand.run(new ImagePlus("32", real), FORMER));
    ColorProcessor rgb = IjCommand.open(SAMPLE).getProcessor().convertToColorProcessor();
    assertEquals(formerly(), IjCommand.run(new ImagePlus("RGB", rgb), FORMER));
    assertEquals(formerly(), IjCommand.run(new ImagePlus("map", colorMap()), FORMER));
  }

  @Test
  void optionsMayNameVariablesOfTheMacro() throws Exception {
    IJ.runMacro("open('" + IjCommand.sample(SAMPLE) + "'); r = 20; t = 0.2;"
        + "run('Circular Voting...', 'max_radius=&r relative_threshold=t sigma=2');");
    assertEquals(expected(), IjCommand.rows());
  }

  @Test
  void anImageOf16BitsCountsByItsValues() throws Exception {
    ShortProcessor ip = IjCommand.open(SAMPLE).getProcessor().convertToShortProcessor(false);
    ip.multiply(128); // a power of two, which changes no result
    ip.setMinAndMax(3000, 4000);
    assertEquals(expected(), IjCommand.run(new ImagePlus("16", ip), OPTIONS));
    assertEquals(3000, ip.getMin());
    assertEquals(4000, ip.getMax());
  }

  @Test
  void anImageOf32BitsCountsByItsValues() throws Exception {
    FloatProcessor ip = IjCommand.open(SAMPLE).getProcessor().convertToFloatProcessor();
    ip.multiply(1.0 / 256);
    ip.setMinAndMax(0.5, 0.75);
    assertEquals(expected(), IjCommand.run(new ImagePlus("32", ip), OPTIONS));
  }

  @Test
  void pixelsWithoutAValueDoNoHarm() {
    FloatProcessor ip = IjCommand.open(SAMPLE).getProcessor().convertToFloatProcessor();
    ip.setf(30, 40, Float.NaN);
    ImagePlus image = new ImagePlus("NaN", ip);
    assertEquals("", IjCommand.printed(() -> IJ.run(image, IjCommand.NAME, OPTIONS)));
    assertFalse(image.isLocked());
  }

  @Test
  void aColorImageCountsByItsGrayValues() throws Exception {
    ColorProcessor ip = IjCommand.open(SAMPLE).getProcessor().convertToColorProcessor();
    assertEquals(expected(), IjCommand.run(new ImagePlus("RGB", ip), OPTIONS));
  }

  @Test
  void aTintDoesNotChangeTheValues() throws Exception {
    for (Color tint : List.of(Color.GREEN, Color.RED, Color.WHITE)) {
      ImagePlus image = IjCommand.open(SAMPLE);
      image.setLut(LUT.createLutFromColor(tint));
      assertEquals(expected(), IjCommand.run(image, OPTIONS), tint::toString);
      image.getProcessor().invertLut();
      assertEquals(expectedDark(), IjCommand.run(image, OPTIONS), tint::toString);
    }
  }

  @Test
  void aThresholdOnTheScreenDoesNotChangeTheValues() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    image.getProcessor().setThreshold(20, 90, ImageProcessor.RED_LUT);
    assertEquals(expected(), IjCommand.run(image, OPTIONS));
    assertEquals(20, image.getProcessor().getMinThreshold());
  }

  @Test
  void aColorMapCountsByItsColors() throws Exception {
    ImagePlus image = new ImagePlus("map", colorMap());
    assertEquals(expected(), IjCommand.run(image, OPTIONS));
    assertEquals(expectedDark(), IjCommand.run(image, OPTIONS + " dark"));
  }

  /** The names of the grays are shuffled; the colors of the picture are those of the sample. */
  private static ByteProcessor colorMap() {
    ByteProcessor ip = (ByteProcessor) IjCommand.open(SAMPLE).getProcessor();
    byte[] grays = new byte[256];
    for (int gray = 0; gray < 256; gray++) grays[gray * 37 & 0xFF] = (byte) gray;
    byte[] pixels = (byte[]) ip.getPixels();
    for (int i = 0; i < pixels.length; i++) pixels[i] = (byte) (pixels[i] * 37);
    byte[] tinted = grays.clone();
    tinted[0] = 1; // so that it is a table of colors
    ip.setLut(new LUT(grays, grays, tinted));
    assertTrue(ip.isColorLut());
    return ip;
  }

  @Test
  void anAreaSelectionLimitsTheCenters() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    for (Roi area : List.of(new Roi(30, 20, 150, 120), new OvalRoi(30, 20, 150, 120))) {
      List<String> inside = expected().stream().filter(r -> contains(area, r)).toList();
      assertFalse(inside.isEmpty());
      assertTrue(inside.size() < expected().size());
      image.setRoi(area);
      assertEquals(inside, IjCommand.run(image, OPTIONS));
    }
    // The centers themselves are selected now, and limit nothing.
    assertEquals(expected(), IjCommand.run(image, OPTIONS));
  }

  private static boolean contains(Roi area, String row) {
    String[] values = row.split(" ");
    return area.contains(Integer.parseInt(values[1]), Integer.parseInt(values[2]));
  }

  @Test
  void withoutCentersThereIsNoSelectionAndAnEmptyTable() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    IjCommand.run(image, OPTIONS);
    assertNotNull(image.getRoi());
    assertEquals(List.of(), IjCommand.run(blank(image), OPTIONS));
    assertNull(image.getRoi());
    assertNull(image.getOverlay());
  }

  private static ImagePlus blank(ImagePlus image) {
    image.getProcessor().set(7);
    return image;
  }

  @Test
  void otherElementsOfTheOverlayStay() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    Roi mine = new Roi(3, 4, 5, 6);
    image.setOverlay(new Overlay(mine));
    IjCommand.run(image, OPTIONS);
    assertEquals(expected(), IjCommand.run(image, OPTIONS));
    assertEquals(2, image.getOverlay().size());
    assertTrue(image.getOverlay().contains(mine));
    IjCommand.run(blank(image), OPTIONS);
    assertEquals(List.of(mine), List.of(image.getOverlay().toArray()));
  }

  @ParameterizedTest
  @CsvSource({"max_radius=0, 'The maximum radius must be 1 to 1000, not 0'",
      "max_radius=1001, 'The maximum radius must be 1 to 1000, not 1001'",
      "max_radius=2.5, 'max_radius must be a whole number, not 2.5'",
      "relative_threshold=abc, 'relative_threshold must be a number, not abc'",
      "relative_threshold=2, 'The relative threshold must be 0.05 to 1, not 2'",
      "sigma=0.05, 'The sigma must be 0.1 to 1000, not 0.05'",
      "threshold=abc, 'threshold must be a number, not abc'",
      "threshold=80 sigma=2, 'threshold and scale cannot be combined with relative_threshold and sigma'",
      "relative_threshold=0.2 scale=2, 'threshold and scale cannot be combined with relative_threshold and sigma'",
      "threshold=-1, 'The threshold must be at least 0, not -1'",
      "scale=0, 'The scale must be 1 to 1000, not 0'"})
  void
  aWrongOptionIsNamedAndChangesNothing(String option, String message) throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    IjCommand.run(image, OPTIONS);
    Roi selection = image.getRoi();
    Overlay overlay = image.getOverlay();
    assertEquals("Circular Voting: " + message + System.lineSeparator(),
        IjCommand.printed(() -> IJ.run(image, IjCommand.NAME, option)));
    assertEquals(expected(), IjCommand.rows());
    assertEquals(selection, image.getRoi());
    assertEquals(overlay, image.getOverlay());
    assertFalse(image.isLocked());
    assertEquals(expected(), IjCommand.run(image, OPTIONS));
  }

  @Test
  void aWrongOptionEndsTheMacro() {
    String out =
        IjCommand.printed(()
                              -> IJ.runMacro("open('" + IjCommand.sample(SAMPLE) + "');"
                                  + "print('before'); run('Circular Voting...', 'scale=no');"
                                  + "print('after');"));
    assertEquals(List.of("before", "Circular Voting: scale must be a number, not no"),
        out.lines().limit(2).toList());
    assertFalse(out.contains("after"), out);
    assertEquals("next", IJ.runMacro("return 'next';"));
  }

  @Test
  void anImageWithTooLongASideIsRefused() {
    ImagePlus image = new ImagePlus("long", new ByteProcessor(32767, 2));
    String out = IjCommand.printed(() -> IJ.run(image, IjCommand.NAME, OPTIONS));
    assertEquals("Circular Voting: The image is too large to vote on: a side and twice the margin"
            + " exceed 32767 pixels" + System.lineSeparator(),
        out);
    out = IjCommand.printed(() -> IJ.run(image, IjCommand.NAME, FORMER));
    assertTrue(out.startsWith("Circular Voting: An image of 32767 x 2 pixels is too large: "), out);
    assertEquals(1, out.lines().count(), out);
    assertNull(image.getRoi());
    assertFalse(image.isLocked());
  }

  @Test
  void theImageAndItsUndoStay() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    ImageProcessor ip = image.getProcessor();
    byte[] pixels = ((byte[]) ip.getPixels()).clone();
    ip.snapshot();
    Undo.setup(Undo.FILTER, image);
    ip.invert();
    assertEquals(IjCommand.run(new ImagePlus("copy", ip.duplicate()), OPTIONS + " dark"),
        IjCommand.run(image, OPTIONS + " dark"));
    assertFalse(IjCommand.rows().isEmpty());
    assertFalse(image.changes);
    WindowManager.setTempCurrentImage(image);
    Undo.undo();
    WindowManager.setTempCurrentImage(null);
    assertTrue(Arrays.equals(pixels, (byte[]) image.getProcessor().getPixels()));
  }
}
