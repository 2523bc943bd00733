// Image files as results, of the kind that their name's extension says.
#ifndef ORVA_FORMATS_IMAGE_WRITER_H
#define ORVA_FORMATS_IMAGE_WRITER_H

#include <filesystem>
#include <string>
#include <vector>

#include "formats/output_file.h"
#include "orva/image/image.h"

namespace orva::formats {

// What becomes of pixels that a format of few bits can not hold: an error, or all are stretched
// over the format's 8 bits, the darkest to 0 and the brightest to 255.
enum class Fit { kExactly, kStretched };

// Writes `img` to `path`, whole or not at all: PGM, PPM, PNG, TIFF, IHT, UIF or an ICS pair. Colour
// becomes luminance where the format has none. Throws FileError, with a text that goes behind the
// input's name, for more planes or other pixel values than the format holds.
void writeImageFile(const std::string& path, const orva::Image& img, Fit fit);

// The files that writeImageFile() would write.
std::vector<FileContent> encodeImage(const std::string& path, const orva::Image& img, Fit fit);

// The names of the files that writeImageFile(path) writes.
std::vector<std::filesystem::path> filesOf(const std::string& path);

// Whether the format that `path` names has colour.
bool holdsColour(const std::string& path);

// The extensions of the files that writeImageFile() knows.
std::vector<std::string> writableExtensions();

// Whether writeImageFile() knows the kind of file that `path` names. It must, for the functions
// above.
bool isWritable(const std::string& path);

}  // namespace orva::formats

#endif
