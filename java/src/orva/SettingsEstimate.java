package orva;

import orva.FindSettings.Polarity;

/**
 * What an image appears to hold.
 *
 * @param radius typical radius of the objects in pixels; 0 when there are none
 * @param polarity which objects there are
 * @param confidence 0 (nothing was found) to 1
 * @param runnerUp the best of the other polarity
 */
public record SettingsEstimate(
    float radius, Polarity polarity, float confidence, RunnerUp runnerUp) {
  /**
   * The estimate that came second.
   *
   * @param radius typical radius of the objects in pixels; 0 when there are none
   * @param polarity which objects there are
   * @param confidence 0 (nothing was found) to 1
   */
  public record RunnerUp(float radius, Polarity polarity, float confidence) {}
}
