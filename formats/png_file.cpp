#include <png.h>

#include <bit>
#include <cstdio>
#include <cstring>

#include "formats/file_error.h"
#include "formats/image_file.h"

namespace orva::formats {
namespace {

// The handles of one decoding, and the message of the error that ended it.
struct PngReader {
  explicit PngReader(const std::string& path) : file(std::fopen(path.c_str(), "rb")) {
    if (file == nullptr) throw FileError::fromErrno("can not be opened");
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
    info = png == nullptr ? nullptr : png_create_info_struct(png);
  }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
  ~PngReader() {
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
  }

  [[noreturn]] static void onError(png_structp png, png_const_charp message) {
    auto* self = static_cast<PngReader*>(png_get_error_ptr(png));
    std::strncpy(self->message, message, sizeof self->message - 1);
    png_longjmp(png, 1);
  }
  static void onWarning(png_structp /*png*/, png_const_charp /*message*/) {}

  [[noreturn]] void fail() const {
    throw FileError(std::string("is a damaged PNG file: ") + message);
  }

  std::FILE* file;
  png_structp png = nullptr;
  png_infop info = nullptr;
  char message[80] = "out of memory";
};

// libpng reports errors by a long jump, so the two functions below hold no object with a
// destructor.

// Reads the header and asks for grey or colour of 8 or 16 bits in the machine's byte order, without
// alpha.
bool readHeader(PngReader& reader) {
  if (setjmp(png_jmpbuf(reader.png)) != 0) return false;
  png_init_io(reader.png, reader.file);
  png_read_info(reader.png, reader.info);
  png_set_palette_to_rgb(reader.png);
  png_set_expand_gray_1_2_4_to_8(reader.png);
  png_set_strip_alpha(reader.png);
  if (std::endian::native == std::endian::little) png_set_swap(reader.png);
  png_set_interlace_handling(reader.png);
  png_read_update_info(reader.png, reader.info);
  return true;
}

bool readRows(PngReader& reader, Raster& raster) {
  if (setjmp(png_jmpbuf(reader.png)) != 0) return false;
  const bool interlaced = png_get_interlace_type(reader.png, reader.info) == PNG_INTERLACE_ADAM7;
  for (int pass = 0; pass < (interlaced ? PNG_INTERLACE_ADAM7_PASSES : 1); ++pass) {
    for (std::size_t y = 0; y < raster.height(); ++y) {
      png_read_row(reader.png, raster.row(y), nullptr);
    }
  }
  png_read_end(reader.png, nullptr);
  return true;
}

}  // namespace

Raster readPngFile(const std::string& path) {
  PngReader reader(path);
  if (reader.info == nullptr || !readHeader(reader)) reader.fail();
  const std::size_t channels = png_get_channels(reader.png, reader.info);
  Raster raster(
      png_get_image_width(reader.png, reader.info), png_get_image_height(reader.png, reader.info),
      channels, channels == 1 ? ColourModel::kGrey : ColourModel::kRgb,
      png_get_bit_depth(reader.png, reader.info) == 16 ? SampleType::kUint16 : SampleType::kUint8);
  if (png_get_rowbytes(reader.png, reader.info) != raster.rowBytes()) reader.fail();
  if (!readRows(reader, raster)) reader.fail();
  return raster;
}

}  // namespace orva::formats
