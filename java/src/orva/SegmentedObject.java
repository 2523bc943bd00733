package orva;

import java.util.List;

/**
 * The region of an object and its measurements, by the definitions of scikit-image. Lengths are in
 * pixels, and pixel centers are at whole numbers. The axes and their orientation are those of the
 * ellipse that has the region's second central moments.
 *
 * @param label value of the region's pixels in the label image
 * @param centroidRow mean row of the pixels
 * @param centroidColumn mean column of the pixels
 * @param area number of pixels
 * @param equivalentDiameterArea of the circle of the same area
 * @param perimeter length of the line through the centers of the border pixels
 * @param eccentricity of the ellipse, 0 for a circle, below 1
 * @param majorAxisLength of the ellipse
 * @param minorAxisLength of the ellipse
 * @param orientation angle from the row axis (downwards) to the major axis, counter-clockwise, from
 *     -pi/2 to pi/2 radians
 * @param solidity share of the convex hull that the region fills
 * @param meanIntensity mean pixel value
 * @param minIntensity smallest pixel value
 * @param maxIntensity largest pixel value
 * @param intensityStd standard deviation of the pixel values
 * @param minRow first row
 * @param minColumn first column
 * @param endRow the row after the last
 * @param endColumn the column after the last
 * @param score how surely this is an object, 0 to 1; comparable between images
 * @param touchesBorder whether a pixel is in the first or last row or column of the image
 */
public record SegmentedObject(int label, double centroidRow, double centroidColumn, double area,
    double equivalentDiameterArea, double perimeter, double eccentricity, double majorAxisLength,
    double minorAxisLength, double orientation, double solidity, double meanIntensity,
    double minIntensity, double maxIntensity, double intensityStd, int minRow, int minColumn,
    int endRow, int endColumn, float score, boolean touchesBorder) {
  /** What the columns of a table are called, in the order of {@link #values}. */
  public static final List<String> COLUMNS =
      List.of("label", "centroid-0", "centroid-1", "area", "equivalent_diameter_area", "perimeter",
          "eccentricity", "major_axis_length", "minor_axis_length", "orientation", "solidity",
          "mean_intensity", "min_intensity", "max_intensity", "intensity_std", "bbox-0", "bbox-1",
          "bbox-2", "bbox-3", "score", "touches_border");

  /** Of the values in the order of the columns. */
  static SegmentedObject of(double[] v) {
    return new SegmentedObject((int) v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9],
        v[10], v[11], v[12], v[13], v[14], (int) v[15], (int) v[16], (int) v[17], (int) v[18],
        (float) v[19], v[20] != 0);
  }

  /**
   * The row of a table.
   *
   * @return the values of {@link #COLUMNS}; 1 or 0 for the last one
   */
  public double[] values() {
    return new double[] {label, centroidRow, centroidColumn, area, equivalentDiameterArea,
        perimeter, eccentricity, majorAxisLength, minorAxisLength, orientation, solidity,
        meanIntensity, minIntensity, maxIntensity, intensityStd, minRow, minColumn, endRow,
        endColumn, score, touchesBorder ? 1 : 0};
  }
}
