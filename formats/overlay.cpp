#include "formats/overlay.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>

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

// The range of most of a plane, three times as wide as that of all pixels but one in 500.
struct Range {
  float low;
  float high;
};

// None of few pixels, or equal ones.
std::optional<Range> commonRange(const orva::Image& plane) {
  constexpr std::ptrdiff_t kTail = 1000;  // one pixel in so many lies beyond on either side
  std::vector<float> values;
  values.reserve(static_cast<std::size_t>(plane.npix()));
  for (int i = 0; i < plane.npix(); ++i) {
    if (const float v = plane.pixel(i); std::isfinite(v)) values.push_back(v);
  }
  const auto tail = static_cast<std::ptrdiff_t>(values.size()) / kTail;
  if (tail == 0) return std::nullopt;
  std::nth_element(values.begin(), values.begin() + tail, values.end());
  const float low = values[static_cast<std::size_t>(tail)];
  std::nth_element(values.begin(), values.end() - 1 - tail, values.end());
  const float high = *(values.end() - 1 - tail);
  const float width = high - low;
  if (!(width > 0) || !std::isfinite(3 * width)) return std::nullopt;
  return Range{low - width, high + width};
}

// The same without outliers.
Picture calmPicture(const orva::Image& img) {
  const std::unique_ptr<orva::Image> plane(img.frame(0));
  const bool isGrey = plane->format() <= orva::UINT;
  const auto range = isGrey ? commonRange(*plane) : std::nullopt;
  if (!range) return orva::toRgbImage(*plane);
  orva::image<float> calm(plane->nx(), plane->ny(), 1, 1, 1);
  bool isCalm = true;
  for (int i = 0; i < plane->npix(); ++i) {
    const float v = plane->pixel(i);
    const float kept = v > range->low ? std::min(v, range->high) : range->low;  // of a NaN, low
    isCalm = isCalm && kept == v;
    calm.pixels()[i] = kept;
  }
  return isCalm ? orva::toRgbImage(*plane) : orva::toRgbImage(calm);
}

constexpr Colour kOrange{255, 128, 0};
constexpr Colour kBlack{0, 0, 0};
// To be told apart from each other and from any grey.
constexpr std::array<Colour, 6> kOutlines{Colour{255, 128, 0},  Colour{0, 160, 255},
                                          Colour{230, 50, 230}, Colour{0, 190, 60},
                                          Colour{255, 50, 60},  Colour{150, 100, 255}};

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
  Picture picture = calmPicture(img);
  const auto half = [](const detect::Object& o) { return std::clamp(o.radius / 20, 0.7F, 2.0F); };
  for (const detect::Object& o : objects) drawCircle(picture, o, half(o) + 1, kBlack);
  for (const detect::Object& o : objects) drawCircle(picture, o, half(o), kOrange);
  return encodePng(picture.pixels(), picture.nx(), picture.ny());
}

std::string outlinesAsPng(const orva::Image& img, const orva::image<int>& labels) {
  Picture picture = calmPicture(img);
  const int nx = labels.nx();
  const int ny = labels.ny();
  const auto at = [&](int x, int y) {
    return x < 0 || y < 0 || x == nx || y == ny ? 0 : labels.pixels()[x + std::ptrdiff_t{y} * nx];
  };
  for (int y = 0; y < ny; ++y) {
    for (int x = 0; x < nx; ++x) {
      const int label = at(x, y);
      if (label <= 0 || (at(x - 1, y) == label && at(x + 1, y) == label && at(x, y - 1) == label &&
                         at(x, y + 1) == label)) {
        continue;
      }
      picture.pixels()[x + std::ptrdiff_t{y} * nx] =
          kOutlines[static_cast<std::size_t>(label) % kOutlines.size()];
    }
  }
  return encodePng(picture.pixels(), picture.nx(), picture.ny());
}

}  // namespace orva::formats
