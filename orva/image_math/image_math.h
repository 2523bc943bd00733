/// @file
/// Numbers and statistics: norms, the angle of a vector and its direction code, mean, minimum and
/// maximum of an array, the brightest pixels and the zero crossings of an image.
///
/// @code
/// #include "orva/image_math/image_math.h"
/// float length = orva::image_math::norm(3, 4);           // 5
/// unsigned char up = orva::image_math::direction(1, 0);  // 2
/// @endcode
#ifndef ORVA_IMAGE_MATH_IMAGE_MATH_H
#define ORVA_IMAGE_MATH_IMAGE_MATH_H

#include <vector>

#include "orva/image/image.h"
#include "orva/util/export.h"

/// Norms, angles, directions, statistics of brightness, zero crossings.
namespace orva::image_math {

/// The length of (@p a, @p b), in single precision.
ORVA_EXPORT float norm(float a, float b);

/// The squared length of (@p a, @p b), in single precision.
ORVA_EXPORT float norm2(float a, float b);

/// The angle of the vector (@p x, @p y) in degrees; 0 for the null vector.
///
/// The single-precision arc tangent times 57.2958, which is a little more than 180/pi: a vector
/// along -x gives 180.00008 or, with a y of -0, -180.00008. This is intended.
ORVA_EXPORT float angle(float y, float x);

/// One of eight directions, counter-clockwise from 0 for +x, in sectors of 45 degrees. A boundary
/// belongs to the sector nearer to 0. Angles past 157.5 and NaN give 4; angles below -180 give 5,
/// which is intended.
ORVA_EXPORT unsigned char direction(float degrees);

/// The direction of the angle of the vector (@p x, @p y); 0 for the null vector.
ORVA_EXPORT unsigned char direction(float y, float x);

/// The arithmetic mean, summed in T from the first element on; 0 for an empty array. The library
/// holds these three templates for float.
template <class T>
T mean(const std::vector<T>& values);

/// The smallest element; 0 for an empty array. With a NaN the result depends on its place.
template <class T>
T minimum(const std::vector<T>& values);

/// The largest element; 0 for an empty array. With a NaN the result depends on its place.
template <class T>
T maximum(const std::vector<T>& values);

/// @cond
extern template ORVA_EXPORT float mean(const std::vector<float>& values);
extern template ORVA_EXPORT float minimum(const std::vector<float>& values);
extern template ORVA_EXPORT float maximum(const std::vector<float>& values);
/// @endcond

/// @name The brightest pixels
/// Brightness counts in whole levels: with the darkest and the brightest pixel truncated toward
/// zero to the levels `lo` and `hi`, a pixel v is at level lo + (v - lo) truncated. All pixels of
/// the image count, colour as luminance. Values past 32 bits are at the nearest level that an int
/// holds, a NaN is at `lo`.
///
/// A null image gives 0; a share or number out of range ends the process with status 2. Standard
/// error shows first, for a null image, the two headings as they belong to topByPixelNumber() and
/// meanOfTopByPercentage(); this is intended:
/// @verbatim
/// In float topByPercentage(const Image &img, int numpix)
/// In float topByPercentage(const Image &img, float p)
/// Warning: img is null, return 0.
/// @endverbatim
/// for a number below 0 or above npix - 1:
/// @verbatim
/// In float topByPercentage(const Image &img, int numpix)
/// Error: numpix must be in [0, img.npix()-1]
/// @endverbatim
/// and for a share outside 0..1 (a NaN counts as 0):
/// @verbatim
/// In float image_math::meanOfTopByPercentage(vector<float> img, float p)
/// Error: percentage must be a value in [0, 1]
/// @endverbatim
/// Cost: three passes over the image; a sort when the levels span more than 2^20.
/// @{

/// The level that at least @p numpix pixels reach; the highest level for 0.
ORVA_EXPORT float topByPixelNumber(const Image& img, int numpix);
/// topByPixelNumber() of the share @p p of all pixels, in single precision and rounded down. A
/// share of 1 is thus out of range.
ORVA_EXPORT float topByPercentage(const Image& img, float p);
/// The mean level of the share @p p of all pixels; the highest level if that is no pixel. The last
/// level enters with all its pixels. Sums are kept in 32-bit integers, which wrap around.
ORVA_EXPORT float meanOfTopByPercentage(const Image& img, float p);
/// The same of an array; 0 for an empty one. Within 0.01 of 1 it is mean(values), whatever else
/// @p p is.
ORVA_EXPORT float meanOfTopByPercentage(std::vector<float> values, float p);
/// @}

/// @name Zero crossings
/// The bip::edge() pixels of an image thresholded at 0 (bip::threshold), in plane 0, column by
/// column. None for a null image.
/// @{
ORVA_EXPORT std::vector<Point> findZeros(const Image& img);
/// Those of both images; none when they differ in size (Image::equalSize).
ORVA_EXPORT std::vector<Point> findZeros(const Image& a, const Image& b);
/// @}

}  // namespace orva::image_math

#endif
