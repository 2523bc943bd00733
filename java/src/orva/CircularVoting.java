package orva;

import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;

/**
 * Finds the centers of bright round objects, such as cell nuclei, by iterative circular voting.
 *
 * <pre>{@code
 * for (Center c : CircularVoting.find(pixels, height, width, new Settings(20))) {
 *   System.out.println(c.x() + " " + c.y());
 * }
 * }</pre>
 *
 * <p>Any number of threads may call it at the same time. Every call keeps twice {@code height *
 * width} bytes until the process ends.
 */
public final class CircularVoting {
  /** The native code keeps coordinates in 16 bits. */
  private static final int LARGEST_SIDE = Short.MAX_VALUE;

  private CircularVoting() {}

  /**
   * Finds the centers in a grey image. To find dark objects, pass the inverted image.
   *
   * @param pixels {@code height * width} grey values, row by row; the lowest 8 bits of each count
   * @param height number of rows; an image without pixels has no centers
   * @param width number of columns
   * @param settings what to look for
   * @return the centers, from top to bottom by the topmost votes of each; empty when there are
   *     none. A single center at (width / 3, height / 3) with a weight below 1 can not be told from
   *     none.
   * @throws IllegalArgumentException when the array or the settings are null, a size is negative,
   *     the array's length is not {@code height * width}, or a side with the margin for the votes
   *     exceeds 32767 pixels
   * @throws UnsatisfiedLinkError when the native library can not be loaded; the message lists every
   *     path tried
   */
  public static List<Center> find(int[] pixels, int height, int width, Settings settings) {
    check(pixels, height, width, settings);
    int[] triples = compute(pixels, height, width, settings);
    List<Center> centers = new ArrayList<>(triples.length / 3);
    for (int i = 0; i < triples.length; i += 3) {
      centers.add(new Center(triples[i + 1], triples[i], triples[i + 2]));
    }
    Center none = new Center(width / 3, height / 3, 0);
    return centers.equals(List.of(none)) ? List.of() : Collections.unmodifiableList(centers);
  }

  private static void check(int[] pixels, int height, int width, Settings settings) {
    require(pixels != null, "The pixel array is null");
    require(settings != null, "The settings are null");
    String size = width + " x " + height;
    require(height >= 0 && width >= 0, "The image size " + size + " is negative");
    require(pixels.length == (long) height * width,
        "An image of " + size + " pixels needs an array of as many, not of " + pixels.length);
    int radius = settings.maxRadius();
    int cone = (int) (radius * 0.25 + 0.5); // half the widest cone, as the native code has it
    int margin = (int) (Math.sqrt(cone * cone + radius * radius) + 3.0);
    require(pixels.length == 0 || Math.max(height, width) + 2L * margin <= LARGEST_SIDE,
        "An image of " + size + " pixels is too large: its longer side and twice the margin of "
            + margin + " pixels must not exceed " + LARGEST_SIDE);
  }

  private static void require(boolean holds, String otherwise) {
    if (!holds)
      throw new IllegalArgumentException(otherwise);
  }

  /** Calls the native method, which no named import reaches in its default package. */
  private static int[] compute(int[] pixels, int height, int width, Settings s) {
    try {
      Class<?> entry = Class.forName("JNICircularVoting");
      return (int[]) method(entry).invoke(entry.getConstructor().newInstance(), pixels, height,
          width, 0, s.maxRadius(), 0, 0, s.threshold(), s.scale());
    } catch (InvocationTargetException e) {
      if (e.getCause() instanceof Error error)
        throw error;
      throw new IllegalStateException(e.getCause());
    } catch (ReflectiveOperationException e) {
      throw new LinkageError("The class JNICircularVoting is not as it should be", e);
    }
  }

  private static Method method(Class<?> entry) throws NoSuchMethodException {
    Class<?>[] types = new Class<?>[ 9 ];
    Arrays.fill(types, int.class);
    types[0] = int[].class;
    return entry.getMethod("compute", types);
  }
}
