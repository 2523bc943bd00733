package orva.imagej;

import orva.Settings;
import orva.VoteSettings;

/**
 * What the user chooses, in the dialog or by the options of a macro.
 *
 * @param settings what to look for; null for a macro with the keys of {@link Settings}
 * @param former what such a macro looks for, else null
 * @param dark whether the objects are darker than their surroundings
 * @param stack whether all slices are searched
 */
record Choice(VoteSettings settings, Settings former, boolean dark, boolean stack) {
  // The keys of macros, which must stay as they are; capitalized they are the dialog's labels.
  static final String RADIUS = "max_radius";
  static final String THRESHOLD = "relative_threshold";
  static final String SIGMA = "sigma";
  static final String DARK = "dark";
  static final String STACK = "stack";
  private static final String FORMER_THRESHOLD = "threshold";
  private static final String FORMER_SCALE = "scale";

  private static final int USUAL_RADIUS = 20;
  /** Before anything is chosen. */
  static final Choice USUAL = new Choice(VoteSettings.ofRadius(USUAL_RADIUS), null, false, false);

  /**
   * By the numbers of the dialog.
   *
   * @param sigma scale of the gradient in pixels, or 0 to derive it from the radius
   * @throws IllegalArgumentException when one is out of its range
   */
  static Choice of(double radius, double threshold, double sigma, boolean dark, boolean stack) {
    VoteSettings settings =
        VoteSettings.ofRadius(whole(RADIUS, radius)).withRelativeThreshold((float) threshold);
    return new Choice(sigma == 0 ? settings : settings.withSigma((float) sigma), null, dark, stack);
  }

  /**
   * By the options of a macro.
   *
   * @throws IllegalArgumentException when one is out of its range or does not go with another
   */
  static Choice of(MacroOptions options) {
    boolean dark = options.has(DARK);
    boolean stack = options.has(STACK);
    double radius = options.number(RADIUS, USUAL_RADIUS);
    if (!options.isGiven(FORMER_THRESHOLD) && !options.isGiven(FORMER_SCALE)) {
      return of(radius, options.number(THRESHOLD, USUAL.threshold()), options.number(SIGMA, 0),
          dark, stack);
    }
    if (options.isGiven(THRESHOLD) || options.isGiven(SIGMA)) {
      throw new IllegalArgumentException(
          "threshold and scale cannot be combined with relative_threshold and sigma");
    }
    Settings usual = new Settings(USUAL_RADIUS);
    Settings former = new Settings(whole(RADIUS, radius),
        whole(FORMER_THRESHOLD, options.number(FORMER_THRESHOLD, usual.threshold())),
        whole(FORMER_SCALE, options.number(FORMER_SCALE, usual.scale())));
    return new Choice(null, former, dark, stack);
  }

  /** The threshold that the dialog shows. */
  double threshold() {
    return decimal(settings.relativeThreshold());
  }

  /** The sigma that the dialog shows: 0 when it is derived. */
  double sigma() {
    return settings.sigma() == null ? 0 : decimal(settings.sigma());
  }

  /** The label of a field in the dialog. */
  static String label(String key) {
    return Character.toUpperCase(key.charAt(0)) + key.substring(1);
  }

  private static int whole(String key, double value) {
    if (value == (int) value)
      return (int) value;
    throw new IllegalArgumentException(key + " must be a whole number, not " + value);
  }

  /** The decimal number that was rounded to the float. */
  static double decimal(float value) {
    return Double.parseDouble(Float.toString(value));
  }

  /** The number as text, without a fraction if it is whole. */
  static String shown(float value) {
    String text = Float.toString(value);
    return text.endsWith(".0") ? text.substring(0, text.length() - 2) : text;
  }
}
