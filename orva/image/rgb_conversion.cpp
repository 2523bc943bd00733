#include <algorithm>
#include <cstddef>

#include "orva/image/float_conversion.h"
#include "orva/image/image.h"
#include "orva/image/pixel_traits.h"
#include "orva/image/uninitialized_image.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva {
namespace {

using Rgb = GenericRgb<unsigned char>;

// These fill `result`, whose pixels are those of `img` in number and order.

void greyToRgb(const Image& img, image<Rgb>& result) {
  const image<unsigned char> grey = toByteImage(img, true);
  const unsigned char* from = grey.pixels();
  auto* to = reinterpret_cast<unsigned char*>(result.pixels());
  parallelPixels(result.npix(), [=](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t i = begin; i < end; ++i) {
        const unsigned char v = from[i];
        to[3 * i] = v;
        to[3 * i + 1] = v;
        to[3 * i + 2] = v;
      }
    });
  });
}

// Composites the colour over white.
void compositeAlpha(const Image& img, image<Rgb>& result) {
  const auto* rgba = static_cast<const unsigned char*>(img.data());
  parallelPixels(result.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      const unsigned char* from = rgba + 4 * i;
      const float alpha = static_cast<float>(from[3]) / 255.0F;
      const auto over = [alpha](unsigned char c) {
        return pixelFromFloat<unsigned char>(static_cast<float>(c) * alpha +
                                             (1.0F - alpha) * 255.0F);
      };
      result.pixels()[i] = {over(from[0]), over(from[1]), over(from[2])};
    }
  });
}

// Stretches the luminance to 0..255 and keeps the proportions of each colour.
template <class T>
void scaleColour(const Image& img, image<Rgb>& result) {
  image<float> bright(img.nx(), img.ny(), img.nframes(), 1, 1);
  parallelPixels(bright.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    readFloats(img, begin, end - begin, bright.pixels() + begin);
  });
  const image<unsigned char> stretched = toByteImage(bright, true);
  const auto* from = static_cast<const GenericRgb<T>*>(img.data());
  parallelPixels(result.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      const float factor = static_cast<float>(stretched.pixels()[i]) / bright.pixels()[i];
      const auto scaled = [factor](T c) {
        return pixelFromFloat<unsigned char>(factor * static_cast<float>(c));
      };
      result.pixels()[i] = {scaled(from[i].c0), scaled(from[i].c1), scaled(from[i].c2)};
    }
  });
}

}  // namespace

image<Rgb> toRgbImage(const Image& img) {
  if (img.isNull()) return image<Rgb>(0, 1, 1, 1, 1);
  const Step step("conversion", 0, 1);
  image<Rgb> result = uninitializedImage<Rgb>(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
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
      return image<Rgb>(0, 1, 1, 1, 1);
  }
}

}  // namespace orva
