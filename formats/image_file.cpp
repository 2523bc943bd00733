#include "formats/image_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string_view>
#include <system_error>
#include <vector>

#include "formats/file_error.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

using ImagePointer = std::unique_ptr<orva::Image>;

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

[[noreturn]] void failForFrame(int frame) {
  throw FileError("there is no frame " + std::to_string(frame));
}

// Judges every page before the next one takes memory.
ImagePointer readTiffStack(const std::string& path, ColourUse colour) {
  PlaneStack planes;
  readTiffPages(path, [&](const Raster& page) { planes.add(page.toImage(colour)); });
  return planes.take();
}

// The whole of a file that is no TIFF file.
ImagePointer readWhole(const std::string& path, FileKind kind, ColourUse colour) {
  switch (kind) {
    case FileKind::kPgm:
      return readPgmFile(path);
    case FileKind::kPpm:
      return readPpmFile(path).toImage(colour);
    case FileKind::kPng:
      return readPngFile(path).toImage(colour);
    case FileKind::kIht:
      return readIhtFile(path);
    case FileKind::kUif:
      return readUifFile(path);
    default:
      throw FileError("is an ICS file, which is written but not read");
  }
}

}  // namespace

FileKind kindOf(const std::string& path) {
  const std::string start = firstBytes(path);
  const std::string extension = extensionOf(path);
  if (extension == ".iht") return FileKind::kIht;
  if (extension == ".uif") return FileKind::kUif;
  if (extension == ".ics") return FileKind::kIcs;
  if (isTiff(start)) return FileKind::kTiff;
  if (start.starts_with("\x89PNG\r\n\x1a\n")) return FileKind::kPng;
  if (start.starts_with("P5")) return FileKind::kPgm;
  if (start.starts_with("P6")) return FileKind::kPpm;
  throw FileError("is not a PGM, PPM, PNG or TIFF image, nor named .iht or .uif");
}

void failForPages() {
  throw FileError("its pages differ in size or pixel type; choose one with --frame");
}

void PlaneStack::add(ImagePointer plane) {
  constexpr std::size_t kMaxPixels = std::numeric_limits<int>::max();
  planes_.push_back(std::move(plane));
  const orva::Image& first = *planes_.front();
  const orva::Image& last = *planes_.back();
  if (last.format() != first.format() || !last.equalSize(first)) {
    failForPages();
  }
  if (planes_.size() * static_cast<std::size_t>(first.npix()) > kMaxPixels) {
    throw FileError("the stack is too large");
  }
}

ImagePointer PlaneStack::take() {
  if (planes_.size() == 1) return std::move(planes_.front());
  ImagePointer stack(planes_.front()->scale(-1, -1, static_cast<int>(planes_.size())));
  auto* to = static_cast<unsigned char*>(stack->data());
  for (const ImagePointer& plane : planes_) {
    const auto* from = static_cast<const unsigned char*>(plane->data());
    to = std::copy_n(from, std::ptrdiff_t{plane->npix()} * plane->pixelSize(), to);
  }
  return stack;
}

ImagePointer readImageFile(const std::string& path, std::optional<int> frame, ColourUse colour) {
  const FileKind kind = kindOf(path);
  if (kind == FileKind::kTiff) {
    return frame ? readTiffFile(path, *frame).toImage(colour) : readTiffStack(path, colour);
  }
  ImagePointer img = readWhole(path, kind, colour);
  if (!frame) return img;
  ImagePointer plane(img->frame(*frame));
  if (!plane) failForFrame(*frame);
  return plane;
}

std::optional<Raster> readFrameRaster(const std::string& path, int frame) {
  const FileKind kind = kindOf(path);
  if (kind == FileKind::kTiff) return readTiffFile(path, frame);
  if (frame == 0 && kind == FileKind::kPng) return readPngFile(path);
  if (frame == 0 && kind == FileKind::kPpm) return readPpmFile(path);
  return std::nullopt;
}

}  // namespace orva::formats
