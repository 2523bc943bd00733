// Runs of pixels as floats, for the library's own sources; not installed.
#ifndef ORVA_IMAGE_FLOAT_CONVERSION_H
#define ORVA_IMAGE_FLOAT_CONVERSION_H

#include <cstddef>

#include "orva/image/image.h"

namespace orva {

// Whether toFloatImage() gives an image of the same size for `img`.
bool hasFloatForm(const Image& img);

// Pixels `first` .. `first` + `count` - 1 of an image that has a float form.
void readFloats(const Image& img, std::ptrdiff_t first, std::ptrdiff_t count, float* to);

}  // namespace orva

#endif
