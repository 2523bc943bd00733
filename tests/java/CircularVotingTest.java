import static org.junit.jupiter.api.Assertions.assertEquals;

import java.util.List;
import org.junit.jupiter.api.Test;
import orva.CircularVoting;
import orva.Settings;

class CircularVotingTest {
  @Test
  void anEmptyImageHasNoCenters() {
    assertEquals(List.of(), CircularVoting.find(new int[30 * 20], 20, 30, new Settings(5)));
  }
}
