// Images from files: PGM, PNG and TIFF, told apart by their first bytes.
#ifndef ORVA_APPS_IMAGE_FILE_H
#define ORVA_APPS_IMAGE_FILE_H

#include <memory>
#include <string>

#include "apps/raster.h"
#include "orva/image/image.h"

namespace orva_app {

// Frame `frame`, counted from 0, of the image file. Throws FileError, with a text that goes behind
// the file's name, for a file that is missing, damaged or of another kind.
std::unique_ptr<orva::Image> readImageFile(const std::string& path, int frame);

// One reader a format, for a file that begins like one of it.
std::unique_ptr<orva::Image> readPgmFile(const std::string& path);
Raster readPngFile(const std::string& path);
Raster readTiffFile(const std::string& path, int frame);

}  // namespace orva_app

#endif
