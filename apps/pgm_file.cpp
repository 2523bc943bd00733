#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "apps/file_error.h"
#include "apps/image_file.h"
#include "orva/image_io/image_io.h"

namespace orva_app {
namespace {

// Skips a comment. The library takes no more than 9000 characters for one, and the rest for
// numbers.
void skipComment(std::istream& in) {
  constexpr int kLongest = 9000;
  int length = 0;
  for (int c = in.get(); in && c != '\n'; c = in.get()) {
    if (++length > kLongest) {
      throw FileError("is a damaged PGM file: a comment is longer than 9000 characters");
    }
  }
}

// The next number of a header: comments and other characters before it are skipped, the character
// after it is taken.
std::uint64_t nextNumber(std::istream& in) {
  constexpr std::uint64_t kMost = std::uint64_t{1} << 31U;
  int c = in.get();
  while (in && std::isdigit(c) == 0) {
    if (c == '#') skipComment(in);
    c = in.get();
  }
  if (!in) throw FileError("is a damaged PGM file: the header is cut off");
  std::uint64_t value = 0;
  for (; in && std::isdigit(c) != 0; c = in.get()) {
    value = std::min(value * 10 + static_cast<std::uint64_t>(c - '0'), kMost);
  }
  return value;
}

// The library's reader ends the process on a bad file, so this looks first.
void checkPgm(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  in.ignore(2);  // "P5"
  const std::uint64_t width = nextNumber(in);
  const std::uint64_t height = nextNumber(in);
  const std::uint64_t maximum = nextNumber(in);
  if (maximum > 255) throw FileError("is a 16-bit PGM file; only 8-bit ones are read");
  // Tests the sizes; no memory is touched.
  const Raster fits(width, height, 1, Colours::kGrey, SampleType::kUint8);
  const std::uint64_t left =
      in ? std::filesystem::file_size(path) - static_cast<std::uint64_t>(in.tellg()) : 0;
  if (left < width * height) throw FileError("is a damaged PGM file: pixels are missing");
}

}  // namespace

std::unique_ptr<orva::Image> readPgmFile(const std::string& path) {
  checkPgm(path);
  return std::unique_ptr<orva::Image>(orva::image_io::readPGM(path));
}

}  // namespace orva_app
