/// @file
/// Measurements of labelled regions, with the names and definitions of scikit-image's
/// regionprops_table.
///
///     for (const auto& m : orva::detect::measureObjects(labels, img))
///       std::cout << m.label << ": " << m.area << " pixels, mean " << m.meanIntensity << '\n';
///
/// The results are the same bit for bit on every CPU. Nothing is printed and no thread started.
#ifndef ORVA_DETECT_MEASURE_H
#define ORVA_DETECT_MEASURE_H

#include <vector>

#include "orva/image/image.h"
#include "orva/util/export.h"

namespace orva::detect {

/// A region's measurements; lengths in pixels. Pixel centers are at whole numbers. The axes and
/// their orientation are those of the ellipse that has the region's second central moments.
struct ObjectMeasures {
  int label;                      ///< `label`
  double centroidRow;             ///< `centroid-0`
  double centroidColumn;          ///< `centroid-1`
  double area;                    ///< `area`: the number of pixels
  double equivalentDiameterArea;  ///< `equivalent_diameter_area`: of the circle of the same area
  double perimeter;     ///< `perimeter`: length of the line through the centers of the border
                        ///< pixels, those with one of their four neighbours outside
  double eccentricity;  ///< `eccentricity`: of the ellipse, 0 for a circle, 1 for a straight line
  double majorAxisLength;  ///< `major_axis_length`: of the ellipse, 0 for a single pixel
  double minorAxisLength;  ///< `minor_axis_length`: of the ellipse, 0 up to rounding for a straight
                           ///< line
  double orientation;      ///< `orientation`: angle from the row axis (downwards) to the major
                           ///< axis, counter-clockwise, from -pi/2 to pi/2 radians; 0 where no
                           ///< axis is longer
  double solidity;         ///< `solidity`: area over the number of pixels whose center lies in
                           ///< the convex hull of the middles of the pixels' sides
  double meanIntensity;    ///< `mean_intensity`
  double minIntensity;     ///< `min_intensity`
  double maxIntensity;     ///< `max_intensity`
  double intensityStd;     ///< `intensity_std`: standard deviation, of the pixels themselves
  int minRow;              ///< `bbox-0`: first row
  int minColumn;           ///< `bbox-1`: first column
  int endRow;              ///< `bbox-2`: the row after the last
  int endColumn;           ///< `bbox-3`: the column after the last
  bool touchesBorder;      ///< whether a pixel is in the image's first or last row or column
};

/// The measurements of the regions in plane 0 of @p labels, in ascending order of labels. A region
/// is all pixels of one label above 0, connected or not; other pixels are background. Intensities
/// are those of plane 0 of @p intensities, of any pixel type, read as floats; colour counts as
/// luminance. A region with a NaN has a mean, a minimum, a maximum and a standard deviation of NaN.
///
/// Sums are exact as long as they need at most 53 bits: with coordinates, for regions of up to
/// 4096 x 4096 pixels. A null label image beside a null image has no regions; outside the image is
/// background.
///
/// @throws std::invalid_argument for images of different width or height
///
/// Memory: 16 bytes per run of equal labels in a row. Cost: proportional to the pixels.
ORVA_EXPORT std::vector<ObjectMeasures> measureObjects(const image<int>& labels,
                                                       const Image& intensities);

/// A measurement by its name.
struct MeasureColumn {
  const char* name;                     ///< as in ObjectMeasures
  double (*of)(const ObjectMeasures&);  ///< its value, exact for whole numbers, too
};

/// The measurements in the order of the members, all but touchesBorder: the columns of a table.
ORVA_EXPORT const std::vector<MeasureColumn>& measureColumns();

}  // namespace orva::detect

#endif
