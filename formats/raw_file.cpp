// The library's readers of IHT and UIF do not notice a damaged file, so these look first.
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "formats/file_error.h"
#include "formats/image_file.h"
#include "orva/image_io/image_io.h"

namespace orva::formats {
namespace {

template <std::size_t N>
using Fields = std::array<std::int32_t, N>;

template <std::size_t N>
Fields<N> readFields(const std::string& path, const std::string& kind) {
  std::ifstream in(path, std::ios::binary);
  Fields<N> fields{};
  if (!in.read(reinterpret_cast<char*>(fields.data()), sizeof fields)) {
    throw FileError("is a damaged " + kind + " file: the header is cut off");
  }
  return fields;
}

// Bytes of a pixel of the formats that are read; 0 for others.
std::uint64_t pixelBytes(int format) {
  switch (format) {
    case orva::BYTE:
      return 1;
    case orva::SHORT:
      return 2;
    case orva::INT:
    case orva::FLOAT:
      return 4;
    default:
      return 0;
  }
}

struct Sizes {
  std::int32_t width;
  std::int32_t height;
  std::int32_t planes;
  std::int32_t format;
  std::uint64_t headerBytes;
};

void check(const std::string& path, const std::string& kind, const Sizes& s) {
  constexpr std::uint64_t kMostPixels = 2147483647;
  const auto fail = [&kind](const std::string& what) {
    throw FileError("is a damaged " + kind + " file: " + what);
  };
  if (pixelBytes(s.format) == 0) fail("its pixel type is unknown");
  if (s.width < 0 || s.height < 0 || s.planes < 0) fail("a size is negative");
  const auto width = static_cast<std::uint64_t>(s.width);
  const auto height = static_cast<std::uint64_t>(s.height);
  const auto planes = static_cast<std::uint64_t>(s.planes);
  if (width == 0 || height == 0 || planes == 0) throw FileError("the image has no pixels");
  if (width * height > kMostPixels || width * height * planes > kMostPixels) {
    fail("its sizes are too large");
  }
  const std::uint64_t bytes = s.headerBytes + width * height * planes * pixelBytes(s.format);
  if (std::filesystem::file_size(path) < bytes) fail("pixels are missing");
}

}  // namespace

std::unique_ptr<orva::Image> readIhtFile(const std::string& path) {
  const Fields<10> f = readFields<10>(path, "IHT");
  check(path, "IHT", {f[1], f[0], f[7], f[6], sizeof f});
  return std::unique_ptr<orva::Image>(orva::image_io::readIHT(path));
}

std::unique_ptr<orva::Image> readUifFile(const std::string& path) {
  const Fields<5> f = readFields<5>(path, "UIF");
  check(path, "UIF", {f[0], f[1], f[2], f[4], sizeof f});
  // The library would take the first bytes of wider pixels for an image.
  if (f[4] != orva::BYTE) throw FileError("is a UIF file of wide pixels; only 8-bit ones are read");
  return std::unique_ptr<orva::Image>(orva::image_io::readUIF(path));
}

}  // namespace orva::formats
