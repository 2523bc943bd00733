// The header of a binary PGM or PPM file, with what is wrong with it as a value; not installed.
#ifndef ORVA_IMAGE_IO_PNM_HEADER_H
#define ORVA_IMAGE_IO_PNM_HEADER_H

#include <cstdint>
#include <cstdio>
#include <memory>

namespace orva::image_io {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// A number above this one counts as it.
inline constexpr std::int64_t kMaxPnmNumber = std::int64_t{1} << 31;

// Of a comment this many characters are skipped; digits after them count as numbers.
inline constexpr int kMaxPnmComment = 9000;

struct PnmHeader {
  std::int64_t width = 0;
  std::int64_t height = 0;
  std::int64_t maximum = 0;     // the largest grey value that may occur
  bool isComplete = false;      // false: the file ends before the third number begins
  bool hasLongComment = false;  // some comment has more than kMaxPnmComment characters
};

// Reads the three numbers behind the magic "P5" or "P6". Comments run from '#' to the end of the
// line; other characters that are no digits are skipped, and the one after a number is dropped.
PnmHeader readPnmHeader(std::FILE* in);

}  // namespace orva::image_io

#endif
