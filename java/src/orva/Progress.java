package orva;

import java.util.function.Supplier;

/**
 * Watches a search, and stops it on request.
 *
 * <pre>{@code
 * FindResult result = Progress.during(
 *     (step, share) -> {
 *       System.out.printf("%s %.0f %%%n", step, 100 * share);
 *       return !stopRequested;
 *     },
 *     () -> Objects.find(pixels, height, width, new FindSettings()));
 * }</pre>
 */
public final class Progress {
  /** Hears how far a search has come. */
  @FunctionalInterface
  public interface Listener {
    /**
     * Called by the thread that searches, every few milliseconds in general and at least every 0.1
     * seconds.
     *
     * @param step what is being done, in a word or two of English
     * @param share of the work that is done, 0 to 1, an estimate; it grows, but begins anew when
     *     objects that were found are measured
     * @return false to stop the search, which then throws {@code CancellationException}
     */
    boolean report(String step, double share);
  }

  private static final ThreadLocal<Listener> LISTENERS = new ThreadLocal<>();

  private Progress() {}

  /**
   * Runs a search whose progress a listener hears. It hears the methods of {@link Objects} and
   * {@link CircularVoting} that this thread calls meanwhile, except the search by {@link Settings},
   * which reports nothing and cannot be stopped. Inside another call the inner listener counts.
   *
   * @param listener what to call
   * @param search what to run
   * @param <T> what the search returns
   * @return what the search returns
   * @throws java.util.concurrent.CancellationException when the listener stopped the search, of
   *     which nothing remains
   * @throws IllegalArgumentException when the listener or the search is null
   * @throws RuntimeException what the listener throws, which also stops the search
   */
  public static <T> T during(Listener listener, Supplier<T> search) {
    Checks.require(listener != null && search != null, "The listener or the search is null");
    Listener outer = LISTENERS.get();
    LISTENERS.set(listener);
    try {
      return search.get();
    } finally {
      if (outer == null) {
        LISTENERS.remove();
      } else {
        LISTENERS.set(outer);
      }
    }
  }

  /** Called by the native code, as is {@link #report}. */
  static boolean isObserved() {
    return LISTENERS.get() != null;
  }

  static boolean report(String step, double share) {
    return LISTENERS.get().report(step, share);
  }
}
