// Images as TIFF files.
#ifndef ORVA_FORMATS_TIFF_WRITER_H
#define ORVA_FORMATS_TIFF_WRITER_H

#include <cstdint>
#include <string>

#include "formats/image_axes.h"
#include "orva/image/image.h"

namespace orva::formats {

// How the axes of an image are described in its file. OME-XML holds the names of channels; ImageJ's
// text is read by ImageJ itself.
enum class Description { kImageJ, kOme };

// The file of `img`: a page per frame, in the image's own pixel type, not compressed; with 64-bit
// offsets from 4 GB on. Throws FileError.
std::string encodeTiff(const Image& img);

// The same described by `axes`, whose planes are the frames in the order of ImageAxes::pages, where
// they are known to be several or the size of a pixel is known. Pages of unknown meaning have the
// size alone, as a resolution per centimetre.
std::string encodeTiff(const Image& img, const ImageAxes& axes, Description description);

// The file of unsigned 16-bit samples, of `count` pages one after the other, grey or in colour.
std::string encodeTiff(const std::uint16_t* pixels, int width, int height, int count = 1,
                       const ImageAxes& axes = {}, Description description = Description::kImageJ);
std::string encodeTiff(const orva::GenericRgb<std::uint16_t>* pixels, int width, int height,
                       int count, const ImageAxes& axes, Description description);

}  // namespace orva::formats

#endif
