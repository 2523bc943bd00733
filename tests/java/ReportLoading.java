import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.CountDownLatch;
import java.util.stream.Stream;
import orva.CircularVoting;
import orva.VoteSettings;

/**
 * Loads the library twice, by as many threads as the argument says, and prints what came of it:
 * what both native entries found or why nothing could be loaded, the libraries in the process's
 * memory, and the number of files in its folder for temporary files.
 */
final class ReportLoading {
  private ReportLoading() {}

  public static void main(String[] arguments) throws Exception {
    int threads = Integer.parseInt(arguments[0]);
    CountDownLatch start = new CountDownLatch(threads);
    Thread[] running = new Thread[threads];
    for (int i = 0; i < threads; ++i) {
      running[i] = new Thread(() -> {
        start.countDown();
        try {
          start.await();
        } catch (InterruptedException e) {
          throw new IllegalStateException(e);
        }
        attempt();
        attempt();
      });
      running[i].start();
    }
    for (Thread thread : running) thread.join();
    loaded().forEach(file -> System.out.println("mapped: " + file));
    Path temporary = Path.of(System.getProperty("java.io.tmpdir"));
    if (Files.exists(temporary)) {
      try (Stream<Path> files = Files.list(temporary)) {
        System.out.println("temporary files: " + files.count());
      }
    }
  }

  private static void attempt() {
    try {
      Pgm image = Pgm.black(40, 30).with(22, 14, 6);
      int[] found = new JNICircularVoting().compute(image.pixels(), 30, 40, 0, 8, 0, 0, 100, 1);
      int centers = CircularVoting.find(image.grays(), 30, 40, VoteSettings.ofRadius(8)).size();
      System.out.println(
          "found: " + Arrays.toString(Arrays.copyOf(found, 2)) + ", " + centers + " center");
    } catch (Throwable e) {
      System.out.println("failed: " + e);
    }
  }

  /** The files named after the library that are mapped into this process, each once. */
  static Stream<String> loaded() throws IOException {
    return Files.readAllLines(Path.of("/proc/self/maps"))
        .stream()
        .filter(line -> line.contains("/liborva"))
        .map(line -> line.substring(line.indexOf('/')))
        .distinct();
  }
}
