import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.util.List;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import orva.FindResult;
import orva.FindSettings;
import orva.FindSettings.Polarity;
import orva.FoundObject;
import orva.NativeDetection;
import orva.Objects;
import orva.SettingsEstimate;

/** The search for objects. */
class FindObjectsTest {
  private static final FindSettings OPEN = new FindSettings();

  private static FindResult find(Pgm image, FindSettings settings) {
    return Objects.find(image.grays(), image.height(), image.width(), settings);
  }

  static List<FindSettings> settings() {
    return List.of(OPEN, OPEN.withRadius(12), OPEN.withMinRadius(5).withMaxRadius(9.5f),
        OPEN.withPolarity(Polarity.DARK), OPEN.withPolarity(Polarity.BRIGHT),
        OPEN.withMinScore(0.9f));
  }

  @ParameterizedTest
  @MethodSource("settings")
  void findsWhatTheCommandFinds(FindSettings settings) throws Exception {
    int found = 0;
    for (Sample sample : Sample.all()) {
      FoundByCommand expected = FoundByCommand.in(sample.file(), settings);
      assertEquals(
          expected, FoundByCommand.of(find(Pgm.read(sample.file()), settings)), sample::toString);
      found += expected.objects().size();
    }
    assertTrue(found > 20, "" + found);
  }

  @Test
  void theExampleOfTheReadmeFindsWhatTheCommandFinds() throws Exception {
    for (Sample sample : Sample.all()) {
      Program.Result example =
          Program.run(List.of(System.getProperty("orva.example"), sample.file().toString()));
      assertEquals(0, example.status(), example::err);
      List<String> lines = example.out().lines().toList();
      List<List<String>> expected = FoundByCommand.in(sample.file(), OPEN).objects();
      assertEquals(expected.size(), lines.size(), sample::toString);
      for (int i = 0; i < lines.size(); i++) {
        String[] numbers = lines.get(i).split(" ");
        assertEquals(4, numbers.length);
        for (int k = 0; k < 4; k++)
          assertEquals( // the example prints six digits
              Double.parseDouble(expected.get(i).get(k)), Double.parseDouble(numbers[k]), 0.0011);
      }
    }
  }

  @Test
  void thePolarityAndTheRadiusComeFromTheImage() throws Exception {
    for (Sample sample : Sample.all()) {
      Pgm image = Pgm.read(sample.file());
      SettingsEstimate estimate = Objects.estimate(image.grays(), image.height(), image.width());
      assertEquals(
          sample.dark() ? Polarity.DARK : Polarity.BRIGHT, estimate.polarity(), sample::toString);
      assertEquals(1, estimate.radius() / sample.medianRadius(), 0.2, sample::toString);
      assertTrue(estimate.confidence() > 0.3 && estimate.confidence() <= 1, estimate::toString);
      assertTrue(estimate.runnerUp().polarity() != estimate.polarity(), estimate::toString);
      assertTrue(estimate.runnerUp().confidence() < estimate.confidence(), estimate::toString);
      assertEquals(estimate, find(image, OPEN).used());
    }
  }

  @Test
  void xIsTheColumnAndYTheRow() {
    FindResult result = find(Pgm.black(90, 60).with(61, 24, 8), OPEN);
    assertEquals(1, result.objects().size(), result::toString);
    FoundObject object = result.objects().get(0);
    assertEquals(61, object.x(), 0.1);
    assertEquals(24, object.y(), 0.1);
    assertEquals(8, object.radius(), 0.6);
    assertTrue(object.score() > 0.5 && object.score() <= 1, object::toString);
    assertEquals(1, object.coverage());
    assertThrows(UnsupportedOperationException.class, () -> result.objects().remove(0));
  }

  @Test
  void theSettingsUsedAreThoseGiven() {
    Pgm image = Pgm.black(90, 60).with(61, 24, 8);
    SettingsEstimate used = find(image, OPEN.withRadius(9).withPolarity(Polarity.DARK)).used();
    assertEquals(9, used.radius());
    assertEquals(Polarity.DARK, used.polarity());
  }

  @Test
  void withoutObjectsOrPixelsNothingIsFound() {
    FindResult nothing = find(Pgm.black(60, 50), OPEN);
    assertEquals(List.of(), nothing.objects());
    assertEquals(0, nothing.used().radius());
    assertEquals(0, nothing.used().confidence());
    for (int width : new int[] {0, 7, 40000}) {
      assertEquals(nothing, Objects.find(new float[0], 0, width, OPEN));
      assertEquals(nothing.used(), Objects.estimate(new float[0], 0, width));
    }
  }

  @Test
  void theInputStaysAsItIs() {
    float[] pixels = Pgm.black(90, 60).with(61, 24, 8).grays();
    float[] before = pixels.clone();
    Objects.find(pixels, 60, 90, OPEN);
    assertArrayEquals(before, pixels);
  }

  @Test
  void aPixelWithoutAValueCountsAsTheSmallest() {
    float[] pixels = Pgm.black(90, 60).with(61, 24, 8).grays();
    FindResult expected = Objects.find(pixels, 60, 90, OPEN);
    pixels[5] = Float.NaN;
    pixels[700] = Float.POSITIVE_INFINITY;
    pixels[1500] = Float.NEGATIVE_INFINITY;
    assertEquals(expected, Objects.find(pixels, 60, 90, OPEN));
    assertFalse(expected.objects().isEmpty());
  }

  @Test
  void aUsageErrorIsRefused() {
    refused("The pixel array is null", null, 3, 4);
    refused("The image size 4 x -3 is negative", new float[12], -3, 4);
    refused("The image size -4 x 3 is negative", new float[12], 3, -4);
    refused("An image of 4 x 3 pixels needs an array of as many, not of 11", new float[11], 3, 4);
    refused("An image of 65536 x 65536 pixels needs an array of as many, not of 0", new float[0],
        65536, 65536);
    assertEquals("The settings are null", messageOf(() -> Objects.find(new float[12], 3, 4, null)));
  }

  private static void refused(String message, float[] pixels, int height, int width) {
    assertEquals(message, messageOf(() -> Objects.find(pixels, height, width, OPEN)));
    assertEquals(message, messageOf(() -> Objects.estimate(pixels, height, width)));
  }

  private static String messageOf(Runnable action) {
    return assertThrows(IllegalArgumentException.class, action::run).getMessage();
  }

  @Test
  void theNativeMethodsCheckTheirArguments() {
    find(Pgm.black(1, 1), OPEN); // loads the library
    String wrongLength = "The pixel array does not hold height times width values";
    assertEquals("The pixel array is null", messageOf(() -> findNative(null, 0, -1)));
    assertEquals(wrongLength, messageOf(() -> findNative(new float[11], 0, -1)));
    assertEquals("polarity is not -1 to 1", messageOf(() -> findNative(new float[12], 0, 2)));
    assertEquals("FindSettings: minRadius is not a number of at least 0",
        messageOf(() -> findNative(new float[12], -1, 0)));
    assertEquals(
        "The pixel array is null", messageOf(() -> NativeDetection.estimateSettings(null, 3, 4)));
    assertEquals(
        wrongLength, messageOf(() -> NativeDetection.estimateSettings(new float[11], 3, 4)));
  }

  private static void findNative(float[] pixels, float minRadius, int polarity) {
    NativeDetection.findObjects(pixels, 3, 4, Float.NaN, minRadius, Float.NaN, polarity, 0.5f);
  }

  @Test
  void fourThreadsFindWhatOneFinds() throws Exception {
    List<Pgm> images = IntStream.range(0, 30)
                           .mapToObj(i -> Pgm.black(60 + i, 90 - i).with(20 + i, 25, 6 + i % 4))
                           .toList();
    List<FindResult> expected = images.stream().map(image -> find(image, OPEN)).toList();
    ExecutorService threads = Executors.newFixedThreadPool(4);
    try {
      List<Future<List<FindResult>>> ends =
          IntStream.range(0, 4)
              .mapToObj(t
                  -> threads.submit(() -> images.stream().map(image -> find(image, OPEN)).toList()))
              .toList();
      for (Future<List<FindResult>> end : ends) assertEquals(expected, end.get());
    } finally {
      threads.shutdown();
    }
    assertEquals(30, expected.stream().filter(result -> result.objects().size() == 1).count());
  }

  @Test
  void aCheckingJavaMachineFindsNoFault() throws IOException, InterruptedException {
    Program.Result result = Program.run(Program.java(List.of("-Xcheck:jni"), "CheckedFinds"));
    assertEquals(new Program.Result(0, "2 objects\n", ""), result);
  }
}
