#include "orva/image/float_conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "orva/image/image.h"
#include "orva/image/uninitialized_image.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva {
namespace {

template <class T>
void convertSamples(const Image& img, std::ptrdiff_t first, std::ptrdiff_t count, float* to) {
  const T* from = static_cast<const T*>(img.data()) + first;
  onWidestPath([=] {
    for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = static_cast<float>(from[i]);
  });
}

}  // namespace

bool hasFloatForm(const Image& img) {
  if (img.isNull()) return false;
  switch (img.format()) {
    case BYTE:
    case SHORT:
    case INT:
    case USHORT:
    case UINT:
    case FLOAT:
    case RGB:
    case SHORTRGB:
    case INTRGB:
    case FLOATRGB:
      return true;
    default:
      return false;
  }
}

void readFloats(const Image& img, std::ptrdiff_t first, std::ptrdiff_t count, float* to) {
  switch (img.format()) {
    case BYTE:
      return convertSamples<unsigned char>(img, first, count, to);
    case SHORT:
      return convertSamples<short>(img, first, count, to);
    case INT:
      return convertSamples<int>(img, first, count, to);
    case USHORT:
      return convertSamples<std::uint16_t>(img, first, count, to);
    case UINT:
      return convertSamples<unsigned int>(img, first, count, to);
    case FLOAT:
      std::copy_n(static_cast<const float*>(img.data()) + first, count, to);
      return;
    default:
      readPixels(img, first, count, to);
  }
}

void readPixels(const Image& img, std::ptrdiff_t first, std::ptrdiff_t count, float* to) {
  if (const auto* colour = ownImage<GenericRgb<unsigned char>>(img)) {
    const GenericRgb<unsigned char>* from = colour->pixels() + first;
    onWidestPath([=] {
      for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = luminance(from[i]);
    });
    return;
  }
  if (isOwnImage(img)) {
    readFloats(img, first, count, to);
  } else {
    for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = img.pixel(static_cast<int>(first + i));
  }
}

PixelFloats::PixelFloats(const Image& img) : img_(img) {
  if (const auto* own = ownImage<float>(img)) floats_ = own->pixels();
}

const float* PixelFloats::read(std::ptrdiff_t first, std::ptrdiff_t count) {
  if (floats_ != nullptr) return floats_ + first;
  if (buffer_.size() < static_cast<std::size_t>(count)) {
    buffer_.resize(static_cast<std::size_t>(count));
  }
  readPixels(img_, first, count, buffer_.data());
  return buffer_.data();
}

image<float> toFloatImage(const Image& img) {
  if (!hasFloatForm(img)) return image<float>(0, 1, 1, 1, 1);
  image<float> result = uninitializedImage<float>(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
  const Step step("conversion", 0, 1);
  parallelPixels(result.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    readFloats(img, begin, end - begin, result.pixels() + begin);
  });
  return result;
}

bool isOwnImage(const Image& img) {
  return ownImage<unsigned char>(img) != nullptr || ownImage<short>(img) != nullptr ||
         ownImage<int>(img) != nullptr || ownImage<unsigned int>(img) != nullptr ||
         ownImage<float>(img) != nullptr || ownImage<GenericRgb<unsigned char>>(img) != nullptr;
}

}  // namespace orva
