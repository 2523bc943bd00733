#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "formats/file_error.h"
#include "formats/image_file.h"
#include "orva/image_io/pnm_header.h"

namespace orva::formats {
namespace {

// An open PGM or PPM file, behind its header.
class PnmFile {
 public:
  // `kind` is for messages.
  PnmFile(const std::string& path, std::string kind)
      : file_(std::fopen(path.c_str(), "rb")), kind_(std::move(kind)) {
    if (!file_) throw FileError::fromErrno("can not be opened");
    std::fseek(file_.get(), 2, SEEK_SET);  // "P5" or "P6"
    header_ = image_io::readPnmHeader(file_.get());
    if (header_.hasLongComment) fail("a comment is longer than 9000 characters");
    if (!header_.isComplete) fail("the header is cut off");
    if (header_.maximum > 255) {
      throw FileError("is a 16-bit " + kind_ + " file; only 8-bit ones are read");
    }
  }

  // All pixels; no memory is touched for those of a file that is too short.
  Raster read(std::size_t channels, ColourModel model) {
    Raster raster(static_cast<std::size_t>(header_.width), static_cast<std::size_t>(header_.height),
                  channels, model, SampleType::kUint8);
    const std::size_t bytes = raster.rowBytes() * raster.height();
    if (std::fread(raster.row(0), 1, bytes, file_.get()) != bytes) fail("pixels are missing");
    return raster;
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw FileError("is a damaged " + kind_ + " file: " + what);
  }

  image_io::File file_;
  std::string kind_;
  image_io::PnmHeader header_;
};

}  // namespace

std::unique_ptr<Image> readPgmFile(const std::string& path) {
  return PnmFile(path, "PGM").read(1, ColourModel::kGrey).toImage(ColourUse::kKept);
}

Raster readPpmFile(const std::string& path) {
  return PnmFile(path, "PPM").read(3, ColourModel::kRgb);
}

}  // namespace orva::formats
