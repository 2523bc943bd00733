// IHT and UIF files. The public readers do not notice damage, so the header is judged first.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "formats/file_error.h"
#include "formats/image_file.h"
#include "orva/image_io/raw_header.h"

namespace orva::formats {
namespace {

using image_io::RawHeader;
using ImagePointer = std::unique_ptr<Image>;

// The pixels behind a header that `in` has just passed. `kind` is for messages.
ImagePointer readPixels(std::ifstream& in, const std::string& path, const std::string& kind,
                        const RawHeader& header) {
  const auto fail = [&kind](const std::string& what) {
    throw FileError("is a damaged " + kind + " file: " + what);
  };
  if (!header.isComplete) fail("the header is cut off");
  const int pixelBytes = image_io::rawPixelBytes(header.format);
  if (pixelBytes == 0) fail("its pixel type is unknown");
  if (header.width < 0 || header.height < 0 || header.planes < 0) fail("a size is negative");
  if (header.width == 0 || header.height == 0 || header.planes == 0) {
    throw FileError("the image has no pixels");
  }
  if (!image_io::hasPossibleSizes(header)) fail("its sizes are too large");
  const std::uint64_t pixels = static_cast<std::uint64_t>(header.width) *
                               static_cast<std::uint64_t>(header.height) *
                               static_cast<std::uint64_t>(header.planes);
  const std::uint64_t end =
      static_cast<std::uint64_t>(in.tellg()) + pixels * static_cast<std::uint64_t>(pixelBytes);
  if (std::filesystem::file_size(path) < end) fail("pixels are missing");
  // The library's own reader would take the first bytes of wider pixels for an image.
  if (kind == "UIF" && header.format != BYTE) {
    throw FileError("is a UIF file of wide pixels; only 8-bit ones are read");
  }
  return image_io::readRawPixels(in, header, header.format);
}

}  // namespace

ImagePointer readIhtFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const RawHeader header = image_io::readIhtHeader(in);
  return readPixels(in, path, "IHT", header);
}

ImagePointer readUifFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const RawHeader header = image_io::readUifHeader(in);
  return readPixels(in, path, "UIF", header);
}

}  // namespace orva::formats
