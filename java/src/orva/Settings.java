package orva;

/**
 * What {@link CircularVoting} looks for.
 *
 * @param maxRadius farthest distance of a vote in pixels, 1 to {@value #LARGEST}; about 1.4 times
 *     the radius of the objects
 * @param threshold votes above it make a center, 0 or more; votes count in grey levels per pixel
 * @param scale sigma of the gradient in pixels, 1 to {@value #LARGEST}
 */
public record Settings(int maxRadius, int threshold, int scale) {
  /** The maximum radius and scale. The cones of this radius take a gigabyte of memory. */
  public static final int LARGEST = 1000;

  /**
   * Checks the settings.
   *
   * @throws IllegalArgumentException when one is out of its range
   */
  public Settings {
    check("maximum radius", maxRadius, 1, LARGEST);
    check("threshold", threshold, 0, Integer.MAX_VALUE);
    check("scale", scale, 1, LARGEST);
  }

  /**
   * Settings that fit most images: a threshold of 200 and a scale of a seventh of the radius.
   *
   * @param maxRadius farthest distance of a vote in pixels
   * @throws IllegalArgumentException when it is out of its range
   */
  public Settings(int maxRadius) {
    this(maxRadius, 200, Math.max(1, Math.round(maxRadius / 7f)));
  }

  private static void check(String name, int value, int min, int max) {
    if (value < min || value > max) {
      String range = max == Integer.MAX_VALUE ? "at least " + min : min + " to " + max;
      throw new IllegalArgumentException("The " + name + " must be " + range + ", not " + value);
    }
  }
}
