// TIFF files for the command's tests.
#ifndef ORVA_TESTS_APPS_TIFF_FILES_H
#define ORVA_TESTS_APPS_TIFF_FILES_H

#include <tiffio.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/apps/pictures.h"

namespace orva::test {

// Samples of a pixel side by side, and in planes of their own.
inline constexpr std::array<std::uint16_t, 2> kPlanars{PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE};

struct TiffForm {
  std::uint16_t bits = 8;  // 1, 2, 4, 8, 16, 32 or 64
  std::uint16_t format = SAMPLEFORMAT_UINT;
  std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  std::uint16_t planar = PLANARCONFIG_CONTIG;
  std::uint16_t compression = COMPRESSION_NONE;
  std::uint32_t tileWidth = 0;  // strips if 0
  std::uint32_t tileHeight = 0;
  std::uint32_t rowsPerStrip = 16;
  // Red, green and blue, each of 2 ^ bits entries.
  std::vector<std::uint16_t> palette{};
  // What the samples beyond grey or colour are; not stated if empty.
  std::vector<std::uint16_t> extraSamples{};
  std::uint32_t depth = 1;  // stated if above 1
  std::string description{};
  // The next pages go into its SubIFDs, as many.
  std::uint16_t subIfds = 0;
  std::uint32_t subfileType = 0;  // FILETYPE_REDUCEDIMAGE for a smaller size
  float perCentimetre = 0;        // pixels; stated if above 0
};

// Writes a file page by page; the file is complete when the object is destroyed.
class TiffFile {
 public:
  // `mode` is libtiff's: "w", with "l" or "b" for the byte order and "8" for 64-bit offsets.
  explicit TiffFile(const std::filesystem::path& path, const std::string& mode = "w");

  void page(const Picture& picture, const TiffForm& form = {});

 private:
  struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };
  std::unique_ptr<TIFF, Close> tiff_;
};

// A little-endian file of one page with exactly the given tags and values; `pixels` begin at byte
// 512.
struct TiffTag {
  std::uint16_t name;
  std::uint32_t value;  // or where the values lie
  std::uint16_t type = TIFF_LONG;
  std::uint32_t count = 1;
};
std::string rawTiff(const std::vector<TiffTag>& tags, const std::string& pixels);

}  // namespace orva::test

#endif
