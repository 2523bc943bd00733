import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.io.IOException;
import java.util.List;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;
import orva.CircularVoting;
import orva.NativeVoting;
import orva.VoteCenter;
import orva.VoteSettings;
import orva.VoteSettings.Polarity;

/** The search by VoteSettings. */
class VoteSearchTest {
  private static final VoteSettings SMALL = VoteSettings.ofRadius(8);

  private static List<VoteCenter> find(Pgm image, VoteSettings settings) {
    return CircularVoting.find(image.grays(), image.height(), image.width(), settings);
  }

  static List<VoteSettings> settings() {
    VoteSettings usual = VoteSettings.ofRadius(12);
    return List.of(usual, usual.withPolarity(Polarity.DARK), usual.withPolarity(Polarity.BOTH),
        usual.withMinRadius(5), usual.withConeWidth(2), usual.withSigma(3.25f),
        usual.withGradient(4.5f), usual.withRelativeGradient(0.2f), usual.withThreshold(40),
        usual.withRelativeThreshold(0.6f), usual.withEdges(true), usual.withPower(1.5f));
  }

  @ParameterizedTest
  @MethodSource("settings")
  void findsWhatTheCommandFinds(VoteSettings settings) throws Exception {
    for (Sample sample : Sample.all()) {
      List<VoteCenter> expected = Expected.centers(sample.file(), settings);
      assertFalse(expected.isEmpty(), sample::toString);
      assertEquals(expected, find(Pgm.read(sample.file()), settings), sample::toString);
    }
  }

  /** These factors are powers of two, which no operation rounds. */
  @ParameterizedTest
  @ValueSource(floats = {0.0078125f, 64})
  void fractionsAndLargeValuesCountAsTheyAre(float factor) throws IOException {
    Pgm image = Pgm.read(Sample.all().get(0).file());
    float[] scaled = image.grays();
    for (int i = 0; i < scaled.length; ++i) scaled[i] *= factor;
    assertEquals(find(image, VoteSettings.ofRadius(20)),
        CircularVoting.find(scaled, image.height(), image.width(), VoteSettings.ofRadius(20)));
  }

  @Test
  void xIsTheColumnAndYTheRow() {
    List<VoteCenter> centers = find(Pgm.black(90, 40).with(61, 14, 6), SMALL);
    assertEquals(1, centers.size(), centers::toString);
    assertEquals(61, centers.get(0).x(), 1);
    assertEquals(14, centers.get(0).y(), 1);
    assertThrows(UnsupportedOperationException.class, () -> centers.remove(0));
  }

  @Test
  void withoutObjectsOrPixelsThereAreNoCenters() {
    assertEquals(List.of(), find(Pgm.black(30, 20), SMALL));
    for (int width : new int[] {0, 7, 40000})
      assertEquals(List.of(), CircularVoting.find(new float[0], 0, width, SMALL));
  }

  @Test
  void theInputStaysAsItIs() {
    float[] pixels = Pgm.black(90, 40).with(61, 14, 6).grays();
    float[] before = pixels.clone();
    CircularVoting.find(pixels, 40, 90, SMALL);
    assertArrayEquals(before, pixels);
  }

  @Test
  void pixelsMayBeAnything() {
    float[] pixels = Pgm.black(90, 40).with(61, 14, 6).grays();
    pixels[5] = Float.NaN;
    pixels[700] = Float.POSITIVE_INFINITY;
    pixels[1500] = -Float.MAX_VALUE;
    assertNotNull(CircularVoting.find(pixels, 40, 90, SMALL));
  }

  @Test
  void aWrongCallIsRefused() {
    refused("The pixel array is null", null, 3, 4, SMALL);
    refused("The settings are null", new float[12], 3, 4, null);
    refused("The image size 4 x -3 is negative", new float[12], -3, 4, SMALL);
    refused("An image of 4 x 3 pixels needs an array of as many, not of 11", new float[11], 3, 4,
        SMALL);
    refused("An image of 65536 x 65536 pixels needs an array of as many, not of 0", new float[0],
        65536, 65536, SMALL);
    String tooLarge =
        "The image is too large to vote on: a side and twice the margin exceed 32767 pixels";
    int side = Short.MAX_VALUE - 2 * 11; // of radius 8 and cone width 4
    assertEquals(List.of(), CircularVoting.find(new float[side], 1, side, SMALL));
    refused(tooLarge, new float[side + 1], 1, side + 1, SMALL);
    refused(tooLarge, new float[side + 1], side + 1, 1, SMALL);
  }

  private static void refused(
      String message, float[] pixels, int height, int width, VoteSettings settings) {
    assertEquals(message,
        assertThrows(IllegalArgumentException.class,
            () -> CircularVoting.find(pixels, height, width, settings))
            .getMessage());
  }

  @Test
  void theNativeMethodChecksItsArguments() {
    find(Pgm.black(1, 1), SMALL); // loads the library
    refusedByNative("The pixel array is null", null, 3, 0, 8);
    refusedByNative(
        "The pixel array does not hold height times width values", new float[11], 3, 0, 8);
    refusedByNative("polarity is not 0 to 2", new float[12], 3, 3, 8);
    refusedByNative("VoteSettings: minRadius is not 1 to maxRadius", new float[12], 3, 0, 0);
  }

  private static void refusedByNative(
      String message, float[] pixels, int height, int polarity, int maxRadius) {
    assertEquals(message,
        assertThrows(IllegalArgumentException.class,
            ()
                -> NativeVoting.findCenters(pixels, height, 4, polarity, 1, maxRadius, -1,
                    Float.NaN, Float.NaN, 0.03f, Float.NaN, 0.3f, false, 0.5f))
            .getMessage());
  }

  @Test
  void fourThreadsFindWhatOneFinds() throws Exception {
    List<Pgm> images = IntStream.range(0, 30)
                           .mapToObj(i -> Pgm.black(60 + i, 70 - i).with(20 + i, 25, 6))
                           .toList();
    List<List<VoteCenter>> expected = images.stream().map(image -> find(image, SMALL)).toList();
    ExecutorService threads = Executors.newFixedThreadPool(4);
    try {
      List<Future<List<List<VoteCenter>>>> ends =
          IntStream.range(0, 4)
              .mapToObj(t
                  -> threads.submit(
                      () -> images.stream().map(image -> find(image, SMALL)).toList()))
              .toList();
      for (Future<List<List<VoteCenter>>> end : ends) assertEquals(expected, end.get());
    } finally {
      threads.shutdown();
    }
    assertEquals(30, expected.stream().filter(centers -> centers.size() == 1).count());
  }
}
