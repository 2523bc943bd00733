package orva.imagej;

import ij.IJ;
import java.util.HashMap;
import java.util.Map;

/** ImageJ's progress bar while slices are searched, several at the same time. */
final class SliceProgress {
  private static final long INTERVAL = 50_000_000; // nanoseconds between two changes of the bar

  private final Map<Integer, Double> shares = new HashMap<>();
  private int slices = 1;
  private long shown;

  synchronized void begin(int count) {
    slices = Math.max(1, count);
    shares.clear();
  }

  /** The share of the search of a slice that is done; what it goes back is not shown. */
  synchronized void show(int slice, double share) {
    shares.merge(slice, share, Math::max);
    long now = System.nanoTime();
    if (now - shown < INTERVAL)
      return;
    shown = now;
    double all = shares.values().stream().mapToDouble(Double::doubleValue).sum() / slices;
    IJ.showProgress(Math.min(all, 0.99)); // at 1 ImageJ hides the bar
  }

  synchronized void end() {
    IJ.showProgress(1.0);
  }
}
