#include "orva/image/byte_conversion.h"
#include "orva/image/pixel_traits.h"
#include "orva/image_io/image_io.h"

namespace orva::image_io {
namespace {

template <class T>
image<T> __image_format_conv__(const Image& img) {
  if (img.isNull()) return image<T>(0, 1, 1, 1, 1);
  image<T> result(img.nx(), img.ny(), img.nframes(), 1, 1);
  for (int i = 0; i < result.npix(); ++i) result.pixels()[i] = pixelFromFloat<T>(img.pixel(i));
  return result;
}

}  // namespace

image<unsigned char> convertToByteImage(const Image& img, bool rescale) {
  return bytesOf(img, rescale);
}

image<unsigned int> convertToUIntImage(const Image& img) {
  return __image_format_conv__<unsigned int>(img);
}

image<int> convertToIntImage(const Image& img) { return __image_format_conv__<int>(img); }

image<float> convertToFloatImage(const Image& img) { return __image_format_conv__<float>(img); }

image<short> convertToShortImage(const Image& img) { return __image_format_conv__<short>(img); }

}  // namespace orva::image_io
