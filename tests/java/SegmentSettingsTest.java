import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import org.junit.jupiter.api.Test;
import orva.SegmentSettings;

class SegmentSettingsTest {
  private static final SegmentSettings ALL = new SegmentSettings();

  @Test
  void allRegionsAreKeptAtFirst() {
    assertEquals(new SegmentSettings(0, null, false), ALL);
  }

  @Test
  void eachMethodChangesItsSetting() {
    assertEquals(new SegmentSettings(12.5f, 40f, true),
        ALL.withMinArea(12.5f).withMaxArea(40).withExcludeBorder(true));
  }

  @Test
  void theEndsOfTheRangesAreAllowed() {
    assertEquals(0f, new SegmentSettings(0, 0f, false).maxArea());
    assertEquals(3e38f, new SegmentSettings(3e38f, 3e38f, false).minArea());
  }

  @Test
  void aSettingOutOfItsRangeIsRefused() {
    for (float area : new float[] {-0.5f, Float.NaN, Float.POSITIVE_INFINITY}) {
      refused("The minimum area must be at least 0, not " + area, () -> ALL.withMinArea(area));
      refused("The maximum area must be at least 0, not " + area, () -> ALL.withMaxArea(area));
    }
    refused("The maximum area must be at least 5, not 4", () -> ALL.withMinArea(5).withMaxArea(4));
    refused("The maximum area must be at least 5, not 4", () -> ALL.withMaxArea(4).withMinArea(5));
  }

  private static void refused(String message, Runnable action) {
    assertEquals(message, assertThrows(IllegalArgumentException.class, action::run).getMessage());
  }
}
