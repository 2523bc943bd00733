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
   * Finds objects, and the region of each. The library keeps nothing of a call.
   *
   * @param pixels {@code height * width} gray values, row by row
   * @param height number of rows
   * @param width number of columns
   * @param labels {@code height * width} values, which become the labels: 0 for the background,
   *     else the number of the object, from 1
   * @param radius as for {@link #findObjects}, and so are the next four
   * @param minRadius smaller objects are left out; no limit of its own if NaN
   * @param maxRadius larger objects are left out; no limit of its own if NaN
   * @param polarity 0 for bright objects, 1 for dark ones, -1 to estimate it
   * @param minScore objects of a lower score are left out
   * @param minArea smaller regions are left out; in pixels
   * @param maxArea larger regions are left out; in pixels, infinity for no limit
   * @param excludeBorder whether regions that touch the image border are left out
   * @return the six values of {@link #estimateSettings} as they were used, then the values of each
   *     {@link SegmentedObject} in the order of its {@link SegmentedObject#COLUMNS}
   * @throws IllegalArgumentException when an array is null or not {@code height * width} long, or a
   *     setting is out of its range
   */
  public static native double[] segmentObjects(float[] pixels, int height, int width, int[] labels,
      float radius, float minRadius, float maxRadius, int polarity, float minScore, float minArea,
      float maxArea, boolean excludeBorder);

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
