// Conversion to bytes, shared by toByteImage() and image_io::convertToByteImage(). For the
// library's own sources; not installed.
#ifndef ORVA_IMAGE_BYTE_CONVERSION_H
#define ORVA_IMAGE_BYTE_CONVERSION_H

#include "orva/image/image.h"

namespace orva {

// toByteImage() without its test of the format code.
image<unsigned char> bytesOf(const Image& img, bool scale);

}  // namespace orva

#endif
