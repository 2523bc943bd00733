import static org.junit.jupiter.api.Assertions.assertEquals;

import org.junit.jupiter.api.Test;
import orva.Settings;

class SettingsTest {
  @Test
  void theUsualScaleIsTheNearestToASeventhOfTheRadiusButAtLeastOne() {
    assertEquals(new Settings(1, 200, 1), new Settings(1));
    assertEquals(new Settings(10, 200, 1), new Settings(10));
    assertEquals(new Settings(11, 200, 2), new Settings(11));
    assertEquals(new Settings(17, 200, 2), new Settings(17));
    assertEquals(new Settings(18, 200, 3), new Settings(18));
    assertEquals(new Settings(20, 200, 3), new Settings(20));
    assertEquals(new Settings(1000, 200, 143), new Settings(1000));
  }

  @Test
  void theEndsOfTheRangesAreAllowed() {
    Settings min = new Settings(1, 0, 1);
    assertEquals(1, min.maxRadius());
    assertEquals(0, min.threshold());
    assertEquals(1, min.scale());
    Settings max = new Settings(1000, Integer.MAX_VALUE, 1000);
    assertEquals(1000, max.maxRadius());
    assertEquals(Integer.MAX_VALUE, max.threshold());
    assertEquals(1000, max.scale());
    assertEquals(1000, Settings.LARGEST);
  }
}
