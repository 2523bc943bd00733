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
import ij.measure.ResultsTable;
import ij.process.ColorProcessor;
import ij.process.FloatProcessor;
import ij.process.ImageProcessor;
import ij.process.ShortProcessor;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;
import orva.FindSettings;
import orva.FindSettings.Polarity;

/** Find Objects... by macros, without a screen. */
class IjFindTest {
  private static final String SAMPLE = "dsb_sparse_a";
  private static final FindSettings OPEN = new FindSettings();

  @BeforeAll
  static void register() {
    System.setProperty("java.awt.headless", "true");
    IjCommand.registerWithoutScreen();
  }

  @BeforeEach
  void clearTable() {
    ResultsTable.getResultsTable().reset(); // so that no rows of another test pass for these
  }

  private static List<String> expected(FindSettings settings) throws Exception {
    List<String> rows = IjFound.expected(1, SAMPLE, settings);
    assertFalse(rows.isEmpty());
    return rows;
  }

  @ParameterizedTest
  @ValueSource(strings = {"dsb_dense_a", "dsb_histw_a", "dsb_large_a", "dsb_sparse_a"})
  void aMacroWithoutOptionsFindsWhatTheCommandFinds(String sample) throws Exception {
    IJ.runMacro("open('" + IjCommand.sample(sample) + "'); run('Find Objects...', '');");
    List<String> expected = IjFound.expected(1, sample, OPEN);
    assertFalse(expected.isEmpty());
    assertEquals(expected, IjFound.rows());
    assertEquals(" \tslice\tx\ty\tradius\tscore",
        ResultsTable.getResultsTable().getColumnHeadings().stripTrailing());
  }

  @Test
  void everyKeyIsASettingOfTheCommand() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    List<String> open = expected(OPEN);
    for (String options :
        List.of("radius=0", "polarity=estimate", "min_score=0.5", "polarity=bright"))
      assertEquals(open, IjFound.run(image, options), options);
    List<String> large = IjFound.expected(1, SAMPLE, OPEN.withRadius(15.5f));
    assertNotEquals(open, large);
    assertEquals(large, IjFound.run(image, "radius=15.5"));
    List<String> sure = IjFound.expected(1, SAMPLE, OPEN.withMinScore(0.99f));
    assertNotEquals(open, sure);
    assertEquals(sure, IjFound.run(image, "min_score=.99"));
    List<String> minority = IjFound.expected(1, "dsb_histw_a", OPEN.withPolarity(Polarity.BRIGHT));
    assertTrue(minority.size() > 5, minority::toString);
    assertEquals(minority, IjFound.run(IjCommand.open("dsb_histw_a"), "polarity=bright"));
  }

  @Test
  void optionsMayNameVariablesOfTheMacro() throws Exception {
    IJ.runMacro("open('" + IjCommand.sample(SAMPLE) + "'); r = 15.5; s = 0.6; p = 'bright';"
        + "run('Find Objects...', 'radius=&r min_score=s polarity=&p');");
    assertEquals(expected(OPEN.withRadius(15.5f).withMinScore(0.6f).withPolarity(Polarity.BRIGHT)),
        IjFound.rows());
  }

  @Test
  void theRadiusMayBeARange() throws Exception {
    List<String> inRange = expected(OPEN.withMinRadius(5.5f).withMaxRadius(7));
    assertNotEquals(expected(OPEN), inRange);
    ImagePlus image = IjCommand.open(SAMPLE);
    assertEquals(inRange, IjFound.run(image, "radius=5.5:7"));
    assertEquals(inRange, IjFound.run(image, "radius=[5.5 : 7.0]"));
    assertEquals(expected(OPEN), IjFound.run(image, "radius=0:1000"));
    for (String radius : List.of("&a:&b", "a:b", "&range", "range")) {
      IJ.runMacro("open('" + IjCommand.sample(SAMPLE) + "'); a = 5.5; b = 7; range = '5.5:7';"
          + "run('Find Objects...', 'radius=" + radius + "');");
      assertEquals(inRange, IjFound.rows(), radius);
    }
  }

  @Test
  void theEndOfALongerKeyIsNoKey() throws Exception {
    assertEquals(expected(OPEN),
        IjFound.run(IjCommand.open(SAMPLE), "max_radius=15.5 min_min_score=0.99 a_polarity=dark"));
  }

  @Test
  void theOverlayHoldsACircleOfEachRadius() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    List<String> rows = IjFound.run(image, "");
    assertEquals(IjFound.asCircles(rows), IjFound.circles(image.getOverlay(), 1));
    assertEquals(rows.size(), image.getOverlay().size());
    assertEquals(0, image.getOverlay().get(0).getPosition());
    assertNull(image.getRoi());
    assertFalse(image.isLocked());
    assertFalse(image.changes);
  }

  @Test
  void thePolarityIsThatOnTheScreen() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    image.getProcessor().invertLut();
    assertEquals(expected(OPEN), IjFound.run(image, ""));
    assertEquals(expected(OPEN.withPolarity(Polarity.BRIGHT)), IjFound.run(image, "polarity=dark"));
  }

  @Test
  void theValuesCountAndNotTheDisplayRange() throws Exception {
    ShortProcessor wide = IjCommand.open(SAMPLE).getProcessor().convertToShortProcessor(false);
    wide.multiply(128); // a power of two, which changes no result
    wide.setMinAndMax(3000, 4000);
    assertEquals(expected(OPEN), IjFound.run(new ImagePlus("16", wide), ""));
    FloatProcessor real = IjCommand.open(SAMPLE).getProcessor().convertToFloatProcessor();
    real.multiply(1.0 / 256);
    real.setMinAndMax(0.5, 0.75);
    assertEquals(expected(OPEN), IjFound.run(new ImagePlus("32", real), ""));
    ColorProcessor rgb = IjCommand.open(SAMPLE).getProcessor().convertToColorProcessor();
    assertEquals(expected(OPEN), IjFound.run(new ImagePlus("RGB", rgb), ""));
  }

  @Test
  void anAreaSelectionLimitsTheObjectsAndStays() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    for (Roi area : List.of(new Roi(30, 20, 150, 120), new OvalRoi(30, 20, 150, 120))) {
      List<String> inside = expected(OPEN).stream().filter(row -> contains(area, row)).toList();
      assertFalse(inside.isEmpty());
      assertTrue(inside.size() < expected(OPEN).size());
      image.setRoi(area);
      assertEquals(inside, IjFound.run(image, ""));
      assertEquals(area, image.getRoi());
    }
  }

  private static boolean contains(Roi area, String row) {
    String[] values = row.split(" ");
    return area.contains((int) Math.round(Double.parseDouble(values[1])),
        (int) Math.round(Double.parseDouble(values[2])));
  }

  @Test
  void anEmptyImageHasAnEmptyTableAndNoOverlay() {
    ImagePlus image = IjCommand.open(SAMPLE);
    assertFalse(IjFound.run(image, "").isEmpty());
    image.getProcessor().set(7);
    assertEquals(List.of(), IjFound.run(image, ""));
    assertNull(image.getOverlay());
  }

  @Test
  void otherElementsOfTheOverlayStay() throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    Roi mine = new Roi(3, 4, 5, 6);
    image.setOverlay(new Overlay(mine));
    IjFound.run(image, "");
    List<String> rows = IjFound.run(image, "");
    assertEquals(rows.size() + 1, image.getOverlay().size());
    assertTrue(image.getOverlay().contains(mine));
    image.getProcessor().set(7);
    IjFound.run(image, "");
    assertEquals(List.of(mine), List.of(image.getOverlay().toArray()));
  }

  @Test
  void aStackIsSearchedSliceBySlice() throws Exception {
    ImageProcessor first = IjCommand.open(SAMPLE).getProcessor();
    ImageStack slices = new ImageStack(first.getWidth(), first.getHeight());
    slices.addSlice(first);
    slices.addSlice(first.createProcessor(first.getWidth(), first.getHeight()));
    slices.addSlice(first.duplicate());
    ImagePlus stack = new ImagePlus("stack", slices);
    List<String> all = new ArrayList<>(IjFound.expected(1, SAMPLE, OPEN));
    List<String> third = IjFound.expected(3, SAMPLE, OPEN);
    all.addAll(third);
    assertEquals(all, IjFound.run(stack, "stack"));
    assertEquals(all.size(), stack.getOverlay().size());
    assertEquals(1, stack.getOverlay().get(0).getPosition());
    assertEquals(3, stack.getOverlay().get(all.size() - 1).getPosition());
    stack.setSlice(3);
    assertEquals(third, IjFound.run(stack, ""));
    assertEquals(third.size(), stack.getOverlay().size());
    assertEquals(expected(OPEN), IjFound.run(IjCommand.open(SAMPLE), "stack"));
  }

  @ParameterizedTest
  @CsvSource({"radius=-1, 'The radius must be above 0, not -1'",
      "radius=abc, 'radius must be a number or a range A:B, not abc'",
      "radius=5:, 'radius must be a number or a range A:B, not 5:'",
      "radius=5:7:9, 'radius must be a number or a range A:B, not 5:7:9'",
      "radius=9:5, 'The maximum radius must be at least 9, not 5'",
      "polarity=both, 'polarity must be estimate, bright or dark, not both'",
      "min_score=1.5, 'The minimum score must be 0 to 1, not 1.5'",
      "min_score=no, 'min_score must be a number, not no'",
      "add, 'The ROI manager needs a display'"})
  void
  aWrongOptionIsNamedAndChangesNothing(String option, String message) throws Exception {
    ImagePlus image = IjCommand.open(SAMPLE);
    IjFound.run(image, "");
    Overlay overlay = image.getOverlay();
    assertEquals("Find Objects: " + message + System.lineSeparator(),
        IjCommand.printed(() -> IJ.run(image, IjCommand.FIND, option)));
    assertEquals(expected(OPEN), IjFound.rows());
    assertEquals(overlay, image.getOverlay());
    assertFalse(image.isLocked());
    assertEquals(expected(OPEN), IjFound.run(image, ""));
  }

  @Test
  void aWrongOptionEndsTheMacro() {
    String out =
        IjCommand.printed(()
                              -> IJ.runMacro("open('" + IjCommand.sample(SAMPLE) + "');"
                                  + "print('before'); run('Find Objects...', 'min_score=no');"
                                  + "print('after');"));
    assertEquals(List.of("before", "Find Objects: min_score must be a number, not no"),
        out.lines().limit(2).toList());
    assertFalse(out.contains("after"), out);
  }
}
