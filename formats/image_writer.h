// Writes images to files, in the format that the extension of the name selects.
#ifndef ORVA_FORMATS_IMAGE_WRITER_H
#define ORVA_FORMATS_IMAGE_WRITER_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "formats/image_axes.h"
#include "formats/output_file.h"
#include "orva/image/image.h"

namespace orva::formats {

// How pixels are written: unchanged, where values that the format cannot hold are an error, or
// stretched to 8 bits, the darkest to 0 and the brightest to 255.
enum class Fit { kExactly, kStretched };

// What a format may keep of the file that pixels come from.
struct Origin {
  ImageAxes axes;             // whose planes are the frames of the image
  bool isUnsigned16 = false;  // whether the samples were unsigned and of 16 bits
  bool keepsType = false;     // 16 bits in PNG, too, of values that fit 8 bits
};

// Writes `img` to `path`, whole or not at all: PGM, PPM, PNG, TIFF, IHT, UIF or an ICS pair. Colour
// becomes luminance where the format has none. Throws FileError, with a text to follow the
// input's name, for more planes or other pixel values than the format holds.
void writeImageFile(const std::string& path, const orva::Image& img, Fit fit,
                    const Origin& origin = {});

// The files that writeImageFile() would write. TIFF keeps what `origin` says: unsigned 16-bit
// samples (unless stretched), which PNG keeps, too, if asked, and the axes: as OME-XML in files
// named .ome.tif or .ome.tiff, else as ImageJ describes them.
std::vector<FileContent> encodeImage(const std::string& path, const orva::Image& img, Fit fit,
                                     const Origin& origin = {});

// Colour of 16 bits as TIFF or PNG: `count` planes one after the other. Throws FileError as
// writeImageFile().
std::vector<FileContent> encodeColour16(const std::string& path,
                                        const std::vector<orva::GenericRgb<std::uint16_t>>& pixels,
                                        int width, int height, const ImageAxes& axes);

// A label image as the file `path`, TIFF or PNG: unsigned samples of 16 bits, or where a label
// exceeds 65535, a TIFF file of signed 32-bit samples. TIFF has the size of a pixel, where known.
// Labels are not negative. Throws FileError, with a text to follow the input's name, for more
// labels than a PNG file holds.
std::string encodeLabels(const std::string& path, const orva::image<int>& labels,
                         const PixelSize& pixelSize = {});

// The names of the files that writeImageFile(path) writes.
std::vector<std::filesystem::path> filesOf(const std::string& path);

// Whether the format that `path` names has colour.
bool holdsColour(const std::string& path);
// Also of 16 bits.
bool holdsColour16(const std::string& path);

// The extensions of the files that writeImageFile() knows.
std::vector<std::string> writableExtensions();

// Whether writeImageFile() knows the format that `path` names; a precondition of the functions
// above.
bool isWritable(const std::string& path);

}  // namespace orva::formats

#endif
