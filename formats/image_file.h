// Images from files: PGM, PPM, PNG and TIFF, told apart by their first bytes, and IHT and UIF, told
// by their names.
#ifndef ORVA_FORMATS_IMAGE_FILE_H
#define ORVA_FORMATS_IMAGE_FILE_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/raster.h"
#include "orva/image/image.h"

namespace orva::formats {

enum class FileKind { kPgm, kPpm, kPng, kTiff, kIht, kUif, kIcs };

// The kind of an image file, ICS headers included. Throws FileError, with a text to
// follow the file's name, for a file that is missing or of another kind.
FileKind kindOf(const std::string& path);

// Frame `frame`, counted from 0, of the image file, or all frames as planes in z. Throws FileError
// as kindOf(), and for a damaged file.
std::unique_ptr<orva::Image> readImageFile(const std::string& path, std::optional<int> frame,
                                           ColourUse colour);

// The samples of the same frame of a file that holds them in rasters (TIFF, PNG, PPM); none of
// another file, and none of another frame than 0 of PNG and PPM. Throws as readImageFile().
std::optional<Raster> readFrameRaster(const std::string& path, int frame);

// Throws FileError for pages that are no planes of one image.
[[noreturn]] void failForPages();

// Planes on their way to a stack.
class PlaneStack {
 public:
  // Throws FileError for a plane of another size or type than the first, and for too many pixels.
  void add(std::unique_ptr<orva::Image> plane);

  // The planes, at least one, as planes in z. To be called once.
  std::unique_ptr<orva::Image> take();

 private:
  std::vector<std::unique_ptr<orva::Image>> planes_;
};

// One reader per format.
std::unique_ptr<orva::Image> readPgmFile(const std::string& path);
std::unique_ptr<orva::Image> readIhtFile(const std::string& path);
std::unique_ptr<orva::Image> readUifFile(const std::string& path);
Raster readPpmFile(const std::string& path);
Raster readPngFile(const std::string& path);
Raster readTiffFile(const std::string& path, int frame);
// Calls take(page) for every page.
void readTiffPages(const std::string& path, const std::function<void(const Raster&)>& take);

}  // namespace orva::formats

#endif
