package orva.imagej;

import ij.Macro;
import ij.macro.Interpreter;
import java.util.List;
import java.util.Optional;
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
  static Choice of(String options) {
    List<String> words = List.of(options.split(" "));
    boolean dark = words.contains(DARK);
    boolean stack = words.contains(STACK);
    double radius = number(options, RADIUS, USUAL_RADIUS);
    if (!isGiven(words, FORMER_THRESHOLD) && !isGiven(words, FORMER_SCALE)) {
      return of(radius, number(options, THRESHOLD, USUAL.threshold()), number(options, SIGMA, 0),
          dark, stack);
    }
    if (isGiven(words, THRESHOLD) || isGiven(words, SIGMA)) {
      throw new IllegalArgumentException(
          "threshold and scale cannot be combined with relative_threshold and sigma");
    }
    Settings usual = new Settings(USUAL_RADIUS);
    Settings former = new Settings(whole(RADIUS, radius),
        whole(FORMER_THRESHOLD, number(options, FORMER_THRESHOLD, usual.threshold())),
        whole(FORMER_SCALE, number(options, FORMER_SCALE, usual.scale())));
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

  /** ImageJ finds the key of one option at the end of a longer one, too. */
  static boolean isGiven(List<String> words, String key) {
    return words.stream().anyMatch(word -> word.startsWith(key + "="));
  }

  /**
   * A number among the options, or a variable of the macro that holds one.
   *
   * @throws IllegalArgumentException when it is none
   */
  static double number(String options, String key, double usual) {
    String text = value(options, key, String.valueOf(usual));
    String value = variable(text).orElse(text); // which needs no ampersand
    try {
      return Double.parseDouble(value);
    } catch (NumberFormatException e) {
      throw new IllegalArgumentException(key + " must be a number, not " + value, e);
    }
  }

  /** The text of a key, or of the variable of the macro that it names after an ampersand. */
  static String value(String options, String key, String usual) {
    String value = Macro.getValue(options, key, usual);
    return value.startsWith("&") ? variable(value.substring(1)).orElse(value) : value;
  }

  private static Optional<String> variable(String name) {
    Interpreter macro = Interpreter.getInstance();
    return Optional.ofNullable(macro == null ? null : macro.getVariableAsString(name));
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
}
