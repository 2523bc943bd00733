// Conversion of consecutive pixels to floats. For the library's own sources; not installed.
#ifndef ORVA_IMAGE_FLOAT_CONVERSION_H
#define ORVA_IMAGE_FLOAT_CONVERSION_H

#include <cstddef>
#include <typeinfo>
#include <vector>

#include "orva/image/image.h"

namespace orva {

// Whether toFloatImage() gives an image of the same size for `img`.
bool hasFloatForm(const Image& img);

// Pixels `first` .. `first` + `count` - 1 of an image that has a float form.
void readFloats(const Image& img, std::ptrdiff_t first, std::ptrdiff_t count, float* to);

// img.pixel(i) of the same pixels, for an image of any class. Of a class that is not the library's
// own, each pixel is read by the virtual pixel().
void readPixels(const Image& img, std::ptrdiff_t first, std::ptrdiff_t count, float* to);

// Reads the pixels of an image as floats, block by block.
class PixelFloats {
 public:
  explicit PixelFloats(const Image& img);

  // `count` pixels from `first` on; valid until the next call.
  const float* read(std::ptrdiff_t first, std::ptrdiff_t count);

 private:
  const Image& img_;
  const float* floats_ = nullptr;  // of an image<float>, which needs no conversion
  std::vector<float> buffer_;
};

// The library's own image of pixels T, or null for another class.
template <class T>
const image<T>* ownImage(const Image& img) {
  return typeid(img) == typeid(image<T>) ? static_cast<const image<T>*>(&img) : nullptr;
}

// Whether `img` is one of the library's own images, whose pixels different threads may set.
bool isOwnImage(const Image& img);

}  // namespace orva

#endif
