#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orva/image/byte_conversion.h"
#include "orva/image/extremes.h"
#include "orva/image/float_conversion.h"
#include "orva/image/image.h"
#include "orva/image/pixel_traits.h"
#include "orva/image/unset_image.h"
#include "orva/util/cpu_path.h"
#include "orva/util/narrow.h"

namespace orva {
namespace {

template <class T>
image<T> nullImage() {
  return image<T>(0, 1, 1, 1, 1);
}

// A byte image as it is; one of another class than image<T> has no pixels to share.
image<unsigned char> sharedOrCopied(const Image& img) {
  if (const auto* bytes = dynamic_cast<const image<unsigned char>*>(&img)) return *bytes;
  image<unsigned char> result(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
  for (int i = 0; i < result.npix(); ++i) result.setPixel(i, img.pixel(i));
  return result;
}

// Each of these fills `result`, whose pixels are those of `img` in number and order.

template <class T>
void convertSamples(const Image& img, std::ptrdiff_t first, std::ptrdiff_t count, float* to) {
  const T* from = static_cast<const T*>(img.data()) + first;
  onWidestPath([=] {
    for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = static_cast<float>(from[i]);
  });
}

using Rgb = GenericRgb<unsigned char>;

void greyToRgb(const Image& img, image<Rgb>& result) {
  const image<unsigned char> grey = toByteImage(img, true);
  const unsigned char* from = grey.pixels();
  auto* to = reinterpret_cast<unsigned char*>(result.pixels());
  const std::ptrdiff_t count = result.npix();
  onWidestPath([=] {
    ORVA_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      const unsigned char v = from[i];
      to[3 * i] = v;
      to[3 * i + 1] = v;
      to[3 * i + 2] = v;
    }
  });
}

// The colour laid over white.
void compositeAlpha(const Image& img, image<Rgb>& result) {
  const auto* rgba = static_cast<const unsigned char*>(img.data());
  for (int i = 0; i < result.npix(); ++i, rgba += 4) {
    const float alpha = static_cast<float>(rgba[3]) / 255.0F;
    const auto over = [alpha](unsigned char c) {
      return pixelFromFloat<unsigned char>(static_cast<float>(c) * alpha + (1.0F - alpha) * 255.0F);
    };
    result.pixels()[i] = {over(rgba[0]), over(rgba[1]), over(rgba[2])};
  }
}

// The luminance is stretched to 0..255 and each colour keeps its proportions.
template <class T>
void scaleColour(const Image& img, image<Rgb>& result) {
  image<float> bright(img.nx(), img.ny(), img.nframes(), 1, 1);
  readFloats(img, 0, bright.npix(), bright.pixels());
  const image<unsigned char> stretched = toByteImage(bright, true);
  const auto* from = static_cast<const GenericRgb<T>*>(img.data());
  for (int i = 0; i < result.npix(); ++i) {
    const float factor = static_cast<float>(stretched.pixels()[i]) / bright.pixels()[i];
    const auto scaled = [factor](T c) {
      return pixelFromFloat<unsigned char>(factor * static_cast<float>(c));
    };
    result.pixels()[i] = {scaled(from[i].c0), scaled(from[i].c1), scaled(from[i].c2)};
  }
}

constexpr std::ptrdiff_t kTogether = 2048;  // pixels that are read at once

struct Range {
  float low;
  float high;
};

// One value after the other: each is a new lowest one, or else is compared with the highest. A NaN
// becomes the highest, and so does whatever follows it.
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
  for (std::ptrdiff_t i = 0; i < count; i += kTogether) {
    const std::ptrdiff_t n = std::min(kTogether, count - i);
    const float* values = pixels.read(i, n);
    const Extremes extremes = hasNan ? Extremes{} : extremesOf(values, n);
    // Without any NaN so far the order does not matter. From one on it does.
    hasNan = hasNan || extremes.hasNan;
    range = hasNan
                ? widened(range, values, n)
                : Range{std::min(range.low, extremes.least), std::max(range.high, extremes.most)};
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
      // The highest exactly, whatever the quotient rounds to.
      to[i] = wrapTo8(from[i] == range.high ? 255 : stretched);
    }
  });
}

}  // namespace

image<unsigned char> bytesOf(const Image& img, bool scale) {
  if (img.isNull()) return nullImage<unsigned char>();
  if (img.format() == BYTE && !scale) return sharedOrCopied(img);

  image<unsigned char> result = unsetImage<unsigned char>(img.nx(), img.ny(), img.nframes(), 1, 1);
  if (result.isNull()) return result;
  const Range range = rangeOf(img, result.npix());
  // Intended: a constant image becomes black, whatever its value.
  if (std::abs(range.low - range.high) < 0.0001) {
    std::fill_n(result.pixels(), result.npix(), static_cast<unsigned char>(0));
    return result;
  }
  const bool fits = range.low >= 0.0F && range.high <= 255.0F && !scale;
  PixelFloats pixels(img);
  for (std::ptrdiff_t i = 0; i < result.npix(); i += kTogether) {
    const std::ptrdiff_t count = std::min(kTogether, result.npix() - i);
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
  if (format < BYTE || format > RGBA) return nullImage<unsigned char>();
  return bytesOf(img, scale);
}

image<Rgb> toRgbImage(const Image& img) {
  if (img.isNull()) return nullImage<Rgb>();
  image<Rgb> result = unsetImage<Rgb>(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
  switch (img.format()) {
    case BYTE:
    case INT:
    case USHORT:
    case SHORT:
    case FLOAT:
    case UINT:
      greyToRgb(img, result);
      return result;
    case RGB:
      std::copy_n(static_cast<const Rgb*>(img.data()), result.npix(), result.pixels());
      return result;
    case RGBA:
      compositeAlpha(img, result);
      return result;
    case SHORTRGB:
      scaleColour<short>(img, result);
      return result;
    case INTRGB:
      scaleColour<int>(img, result);
      return result;
    case FLOATRGB:
      scaleColour<float>(img, result);
      return result;
    default:
      return nullImage<Rgb>();
  }
}

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
  if (const auto* colour = ownImage<Rgb>(img)) {
    const Rgb* from = colour->pixels() + first;
    onWidestPath([=] {
      for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = luminance(from[i]);
    });
    return;
  }
  const bool isOwn = ownImage<unsigned char>(img) != nullptr || ownImage<short>(img) != nullptr ||
                     ownImage<int>(img) != nullptr || ownImage<unsigned int>(img) != nullptr ||
                     ownImage<float>(img) != nullptr;
  if (isOwn) {
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
  if (!hasFloatForm(img)) return nullImage<float>();
  image<float> result = unsetImage<float>(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
  readFloats(img, 0, result.npix(), result.pixels());
  return result;
}

}  // namespace orva
