// PNG files for the command's tests, and those that it wrote.
#ifndef ORVA_TESTS_APPS_PNG_FILES_H
#define ORVA_TESTS_APPS_PNG_FILES_H

#include <png.h>

#include <array>
#include <filesystem>
#include <vector>

#include "tests/apps/pictures.h"

namespace orva::test {

struct PngForm {
  int depth = 8;
  int colourType = PNG_COLOR_TYPE_GRAY;
  bool interlaced = false;
  std::vector<png_color> palette{};
  // Entries or samples that are transparent: for a palette alpha values, otherwise one colour.
  std::vector<png_byte> paletteAlpha{};
  bool transparentBlack = false;
};

// Has only the chunks that decoding needs.
void writePng(const std::filesystem::path& path, const Picture& picture, const PngForm& form = {});

struct RgbPicture {
  int width;
  int height;
  std::vector<std::array<unsigned char, 3>> pixels;

  const std::array<unsigned char, 3>& at(int x, int y) const {
    return pixels[static_cast<std::size_t>(x) +
                  static_cast<std::size_t>(y) * static_cast<std::size_t>(width)];
  }
};

// A PNG file of 8-bit colour without alpha; throws for anything else.
RgbPicture readRgbPng(const std::filesystem::path& path);

}  // namespace orva::test

#endif
