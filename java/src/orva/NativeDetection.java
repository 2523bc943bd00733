package orva;

/**
 * The native search for objects. {@link Objects} is the usual way to call it. To call it directly,
 * load the library first, by the constructor of {@code JNICircularVoting}.
 */
public final class NativeDetection {
  private NativeDetection() {}

  /**
   * Finds objects. The library keeps nothing of a call.
   *
   * @param pixels {@code height * width} gray values, row by row
   * @param height number of rows
   * @param width number of columns
   * @param radius typical radius of the objects in pixels; estimated if NaN
   * @param minRadius smaller objects are left out; no limit of its own if NaN
   * @param maxRadius larger objects are left out; no limit of its own if NaN
   * @param polarity 0 for bright objects, 1 for dark ones, -1 to estimate it
   * @param minScore objects of a lower score are left out
   * @return the six values of {@link #estimateSettings} as they were used, then column, row,
   *     radius, score and coverage of each object
   * @throws IllegalArgumentException when the array is null or not {@code height * width} long, or
   *     a setting is out of its range
   */
  public static native float[] findObjects(float[] pixels, int height, int width, float radius,
      float minRadius, float maxRadius, int polarity, float minScore);

  /**
   * Estimates settings. The library keeps nothing of a call.
   *
   * @param pixels {@code height * width} gray values, row by row
   * @param height number of rows
   * @param width number of columns
   * @return radius, polarity (0 for bright objects, 1 for dark ones) and confidence, and the same
   *     of the runner-up
   * @throws IllegalArgumentException when the array is null or not {@code height * width} long
   */
  public static native float[] estimateSettings(float[] pixels, int height, int width);
}
