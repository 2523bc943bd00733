package orva.imagej;

import java.util.List;
import java.util.Locale;
import orva.FindSettings;
import orva.FindSettings.Polarity;

/**
 * What the user chooses to find objects, in the dialog or by the options of a macro.
 *
 * @param settings what to look for; the polarity is that on the screen
 * @param stack whether all slices are searched
 * @param manager whether the circles are added to the ROI manager
 */
record FindChoice(FindSettings settings, boolean stack, boolean manager) {
  // The keys of macros, which must stay as they are. ImageJ makes them of the dialog's labels.
  static final String RADIUS = "radius";
  static final String POLARITY = "polarity";
  static final String SCORE = "score";
  static final String MANAGER = "add";

  /** The polarity that comes from the image. */
  static final String ESTIMATE = "estimate";

  /** Before anything is chosen. */
  static final FindChoice USUAL = new FindChoice(new FindSettings(), false, false);

  /**
   * By the values of the dialog.
   *
   * @param radius in pixels, or 0 to estimate it
   * @throws IllegalArgumentException when one is out of its range
   */
  static FindChoice of(
      double radius, String polarity, double score, boolean stack, boolean manager) {
    FindSettings settings =
        new FindSettings().withPolarity(polarity(polarity)).withMinScore((float) score);
    return new FindChoice(
        radius == 0 ? settings : settings.withRadius((float) radius), stack, manager);
  }

  /**
   * By the options of a macro.
   *
   * @throws IllegalArgumentException when one is out of its range
   */
  static FindChoice of(String options) {
    List<String> words = List.of(options.split(" "));
    // ImageJ finds these keys at the end of longer ones, too.
    double radius =
        Choice.isGiven(words, RADIUS) ? Choice.number(options, RADIUS, 0) : USUAL.radius();
    double score = Choice.isGiven(words, SCORE) ? Choice.number(options, SCORE, 0) : USUAL.score();
    return of(radius, Choice.value(options, POLARITY, ESTIMATE), score,
        words.contains(Choice.STACK), words.contains(MANAGER));
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
  double radius() {
    return settings.radius() == null ? 0 : Choice.decimal(settings.radius());
  }

  /** The score that the dialog shows. */
  double score() {
    return Choice.decimal(settings.minScore());
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
