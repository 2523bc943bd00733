import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;

class SoakTest {
  /** What a kept image needs besides its pixels: objects, their bookkeeping, rounding. */
  private static final long OVERHEAD = 512;
  /** What the Java machine may take for itself, with a heap that is there from the start. */
  private static final long MACHINE = 4L << 20;

  @Test
  void manyCallsKeepTwoImagesEachAndFindTheSame() throws Exception {
    // One compiler and one collector without threads of their own grow least.
    List<String> options = List.of(
        "-Xms32m", "-Xmx32m", "-XX:+AlwaysPreTouch", "-XX:+UseSerialGC", "-XX:TieredStopAtLevel=1");
    Program.Result result = Program.run(Program.java(options, "SoakCalls"));
    assertEquals("", result.err());
    assertEquals(0, result.status());
    long[] v = Stream.of(result.out().strip().split(" ")).mapToLong(Long::parseLong).toArray();
    assertEquals(6, v.length, result::out);
    long calls = v[0];
    assertEquals(2000, calls);
    assertTrue(v[1] > 15, result::out); // most images have objects
    assertEquals(0, v[2], result::out); // and always the same ones
    assertTrue(v[4] < 256 << 10, result::out);
    long max = v[3] + calls * 2 * OVERHEAD + MACHINE;
    assertTrue(v[5] <= max, () -> result.out() + " and at most " + max);
  }
}
