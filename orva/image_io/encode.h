// The contents of image files, written to any stream; not installed. The public writers put them
// into files and report what fails.
#ifndef ORVA_IMAGE_IO_ENCODE_H
#define ORVA_IMAGE_IO_ENCODE_H

#include <ostream>
#include <string>
#include <string_view>

#include "orva/image/image.h"

namespace orva::image_io {

// Whether PPM holds the image: one plane of grey, or three of red, green and blue.
bool isPpmImage(const image<unsigned char>& img);

// Nothing but the pixels' bytes, in the machine's order.
void encodePixels(std::ostream& out, const Image& img);

void encodePpm(std::ostream& out, const image<unsigned char>& img);  // of an isPpmImage()
void encodeUif(std::ostream& out, const Image& img);
void encodeIht(std::ostream& out, const Image& img);

// The header of the ICS pair that writeICS(filename, img) writes; its other file is
// encodePixels(img). `byteOrder` numbers the bytes of a sample, least significant 1, tab-separated;
// empty states what writeICS() states.
void encodeIcsHeader(std::ostream& out, const std::string& filename, const Image& img,
                     std::string_view byteOrder = {});

}  // namespace orva::image_io

#endif
