#include "tests/apps/png_files.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace orva::test {
namespace {

// One row as libpng takes it: a byte a sample, or two in the machine's order.
std::vector<png_byte> rowOf(const Picture& picture, int y, int depth) {
  const auto count =
      static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.samples);
  std::vector<png_byte> row;
  for (std::size_t i = 0; i < count; ++i) {
    const auto v =
        static_cast<std::uint16_t>(picture.values[i + static_cast<std::size_t>(y) * count]);
    const auto bytes = std::bit_cast<std::array<png_byte, 2>>(v);
    if (depth == 16) {
      row.insert(row.end(), bytes.begin(), bytes.end());
    } else {
      row.push_back(static_cast<png_byte>(v));
    }
  }
  return row;
}

}  // namespace

// libpng ends the process on an error here, as no other end is prepared.
void writePng(const std::filesystem::path& path, const Picture& picture, const PngForm& form) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) throw std::runtime_error("cannot write " + path.string());
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
               static_cast<png_uint_32>(picture.height), form.depth, form.colourType,
               form.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (!form.palette.empty()) {
    png_set_PLTE(png, info, form.palette.data(), static_cast<int>(form.palette.size()));
  }
  if (!form.paletteAlpha.empty()) {
    png_set_tRNS(png, info, form.paletteAlpha.data(), static_cast<int>(form.paletteAlpha.size()),
                 nullptr);
  }
  if (form.transparentBlack) {
    const png_color_16 black{};
    png_set_tRNS(png, info, nullptr, 1, &black);
  }
  png_write_info(png, info);
  png_set_packing(png);
  if (form.depth == 16 && std::endian::native == std::endian::little) png_set_swap(png);
  const int passes = png_set_interlace_handling(png);
  for (int pass = 0; pass < passes; ++pass) {
    for (int y = 0; y < picture.height; ++y) {
      png_write_row(png, rowOf(picture, y, form.depth).data());
    }
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

RgbPicture readRgbPng(const std::filesystem::path& path) {
  png_image header;
  std::memset(&header, 0, sizeof header);
  header.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&header, path.c_str()) == 0) {
    throw std::runtime_error(path.string() + ": " + header.message);
  }
  if (header.format != PNG_FORMAT_RGB) {
    png_image_free(&header);
    throw std::runtime_error(path.string() + " is not 8-bit colour");
  }
  RgbPicture picture{static_cast<int>(header.width), static_cast<int>(header.height), {}};
  picture.pixels.resize(std::size_t{header.width} * header.height);
  if (png_image_finish_read(&header, nullptr, picture.pixels.data(), 0, nullptr) == 0) {
    throw std::runtime_error(path.string() + ": " + header.message);
  }
  return picture;
}

}  // namespace orva::test
