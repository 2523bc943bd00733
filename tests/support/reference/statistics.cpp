#include "tests/support/reference/statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "tests/support/reference/bip.h"
#include "tests/support/reference/image.h"
#include "tests/support/reference/selection.h"

namespace orva::reference {
namespace {

std::vector<float> valuesOf(const Image& img) {
  std::vector<float> values;
  for (int i = 0; i < img.npix(); ++i) values.push_back(img.pixel(i));
  return values;
}

// Whole levels of brightness, the brightest first. They are not negative and count from `low`.
struct Levels {
  std::int64_t low = 0;
  std::int64_t high = 0;
  std::vector<std::int64_t> aboveLow;
};

Levels levelsOf(const std::vector<float>& values) {
  Levels levels;
  levels.low = Typed<int>::fromFloat(*std::min_element(values.begin(), values.end()));
  levels.high = Typed<int>::fromFloat(*std::max_element(values.begin(), values.end()));
  const auto range = static_cast<double>(levels.high - levels.low);
  for (const float v : values) {
    const float above = v - static_cast<float>(levels.low);
    const double held = std::isnan(above) ? 0.0 : std::clamp(double{above}, 0.0, range);
    levels.aboveLow.push_back(static_cast<std::int64_t>(held));
  }
  std::sort(levels.aboveLow.begin(), levels.aboveLow.end(), std::greater<>());
  return levels;
}

// A share of a number of pixels, rounded down; a NaN is no pixel.
int shareOf(std::size_t count, float p) {
  const float product = p * static_cast<float>(count);
  return std::isnan(product) ? 0 : static_cast<int>(product);
}

float meanOfTop(const std::vector<float>& values, float p) {
  const Levels levels = levelsOf(values);
  if (levels.low == levels.high) return static_cast<float>(levels.low);
  const int k = shareOf(values.size(), p);
  if (k < 1) return static_cast<float>(levels.high);
  // The k brightest pixels, and all others on the level of the last of them.
  const std::int64_t last =
      levels.aboveLow[std::min(static_cast<std::size_t>(k), values.size()) - 1];
  int count = 0;
  std::uint32_t sum = 0;
  for (const std::int64_t above : levels.aboveLow) {
    if (above < last) break;
    sum += static_cast<std::uint32_t>(levels.low + above);
    ++count;
  }
  return static_cast<float>(static_cast<std::int32_t>(sum)) / static_cast<float>(count);
}

image<unsigned char> crossings(const Image& img) {
  return reference::edge(reference::threshold(img, 0.0F));
}

}  // namespace

float topByPixelNumber(const Image& img, int numpix) {
  if (img.isNull()) return 0.0F;
  const Levels levels = levelsOf(valuesOf(img));
  if (numpix == 0) return static_cast<float>(levels.high);
  const std::int64_t above = levels.aboveLow[static_cast<std::size_t>(numpix - 1)];
  return static_cast<float>(levels.low + above);
}

float topByPercentage(const Image& img, float p) {
  return reference::topByPixelNumber(img, shareOf(static_cast<std::size_t>(img.npix()), p));
}

float meanOfTopByPercentage(const Image& img, float p) {
  return img.isNull() ? 0.0F : meanOfTop(valuesOf(img), p);
}

float meanOfTopByPercentage(const std::vector<float>& values, float p) {
  if (values.empty()) return 0.0F;
  if (std::abs(p - 1.0F) < 0.01) {
    float sum = 0.0F;
    for (const float v : values) sum += v;
    return sum / static_cast<float>(values.size());
  }
  return meanOfTop(values, p);
}

std::vector<Point> findZeros(const Image& img) { return reference::findZeros(img, img); }

std::vector<Point> findZeros(const Image& a, const Image& b) {
  std::vector<Point> points;
  if (a.nx() != b.nx() || a.ny() != b.ny() || a.nframes() != b.nframes()) return points;
  const image<unsigned char> ea = crossings(a);
  const image<unsigned char> eb = crossings(b);
  for (int x = 0; x < ea.nx(); ++x) {
    for (int y = 0; y < ea.ny(); ++y) {
      const int i = x + y * ea.nx();
      if (ea.pixels()[i] == 255 && eb.pixels()[i] == 255) points.emplace_back(x, y);
    }
  }
  return points;
}

}  // namespace orva::reference
