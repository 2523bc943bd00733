import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import java.util.stream.IntStream;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import orva.FindSettings;
import orva.FindSettings.Polarity;
import orva.NativeDetection;
import orva.Objects;
import orva.SegmentResult;
import orva.SegmentSettings;
import orva.SegmentedObject;

/** The regions of objects. */
class SegmentObjectsTest {
  private static final FindSettings OPEN = new FindSettings();
  private static final SegmentSettings ALL = new SegmentSettings();

  @BeforeAll
  static void goWithoutScreen() {
    System.setProperty("java.awt.headless", "true"); // ImageJ reads the label images
  }

  private static SegmentResult segment(Pgm image, FindSettings settings, SegmentSettings kept) {
    return Objects.segment(image.grays(), image.height(), image.width(), settings, kept);
  }

  static List<Object[]> settings() {
    return List.of(new Object[] {OPEN, ALL}, new Object[] {OPEN.withRadius(12), ALL},
        new Object[] {OPEN.withMinRadius(5).withMaxRadius(9.5f), ALL},
        new Object[] {OPEN.withPolarity(Polarity.DARK), ALL},
        new Object[] {OPEN.withPolarity(Polarity.BRIGHT).withMinScore(0.9f), ALL},
        new Object[] {OPEN, ALL.withMinArea(400)}, new Object[] {OPEN, ALL.withMaxArea(400)},
        new Object[] {OPEN, ALL.withExcludeBorder(true)});
  }

  @ParameterizedTest
  @MethodSource("settings")
  void segmentsWhatTheCommandSegments(FindSettings settings, SegmentSettings kept)
      throws Exception {
    int found = 0;
    boolean isOpen = settings.equals(OPEN) && kept.equals(ALL);
    boolean areChanged = false;
    for (Sample sample : Sample.all()) {
      Pgm image = Pgm.read(sample.file());
      SegmentedByCommand expected = SegmentedByCommand.in(sample.file(), settings, kept);
      SegmentedByCommand result = SegmentedByCommand.of(segment(image, settings, kept));
      assertEquals(expected.rows(), result.rows(), sample::toString);
      assertEquals(expected.labels(), result.labels(), sample::toString);
      found += expected.rows().size();
      if (!isOpen)
        areChanged |= expected.rows().size() != segment(image, OPEN, ALL).objects().size();
    }
    assertTrue(found > 20, "" + found);
    assertEquals(!isOpen, areChanged);
  }

  @Test
  void theTableMeasuresTheLabels() throws Exception {
    for (Sample sample : Sample.all()) {
      Pgm image = Pgm.read(sample.file());
      SegmentResult result = segment(image, OPEN, ALL);
      assertEquals(
          Objects.find(image.grays(), image.height(), image.width(), OPEN).used(), result.used());
      int[] areas = new int[result.objects().size() + 1];
      long[] sums = new long[areas.length];
      for (int i = 0; i < result.labels().length; i++) {
        ++areas[result.labels()[i]];
        sums[result.labels()[i]] += image.pixels()[i];
      }
      float score = 1;
      for (int k = 1; k < areas.length; k++) {
        SegmentedObject o = result.objects().get(k - 1);
        assertEquals(k, o.label());
        assertEquals(areas[k], o.area());
        assertEquals((double) sums[k] / areas[k], o.meanIntensity());
        assertTrue(o.score() <= score && o.score() >= 0.5, o::toString);
        score = o.score();
      }
      assertTrue(areas.length > 5, sample::toString);
    }
  }

  @Test
  void columnsComeAfterRows() {
    SegmentResult result = segment(Pgm.black(90, 60).with(61, 24, 8), OPEN, ALL);
    assertEquals(1, result.objects().size(), result::toString);
    SegmentedObject o = result.objects().get(0);
    assertEquals(24, o.centroidRow(), 0.1);
    assertEquals(61, o.centroidColumn(), 0.1);
    assertEquals(Math.PI * 8.5 * 8.5, o.area(), 35);
    assertTrue(o.minRow() <= 17 && o.endRow() >= 32 && o.endRow() - o.minRow() < 20, o::toString);
    assertTrue(o.minColumn() <= 54 && o.endColumn() >= 69, o::toString);
    assertEquals(200, o.maxIntensity());
    assertFalse(o.touchesBorder());
    assertEquals(1, result.labels()[24 * 90 + 61]);
    assertEquals(0, result.labels()[61]);
    assertThrows(UnsupportedOperationException.class, () -> result.objects().remove(0));
  }

  @Test
  void theValuesAreInTheOrderOfTheColumns() {
    SegmentedObject o = new SegmentedObject(
        1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20f, true);
    double[] expected = IntStream.rangeClosed(1, 21).mapToDouble(i -> i == 21 ? 1 : i).toArray();
    assertArrayEquals(expected, o.values());
    assertEquals(expected.length, SegmentedObject.COLUMNS.size());
    // By the names of the components, apart from the underscores.
    for (int i = 0; i < expected.length; i++) {
      String column = SegmentedObject.COLUMNS.get(i).replace("_", "");
      String component = SegmentedObject.class.getRecordComponents()[i].getName();
      if (!column.contains("-"))
        assertEquals(column, component.toLowerCase());
    }
  }

  @Test
  void objectsAtTheBorderAreMarkedAndCanBeLeftOut() {
    Pgm image = Pgm.black(90, 60).with(61, 24, 8).with(3, 30, 10);
    List<SegmentedObject> all = segment(image, OPEN, ALL).objects();
    assertEquals(2, all.size(), all::toString);
    assertEquals(1, all.stream().filter(SegmentedObject::touchesBorder).count());
    SegmentResult inner = segment(image, OPEN, ALL.withExcludeBorder(true));
    assertEquals(1, inner.objects().size());
    assertFalse(inner.objects().get(0).touchesBorder());
    assertEquals(1, inner.objects().get(0).label());
    assertEquals(0, inner.labels()[30 * 90]);
  }

  @Test
  void withoutObjectsOrPixelsThereIsNoLabel() {
    SegmentResult nothing = segment(Pgm.black(60, 50), OPEN, ALL);
    assertEquals(List.of(), nothing.objects());
    assertArrayEquals(new int[60 * 50], nothing.labels());
    assertEquals(0, nothing.used().confidence());
    for (int width : new int[] {0, 7, 40000}) {
      SegmentResult empty = Objects.segment(new float[0], 0, width, OPEN, ALL);
      assertEquals(List.of(), empty.objects());
      assertEquals(0, empty.labels().length);
    }
    assertArrayEquals(new int[1], segment(Pgm.black(1, 1), OPEN, ALL).labels());
  }

  @Test
  void theInputStaysAsItIs() {
    float[] pixels = Pgm.black(90, 60).with(61, 24, 8).grays();
    float[] before = pixels.clone();
    Objects.segment(pixels, 60, 90, OPEN, ALL);
    assertArrayEquals(before, pixels);
  }

  @Test
  void aUsageErrorIsRefused() {
    refused("The pixel array is null", null, 3, 4);
    refused("The image size 4 x -3 is negative", new float[12], -3, 4);
    refused("An image of 4 x 3 pixels needs an array of as many, not of 11", new float[11], 3, 4);
    refused("An image of 65536 x 65536 pixels needs an array of as many, not of 0", new float[0],
        65536, 65536);
    assertEquals(
        "The settings are null", messageOf(() -> Objects.segment(new float[12], 3, 4, null, ALL)));
    assertEquals(
        "The settings are null", messageOf(() -> Objects.segment(new float[12], 3, 4, OPEN, null)));
  }

  private static void refused(String message, float[] pixels, int height, int width) {
    assertEquals(message, messageOf(() -> Objects.segment(pixels, height, width, OPEN, ALL)));
  }

  private static String messageOf(Runnable action) {
    return assertThrows(IllegalArgumentException.class, action::run).getMessage();
  }

  @Test
  void theNativeMethodChecksItsArguments() {
    segment(Pgm.black(1, 1), OPEN, ALL); // loads the library
    float[] pixels = new float[12];
    int[] labels = new int[12];
    String wrongLength = " array does not hold height times width values";
    assertEquals("The pixel array is null", messageOf(() -> segmentNative(null, labels, 0, 0, 0)));
    assertEquals("The label array is null", messageOf(() -> segmentNative(pixels, null, 0, 0, 0)));
    assertEquals(
        "The pixel" + wrongLength, messageOf(() -> segmentNative(new float[11], labels, 0, 0, 0)));
    for (int length : new int[] {0, 11, 13})
      assertEquals("The label" + wrongLength,
          messageOf(() -> segmentNative(pixels, new int[length], 0, 0, 0)));
    assertEquals(
        "polarity is not -1 to 1", messageOf(() -> segmentNative(pixels, labels, 2, 0, 0)));
    assertEquals("SegmentSettings: minArea is not a number of at least 0",
        messageOf(() -> segmentNative(pixels, labels, 0, -1, 0)));
    assertEquals("SegmentSettings: maxArea is not a number of at least minArea",
        messageOf(() -> segmentNative(pixels, labels, 0, 2, 1)));
  }

  private static void segmentNative(
      float[] pixels, int[] labels, int polarity, float minArea, float maxArea) {
    NativeDetection.segmentObjects(pixels, 3, 4, labels, Float.NaN, Float.NaN, Float.NaN, polarity,
        0.5f, minArea, maxArea, false);
  }
}
