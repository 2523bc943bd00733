// What differs between the pixel types: format code, reading as float, storing from float.
// For the library's own sources; not installed.
#ifndef ORVA_IMAGE_PIXEL_TRAITS_H
#define ORVA_IMAGE_PIXEL_TRAITS_H

#include <type_traits>

#include "orva/image/image.h"
#include "orva/image/truncate.h"

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

// The contract of Image::setPixel: truncate to 32 bits, then keep the low bits that T holds.
template <class T>
constexpr T pixelFromFloat(float v) {
  if constexpr (std::is_same_v<T, float>) {
    return v;
  } else if constexpr (std::is_same_v<T, unsigned int>) {
    return truncateTo<unsigned int>(v);
  } else if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(truncateTo<int>(v));
  } else {
    const auto grey = pixelFromFloat<unsigned char>(v);
    return {grey, grey, grey};
  }
}

}  // namespace orva

#endif
