#include "apps/image_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "apps/file_error.h"

namespace orva_app {
namespace {

// The first bytes of the file, fewer where it is shorter.
std::string firstBytes(const std::string& path) {
  std::error_code ignored;  // opening it says what is wrong
  const std::filesystem::file_status status = std::filesystem::status(path, ignored);
  if (std::filesystem::is_directory(status)) throw FileError("is a directory");
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    throw FileError("is not a regular file");
  }
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  if (!in) throw FileError::fromErrno("can not be opened");
  std::array<char, 8> bytes{};
  in.read(bytes.data(), bytes.size());
  return {bytes.data(), static_cast<std::size_t>(in.gcount())};
}

bool isTiff(std::string_view start) {
  using namespace std::string_view_literals;
  const auto magics = {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv};  // the last two: 64-bit offsets
  for (const std::string_view magic : magics) {
    if (start.starts_with(magic)) return true;
  }
  return false;
}

void requireFirst(int frame) {
  if (frame != 0) {
    throw FileError("there is no frame " + std::to_string(frame) + ", only TIFF has several");
  }
}

}  // namespace

FileError FileError::fromErrno(const std::string& what) {
  return FileError(what + ": " + std::strerror(errno));
}

std::unique_ptr<orva::Image> readImageFile(const std::string& path, int frame) {
  const std::string start = firstBytes(path);
  if (isTiff(start)) return readTiffFile(path, frame).toImage();
  if (start.starts_with("\x89PNG\r\n\x1a\n")) {
    requireFirst(frame);
    return readPngFile(path).toImage();
  }
  if (start.starts_with("P5")) {
    requireFirst(frame);
    return readPgmFile(path);
  }
  throw FileError("is not a PGM, PNG or TIFF image");
}

}  // namespace orva_app
