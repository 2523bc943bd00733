import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.process.ByteProcessor;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.CancellationException;
import java.util.function.Supplier;
import org.junit.jupiter.api.Test;
import orva.CircularVoting;
import orva.FindSettings;
import orva.Objects;
import orva.Progress;
import orva.SegmentSettings;
import orva.VoteSettings;

/** Listeners of searches: what they hear, and how they stop one. */
class ProgressTest {
  private static final int SIZE = 700;
  private static final float[] PIXELS = pixels();

  private record Report(String step, double share) {}

  private static float[] pixels() {
    ByteProcessor ip = new ByteProcessor(SIZE, SIZE);
    ip.setValue(180);
    for (int i = 0; i < 81; i++) ip.fillOval(20 + i % 9 * 75, 20 + i / 9 * 75, 37, 37);
    return (float[]) ip.convertToFloatProcessor().getPixels();
  }

  private static Object vote() {
    return CircularVoting.find(PIXELS, SIZE, SIZE, VoteSettings.ofRadius(18));
  }

  private static Object find() {
    return Objects.find(PIXELS, SIZE, SIZE, new FindSettings()).objects();
  }

  private static Object segment() {
    return Objects.segment(PIXELS, SIZE, SIZE, new FindSettings(), new SegmentSettings()).objects();
  }

  private static final List<Supplier<Object>> SEARCHES =
      List.of(ProgressTest::vote, ProgressTest::find, ProgressTest::segment);

  @Test
  void theListenerHearsSharesThatGrowAndTheResultsStay() {
    for (Supplier<Object> search : SEARCHES) {
      List<Report> reports = new ArrayList<>();
      Object found = Progress.during((step, share) -> reports.add(new Report(step, share)), search);
      assertEquals(search.get(), found);
      assertTrue(reports.size() > 10, reports.size() + " reports");
      for (int i = 0; i < reports.size(); i++) {
        Report r = reports.get(i);
        assertTrue(r.share() >= 0 && r.share() <= 1, r.toString());
        assertTrue(r.step().matches("[a-z ]+"), r.toString());
        assertTrue(i == 0 || r.share() >= reports.get(i - 1).share()
                || !r.step().equals(reports.get(i - 1).step()),
            reports.subList(Math.max(0, i - 1), i + 1).toString());
      }
    }
  }

  @Test
  void aListenerStopsTheSearchAndTheNextOneIsRight() {
    for (Supplier<Object> search : SEARCHES) {
      Object expected = search.get();
      for (int last : new int[] {1, 2, 7, 30}) {
        List<Double> shares = new ArrayList<>();
        assertThrows(CancellationException.class,
            ()
                -> Progress.during(
                    (step, share) -> shares.add(share) && shares.size() < last, search));
        assertEquals(last, shares.size());
        assertEquals(expected, search.get());
      }
    }
  }

  @Test
  void whatAListenerThrowsComesThrough() {
    IllegalStateException thrown = new IllegalStateException("full");
    for (Supplier<Object> search : SEARCHES) {
      assertSame(thrown,
          assertThrows(IllegalStateException.class,
              () -> Progress.during((step, share) -> { throw thrown; }, search)));
    }
  }

  @Test
  void theInnerListenerCountsAndTheOuterOneComesBack() {
    List<String> heard = new ArrayList<>();
    Progress.during((step, share) -> heard.add("outer"), () -> {
      Progress.during((step, share) -> heard.add("inner"), ProgressTest::find);
      assertEquals(List.of("inner"), heard.stream().distinct().toList());
      heard.clear();
      return find();
    });
    assertEquals(List.of("outer"), heard.stream().distinct().toList());
    heard.clear();
    find();
    assertEquals(List.of(), heard);
  }

  @Test
  void nullIsRefusedAndResultsMayBeNull() {
    assertThrows(IllegalArgumentException.class, () -> Progress.during(null, ProgressTest::find));
    assertThrows(
        IllegalArgumentException.class, () -> Progress.during((step, share) -> true, null));
    assertNull(Progress.during((step, share) -> true, () -> null));
  }
}
