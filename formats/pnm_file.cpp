#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "formats/file_error.h"
#include "formats/image_file.h"
#include "orva/image_io/image_io.h"

namespace orva::formats {
namespace {

// The header of a PGM or PPM file, read as the library reads it.
class PnmHeader {
 public:
  // Behind the header when it returns. `kind` is for messages.
  PnmHeader(std::istream& in, const std::string& kind) : in_(in), kind_(kind) {
    in_.ignore(2);  // "P5" or "P6"
    width_ = nextNumber();
    height_ = nextNumber();
    const std::uint64_t maximum = nextNumber();
    if (maximum > 255) {
      throw FileError("is a 16-bit " + kind + " file; only 8-bit ones are read");
    }
  }

  std::uint64_t width() const { return width_; }
  std::uint64_t height() const { return height_; }

  [[noreturn]] void fail(const std::string& what) const {
    throw FileError("is a damaged " + kind_ + " file: " + what);
  }

 private:
  // The library takes no more than 9000 characters for a comment, and the rest for numbers.
  void skipComment() {
    constexpr int kLongest = 9000;
    int length = 0;
    for (int c = in_.get(); in_ && c != '\n'; c = in_.get()) {
      if (++length > kLongest) fail("a comment is longer than 9000 characters");
    }
  }

  // Comments and other characters before the number are skipped, the character after it is taken.
  std::uint64_t nextNumber() {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 31U;
    int c = in_.get();
    while (in_ && std::isdigit(c) == 0) {
      if (c == '#') skipComment();
      c = in_.get();
    }
    if (!in_) fail("the header is cut off");
    std::uint64_t value = 0;
    for (; in_ && std::isdigit(c) != 0; c = in_.get()) {
      value = std::min(value * 10 + static_cast<std::uint64_t>(c - '0'), kMost);
    }
    return value;
  }

  std::istream& in_;
  std::string kind_;
  std::uint64_t width_ = 0;
  std::uint64_t height_ = 0;
};

// The library's reader ends the process on a bad file, so this looks first.
void checkPgm(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const PnmHeader header(in, "PGM");
  // Tests the sizes; no memory is touched.
  const Raster fits(header.width(), header.height(), 1, Meaning::kGrey, SampleType::kUint8);
  const std::uint64_t left =
      in ? std::filesystem::file_size(path) - static_cast<std::uint64_t>(in.tellg()) : 0;
  if (left < header.width() * header.height()) header.fail("pixels are missing");
}

}  // namespace

std::unique_ptr<orva::Image> readPgmFile(const std::string& path) {
  checkPgm(path);
  return std::unique_ptr<orva::Image>(orva::image_io::readPGM(path));
}

Raster readPpmFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const PnmHeader header(in, "PPM");
  Raster raster(header.width(), header.height(), 3, Meaning::kRgb, SampleType::kUint8);
  for (std::size_t y = 0; y < raster.height(); ++y) {
    const auto bytes = static_cast<std::streamsize>(raster.rowBytes());
    if (!in.read(reinterpret_cast<char*>(raster.row(y)), bytes)) header.fail("pixels are missing");
  }
  return raster;
}

}  // namespace orva::formats
