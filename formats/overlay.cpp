#include "formats/overlay.h"

#include <algorithm>
#include <cmath>
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

// The pixels whose center lies within `half` of the circle.
void drawCircle(Picture& picture, const detect::Object& o, float half, Colour colour) {
  const float reach = o.radius + half;
  const int x0 = std::max(static_cast<int>(std::floor(o.x - reach)), 0);
  const int x1 = std::min(static_cast<int>(std::ceil(o.x + reach)), picture.nx() - 1);
  const int y0 = std::max(static_cast<int>(std::floor(o.y - reach)), 0);
  const int y1 = std::min(static_cast<int>(std::ceil(o.y + reach)), picture.ny() - 1);
  for (int y = y0; y <= y1; ++y) {
    for (int x = x0; x <= x1; ++x) {
      const float dx = static_cast<float>(x) - o.x;
      const float dy = static_cast<float>(y) - o.y;
      if (std::fabs(std::sqrt(dx * dx + dy * dy) - o.radius) <= half) {
        picture.pixels()[x + y * picture.nx()] = colour;
      }
    }
  }
}

// Plane 0 stretched to the whole grey range.
Picture greyPicture(const orva::Image& img) {
  const std::unique_ptr<orva::Image> plane(img.frame(0));
  return orva::toRgbImage(*plane);
}

constexpr Colour kOrange{255, 128, 0};
constexpr Colour kBlack{0, 0, 0};

}  // namespace

std::string overlayAsPng(const orva::Image& img, const std::vector<Center>& centers, int radius) {
  Picture picture = greyPicture(img);
  const int arm = std::clamp(radius / 4, 3, 12);
  const int half = arm / 8;
  for (const Center& c : centers) drawCross(picture, c.x, c.y, arm + 1, half + 1, kBlack);
  for (const Center& c : centers) drawCross(picture, c.x, c.y, arm, half, kOrange);
  return encodePng(picture.pixels(), picture.nx(), picture.ny());
}

std::string overlayAsPng(const orva::Image& img, const std::vector<detect::Object>& objects) {
  Picture picture = greyPicture(img);
  const auto half = [](const detect::Object& o) { return std::clamp(o.radius / 20, 0.7F, 2.0F); };
  for (const detect::Object& o : objects) drawCircle(picture, o, half(o) + 1, kBlack);
  for (const detect::Object& o : objects) drawCircle(picture, o, half(o), kOrange);
  return encodePng(picture.pixels(), picture.nx(), picture.ny());
}

}  // namespace orva::formats
