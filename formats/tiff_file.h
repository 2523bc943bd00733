// TIFF files whose pages are read one by one.
#ifndef ORVA_FORMATS_TIFF_FILE_H
#define ORVA_FORMATS_TIFF_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "formats/raster.h"
#include "formats/tiff_handle.h"

namespace orva::formats {

// An open file. All functions throw FileError for a damaged file.
class TiffFile {
 public:
  // Reads the directories of all pages, and no pixels.
  explicit TiffFile(const std::string& path);

  int pages() const { return static_cast<int>(directories_.size()); }
  // The description of the first page, "" without one.
  const std::string& description() const { return description_; }
  // Pixels per `resolutionUnit` along x and y; 0 where not stated.
  double xResolution() const { return xResolution_; }
  double yResolution() const { return yResolution_; }
  // "inch", "cm" or "".
  const char* resolutionUnit() const { return resolutionUnit_; }

  struct PageSize {
    int width;
    int height;
    int samples;  // 3 or 4 for colour, 1 for grey, with or without alpha
    int stored;   // samples per pixel, with alpha and others
  };
  PageSize sizeOf(int page) const;

  bool isUnsigned16(int page) const;

  // The number of sizes in which a page is stored: itself, and the reduced ones in its SubIFDs.
  int levels(int page) const;

  // Page `page` at level `level`, both counted from 0 and in their range.
  Raster read(int page, int level) const;

 private:
  void moveTo(std::uint64_t directory) const;
  // The places of the levels, the page's own first. A SubIFD that is not marked as a reduced image,
  // is not smaller than the page, or cannot be read, is none.
  std::vector<std::uint64_t> levelsOf(int page) const;

  TiffHandle in_;
  std::vector<std::uint64_t> directories_;
  std::string description_;
  double xResolution_ = 0;
  double yResolution_ = 0;
  const char* resolutionUnit_ = "";
};

}  // namespace orva::formats

#endif
