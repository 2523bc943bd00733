/// @file
/// Binary image processing: connected regions and their measurements, erosion, dilation, edges,
/// boundaries and hole filling.
///
/// A mask is a byte image with 255 for object and 0 for background. A label image is a short image
/// in which the pixels of region k carry k = 0, 1, 2, ... and the background -1. Null inputs give
/// empty results; an empty image has width 0 and every other size 1.
///
/// @code
/// #include "orva/bip/bip.h"
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

namespace bip {

/// @name Connected regions
/// Regions are numbered in the order (z, then y, then x) of their first pixels. The first volume of
/// the input is labelled. Each pixel is queued once. Labels are shorts: of more than 32768 regions
/// the first are kept, the pixels of the rest stay -1, @p n is 32768, and standard error shows
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
/// One record a label, 0 .. n - 1; a label without pixels keeps a record of zeros. Without @p n it
/// is regionNumber(labels). Pixels of other labels are skipped. Brightness is read as floats and
/// summed in linear order, in single precision. A null brightness image leaves mean and variance 0;
/// so does one of another size (Image::equalSize), after these lines on standard error:
/// @verbatim
/// In bip::regionFeatures
///    Warning: label and brightness must have the same size
///    Brightness image ignored
/// @endverbatim
/// Cost: three walks over the image.
/// @{
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
ORVA_EXPORT std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels, int n,
                                                                  const Image& brightness,
                                                                  bool sorted);
ORVA_EXPORT std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels,
                                                                  const Image& brightness,
                                                                  bool sorted);
/// @}

/// 256 counts, one a byte value; values outside @p low .. @p high are not counted.
ORVA_EXPORT std::vector<int> histogram(const image<unsigned char>& img, int low, int high);

/// @name Erosion and dilation by one pixel, in place
/// For single planes. In a stack only plane 0 is looked at and all of it counts as border.
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
/// everything. Empty for a null image and for formats other than BYTE, INT, SHORT and FLOAT.
ORVA_EXPORT image<unsigned char> edge(const Image& img);

/// The edge() pixels of every region, plane 0, row by row.
ORVA_EXPORT std::vector<std::vector<Point>> boundaries(const image<short>& labels);

/// Fills all background that is not connected to the border along the axes, and sets every non-zero
/// pixel to 255. The first volume is processed; a null mask stays. More than 32767 holes are filled
/// too, although regions() reports them on standard error.
ORVA_EXPORT void removeInternalStructures(image<unsigned char>& mask);

}  // namespace bip
}  // namespace orva

#endif
