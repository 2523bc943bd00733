package orva;

/**
 * The native search by {@link VoteSettings}, one parameter for each of them. {@link CircularVoting}
 * is the usual way to call it. To call it directly, load the library first, by the constructor of
 * {@code JNICircularVoting}.
 */
public final class NativeVoting {
  private NativeVoting() {}

  /**
   * Finds centers. The library keeps nothing of a call.
   *
   * @param pixels {@code height * width} gray values, row by row
   * @param height number of rows
   * @param width number of columns
   * @param polarity 0 for bright objects, 1 for dark ones, 2 for both
   * @param minRadius nearest vote in pixels
   * @param maxRadius farthest vote in pixels; the cones take memory by its square
   * @param coneWidth half-width of the widest cone in pixels; derived from maxRadius if negative
   * @param sigma scale of the gradient in pixels; derived from maxRadius if NaN
   * @param gradient weaker gradients cast no vote; if NaN, relativeGradient counts
   * @param relativeGradient the same as a share of the strongest gradient
   * @param threshold regions of more votes make a center; if NaN, relativeThreshold counts
   * @param relativeThreshold the same as a share of the strongest vote
   * @param edges whether only the edges of bright blobs vote
   * @param power exponent that turns gradient magnitudes into weights
   * @return column, row and weight of each center
   * @throws IllegalArgumentException when the array is null or not {@code height * width} long, a
   *     setting is out of its range, or a side with the margin for the votes exceeds 32767 pixels
   */
  public static native float[] findCenters(float[] pixels, int height, int width, int polarity,
      int minRadius, int maxRadius, int coneWidth, float sigma, float gradient,
      float relativeGradient, float threshold, float relativeThreshold, boolean edges, float power);
}
