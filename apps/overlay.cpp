#include "apps/overlay.h"

#include <png.h>

#include <algorithm>

#include "apps/file_error.h"

namespace orva_app {
namespace {

using Picture = orva::image<orva::GenericRgb<unsigned char>>;
using Colour = orva::GenericRgb<unsigned char>;

void fillBox(Picture& picture, int x0, int y0, int x1, int y1, Colour colour) {
  for (int y = std::max(y0, 0); y <= std::min(y1, picture.ny() - 1); ++y) {
    for (int x = std::max(x0, 0); x <= std::min(x1, picture.nx() - 1); ++x) {
      picture.pixels()[x + y * picture.nx()] = colour;
    }
  }
}

void drawCross(Picture& picture, int x, int y, int arm, int half, Colour colour) {
  fillBox(picture, x - arm, y - half, x + arm, y + half, colour);
  fillBox(picture, x - half, y - arm, x + half, y + arm, colour);
}

}  // namespace

std::string overlayAsPng(const orva::Image& img, const std::vector<Center>& centers, int radius) {
  constexpr Colour kOrange{255, 128, 0};
  constexpr Colour kBlack{0, 0, 0};
  const std::unique_ptr<orva::Image> plane(img.frame(0));
  Picture picture = orva::toRgbImage(*plane);
  const int arm = std::clamp(radius / 4, 3, 12);
  const int half = arm / 8;
  for (const Center& c : centers) drawCross(picture, c.x, c.y, arm + 1, half + 1, kBlack);
  for (const Center& c : centers) drawCross(picture, c.x, c.y, arm, half, kOrange);

  png_image header{};
  header.version = PNG_IMAGE_VERSION;
  header.width = static_cast<png_uint_32>(picture.nx());
  header.height = static_cast<png_uint_32>(picture.ny());
  header.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(header);
  std::string file(size, '\0');
  if (png_image_write_to_memory(&header, file.data(), &size, 0, picture.data(), 0, nullptr) == 0) {
    throw FileError(std::string("the overlay can not be encoded: ") + header.message);
  }
  file.resize(size);
  return file;
}

}  // namespace orva_app
