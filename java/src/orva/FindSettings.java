package orva;

/**
 * What {@link Objects} looks for: the settings of the {@code orva find} command. Every setting is
 * optional; what is left open comes from the image.
 *
 * <pre>{@code
 * FindSettings settings = new FindSettings().withRadius(25).withPolarity(Polarity.DARK);
 * }</pre>
 *
 * @param radius typical radius of the objects in pixels, above 0; objects of 0.4 to 2.5 times this
 *     radius are found; if null, estimated
 * @param minRadius smaller objects are left out; in pixels, at least 0; null for no limit of its
 *     own
 * @param maxRadius larger objects are left out; in pixels, at least minRadius; null for no limit of
 *     its own
 * @param polarity which objects are looked for; if null, estimated
 * @param minScore objects of a lower score are left out, 0 to 1; default 0.5
 */
public record FindSettings(
    Float radius, Float minRadius, Float maxRadius, Polarity polarity, float minScore) {
  /** Which objects are looked for, in the order of the native code. */
  public enum Polarity {
    /** Objects brighter than their surroundings. */
    BRIGHT,
    /** Objects darker than their surroundings. */
    DARK
  }

  /**
   * Checks the settings.
   *
   * @throws IllegalArgumentException when one is out of its range
   */
  public FindSettings {
    if (radius != null && !(radius > 0 && radius <= VoteSettings.MAX_LEVEL))
      throw new IllegalArgumentException(
          "The radius must be above 0, not " + VoteSettings.shown(radius));
    float lowest = minRadius == null ? 0 : minRadius;
    VoteSettings.check("minimum radius", minRadius, 0, VoteSettings.MAX_LEVEL);
    VoteSettings.check("maximum radius", maxRadius, lowest, VoteSettings.MAX_LEVEL);
    VoteSettings.check("minimum score", minScore, 0, 1);
  }

  /** Everything comes from the image. */
  public FindSettings() {
    this(null, null, null, null, 0.5f);
  }

  /**
   * These settings with another radius.
   *
   * @param radius typical radius of the objects in pixels
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public FindSettings withRadius(float radius) {
    return new FindSettings(radius, minRadius, maxRadius, polarity, minScore);
  }

  /**
   * These settings with another minRadius.
   *
   * @param minRadius smaller objects are left out; in pixels
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public FindSettings withMinRadius(float minRadius) {
    return new FindSettings(radius, minRadius, maxRadius, polarity, minScore);
  }

  /**
   * These settings with another maxRadius.
   *
   * @param maxRadius larger objects are left out; in pixels
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public FindSettings withMaxRadius(float maxRadius) {
    return new FindSettings(radius, minRadius, maxRadius, polarity, minScore);
  }

  /**
   * These settings with another polarity.
   *
   * @param polarity which objects are looked for; if null, estimated
   * @return the new settings
   */
  public FindSettings withPolarity(Polarity polarity) {
    return new FindSettings(radius, minRadius, maxRadius, polarity, minScore);
  }

  /**
   * These settings with another minScore.
   *
   * @param minScore objects of a lower score are left out
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public FindSettings withMinScore(float minScore) {
    return new FindSettings(radius, minRadius, maxRadius, polarity, minScore);
  }
}
