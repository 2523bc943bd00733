// The headers of UIF and IHT files and the pixels behind them, with failures as values; not
// installed.
#ifndef ORVA_IMAGE_IO_RAW_HEADER_H
#define ORVA_IMAGE_IO_RAW_HEADER_H

#include <cstdint>
#include <istream>
#include <memory>

#include "orva/image/image.h"

namespace orva::image_io {

struct RawHeader {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t planes = 0;
  std::int32_t format = 0;  // an ImageFormat, or any number of a damaged file
  bool isComplete = false;  // false: the file ends within the header; missing fields are 0
};

RawHeader readUifHeader(std::istream& in);
RawHeader readIhtHeader(std::istream& in);

// True when an image may have these sizes: none is negative and their product fits 32 bits.
bool hasPossibleSizes(const RawHeader& header);

// Bytes per pixel of the formats that are read, 0 for others.
int rawPixelBytes(std::int32_t format);

// A new image of pixel type `format` with the pixels that follow; those past the end of the file
// are 0. Null for a format that is not read. The sizes must be possible.
std::unique_ptr<Image> readRawPixels(std::istream& in, const RawHeader& header,
                                     std::int32_t format);

}  // namespace orva::image_io

#endif
