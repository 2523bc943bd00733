package orva.imagej;

import java.util.Locale;
import orva.FindSettings;
import orva.FindSettings.Polarity;

/**
 * What the user chooses to find objects, in the dialog or by the options of a macro.
 *
 * @param settings what to look for; the polarity is that on the screen
 * @param stack whether all slices are searched
 * @param manager whether the objects are added to the ROI manager
 */
record FindChoice(FindSettings settings, boolean stack, boolean manager) {
  // The keys of macros, which must stay as they are. ImageJ makes them of the dialog's labels.
  static final String RADIUS = "radius";
  static final String POLARITY = "polarity";
  static final String MIN_SCORE = "min_score";
  static final String MANAGER = "add";

  /** The polarity that comes from the image. */
  static final String ESTIMATE = "estimate";

  /** Before anything is chosen. */
  static final FindChoice USUAL = new FindChoice(new FindSettings(), false, false);

  /**
   * By the values of the dialog.
   *
   * @param radius in pixels, or 0 to estimate it; or a range A:B
   * @throws IllegalArgumentException when one is out of its range
   */
  static FindChoice of(
      String radius, String polarity, double minScore, boolean stack, boolean manager) {
    FindSettings settings =
        withRadius(radius).withPolarity(polarity(polarity)).withMinScore((float) minScore);
    return new FindChoice(settings, stack, manager);
  }

  /**
   * By the options of a macro.
   *
   * @throws IllegalArgumentException when one is out of its range
   */
  static FindChoice of(MacroOptions options) {
    return of(options.value(RADIUS, USUAL.radius()), options.value(POLARITY, ESTIMATE),
        options.number(MIN_SCORE, USUAL.minScore()), options.has(Choice.STACK),
        options.has(MANAGER));
  }

  /** The choices of the dialog. */
  static String[] polarities() {
    return new String[] {ESTIMATE, name(Polarity.BRIGHT), name(Polarity.DARK)};
  }

  /** As in the dialog and in macros. */
  static String name(Polarity polarity) {
    return polarity == null ? ESTIMATE : polarity.name().toLowerCase(Locale.ROOT);
  }

  /** The radius that the dialog shows: 0 when it is estimated. */
  String radius() {
    if (settings.minRadius() != null)
      return Choice.shown(settings.minRadius()) + ":" + Choice.shown(settings.maxRadius());
    return settings.radius() == null ? "0" : Choice.shown(settings.radius());
  }

  /** The score that the dialog shows. */
  double minScore() {
    return Choice.decimal(settings.minScore());
  }

  private static FindSettings withRadius(String text) {
    FindSettings open = new FindSettings();
    String[] ends = MacroOptions.numeral(text).split(":", -1);
    if (ends.length == 2)
      return open.withMinRadius(radius(text, ends[0])).withMaxRadius(radius(text, ends[1]));
    float radius = radius(text, ends.length == 1 ? ends[0] : "");
    return radius == 0 ? open : open.withRadius(radius);
  }

  /** A part of the text, which is the whole or one end of a range. */
  private static float radius(String text, String part) {
    try {
      return Float.parseFloat(MacroOptions.numeral(part.strip()));
    } catch (NumberFormatException e) {
      throw new IllegalArgumentException(
          RADIUS + " must be a number or a range A:B, not " + text, e);
    }
  }

  private static Polarity polarity(String name) {
    for (Polarity polarity : Polarity.values()) {
      if (name.equals(name(polarity)))
        return polarity;
    }
    if (name.equals(ESTIMATE))
      return null;
    throw new IllegalArgumentException(POLARITY + " must be estimate, bright or dark, not " + name);
  }
}
