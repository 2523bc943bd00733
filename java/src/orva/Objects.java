package orva;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import orva.FindSettings.Polarity;

/**
 * Finds round objects, such as cell nuclei, of unknown size and brightness: centers, radii and
 * scores, or regions and their measurements.
 *
 * <pre>{@code
 * for (FoundObject o : Objects.find(pixels, height, width, new FindSettings()).objects()) {
 *   System.out.println(o.x() + " " + o.y() + " " + o.radius());
 * }
 * }</pre>
 *
 * <p>Any number of threads may call it at the same time.
 */
public final class Objects {
  private static final int ESTIMATED = 6; // values, before those of the objects
  private static final int PER_OBJECT = 5;

  private Objects() {}

  /**
   * Finds the objects that the {@code orva find} command finds by the same settings. Nothing is
   * kept after the call.
   *
   * @param pixels {@code height * width} gray values, row by row; one that is not a finite number
   *     counts as the smallest finite one
   * @param height number of rows; an image without pixels has no objects
   * @param width number of columns
   * @param settings what to look for
   * @return the objects, and the settings as they were used
   * @throws IllegalArgumentException when the array or the settings are null, a size is negative,
   *     or the array's length is not {@code height * width}
   * @throws OutOfMemoryError when the result does not fit memory
   * @throws UnsatisfiedLinkError when the native library cannot be loaded; the message lists every
   *     path tried
   */
  public static FindResult find(float[] pixels, int height, int width, FindSettings settings) {
    check(pixels, height, width);
    Checks.require(settings != null, "The settings are null");
    NativeLibrary.load();
    float[] values = NativeDetection.findObjects(pixels, height, width, orNan(settings.radius()),
        orNan(settings.minRadius()), orNan(settings.maxRadius()), number(settings.polarity()),
        settings.minScore());
    List<FoundObject> objects = new ArrayList<>((values.length - ESTIMATED) / PER_OBJECT);
    for (int i = ESTIMATED; i < values.length; i += PER_OBJECT) {
      objects.add(
          new FoundObject(values[i], values[i + 1], values[i + 2], values[i + 3], values[i + 4]));
    }
    return new FindResult(estimate(values), objects);
  }

  /**
   * Finds objects as {@link #find} does, and the region of each. These are the regions of the
   * {@code orva segment} command by the same settings. Nothing is kept after the call.
   *
   * @param pixels {@code height * width} gray values, row by row, as for {@link #find}
   * @param height number of rows; an image without pixels has no objects
   * @param width number of columns
   * @param settings what to look for
   * @param kept which regions to keep
   * @return the label image, the measurements of each region, and the settings as they were used
   * @throws IllegalArgumentException when the array or the settings are null, a size is negative,
   *     or the array's length is not {@code height * width}
   * @throws OutOfMemoryError when the result does not fit memory
   * @throws UnsatisfiedLinkError when the native library cannot be loaded; the message lists every
   *     path tried
   */
  public static SegmentResult segment(
      float[] pixels, int height, int width, FindSettings settings, SegmentSettings kept) {
    check(pixels, height, width);
    Checks.require(settings != null && kept != null, "The settings are null");
    NativeLibrary.load();
    int[] labels = new int[pixels.length];
    double[] values = NativeDetection.segmentObjects(pixels, height, width, labels,
        orNan(settings.radius()), orNan(settings.minRadius()), orNan(settings.maxRadius()),
        number(settings.polarity()), settings.minScore(), kept.minArea(),
        kept.maxArea() == null ? Float.POSITIVE_INFINITY : kept.maxArea(), kept.excludeBorder());
    int columns = SegmentedObject.COLUMNS.size();
    List<SegmentedObject> objects = new ArrayList<>((values.length - ESTIMATED) / columns);
    for (int i = ESTIMATED; i < values.length; i += columns) {
      objects.add(SegmentedObject.of(Arrays.copyOfRange(values, i, i + columns)));
    }
    float[] used = new float[ESTIMATED];
    for (int i = 0; i < used.length; i++) used[i] = (float) values[i];
    return new SegmentResult(estimate(used), labels, objects);
  }

  /**
   * Estimates the typical radius and the polarity of the objects in an image. It takes nearly as
   * long as {@link #find}, which returns the same estimate.
   *
   * @param pixels {@code height * width} gray values, row by row, as for {@link #find}
   * @param height number of rows
   * @param width number of columns
   * @return the estimate; of an image without objects, a radius and a confidence of 0
   * @throws IllegalArgumentException when the array is null, a size is negative, or the array's
   *     length is not {@code height * width}
   * @throws OutOfMemoryError when the result does not fit memory
   * @throws UnsatisfiedLinkError when the native library cannot be loaded; the message lists every
   *     path tried
   */
  public static SettingsEstimate estimate(float[] pixels, int height, int width) {
    check(pixels, height, width);
    NativeLibrary.load();
    return estimate(NativeDetection.estimateSettings(pixels, height, width));
  }

  private static void check(float[] pixels, int height, int width) {
    Checks.require(pixels != null, "The pixel array is null");
    Checks.size(pixels.length, height, width);
  }

  private static SettingsEstimate estimate(float[] v) {
    return new SettingsEstimate(
        v[0], polarity(v[1]), v[2], new SettingsEstimate.RunnerUp(v[3], polarity(v[4]), v[5]));
  }

  private static Polarity polarity(float value) {
    return Polarity.values()[(int) value];
  }

  /** Of the native code; -1 for an open one. */
  private static int number(Polarity polarity) {
    return polarity == null ? -1 : polarity.ordinal();
  }

  private static float orNan(Float value) {
    return value == null ? Float.NaN : value;
  }
}
