// Traits of the pixel types: format code, conversion to and from float.
// For the library's own sources; not installed.
#ifndef ORVA_IMAGE_PIXEL_TRAITS_H
#define ORVA_IMAGE_PIXEL_TRAITS_H

#include <limits>
#include <type_traits>

#include "orva/image/image.h"

namespace orva {

template <class T>
constexpr int formatOf() {
  if constexpr (std::is_same_v<T, unsigned char>) return BYTE;
  if constexpr (std::is_same_v<T, int>) return INT;
  if constexpr (std::is_same_v<T, short>) return SHORT;
  if constexpr (std::is_same_v<T, float>) return FLOAT;
  if constexpr (std::is_same_v<T, unsigned int>) return UINT;
  if constexpr (std::is_same_v<T, GenericRgb<unsigned char>>) return RGB;
}

template <class T>
constexpr float pixelToFloat(T v) {
  return static_cast<float>(v);
}

template <class T>
constexpr float pixelToFloat(const GenericRgb<T>& v) {
  return luminance(v);
}

// As truncateTo(), without branches, so that loops over pixels vectorize.
constexpr int truncatedInt(float v) {
  constexpr float kMin = -2147483648.0F;
  constexpr float kMax = 2147483520.0F;  // the largest float that an int holds
  const float upTo = v <= kMax ? v : kMax;
  const int whole = static_cast<int>(upTo > kMin ? upTo : kMin);
  const int held = v > kMax ? std::numeric_limits<int>::max() : whole;
  return v == v ? held : 0;
}

constexpr unsigned int truncatedUnsigned(float v) {
  constexpr float kMax = 4294967040.0F;  // the largest float that an unsigned int holds
  constexpr float kHalf = 2147483648.0F;
  const float positive = v > 0.0F ? v : 0.0F;  // 0 for a NaN
  const float upTo = positive <= kMax ? positive : kMax;
  const bool isUpper = upTo >= kHalf;
  const int part = static_cast<int>(isUpper ? upTo - kHalf : upTo);
  const unsigned int whole = static_cast<unsigned int>(part) + (isUpper ? 1U << 31U : 0U);
  return v > kMax ? std::numeric_limits<unsigned int>::max() : whole;
}

// The conversion of Image::setPixel: truncates to 32 bits and keeps the low bits that T holds.
template <class T>
constexpr T pixelFromFloat(float v) {
  if constexpr (std::is_same_v<T, float>) {
    return v;
  } else if constexpr (std::is_same_v<T, unsigned int>) {
    return truncatedUnsigned(v);
  } else if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(truncatedInt(v));
  } else {
    const auto grey = pixelFromFloat<unsigned char>(v);
    return {grey, grey, grey};
  }
}

}  // namespace orva

#endif
