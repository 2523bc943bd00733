import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.function.IntUnaryOperator;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;
import orva.Center;
import orva.Settings;

class NativeCallTest {
  private static final Settings SMALL = new Settings(8, 100, 1);

  private static int[] compute(int[] pixels, int height, int width, Settings s) {
    return new JNICircularVoting().compute(
        pixels, height, width, 0, s.maxRadius(), 0, 0, s.threshold(), s.scale());
  }

  private static int[] compute(Pgm image, Settings settings) {
    return compute(image.pixels(), image.height(), image.width(), settings);
  }

  /** Has some objects of different brightness, the farther right the darker. */
  private static Pgm scene(int width, int height) {
    Pgm image = Pgm.black(width, height);
    for (int x = 15; x < width - 10; x += 25) image = image.with(x, height / 2 - x % 7, 5);
    int[] pixels = image.pixels();
    for (int i = 0; i < pixels.length; ++i) pixels[i] -= pixels[i] == 0 ? 0 : i % width;
    return image;
  }

  private static int[] changed(Pgm image, IntUnaryOperator change) {
    return IntStream.of(image.pixels()).map(change).toArray();
  }

  static List<Sample> samples() throws IOException {
    return Sample.all();
  }

  @ParameterizedTest
  @MethodSource("samples")
  void returnsRowColumnAndWeightOfEachCenter(Sample sample) throws Exception {
    Settings settings = new Settings((int) Math.round(1.4 * sample.medianRadius()));
    List<Center> expected = Expected.centers(sample.file(), settings, sample.dark());
    assertTrue(expected.size() > 5, expected::toString);
    assertArrayEquals(Expected.triples(expected), compute(sample.bright(), settings));
  }

  /** The half-widths of the first cones of these radii are 0, 2, 3 and 5. */
  @ParameterizedTest
  @ValueSource(ints = {1, 6, 10, 20})
  void theConeIsAQuarterOfTheRadiusWide(int radius) throws Exception {
    Settings settings = new Settings(radius, 5, 1);
    for (Sample sample : samples()) {
      List<Center> expected = Expected.centers(sample.file(), settings, sample.dark());
      assertFalse(expected.isEmpty());
      assertArrayEquals(Expected.triples(expected), compute(sample.bright(), settings));
    }
  }

  @Test
  void ofEachPixelTheLowestByteCounts() {
    Pgm image = scene(200, 40);
    int[] expected = compute(image, SMALL);
    assertTrue(expected.length > 3 * 3);
    List<IntUnaryOperator> changes = List.of(p
        -> p | 0x100,
        p -> p | 0xAB_CD_EF_00, p -> p - 256, p -> p | Integer.MIN_VALUE, p -> p + 512);
    for (IntUnaryOperator change : changes)
      assertArrayEquals(expected, compute(changed(image, change), 40, 200, SMALL));
    // A packed colour is as bright as its blue.
    int[] colour = changed(image, p -> 0xFF_00_00_00 | (255 - p) << 16 | p / 2 << 8 | p);
    assertArrayEquals(expected, compute(colour, 40, 200, SMALL));
  }

  @ParameterizedTest
  @CsvSource({"256, 0", "0x1FF, 255", "-1, 255", "-256, 0", "-255, 1", "0x7FFFFF80, 128",
      "0x80000000, 0", "0xFF204060, 0x60"})
  void
  theseValuesAreEqual(String written, String counted) {
    for (int background : new int[] {0, 1, 170}) {
      assertArrayEquals(objectsOf(counted, background), objectsOf(written, background));
    }
  }

  private static int[] objectsOf(String value, int background) {
    int inside = Long.decode(value).intValue();
    Pgm image = Pgm.black(60, 40).with(30, 15, 6).with(44, 26, 5);
    int[] pixels = changed(image, p -> p == 0 ? background : inside);
    return compute(pixels, 40, 60, new Settings(8, 0, 1));
  }

  @Test
  void withoutObjectsThereIsOneTripleOfAThirdOfTheImage() {
    for (int value : new int[] {0, 100, 256}) {
      int[] pixels = new int[31 * 47];
      Arrays.fill(pixels, value);
      assertArrayEquals(new int[] {15, 10, 0}, compute(pixels, 47, 31, SMALL));
      assertArrayEquals(new int[] {10, 15, 0}, compute(pixels, 31, 47, SMALL));
    }
    assertArrayEquals(new int[] {0, 0, 0}, compute(new int[] {255}, 1, 1, SMALL));
    // An object whose votes stay below the threshold is none.
    Pgm image = Pgm.black(60, 45).with(40, 15, 6);
    assertArrayEquals(new int[] {15, 20, 0}, compute(image, new Settings(8, 1 << 20, 1)));
  }

  @Test
  void withoutPixelsThereIsOneTripleToo() {
    assertArrayEquals(new int[] {0, 3, 0}, compute(new int[0], 0, 10, SMALL));
    assertArrayEquals(new int[] {4, 0, 0}, compute(new int[0], 14, 0, SMALL));
    assertArrayEquals(new int[] {0, 0, 0}, compute(new int[0], 0, 0, SMALL));
  }

  @Test
  void threeArgumentsHaveNoInfluence() {
    Pgm image = scene(200, 40);
    int[] expected = compute(image, SMALL);
    assertTrue(expected.length > 3 * 3);
    for (int unused : new int[] {Integer.MIN_VALUE, -1, 1, 77, Integer.MAX_VALUE}) {
      for (int position = 0; position < 3; ++position) {
        int[] v = new int[3];
        v[position] = unused;
        assertArrayEquals(expected,
            new JNICircularVoting().compute(image.pixels(), 40, 200, v[0], 8, v[1], v[2], 100, 1));
      }
    }
  }

  @Test
  void pixelsBehindTheImageDoNotCount() {
    Pgm image = scene(200, 40);
    int[] longer = Arrays.copyOf(image.pixels(), 200 * 60);
    Arrays.fill(longer, 200 * 40, longer.length, 255);
    assertArrayEquals(compute(image, SMALL), compute(longer, 40, 200, SMALL));
  }

  @Test
  void aSecondCallFindsTheSame() throws Exception {
    Sample sample = samples().get(0);
    Settings settings = new Settings(10);
    JNICircularVoting voting = new JNICircularVoting();
    int[] pixels = sample.bright().pixels();
    int[] first = voting.compute(pixels, 256, 256, 0, 10, 0, 0, 200, 1);
    assertTrue(first.length > 3 * 3);
    // Another image between the two leaves nothing behind.
    voting.compute(scene(300, 30).pixels(), 30, 300, 0, 6, 0, 0, 50, 2);
    assertArrayEquals(first, voting.compute(pixels, 256, 256, 0, 10, 0, 0, 200, 1));
    assertArrayEquals(first, compute(pixels, 256, 256, settings));
  }

  @Test
  void fourThreadsFindWhatOneFinds() throws Exception {
    List<Pgm> images = new ArrayList<>();
    List<int[]> expected = new ArrayList<>();
    for (int i = 0; i < 50; ++i) {
      images.add(scene(60 + 7 * i, 30 + i % 11));
      expected.add(compute(images.get(i), settingsOf(i)));
      assertTrue(expected.get(i)[2] > 0);
    }
    CountDownLatch start = new CountDownLatch(4);
    ExecutorService threads = Executors.newFixedThreadPool(4);
    try {
      List<Future<?>> ends = new ArrayList<>();
      for (int thread = 0; thread < 4; ++thread) {
        int first = 13 * thread;
        ends.add(threads.submit(() -> {
          start.countDown();
          start.await();
          for (int k = 0; k < 50; ++k) {
            int i = (first + k) % 50;
            assertArrayEquals(expected.get(i), compute(images.get(i), settingsOf(i)));
          }
          return null;
        }));
      }
      for (Future<?> end : ends) end.get();
    } finally {
      threads.shutdown();
    }
  }

  private static Settings settingsOf(int i) {
    return new Settings(6 + i % 5, 50 + i, 1 + i % 2);
  }

  @Test
  void aCheckingJavaMachineFindsNoFault() throws Exception {
    Program.Result result = Program.run(Program.java(List.of("-Xcheck:jni"), "CheckedCalls"));
    assertEquals(new Program.Result(0, "2 centers\n", ""), result);
  }
}
