// Images as TIFF files.
#ifndef ORVA_FORMATS_TIFF_WRITER_H
#define ORVA_FORMATS_TIFF_WRITER_H

#include <cstdint>
#include <string>

#include "orva/image/image.h"

namespace orva::formats {

// The file of `img`: a page per frame, in the image's own pixel type, not compressed; with 64-bit
// offsets from 4 GB on. Throws FileError.
std::string encodeTiff(const Image& img);

// The file of one page of unsigned samples.
std::string encodeTiff(const std::uint16_t* pixels, int width, int height);

}  // namespace orva::formats

#endif
