import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * Thousands of calls in one Java machine. Prints the calls after the warm-up, how many of them
 * found something else than the first with the same image did, the bytes of two images of every
 * call, and by how many bytes the heap and the resident memory grew.
 */
final class SoakCalls {
  private static final int IMAGES = 20;
  private static final int WARM_UP = 50;
  private static final int PASSES = 100;

  private SoakCalls() {}

  public static void main(String[] arguments) throws IOException {
    List<Pgm> images = new ArrayList<>();
    for (int i = 0; i < IMAGES; ++i) {
      int width = 40 + 2 * i;
      int height = 75 - i;
      images.add(
          Pgm.black(width, height).with(width / 3, height / 2, 4 + i % 4).with(width - 9, 9, 5));
    }
    int[][] expected = new int[IMAGES][];
    for (int pass = 0; pass < WARM_UP; ++pass) {
      for (int i = 0; i < IMAGES; ++i) expected[i] = compute(images.get(i), i);
    }
    long found = Arrays.stream(expected).filter(triples -> triples[2] > 0).count();
    int different = 0;
    long kept = 0;
    long heap = heap();
    long resident = resident();
    for (int pass = 0; pass < PASSES; ++pass) {
      for (int i = 0; i < IMAGES; ++i) {
        Pgm image = images.get(i);
        if (!Arrays.equals(expected[i], compute(image, i)))
          ++different;
        kept += 2L * image.width() * image.height();
      }
    }
    heap = heap() - heap;
    resident = resident() - resident;
    System.out.printf(
        "%d %d %d %d %d %d%n", PASSES * IMAGES, found, different, kept, heap, resident);
  }

  private static int[] compute(Pgm image, int i) {
    return new JNICircularVoting().compute(
        image.pixels(), image.height(), image.width(), 0, 5 + i % 5, 0, 0, 50, 1 + i % 2);
  }

  private static long heap() {
    System.gc();
    return Runtime.getRuntime().totalMemory() - Runtime.getRuntime().freeMemory();
  }

  private static long resident() throws IOException {
    String pages = Files.readString(Path.of("/proc/self/statm")).split(" ")[1];
    return Long.parseLong(pages) * 4096;
  }
}
