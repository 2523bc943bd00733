package orva;

/**
 * A round object, as {@link Objects} finds it. Pixel centers are at whole numbers.
 *
 * @param x column of the center, from 0 at the left; of an object that the border cuts, of the part
 *     inside the image
 * @param y row of the center, from 0 at the top
 * @param radius of the circle of the same area, in pixels
 * @param score how surely this is an object, 0 to 1; comparable between images
 * @param coverage share of the outline inside the image that has an edge, 0 to 1
 */
public record FoundObject(float x, float y, float radius, float score, float coverage) {}
