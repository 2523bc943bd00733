package orva;

/** Checks of arguments, before anything native happens. */
final class Checks {
  private Checks() {}

  /**
   * Refuses an argument.
   *
   * @throws IllegalArgumentException with this message unless the condition holds
   */
  static void require(boolean holds, String otherwise) {
    if (!holds)
      throw new IllegalArgumentException(otherwise);
  }

  /**
   * Refuses an array that is not the image.
   *
   * @throws IllegalArgumentException when a size is negative or the length is not their product
   */
  static void size(int length, int height, int width) {
    String size = width + " x " + height;
    require(height >= 0 && width >= 0, "The image size " + size + " is negative");
    require(length == (long) height * width,
        "An image of " + size + " pixels needs an array of as many, not of " + length);
  }
}
