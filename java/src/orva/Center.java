package orva;

/**
 * The center of a round object.
 *
 * @param x column, from 0 at the left
 * @param y row, from 0 at the top
 * @param weight mean vote around the center, rounded down
 */
public record Center(int x, int y, int weight) {}
