package orva;

/**
 * What {@link CircularVoting} looks for, and how: the settings of the {@code orva vote} command,
 * with the same defaults, so that the same settings find the same centers.
 *
 * <pre>{@code
 * VoteSettings settings = VoteSettings.ofRadius(36).withPolarity(VoteSettings.Polarity.DARK);
 * }</pre>
 *
 * @param polarity which objects are looked for; default bright
 * @param minRadius nearest vote in pixels, 1 to maxRadius; default 1
 * @param maxRadius farthest vote in pixels, 1 to 1000; about 1.4 times the radius of the objects
 * @param coneWidth half-width of the widest cone at maxRadius in pixels, 0 to 1000; if null, half
 *     of maxRadius, rounded
 * @param sigma scale of the gradient in pixels, 0.1 to 1000; if null, a seventh of maxRadius, at
 *     least 1
 * @param gradient weaker gradients cast no vote, in gray levels per pixel, at least 0; if null,
 *     relativeGradient counts
 * @param relativeGradient the same as a share of the strongest gradient, 0 to 1; default 0.03
 * @param threshold regions of more votes make a center, at least 0; if null, relativeThreshold
 *     counts
 * @param relativeThreshold the same as a share of the strongest vote, 0.05 to 1; default 0.3
 * @param edges whether only the edges of bright blobs vote; default false
 * @param power exponent that turns gradient magnitudes into weights, 0 to 100; default 0.5
 */
public record VoteSettings(Polarity polarity, int minRadius, int maxRadius, Integer coneWidth,
    Float sigma, Float gradient, float relativeGradient, Float threshold, float relativeThreshold,
    boolean edges, float power) {
  /** Which objects are looked for, in the order of the native code. */
  public enum Polarity {
    /** Objects brighter than their surroundings. */
    BRIGHT,
    /** Objects darker than their surroundings. */
    DARK,
    /** Both kinds. */
    BOTH
  }

  static final float MAX_LEVEL = 3e38f;

  /**
   * Checks the settings.
   *
   * @throws IllegalArgumentException when one is out of its range or the polarity is null
   */
  public VoteSettings {
    if (polarity == null)
      throw new IllegalArgumentException("The polarity is null");
    check("maximum radius", maxRadius, 1, Settings.LARGEST);
    check("minimum radius", minRadius, 1, maxRadius);
    check("cone width", coneWidth, 0, Settings.LARGEST);
    check("sigma", sigma, 0.1f, Settings.LARGEST);
    check("gradient", gradient, 0, MAX_LEVEL);
    check("relative gradient", relativeGradient, 0, 1);
    check("threshold", threshold, 0, MAX_LEVEL);
    check("relative threshold", relativeThreshold, 0.05f, 1);
    check("power", power, 0, 100);
  }

  /**
   * The defaults for objects of a size.
   *
   * @param maxRadius farthest vote in pixels, about 1.4 times the radius of the objects
   * @return the settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public static VoteSettings ofRadius(int maxRadius) {
    return new VoteSettings(
        Polarity.BRIGHT, 1, maxRadius, null, null, null, 0.03f, null, 0.3f, false, 0.5f);
  }

  /**
   * These settings with another polarity.
   *
   * @param polarity which objects are looked for
   * @return the new settings
   * @throws IllegalArgumentException when it is null
   */
  public VoteSettings withPolarity(Polarity polarity) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /**
   * These settings with another minRadius.
   *
   * @param minRadius nearest vote in pixels
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public VoteSettings withMinRadius(int minRadius) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /**
   * These settings with another coneWidth.
   *
   * @param coneWidth half-width of the widest cone in pixels
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public VoteSettings withConeWidth(int coneWidth) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /**
   * These settings with another sigma.
   *
   * @param sigma scale of the gradient in pixels
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public VoteSettings withSigma(float sigma) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /**
   * These settings with another gradient.
   *
   * @param gradient weaker gradients cast no vote, in gray levels per pixel
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public VoteSettings withGradient(float gradient) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /**
   * These settings with another relativeGradient.
   *
   * @param relativeGradient weaker gradients cast no vote, as a share of the strongest; {@code
   *     gradient} no longer counts
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public VoteSettings withRelativeGradient(float relativeGradient) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, null,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /**
   * These settings with another threshold.
   *
   * @param threshold regions of more votes make a center
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public VoteSettings withThreshold(float threshold) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /**
   * These settings with another relativeThreshold.
   *
   * @param relativeThreshold regions of more votes make a center, as a share of the strongest vote;
   *     {@code threshold} no longer counts
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public VoteSettings withRelativeThreshold(float relativeThreshold) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, null, relativeThreshold, edges, power);
  }

  /**
   * These settings with another edges.
   *
   * @param edges whether only the edges of bright blobs vote
   * @return the new settings
   */
  public VoteSettings withEdges(boolean edges) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /**
   * These settings with another power.
   *
   * @param power exponent that turns gradient magnitudes into weights
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public VoteSettings withPower(float power) {
    return new VoteSettings(polarity, minRadius, maxRadius, coneWidth, sigma, gradient,
        relativeGradient, threshold, relativeThreshold, edges, power);
  }

  /** Nothing for null, which leaves a setting open. */
  static void check(String name, Number value, float min, float max) {
    if (value == null || value.floatValue() >= min && value.floatValue() <= max)
      return;
    String range = max == MAX_LEVEL ? "at least " + shown(min) : shown(min) + " to " + shown(max);
    throw new IllegalArgumentException(
        "The " + name + " must be " + range + ", not " + shown(value));
  }

  /** A whole number without a fraction. */
  static String shown(Number value) {
    return value.floatValue() == value.intValue() ? "" + value.intValue() : value.toString();
  }
}
