// Pictures as PNG files.
#ifndef ORVA_FORMATS_PNG_ENCODER_H
#define ORVA_FORMATS_PNG_ENCODER_H

#include <cstdint>
#include <string>

#include "orva/image/image.h"

namespace orva::formats {

// The file of `width` x `height` grey or colour pixels. Throws FileError.
std::string encodePng(const unsigned char* pixels, int width, int height);
std::string encodePng(const std::uint16_t* pixels, int width, int height);
std::string encodePng(const orva::GenericRgb<unsigned char>* pixels, int width, int height);
std::string encodePng(const orva::GenericRgb<std::uint16_t>* pixels, int width, int height);

}  // namespace orva::formats

#endif
