package orva;

import java.util.List;

/**
 * What {@link Objects#find} returns.
 *
 * @param used radius and polarity as they were used, given or estimated
 * @param objects the objects, highest score first; empty when there are none
 */
public record FindResult(SettingsEstimate used, List<FoundObject> objects) {
  /**
   * Copies the list.
   *
   * @throws NullPointerException when the list is null
   */
  public FindResult {
    objects = List.copyOf(objects);
  }
}
