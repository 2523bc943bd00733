#include <algorithm>
#include <cstddef>

#include "orva/image/byte_conversion.h"
#include "orva/image/float_conversion.h"
#include "orva/image/pixel_traits.h"
#include "orva/image/uninitialized_image.h"
#include "orva/image_io/image_io.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::image_io {
namespace {

// With all frames as planes.
template <class T>
image<T> converted(const Image& img) {
  if (img.isNull()) return image<T>(0, 1, 1, 1, 1);
  image<T> result = uninitializedImage<T>(img.nx(), img.ny(), img.nframes(), 1, 1);
  constexpr std::ptrdiff_t kTogether = 2048;
  const Step step("conversion", 0, 1);
  parallelPixels(result.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    PixelFloats pixels(img);
    for (std::ptrdiff_t i = begin; i < end; i += kTogether) {
      const std::ptrdiff_t count = std::min(kTogether, end - i);
      const float* from = pixels.read(i, count);
      T* to = result.pixels() + i;
      onWidestPath([=] {
        ORVA_INDEPENDENT
        for (std::ptrdiff_t k = 0; k < count; ++k) to[k] = pixelFromFloat<T>(from[k]);
      });
    }
  });
  return result;
}

}  // namespace

image<unsigned char> convertToByteImage(const Image& img, bool rescale) {
  return bytesOf(img, rescale);
}

image<unsigned int> convertToUIntImage(const Image& img) { return converted<unsigned int>(img); }

image<int> convertToIntImage(const Image& img) { return converted<int>(img); }

image<float> convertToFloatImage(const Image& img) { return converted<float>(img); }

image<short> convertToShortImage(const Image& img) { return converted<short>(img); }

}  // namespace orva::image_io
