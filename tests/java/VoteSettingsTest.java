import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import org.junit.jupiter.api.Test;
import orva.VoteSettings;
import orva.VoteSettings.Polarity;

class VoteSettingsTest {
  private static final VoteSettings USUAL = VoteSettings.ofRadius(20);

  @Test
  void ofRadiusLeavesOpenWhatTheImageDecides() {
    assertEquals(
        new VoteSettings(Polarity.BRIGHT, 1, 20, null, null, null, 0.03f, null, 0.3f, false, 0.5f),
        USUAL);
  }

  @Test
  void eachMethodChangesItsSetting() {
    assertEquals(new VoteSettings(Polarity.DARK, 2, 20, 7, 1.5f, 3f, 0.1f, 90f, 0.4f, true, 2f),
        USUAL.withPolarity(Polarity.DARK)
            .withMinRadius(2)
            .withConeWidth(7)
            .withSigma(1.5f)
            .withRelativeGradient(0.1f)
            .withGradient(3)
            .withRelativeThreshold(0.4f)
            .withThreshold(90)
            .withEdges(true)
            .withPower(2));
  }

  @Test
  void aRelativeSettingReplacesTheAbsoluteOne() {
    assertEquals(
        USUAL.withRelativeGradient(0.1f), USUAL.withGradient(3).withRelativeGradient(0.1f));
    assertEquals(
        USUAL.withRelativeThreshold(0.4f), USUAL.withThreshold(90).withRelativeThreshold(0.4f));
  }

  @Test
  void theEndsOfTheRangesAreAllowed() {
    VoteSettings min = new VoteSettings(Polarity.BRIGHT, 1, 1, 0, 0.1f, 0f, 0, 0f, 0.05f, true, 0);
    assertEquals(1, min.maxRadius());
    VoteSettings max =
        new VoteSettings(Polarity.BOTH, 1000, 1000, 1000, 1000f, 3e38f, 1, 3e38f, 1, true, 100);
    assertEquals(1000, max.minRadius());
  }

  @Test
  void aSettingOutOfItsRangeIsRefused() {
    refused("The polarity is null", () -> USUAL.withPolarity(null));
    for (int radius : new int[] {0, -1, 1001, Integer.MIN_VALUE, Integer.MAX_VALUE})
      refused("The maximum radius must be 1 to 1000, not " + radius,
          () -> VoteSettings.ofRadius(radius));
    for (int radius : new int[] {0, 21})
      refused(
          "The minimum radius must be 1 to 20, not " + radius, () -> USUAL.withMinRadius(radius));
    for (int width : new int[] {-1, 1001})
      refused("The cone width must be 0 to 1000, not " + width, () -> USUAL.withConeWidth(width));
    for (float sigma : new float[] {0.09f, Float.NaN, Float.POSITIVE_INFINITY})
      refused("The sigma must be 0.1 to 1000, not " + sigma, () -> USUAL.withSigma(sigma));
    for (float gradient : new float[] {-0.5f, Float.NaN, Float.POSITIVE_INFINITY}) {
      refused(
          "The gradient must be at least 0, not " + gradient, () -> USUAL.withGradient(gradient));
      refused(
          "The threshold must be at least 0, not " + gradient, () -> USUAL.withThreshold(gradient));
    }
    for (float share : new float[] {-0.5f, 1.5f, Float.NaN})
      refused("The relative gradient must be 0 to 1, not " + share,
          () -> USUAL.withRelativeGradient(share));
    for (float share : new float[] {0.04f, 1.5f, Float.NaN})
      refused("The relative threshold must be 0.05 to 1, not " + share,
          () -> USUAL.withRelativeThreshold(share));
    refused(
        "The relative threshold must be 0.05 to 1, not 2", () -> USUAL.withRelativeThreshold(2));
    refused("The power must be 0 to 100, not 101", () -> USUAL.withPower(101));
  }

  private static void refused(String message, Runnable action) {
    assertEquals(message, assertThrows(IllegalArgumentException.class, action::run).getMessage());
  }
}
