#include "formats/png_encoder.h"

#include <png.h>

#include <bit>
#include <csetjmp>

#include "formats/file_error.h"

namespace orva::formats {
namespace {

struct PngEncoder {
  PngEncoder() : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning)) {
    info = png == nullptr ? nullptr : png_create_info_struct(png);
  }
  PngEncoder(const PngEncoder&) = delete;
  PngEncoder& operator=(const PngEncoder&) = delete;
  ~PngEncoder() { png_destroy_write_struct(&png, &info); }

  [[noreturn]] static void onError(png_structp png, png_const_charp message) {
    static_cast<PngEncoder*>(png_get_error_ptr(png))->message = message;
    png_longjmp(png, 1);
  }
  static void onWarning(png_structp /*png*/, png_const_charp /*message*/) {}
  static void append(png_structp png, png_bytep bytes, size_t count) {
    try {
      static_cast<PngEncoder*>(png_get_io_ptr(png))
          ->file.append(reinterpret_cast<char*>(bytes), count);
      return;
    } catch (const std::bad_alloc&) {  // must not pass through libpng
    }
    png_error(png, "out of memory");
  }
  static void flush(png_structp /*png*/) {}

  png_structp png;
  png_infop info = nullptr;
  std::string file;
  const char* message = "out of memory";
};

struct Layout {
  const unsigned char* pixels;
  int width;
  int height;
  int bits;
  int colourType;
  std::size_t rowBytes;
};

// libpng reports errors by a long jump, so this function holds no object with a destructor.
bool encode(PngEncoder& encoder, const Layout& l) {
  if (setjmp(png_jmpbuf(encoder.png)) != 0) return false;
  png_set_write_fn(encoder.png, &encoder, PngEncoder::append, PngEncoder::flush);
  png_set_IHDR(encoder.png, encoder.info, static_cast<png_uint_32>(l.width),
               static_cast<png_uint_32>(l.height), l.bits, l.colourType, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(encoder.png, encoder.info);
  if (l.bits == 16 && std::endian::native == std::endian::little) png_set_swap(encoder.png);
  for (int y = 0; y < l.height; ++y) {
    png_write_row(encoder.png, l.pixels + static_cast<std::size_t>(y) * l.rowBytes);
  }
  png_write_end(encoder.png, nullptr);
  return true;
}

template <class Pixel>
std::string encodePixels(const Pixel* pixels, int width, int height, int bits, int colourType) {
  PngEncoder encoder;
  const Layout layout{
      reinterpret_cast<const unsigned char*>(pixels), width, height, bits, colourType,
      static_cast<std::size_t>(width) * sizeof(Pixel)};
  if (encoder.info == nullptr || !encode(encoder, layout)) {
    throw FileError(std::string("the picture can not be encoded: ") + encoder.message);
  }
  return std::move(encoder.file);
}

}  // namespace

std::string encodePng(const unsigned char* pixels, int width, int height) {
  return encodePixels(pixels, width, height, 8, PNG_COLOR_TYPE_GRAY);
}

std::string encodePng(const std::uint16_t* pixels, int width, int height) {
  return encodePixels(pixels, width, height, 16, PNG_COLOR_TYPE_GRAY);
}

std::string encodePng(const orva::GenericRgb<unsigned char>* pixels, int width, int height) {
  return encodePixels(pixels, width, height, 8, PNG_COLOR_TYPE_RGB);
}

std::string encodePng(const orva::GenericRgb<std::uint16_t>* pixels, int width, int height) {
  return encodePixels(pixels, width, height, 16, PNG_COLOR_TYPE_RGB);
}

}  // namespace orva::formats
