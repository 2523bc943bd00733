import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertThrows;

import org.junit.jupiter.api.Test;
import orva.FindSettings;
import orva.FindSettings.Polarity;

class FindSettingsTest {
  private static final FindSettings OPEN = new FindSettings();

  @Test
  void everySettingIsOptional() {
    assertEquals(new FindSettings(null, null, null, null, 0.5f), OPEN);
    assertNull(OPEN.withPolarity(Polarity.DARK).withPolarity(null).polarity());
  }

  @Test
  void eachMethodChangesItsSetting() {
    assertEquals(new FindSettings(12.5f, 3f, 40f, Polarity.DARK, 0.7f),
        OPEN.withRadius(12.5f)
            .withMinRadius(3)
            .withMaxRadius(40)
            .withPolarity(Polarity.DARK)
            .withMinScore(0.7f));
  }

  @Test
  void theEndsOfTheRangesAreAllowed() {
    assertEquals(0, new FindSettings(Float.MIN_VALUE, 0f, 0f, null, 0).minScore());
    assertEquals(1, new FindSettings(3e38f, 3e38f, 3e38f, null, 1).minScore());
  }

  @Test
  void aSettingOutOfItsRangeIsRefused() {
    for (float radius : new float[] {0, -1.5f, Float.NaN, Float.POSITIVE_INFINITY})
      refused("The radius must be above 0, not " + (radius == 0 ? "0" : "" + radius),
          () -> OPEN.withRadius(radius));
    for (float radius : new float[] {-0.5f, Float.NaN, Float.POSITIVE_INFINITY}) {
      refused(
          "The minimum radius must be at least 0, not " + radius, () -> OPEN.withMinRadius(radius));
      refused(
          "The maximum radius must be at least 0, not " + radius, () -> OPEN.withMaxRadius(radius));
    }
    refused("The maximum radius must be at least 5, not 4",
        () -> OPEN.withMinRadius(5).withMaxRadius(4));
    for (float score : new float[] {-0.5f, 1.5f, Float.NaN})
      refused("The minimum score must be 0 to 1, not " + score, () -> OPEN.withMinScore(score));
  }

  private static void refused(String message, Runnable action) {
    assertEquals(message, assertThrows(IllegalArgumentException.class, action::run).getMessage());
  }
}
