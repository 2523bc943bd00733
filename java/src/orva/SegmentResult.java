package orva;

import java.util.List;

/**
 * What {@link Objects#segment} returns. Two results with different arrays are not equal, whatever
 * the arrays hold.
 *
 * @param used radius and polarity as they were used, given or estimated
 * @param labels the label of each pixel, row by row: 0 for the background, else that of an object
 * @param objects the objects in the order of their labels, which is that of descending scores;
 *     label k is at index k - 1; empty when there are none
 */
public record SegmentResult(SettingsEstimate used, int[] labels, List<SegmentedObject> objects) {
  /**
   * Copies the list, but not the array.
   *
   * @throws NullPointerException when the list is null
   */
  public SegmentResult {
    objects = List.copyOf(objects);
  }
}
