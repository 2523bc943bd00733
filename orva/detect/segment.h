/// @file
/// Regions of objects: a label image from objects with center and radius, or from an image alone.
///
///     const auto nuclei = orva::detect::segmentImage(img, {}, {});
///     for (std::size_t k = 0; k < nuclei.objects.size(); ++k)
///       std::cout << "label " << k + 1 << " has the score " << nuclei.objects[k].score << '\n';
///
/// The results are the same bit for bit on every CPU. Nothing is printed and no thread started.
#ifndef ORVA_DETECT_SEGMENT_H
#define ORVA_DETECT_SEGMENT_H

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/image/image.h"
#include "orva/util/export.h"

namespace orva::detect {

/// How regions are made and which are kept.
struct SegmentSettings {
  std::optional<Polarity> polarity;  ///< of the objects, as in FindResult::used; where it is left
                                     ///< open, the one under which more of the objects (of 400
                                     ///< or more a sample) have an outline, bright on a tie
  float minArea = 0.0F;              ///< smaller regions are left out; in pixels, at least 0
  float maxArea = std::numeric_limits<float>::infinity();  ///< larger ones; at least minArea
  bool excludeBorder = false;  ///< whether regions with a pixel in the image's first or last row or
                               ///< column are left out
};

/// What segmentObjects() returns.
struct Segmentation {
  image<int> labels;              ///< width and height of the image; 0 is background, label k the
                                  ///< region of object kept[k - 1]
  std::vector<std::size_t> kept;  ///< indices of the objects that have a region, in ascending order
};

/// The regions of @p objects in plane 0 of @p img, of any pixel type; colour counts as luminance, a
/// pixel that is not a finite number as the smallest finite one.
///
/// The closed outline around each object's center is searched again as findObjects() does, and its
/// circle stands in where there is no outline of about its size. A threshold of the object's own,
/// between the median brightness inside the outline and the lower quartile around it, applied to
/// the image smoothed at a sigma of 1 (and negated for dark objects), then decides on the pixels:
/// those within half the outline's radius always belong to the object unless another object takes
/// them, those beyond 1.45 times it (or a pixel beyond it, if that is more) never.
///
/// The pixels are assigned by flooding from the centers (a marker-controlled watershed) in the
/// order of the distance from the center as a share of the outline's radius in that direction, so
/// that touching objects are divided between their centers. Pixels at the same distance are taken
/// in raster order. Regions are 4-connected and never overlap; background that one region encloses
/// becomes part of it. What lies outside the image counts for nothing: a region ends at the border.
///
/// An object is left out if it is not inside the image (a center off it, a radius that is not a
/// number above 0 and up to the longer side), if the median inside is not above that around it by
/// at least a quarter of the noise's standard deviation, if no pixel of the image lies inside or
/// around it, or if its region covers less than 0.3 of its outline's area inside the image; and of
/// two objects whose centers share a pixel the later one. An image without pixels, without contrast
/// or with a side below 16 pixels has no regions.
///
/// @throws std::invalid_argument for a setting out of its range or not a number
/// @throws std::bad_alloc when the list of pixels to take does not fit in memory; when an image
///         does not, the process ends as scalespace::gaussian() describes
///
/// Several threads may segment different images at the same time. Memory: about 40 bytes per pixel
/// and 400 per object.
/// Cost: proportional to the pixels, and to the objects whatever their size; the pixels of regions
/// are sorted.
///
/// Literature: F. Meyer, Topographic distance and watershed lines, Signal Processing 38, 1994;
/// P. Soille, Morphological Image Analysis, 2nd edition, Springer 2004, chapter 9.
ORVA_EXPORT Segmentation segmentObjects(const Image& img, const std::vector<Object>& objects,
                                        const SegmentSettings& settings);

/// What segmentImage() returns: the objects that have a region, those found in the order of
/// findObjects(), then those that are regions only.
struct SegmentedImage : FindResult {
  image<int> labels;        ///< width and height of the image; 0 is background, label k the region
                            ///< of objects[k - 1]
  std::size_t leftOut = 0;  ///< objects without a region
};

/// Finds the objects of @p img as findObjects() does and labels the region of each as
/// segmentObjects() does, with the polarity that was found; that of @p settings is ignored.
///
/// Then, unless @p sought asks for scores above 0.5, labels compact regions that stand out like the
/// others but have no center that the search finds, such as crescents and nuclei that the border
/// cuts. Such a region is a 4-connected component of the pixels that are brighter (for dark
/// objects darker) than a threshold of the image and that have no labelled neighbour. The threshold
/// lies 0.42 of the way from the median of the background, the pixels more than 4 steps away from
/// every region, to the median of one of the fainter regions, and at least 4 standard deviations of
/// the background away from it. The component's area is 0.5 to 2.5 times the median region's, its
/// solidity at least 0.75, and it stands out of the pixels around it at least half as much as out of
/// the background. Its object has the centroid, the radius of a circle of the same area, which is
/// in the range that @p sought asks for, a score of 0.5 and a coverage of 0. There are none where
/// fewer than three objects have a region.
///
/// Pixels that are not finite numbers, small images, memory and threads: as for findObjects() and
/// segmentObjects(), whose levels of scale are made once.
///
/// @throws std::invalid_argument for a setting out of its range or not a number
/// @throws std::bad_alloc as the two functions do
ORVA_EXPORT SegmentedImage segmentImage(const Image& img, const FindSettings& sought,
                                        const SegmentSettings& settings);

}  // namespace orva::detect

#endif
