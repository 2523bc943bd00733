#include "formats/overlay.h"

#include <algorithm>
#include <memory>

#include "formats/png_encoder.h"

namespace orva::formats {
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

  return encodePng(picture.pixels(), picture.nx(), picture.ny());
}

}  // namespace orva::formats
