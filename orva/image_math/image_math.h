/// @file
/// Small numeric helpers: norms, the angle of a vector and its direction code, and mean, minimum
/// and maximum of an array.
///
/// @code
/// #include "orva/image_math/image_math.h"
/// float length = orva::image_math::norm(3, 4);           // 5
/// unsigned char up = orva::image_math::direction(1, 0);  // 2
/// @endcode
#ifndef ORVA_IMAGE_MATH_IMAGE_MATH_H
#define ORVA_IMAGE_MATH_IMAGE_MATH_H

#include <vector>

#include "orva/util/export.h"

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

/// The smallest element; 0 for an empty array.
template <class T>
T minimum(const std::vector<T>& values);

/// The largest element; 0 for an empty array.
template <class T>
T maximum(const std::vector<T>& values);

extern template ORVA_EXPORT float mean(const std::vector<float>& values);
extern template ORVA_EXPORT float minimum(const std::vector<float>& values);
extern template ORVA_EXPORT float maximum(const std::vector<float>& values);

}  // namespace orva::image_math

#endif
