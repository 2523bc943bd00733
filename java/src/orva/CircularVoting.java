package orva;

import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;

/**
 * Finds the centers of round objects, such as cell nuclei, by iterative circular voting.
 *
 * <pre>{@code
 * for (VoteCenter c : CircularVoting.find(pixels, height, width, VoteSettings.ofRadius(36))) {
 *   System.out.println(c.x() + " " + c.y());
 * }
 * }</pre>
 *
 * <p>Any number of threads may call it at the same time.
 */
public final class CircularVoting {
  /** The native code keeps coordinates in 16 bits. */
  private static final int LARGEST_SIDE = Short.MAX_VALUE;

  private CircularVoting() {}

  /**
   * Finds the centers that the {@code orva vote} command finds by the same settings. Nothing is
   * kept after the call.
   *
   * @param pixels {@code height * width} gray values, row by row
   * @param height number of rows; an image without pixels has no centers
   * @param width number of columns
   * @param settings what to look for
   * @return the centers, from top to bottom by the topmost votes of each; empty when there are none
   * @throws IllegalArgumentException when the array or the settings are null, a size is negative,
   *     the array's length is not {@code height * width}, or a side with the margin for the votes
   *     exceeds 32767 pixels
   * @throws OutOfMemoryError when the result does not fit memory
   * @throws UnsatisfiedLinkError when the native library cannot be loaded; the message lists every
   *     path tried
   */
  public static List<VoteCenter> find(
      float[] pixels, int height, int width, VoteSettings settings) {
    Checks.require(pixels != null, "The pixel array is null");
    check(pixels.length, height, width, settings);
    NativeLibrary.load();
    float[] triples = NativeVoting.findCenters(pixels, height, width, settings.polarity().ordinal(),
        settings.minRadius(), settings.maxRadius(), orElse(settings.coneWidth(), -1),
        orElse(settings.sigma(), Float.NaN), orElse(settings.gradient(), Float.NaN),
        settings.relativeGradient(), orElse(settings.threshold(), Float.NaN),
        settings.relativeThreshold(), settings.edges(), settings.power());
    List<VoteCenter> centers = new ArrayList<>(triples.length / 3);
    for (int i = 0; i < triples.length; i += 3) {
      centers.add(new VoteCenter((int) triples[i], (int) triples[i + 1], triples[i + 2]));
    }
    return Collections.unmodifiableList(centers);
  }

  /**
   * Finds bright objects by the fixed parameters of {@link Settings}, which find other centers than
   * {@link VoteSettings}. To find dark objects, pass the inverted image. Every call keeps twice
   * {@code height * width} bytes until the process ends.
   *
   * @param pixels {@code height * width} gray values, row by row; the lowest 8 bits of each count
   * @param height number of rows; an image without pixels has no centers
   * @param width number of columns
   * @param settings what to look for
   * @return the centers, from top to bottom by the topmost votes of each; empty when there are
   *     none. A single center at (width / 3, height / 3) with a weight below 1 cannot be told from
   *     none.
   * @throws IllegalArgumentException when the array or the settings are null, a size is negative,
   *     the array's length is not {@code height * width}, or a side with the margin for the votes
   *     exceeds 32767 pixels
   * @throws UnsatisfiedLinkError when the native library cannot be loaded; the message lists every
   *     path tried
   */
  public static List<Center> find(int[] pixels, int height, int width, Settings settings) {
    Checks.require(pixels != null, "The pixel array is null");
    check(pixels.length, height, width, settings);
    checkMargin(height, width, settings.maxRadius());
    int[] triples = compute(pixels, height, width, settings);
    List<Center> centers = new ArrayList<>(triples.length / 3);
    for (int i = 0; i < triples.length; i += 3) {
      centers.add(new Center(triples[i + 1], triples[i], triples[i + 2]));
    }
    Center none = new Center(width / 3, height / 3, 0);
    return centers.equals(List.of(none)) ? List.of() : Collections.unmodifiableList(centers);
  }

  private static void check(int length, int height, int width, Object settings) {
    Checks.require(settings != null, "The settings are null");
    Checks.size(length, height, width);
  }

  /** The native entry of {@link Settings} does not check the size. Works without the library. */
  private static void checkMargin(int height, int width, int radius) {
    int cone = (int) (radius * 0.25 + 0.5); // half the widest cone, as the native code has it
    int margin = (int) (Math.sqrt(cone * cone + radius * radius) + 3.0);
    Checks.require(
        height == 0 || width == 0 || Math.max(height, width) + 2L * margin <= LARGEST_SIDE,
        "An image of " + width + " x " + height
            + " pixels is too large: its longer side and twice the margin of " + margin
            + " pixels must not exceed " + LARGEST_SIDE);
  }

  private static <T> T orElse(T value, T otherwise) {
    return value == null ? otherwise : value;
  }

  private static int[] compute(int[] pixels, int height, int width, Settings s) {
    Object entry = NativeLibrary.load();
    try {
      return (int[]) method(entry.getClass())
          .invoke(entry, pixels, height, width, 0, s.maxRadius(), 0, 0, s.threshold(), s.scale());
    } catch (ReflectiveOperationException e) {
      throw NativeLibrary.unexpected(e);
    }
  }

  private static Method method(Class<?> entry) throws NoSuchMethodException {
    Class<?>[] types = new Class<?>[ 9 ];
    Arrays.fill(types, int.class);
    types[0] = int[].class;
    return entry.getMethod("compute", types);
  }
}
