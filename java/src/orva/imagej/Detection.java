package orva.imagej;

import ij.gui.Roi;
import ij.process.ImageProcessor;
import java.util.List;
import orva.FindSettings.Polarity;
import orva.SettingsEstimate;

/**
 * What was found in a slice.
 *
 * @param used radius and polarity as they were used
 * @param objects what is shown of each object
 * @param labels the label image; null from a command that makes none
 */
record Detection(SettingsEstimate used, List<Shown> objects, ImageProcessor labels) {
  /**
   * An object as it is shown.
   *
   * @param outline on the image
   * @param row its values in the results table
   */
  record Shown(Roi outline, double[] row) {}

  /** As an inverting color table shows it. */
  Detection inverted() {
    SettingsEstimate.RunnerUp second = used.runnerUp();
    return new Detection(
        new SettingsEstimate(used.radius(), opposite(used.polarity()), used.confidence(),
            new SettingsEstimate.RunnerUp(
                second.radius(), opposite(second.polarity()), second.confidence())),
        objects, labels);
  }

  /** Null for null. */
  static Polarity opposite(Polarity polarity) {
    if (polarity == null)
      return null;
    return polarity == Polarity.BRIGHT ? Polarity.DARK : Polarity.BRIGHT;
  }
}
