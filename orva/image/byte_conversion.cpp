#include "orva/image/byte_conversion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <optional>
#include <vector>

#include "orva/image/float_conversion.h"
#include "orva/image/image.h"
#include "orva/image/min_max.h"
#include "orva/image/pixel_traits.h"
#include "orva/image/uninitialized_image.h"
#include "orva/util/cpu_path.h"
#include "orva/util/narrow.h"
#include "orva/util/parallel_for.h"

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

// The same by tasks; nothing if there is a NaN, with which the order matters.
std::optional<Range> rangeOfParts(const Image& img, const Parts& parts) {
  std::vector<MinMax> found(parts.count());
  parallelFor(parts.count(), [&](std::size_t k) {
    PixelFloats pixels(img);
    for (std::ptrdiff_t i = parts.begin(k); i < parts.end(k); i += kConverted) {
      const std::ptrdiff_t n = std::min(kConverted, parts.end(k) - i);
      const MinMax some = findMinMax(pixels.read(i, n), n);
      found[k] = i == parts.begin(k) ? some : united(found[k], some);
    }
  });
  const MinMax all = std::accumulate(found.begin() + 1, found.end(), found.front(), united);
  return all.hasNan ? std::nullopt : std::optional(Range{all.min, all.max});
}

// The range of the first `count` pixels.
Range rangeOf(const Image& img, std::ptrdiff_t count) {
  const Parts parts(count, kPixelsPerTask, 64);
  if (isCancellable() && parts.count() > 1) {
    if (const auto range = rangeOfParts(img, parts)) return *range;
  }
  PixelFloats pixels(img);
  const float first = *pixels.read(0, 1);
  Range range{first, first};
  bool hasNan = first != first;
  for (std::ptrdiff_t i = 0; i < count; i += kConverted) {
    if (i % kPixelsPerTask == 0) checkpoint();
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

  const Step step("conversion", 0, 1);
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
  parallelPixels(result.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    PixelFloats pixels(img);
    for (std::ptrdiff_t i = begin; i < end; i += kConverted) {
      const std::ptrdiff_t count = std::min(kConverted, end - i);
      const float* from = pixels.read(i, count);
      if (fits) {
        truncateAll(from, count, result.pixels() + i);
      } else {
        stretchAll(from, count, range, result.pixels() + i);
      }
    }
  });
  return result;
}

image<unsigned char> toByteImage(const Image& img, bool scale) {
  const int format = img.format();
  if (format < BYTE || format > RGBA) return image<unsigned char>(0, 1, 1, 1, 1);
  return bytesOf(img, scale);
}

}  // namespace orva
