/// @file
/// Binary image processing: thresholds, connected regions, their measurements and selection,
/// chamfer distances, propagation, erosion, dilation, edges, boundaries, hole filling and convex
/// hulls.
///
/// A mask is a byte image with 255 for object and 0 for background. A label image is a short image
/// in which the pixels of region k carry k = 0, 1, 2, ... and the background -1. Null inputs give
/// empty results; an empty image has width 0 and every other size 1. Where no cost is stated, it is
/// one or a few passes over the image.
///
/// @code
/// #include "orva/bip/bip.h"
/// const float level = orva::bip::computeThreshold(img, 2.0f);
/// orva::image<unsigned char> mask = orva::bip::threshold(img, level);
/// int n = 0;
/// orva::image<short> labels = orva::bip::regions(mask, n, 255, 1, orva::NEIGHBORHOOD_4);
/// std::vector<orva::RegionFeature> table = orva::bip::regionFeatures(labels, n, img);
/// @endcode
#ifndef ORVA_BIP_BIP_H
#define ORVA_BIP_BIP_H

#include <vector>

#include "orva/image/image.h"
#include "orva/util/export.h"

namespace orva {

/// Which pixels at reach d are neighbours of a pixel. Any other value stands for none.
enum NeighborhoodType : int {
  /// The axial pixels d away; a coordinate past the border is held at the border pixel.
  NEIGHBORHOOD_4 = 4,
  /// The whole box of half-width d, cut to the image: 8 neighbours in a plane, 26 in a volume for
  /// d = 1.
  NEIGHBORHOOD_8 = 8
};

/// The measurements of one region. Coordinates are in pixels; centroids are rounded down.
struct ORVA_EXPORT RegionFeature {
  int xmin = 0;       ///< smallest x
  int xmax = 0;       ///< largest x
  int ymin = 0;       ///< smallest y
  int ymax = 0;       ///< largest y
  int zmin = 0;       ///< smallest z
  int zmax = 0;       ///< largest z
  int cx = 0;         ///< centroid x
  int cy = 0;         ///< centroid y
  int cz = 0;         ///< centroid z
  int radius = 0;     ///< radius of the disc (or ball) of as many pixels, rounded down, at least 1
  int npix = 0;       ///< number of pixels
  float mean = 0.0F;  ///< mean brightness
  float var = 0.0F;   ///< sample variance of the brightness

  /// The npix fields, in order.
  static std::vector<int> npixArray(const std::vector<RegionFeature>& features);
  /// The mean fields, in order.
  static std::vector<float> meanArray(const std::vector<RegionFeature>& features);
  /// The var fields, in order.
  static std::vector<float> varArray(const std::vector<RegionFeature>& features);
};

/// Binary images: thresholds, labels, region measurements, distances, morphology and hulls.
namespace bip {

/// @name Connected regions
/// Regions are numbered in the order (z, then y, then x) of their first pixels. The first volume of
/// the input is labelled. Cost: a few passes over the pixels; with a reach of more than 1, the
/// pixels times those in reach of each. The memory beside the label image is at most half of that
/// (or 8 KiB). Labels are shorts: of more than 32768 regions the first are kept, the pixels of the
/// rest stay -1, @p n is 32768, and standard error shows
/// @verbatim
/// In bip::regions
///    Warning: more than 32768 regions, the rest are ignored
/// @endverbatim
/// @{

/// The regions of pixels equal to @p value, connected by the neighbours of @p type at @p reach (a
/// negative reach counts as 0). With a negative @p value every pixel takes part and regions are
/// areas of equal value. @p n receives their number; a null input leaves it alone.
ORVA_EXPORT image<short> regions(const image<unsigned char>& in, int& n, int value, int reach,
                                 NeighborhoodType type);
/// The regions of value 255 with reach 1 and NEIGHBORHOOD_4.
ORVA_EXPORT image<short> regions(const image<unsigned char>& in);
/// The areas of equal value of a short image, NEIGHBORHOOD_8 with reach 1; there is no background.
ORVA_EXPORT image<short> regions(const image<short>& in, int& n);
/// The same without their number.
ORVA_EXPORT image<short> regions(const image<short>& in);
/// @}

/// The largest label plus one; 0 for a null image and when every label is negative.
ORVA_EXPORT int regionNumber(const image<short>& labels);

/// Closes the gaps in the numbering, keeping the order of the labels. Negative values stay.
ORVA_EXPORT void relabel(image<short>& labels);

/// True for a byte image whose pixels are all 0 or 255, one without pixels included.
ORVA_EXPORT bool isBinaryImage(const Image& img);

/// Replaces every byte by its complement: 0 and 255 change places.
ORVA_EXPORT void reverse(image<unsigned char>& img);

/// @name Region measurements
/// One record per label, 0 to n - 1; a label without pixels keeps a record of zeros. Without @p n
/// it is regionNumber(labels), and a negative one counts as 0. Pixels of other labels are skipped.
/// Brightness is read as floats and summed in linear order, in single precision. A null brightness
/// image leaves mean and variance 0; so does one of another size (Image::equalSize), after these
/// lines on standard error:
/// @verbatim
/// In bip::regionFeatures
///    Warning: label and brightness must have the same size
///    Brightness image ignored
/// @endverbatim
/// Cost: two passes over the image.
/// @{

/// One record per label; without @p brightness its mean and variance are 0.
ORVA_EXPORT std::vector<RegionFeature> regionFeatures(const image<short>& labels, int n,
                                                      const Image& brightness);
ORVA_EXPORT std::vector<RegionFeature> regionFeatures(const image<short>& labels,
                                                      const Image& brightness);
ORVA_EXPORT std::vector<RegionFeature> regionFeatures(const image<short>& labels, int n);
ORVA_EXPORT std::vector<RegionFeature> regionFeatures(const image<short>& labels);
/// @}

/// @name Brightness lists
/// The brightness of each region's pixels, in linear order or, when @p sorted, ascending with a NaN
/// last. Nothing when the images differ in size or have no pixels.
/// @{

/// One list per label, 0 to n - 1, without spare capacity; without @p n that is
/// regionNumber(labels).
ORVA_EXPORT std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels, int n,
                                                                  const Image& brightness,
                                                                  bool sorted);
ORVA_EXPORT std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels,
                                                                  const Image& brightness,
                                                                  bool sorted);
/// @}

/// 256 counts, one per byte value; values outside @p low to @p high are not counted. All are 0 for
/// a null image.
ORVA_EXPORT std::vector<int> histogram(const image<unsigned char>& img, int low, int high);

/// @name Chamfer distances
/// The distance of every object pixel, in pixels, by 3x3 (in a volume 3x3x3) chamfer steps of
/// Euclidean length: two passes, the first with the steps whose coordinate sum is at most 0, the
/// second with those of at least 0. In a volume one of the long diagonals is in no pass that could
/// repeat it, so that distances along it are larger; this is intended. In a byte image the objects
/// are the non-zero pixels, and the distance is that to the nearest zero pixel. In a short image
/// the objects are the labels of at least 0; a pixel with another value among its neighbours is a
/// boundary and counts as 1, the others in a region add their distance to it. Background is 0.
///
/// The two passes leave out the border. What they do not reach follows its neighbours at 1 for
/// every step, diagonals included; what has nothing to follow stays 10000. The first volume of the
/// input is measured. Cost: three passes over the image.
///
/// G. Borgefors, Distance transformations in digital images, Computer Vision, Graphics, and Image
/// Processing 34, 1986.
///
/// The result has the input's width, height and depth. It is null for other inputs, after two lines
/// on standard error, the second for a null image or for another pixel format:
/// @verbatim
/// In bip::chamfer
///    Warning: input is empty, return null image
///    Warning: input is not BYTE or SHORT image, return null image
/// @endverbatim
/// @{

/// The distances.
ORVA_EXPORT image<float> fchamfer(const Image& in);
/// The distances stretched to 0..255 (image_io::convertToByteImage); complemented with @p invert.
ORVA_EXPORT image<unsigned char> chamfer(const Image& in, bool invert);
/// @}

/// Gives every negative pixel of a label image the label of the region nearest by chamfer distance
/// (see fchamfer()), in place. A pixel @p maxDistance or more away becomes -1, and so does the
/// border, which is not reached. Of regions at the same distance, the one that the forward pass
/// reaches wins, and within a pass the first in the order of the steps: z, y, x ascending. The last
/// test is literal: with a @p maxDistance of 0 or less all pixels become -1, and above 10000
/// unreached pixels keep their values. The first volume is processed; a null image stays.
ORVA_EXPORT void propagate(image<short>& labels, float maxDistance);

/// @name Erosion and dilation by one pixel, in place
/// For single planes. In a stack only plane 0 is processed, and all of it counts as border, which
/// is intended.
/// @{

/// Sets to -1 every label pixel at the border or with a different value among its eight neighbours.
/// Touching regions both lose their common border.
ORVA_EXPORT void erode(image<short>& labels);
/// Sets to 0 every 255 pixel at the border or with a neighbour below 255.
ORVA_EXPORT void erode(image<unsigned char>& mask);
/// Sets to 255 the eight neighbours that are 0 of every 255 pixel off the border. Other values
/// stay.
ORVA_EXPORT void dilate(image<unsigned char>& mask);
/// @}

/// 255 where at least two of a pixel's eight neighbours in plane 0 differ from it, 0 elsewhere and
/// on the border; one differing neighbour is not enough, which is intended. A NaN differs from
/// everything. Empty for a null image, for formats other than BYTE, INT, SHORT and FLOAT, and
/// for an image that has such a format without being an image<T>.
ORVA_EXPORT image<unsigned char> edge(const Image& img);

/// The edge() pixels of every region, plane 0, row by row: one list per label, without spare
/// capacity.
ORVA_EXPORT std::vector<std::vector<Point>> boundaries(const image<short>& labels);

/// Fills all background that is not connected to the border along the axes, and sets every non-zero
/// pixel to 255. The first volume is processed; a null mask stays. More than 32767 holes are filled
/// too, although regions() reports them on standard error.
ORVA_EXPORT void removeInternalStructures(image<unsigned char>& mask);

/// @name Convex hulls
/// Fills every region up to its convex hull, approximated by the slabs across a number of
/// directions: @p precision (clamped to 3..50) over the half circle, in a volume
/// 4 * precision * (precision + 1) over the half sphere. A background pixel of the region's
/// bounding box joins it when its projection on each direction lies between those of the region's
/// boundary pixels, both included. Regions are filled in label order and never lose pixels. The
/// number of regions goes to standard output, as "N regions detected.", unless the image is null.
/// Cost: the pixels of the bounding boxes times the directions.
/// @{

/// In place, in the first volume.
ORVA_EXPORT void convexHull(image<short>& labels, int precision);
/// The filled labels of the mask's 255 regions (NEIGHBORHOOD_4).
ORVA_EXPORT image<short> convexHull(const image<unsigned char>& mask, int precision);
/// @}

/// 255 where the pixel, as a float, is at least @p t, else 0; a NaN gives 0. The mask has the
/// input's width, height and depth: the first volume.
ORVA_EXPORT image<unsigned char> threshold(const Image& img, float t);

/// The midpoint between the mean brightness inside and outside the bright blobs of @p img, its
/// LAPLACIAN_NEGATIVE mask at @p scale (scalespace::features), in pixels. The mean of no pixels is
/// 0. Sums are in single precision, and a NaN makes the result one. Cost: mostly that of the mask.
/// For a null image 0, after three lines on standard error, the first with a blank at its end:
/// @verbatim
/// Warning:
/// In bip::computeThreshold, input image is empty!
/// 0 returned
/// @endverbatim
ORVA_EXPORT float computeThreshold(const Image& img, float scale);

/// @name Region selection
/// Sets to 0 the pixels of those 255 regions (NEIGHBORHOOD_4) of a mask that are unwanted, in
/// place, in the first volume. Other pixels stay.
/// @{

/// Regions of fewer than @p minSize pixels or of a mean brightness below @p minMean go. Brightness
/// of another size than the mask is reported and counts as 0 (see regionFeatures()). A mask without
/// regions stays, after "bip::regionFeatures failed." on standard error.
ORVA_EXPORT void selectRegions(image<unsigned char>& mask, const Image& brightness, float minMean,
                               int minSize);
/// Regions of fewer than @p minSize or more than @p maxSize pixels go; a negative @p maxSize stands
/// for no limit. The first region in raster order always stays, unlike in selectRegions(); this is
/// intended. Nothing for a @p minSize below 1.
ORVA_EXPORT void selectRegionsBySize(image<unsigned char>& mask, int minSize, int maxSize);
/// @}

}  // namespace bip
}  // namespace orva

#endif
