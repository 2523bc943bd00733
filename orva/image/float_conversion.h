// Runs of pixels as floats, for the library's own sources; not installed.
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

// The img.pixel(i) of as many pixels, for an image of any class. A class that is not the library's
// own is asked pixel by pixel.
void readPixels(const Image& img, std::ptrdiff_t first, std::ptrdiff_t count, float* to);

// The pixels of an image as floats, some at a time.
class PixelFloats {
 public:
  explicit PixelFloats(const Image& img);

  // Those from `first` on; valid up to the next call.
  const float* read(std::ptrdiff_t first, std::ptrdiff_t count);

 private:
  const Image& img_;
  const float* floats_ = nullptr;  // of an image that holds floats
  std::vector<float> buffer_;
};

// The library's own image of pixels T, or null for another class.
template <class T>
const image<T>* ownImage(const Image& img) {
  return typeid(img) == typeid(image<T>) ? static_cast<const image<T>*>(&img) : nullptr;
}

}  // namespace orva

#endif
