package orva;

/**
 * The center of a round object, as {@link VoteSettings} find it.
 *
 * @param x column, from 0 at the left
 * @param y row, from 0 at the top
 * @param weight mean vote around the center
 */
public record VoteCenter(int x, int y, float weight) {}
