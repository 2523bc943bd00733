#include "orva/detect/scale_levels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>

#include "orva/scalespace/scalespace.h"

namespace orva::detect {
namespace {

constexpr float kBrightest = 255.0F;
constexpr float kMinNoise = 0.1F;  // so that rounding does not pass for structure
// Standard deviation of a Gaussian derivative at sigma 1 of unit white noise: 1 / sqrt(8 pi).
constexpr float kGradientPerNoise = 0.2F;

std::ptrdiff_t pixelCount(int nx, int ny) { return std::ptrdiff_t{nx} * ny; }

// Plane 0 stretched to 0 .. kBrightest; no pixels when it has no contrast.
std::vector<float> stretchedPlane(const Image& img) {
  const std::ptrdiff_t n = pixelCount(img.nx(), img.ny());
  std::vector<float> plane(static_cast<std::size_t>(n));
  float low = std::numeric_limits<float>::infinity();
  float high = -low;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    const float v = img.pixel(static_cast<int>(i));
    plane[static_cast<std::size_t>(i)] = v;
    if (!std::isfinite(v)) continue;
    low = std::min(low, v);
    high = std::max(high, v);
  }
  if (!(high > low)) return {};
  const double scale = kBrightest / (static_cast<double>(high) - low);
  for (float& v : plane) {
    v = std::isfinite(v) ? static_cast<float>((static_cast<double>(v) - low) * scale) : 0.0F;
  }
  return plane;
}

// Moves each pixel into the range of its eight neighbours, so that single outliers (hot pixels,
// salt and pepper) vanish while edges stay. The border stays as it is.
void clampImpulses(std::vector<float>& plane, int nx, int ny) {
  if (nx < 3 || ny < 3) return;
  const std::vector<float> from = plane;
  for (int y = 1; y + 1 < ny; ++y) {
    const float* p = from.data() + pixelCount(nx, y) + 1;
    float* out = plane.data() + pixelCount(nx, y) + 1;
    for (int x = 1; x + 1 < nx; ++x, ++p, ++out) {
      const auto extreme = [&](auto&& pick) {
        const float rows = pick(pick(pick(p[-nx - 1], p[-nx]), pick(p[-nx + 1], p[nx - 1])),
                                pick(p[nx], p[nx + 1]));
        return pick(rows, pick(p[-1], p[1]));
      };
      const float low = extreme([](float a, float b) { return a < b ? a : b; });
      const float high = extreme([](float a, float b) { return a > b ? a : b; });
      *out = std::clamp(*p, low, high);
    }
  }
}

// The means of 2 x 2 pixels; an odd last row or column is dropped.
std::vector<float> halved(const ScaleLevel& from, int nx, int ny) {
  std::vector<float> result(static_cast<std::size_t>(pixelCount(nx, ny)));
  float* out = result.data();
  for (int y = 0; y < ny; ++y) {
    const float* row = from.pixels.data() + 2 * pixelCount(from.nx, y);
    const float* next = row + from.nx;
    for (int x = 0; x < nx; ++x, row += 2, next += 2) {
      *out++ = 0.25F * ((row[0] + next[1]) + (row[1] + next[0]));
    }
  }
  return result;
}

// Standard deviation of the noise: the response to the difference of two Laplacians, which planes
// and straight edges leave near 0. The median resists objects; the mean takes over for noise on a
// few pixels only.
float noiseOf(const ScaleLevel& level) {
  const int nx = level.nx;
  std::vector<float> response;
  response.reserve(level.pixels.size());
  double sum = 0;
  for (int y = 1; y + 1 < level.ny; ++y) {
    const float* p = level.pixels.data() + pixelCount(nx, y) + 1;
    for (int x = 1; x + 1 < nx; ++x, ++p) {
      const float sides = (p[-1] + p[1]) + (p[-nx] + p[nx]);
      const float corners = (p[-nx - 1] + p[nx + 1]) + (p[-nx + 1] + p[nx - 1]);
      const float r = std::fabs((4 * p[0] - 2 * sides) + corners) / 6;
      response.push_back(r);
      sum += r;
    }
  }
  const auto middle = response.begin() + static_cast<std::ptrdiff_t>(response.size() / 2);
  std::nth_element(response.begin(), middle, response.end());
  const double byMedian = 1.4826 * *middle;
  const double byMean = 0.5 * sum / static_cast<double>(response.size());
  return std::max(static_cast<float>(std::max(byMedian, byMean)), kMinNoise);
}

void addGradients(ScaleLevel& level) {
  image<float> plane(level.nx, level.ny, 1, 1, 1);
  std::copy(level.pixels.begin(), level.pixels.end(), plane.pixels());
  const image<float> dx = scalespace::gaussian(plane, kGradientSigma, 1, 0, 0);
  const image<float> dy = scalespace::gaussian(plane, kGradientSigma, 0, 1, 0);
  level.gradients.resize(level.pixels.size());
  double sum = 0;
  for (std::size_t i = 0; i < level.gradients.size(); ++i) {
    const Gradient g{dx.pixels()[i], dy.pixels()[i]};
    level.gradients[i] = g;
    sum += std::sqrt(g.x * g.x + g.y * g.y);
  }
  level.meanGradient = static_cast<float>(sum / static_cast<double>(level.gradients.size()));
}

}  // namespace

std::vector<ScaleLevel> scaleLevels(const Image& img) {
  std::vector<ScaleLevel> levels;
  if (img.isNull() || std::min(img.nx(), img.ny()) < kMinLevelSide) return levels;
  ScaleLevel level;
  level.nx = img.nx();
  level.ny = img.ny();
  level.pixels = stretchedPlane(img);
  if (level.pixels.empty()) return levels;
  level.noise = noiseOf(level);  // before outliers are taken away
  clampImpulses(level.pixels, level.nx, level.ny);
  while (true) {
    if (!levels.empty()) level.noise = noiseOf(level);
    level.gradientNoise = kGradientPerNoise * level.noise;
    addGradients(level);
    levels.push_back(std::move(level));
    const ScaleLevel& last = levels.back();
    const int nx = last.nx / 2;
    const int ny = last.ny / 2;
    if (std::min(nx, ny) < kMinLevelSide) return levels;
    level = ScaleLevel{};
    level.nx = nx;
    level.ny = ny;
    level.factor = 2 * last.factor;
    level.pixels = halved(last, nx, ny);
  }
}

}  // namespace orva::detect
