#include "orva/image/byte_conversion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "orva/image/float_conversion.h"
#include "orva/image/image.h"
#include "orva/image/min_max.h"
#include "orva/image/pixel_traits.h"
#include "orva/image/uninitialized_image.h"
#include "orva/util/cpu_path.h"
#include "orva/util/narrow.h"

namespace orva {
namespace {

// A byte image that shares the pixels of `img`, or copies those of a class other than image<T>.
image<unsigned char> sharedOrCopied(const Image& img) {
  if (const auto* bytes = dynamic_cast<const image<unsigned char>*>(&img)) return *bytes;
  image<unsigned char> result(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
  for (int i = 0; i < result.npix(); ++i) result.setPixel(i, img.pixel(i));
  return result;
}

constexpr std::ptrdiff_t kConverted = 2048;  // pixels per conversion to floats

struct Range {
  float low;
  float high;
};

// The range widened by values in order. A value is compared with the highest only if it is no new
// lowest. std::max(v, high) gives v where either is a NaN: a NaN becomes the highest, and the next
// value replaces it.
Range widened(Range range, const float* values, std::ptrdiff_t count) {
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const float v = values[i];
    if (range.low > v) {
      range.low = v;
    } else {
      range.high = std::max(v, range.high);
    }
  }
  return range;
}

// The range of the first `count` pixels.
Range rangeOf(const Image& img, std::ptrdiff_t count) {
  PixelFloats pixels(img);
  const float first = *pixels.read(0, 1);
  Range range{first, first};
  bool hasNan = first != first;
  for (std::ptrdiff_t i = 0; i < count; i += kConverted) {
    const std::ptrdiff_t n = std::min(kConverted, count - i);
    const float* values = pixels.read(i, n);
    const MinMax minMax = hasNan ? MinMax{} : findMinMax(values, n);
    // The order of the values matters only from the first NaN on.
    hasNan = hasNan || minMax.hasNan;
    range = hasNan ? widened(range, values, n)
                   : Range{std::min(range.low, minMax.min), std::max(range.high, minMax.max)};
  }
  return range;
}

void truncateAll(const float* from, std::ptrdiff_t count, unsigned char* to) {
  onWidestPath([=] {
    ORVA_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = pixelFromFloat<unsigned char>(from[i]);
  });
}

void stretchAll(const float* from, std::ptrdiff_t count, Range range, unsigned char* to) {
  onWidestPath([=] {
    const float span = range.high - range.low;
    ORVA_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      const int stretched = truncatedInt((from[i] - range.low) * 255.0F / span);
      // The maximum gives exactly 255, whatever the quotient rounds to.
      to[i] = wrapTo8(from[i] == range.high ? 255 : stretched);
    }
  });
}

}  // namespace

image<unsigned char> bytesOf(const Image& img, bool scale) {
  if (img.isNull()) return image<unsigned char>(0, 1, 1, 1, 1);
  if (img.format() == BYTE && !scale) return sharedOrCopied(img);

  image<unsigned char> result =
      uninitializedImage<unsigned char>(img.nx(), img.ny(), img.nframes(), 1, 1);
  if (result.isNull()) return result;
  const Range range = rangeOf(img, result.npix());
  // Intended: a constant image becomes black, whatever its value.
  if (std::abs(range.low - range.high) < 0.0001) {
    std::fill_n(result.pixels(), result.npix(), static_cast<unsigned char>(0));
    return result;
  }
  const bool fits = range.low >= 0.0F && range.high <= 255.0F && !scale;
  PixelFloats pixels(img);
  for (std::ptrdiff_t i = 0; i < result.npix(); i += kConverted) {
    const std::ptrdiff_t count = std::min(kConverted, result.npix() - i);
    const float* from = pixels.read(i, count);
    if (fits) {
      truncateAll(from, count, result.pixels() + i);
    } else {
      stretchAll(from, count, range, result.pixels() + i);
    }
  }
  return result;
}

image<unsigned char> toByteImage(const Image& img, bool scale) {
  const int format = img.format();
  if (format < BYTE || format > RGBA) return image<unsigned char>(0, 1, 1, 1, 1);
  return bytesOf(img, scale);
}

}  // namespace orva
