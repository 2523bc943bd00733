import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.util.List;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;
import orva.Center;
import orva.CircularVoting;
import orva.Settings;

class CircularVotingTest {
  private static List<Center> find(Pgm image, Settings settings) {
    return CircularVoting.find(image.pixels(), image.height(), image.width(), settings);
  }

  static List<Sample> samples() throws IOException {
    return Sample.all();
  }

  @ParameterizedTest
  @MethodSource("samples")
  void findsWhatTheCppInterfaceFinds(Sample sample) throws Exception {
    int radius = (int) Math.round(1.4 * sample.medianRadius());
    for (Settings settings : List.of(new Settings(radius), new Settings(radius, 100, 1),
             new Settings(7, 50, 2), new Settings(20, 300, 4))) {
      List<Center> expected = Expected.centers(sample.file(), settings, sample.dark());
      assertFalse(expected.isEmpty(), settings::toString);
      assertEquals(expected, find(sample.bright(), settings), settings::toString);
    }
  }

  @Test
  void xIsTheColumnAndYTheRow() {
    List<Center> centers = find(Pgm.black(90, 40).with(61, 14, 6), new Settings(8, 100, 1));
    assertEquals(1, centers.size(), centers::toString);
    assertEquals(61, centers.get(0).x());
    assertEquals(14, centers.get(0).y());
    assertTrue(centers.get(0).weight() > 100, centers::toString);
  }

  @Test
  void anImageWithoutObjectsHasNoCenters() {
    assertEquals(List.of(), find(Pgm.black(30, 20), new Settings(5)));
    assertEquals(List.of(), find(Pgm.black(31, 47), new Settings(5)));
    assertEquals(List.of(), find(Pgm.black(1, 1), new Settings(5)));
  }

  @Test
  void anObjectAtAThirdOfTheImageIsFound() {
    List<Center> centers = find(Pgm.black(60, 45).with(20, 15, 6), new Settings(8, 100, 1));
    assertEquals(1, centers.size(), centers::toString);
    assertEquals(20, centers.get(0).x());
    assertEquals(15, centers.get(0).y());
  }

  @Test
  void anImageWithoutPixelsHasNoCenters() {
    Settings settings = new Settings(5);
    assertEquals(List.of(), CircularVoting.find(new int[0], 0, 7, settings));
    assertEquals(List.of(), CircularVoting.find(new int[0], 7, 0, settings));
    assertEquals(List.of(), CircularVoting.find(new int[0], 0, 0, settings));
    assertEquals(List.of(), CircularVoting.find(new int[0], 0, 40000, settings));
  }

  @Test
  void theListCanNotBeChanged() {
    Settings settings = new Settings(8, 100, 1);
    List<Center> one = find(Pgm.black(90, 40).with(61, 14, 6), settings);
    assertThrows(UnsupportedOperationException.class, () -> one.remove(0));
    List<Center> none = find(Pgm.black(90, 40), settings);
    assertThrows(UnsupportedOperationException.class, () -> none.add(new Center(0, 0, 0)));
  }

  @Test
  void theInputStaysAsItIs() {
    Pgm image = Pgm.black(90, 40).with(61, 14, 6);
    int[] pixels = image.pixels().clone();
    for (int i = 0; i < pixels.length; ++i) pixels[i] |= i << 8;
    int[] before = pixels.clone();
    assertEquals(find(image, new Settings(8, 100, 1)),
        CircularVoting.find(pixels, 40, 90, new Settings(8, 100, 1)));
    assertArrayEquals(before, pixels);
  }

  /** These sides and the margins of the votes just fit 16 bits; UsageErrors has the next size. */
  @ParameterizedTest
  @ValueSource(ints = {1, 6, 10, 20, 30, 33})
  void theLargestImageIsSearchedToItsEnd(int radius) throws Exception {
    int cone = (radius + 2) / 4;
    int margin = (int) (Math.sqrt(radius * radius + cone * cone) + 3);
    int side = Short.MAX_VALUE - 2 * margin;
    Settings settings = new Settings(radius, 20, 1);
    Pgm wide = Pgm.black(side, 2 * radius + 3).with(side - radius - 2, radius + 1, radius);
    List<Center> expected = Expected.centers(wide, settings);
    assertFalse(expected.isEmpty());
    assertTrue(expected.get(0).x() > side - 3 * radius - 3, expected::toString);
    assertEquals(expected, find(wide, settings));
    Pgm high = Pgm.black(2 * radius + 3, side).with(radius + 1, side - radius - 2, radius);
    List<Center> expectedInHigh = Expected.centers(high, settings);
    assertFalse(expectedInHigh.isEmpty());
    assertEquals(expectedInHigh, find(high, settings));
  }

  @Test
  void aSingleRowOfTheLargestWidthIsSearched() throws Exception {
    Settings settings = new Settings(1, 20, 1);
    Pgm row = Pgm.black(32759, 1).with(32756, 0, 1);
    List<Center> expected = Expected.centers(row, settings);
    assertFalse(expected.isEmpty());
    assertEquals(expected, find(row, settings));
  }

  static List<UsageErrors.Call> usageErrors() {
    return UsageErrors.all();
  }

  @ParameterizedTest
  @MethodSource("usageErrors")
  void aUsageErrorIsRefused(UsageErrors.Call call) {
    Exception e = assertThrows(IllegalArgumentException.class, call.action()::run);
    assertEquals(call.refusal(), e.getMessage());
  }

  @Test
  void aWrongCallNeedsNoLibrary() throws Exception {
    Program.Result result =
        Program.run(Program.java(List.of("-Djava.io.tmpdir=/not/there"), "UsageErrors"));
    String refusals =
        usageErrors().stream().map(c -> c.refusal() + "\n").collect(Collectors.joining());
    assertEquals(new Program.Result(0, refusals + "no library\n", ""), result);
  }
}
