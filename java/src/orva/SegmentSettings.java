package orva;

/**
 * Which regions {@link Objects#segment} keeps: options of the {@code orva segment} command.
 *
 * <pre>{@code
 * SegmentSettings settings = new SegmentSettings().withMinArea(50).withExcludeBorder(true);
 * }</pre>
 *
 * @param minArea smaller regions are left out; in pixels, at least 0; default 0
 * @param maxArea larger regions are left out; in pixels, at least minArea; null for no limit
 * @param excludeBorder whether regions with a pixel in the first or last row or column of the image
 *     are left out; default false
 */
public record SegmentSettings(float minArea, Float maxArea, boolean excludeBorder) {
  /**
   * Checks the settings.
   *
   * @throws IllegalArgumentException when one is out of its range
   */
  public SegmentSettings {
    VoteSettings.check("minimum area", minArea, 0, VoteSettings.MAX_LEVEL);
    VoteSettings.check("maximum area", maxArea, minArea, VoteSettings.MAX_LEVEL);
  }

  /** All regions are kept. */
  public SegmentSettings() {
    this(0, null, false);
  }

  /**
   * These settings with another minArea.
   *
   * @param minArea smaller regions are left out; in pixels
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public SegmentSettings withMinArea(float minArea) {
    return new SegmentSettings(minArea, maxArea, excludeBorder);
  }

  /**
   * These settings with another maxArea.
   *
   * @param maxArea larger regions are left out; in pixels
   * @return the new settings
   * @throws IllegalArgumentException when it is out of its range
   */
  public SegmentSettings withMaxArea(float maxArea) {
    return new SegmentSettings(minArea, maxArea, excludeBorder);
  }

  /**
   * These settings with another excludeBorder.
   *
   * @param excludeBorder whether regions that touch the image border are left out
   * @return the new settings
   */
  public SegmentSettings withExcludeBorder(boolean excludeBorder) {
    return new SegmentSettings(minArea, maxArea, excludeBorder);
  }
}
