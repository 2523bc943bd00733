#include "orva/detect/scale_levels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <numeric>

#include "orva/detect/order_statistic.h"
#include "orva/image/float_conversion.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

constexpr float kBrightest = 255.0F;
// Pixels at either end of the range that do not count: fewer than the smallest object has.
constexpr std::size_t kOutliers = 8;
constexpr float kMinNoise = 0.1F;  // so that rounding does not pass for structure
// Standard deviation of a Gaussian derivative at sigma 1 of unit white noise: 1 / sqrt(8 pi).
constexpr float kGradientPerNoise = 0.2F;

std::ptrdiff_t pixelCount(int nx, int ny) { return std::ptrdiff_t{nx} * ny; }

// The smallest and the largest of a pixel's neighbours inside the image.
struct Neighbourhood {
  float low = std::numeric_limits<float>::infinity();
  float high = -std::numeric_limits<float>::infinity();
  void add(float v) {
    low = v < low ? v : low;
    high = v > high ? v : high;
  }
};

// Row y of clampImpulses().
void clampImpulsesOfRow(const std::vector<float>& from, int nx, int ny, int y, float* to) {
  const int y0 = std::max(y - 1, 0);
  const int y1 = std::min(y + 1, ny - 1);
  for (int x = 0; x < nx; ++x) {
    const float* p = from.data() + pixelCount(nx, y) + x;
    Neighbourhood around;
    if (x > 0 && y > 0 && x + 1 < nx && y + 1 < ny) {
      for (const std::ptrdiff_t row : {-std::ptrdiff_t{nx}, std::ptrdiff_t{nx}}) {
        for (int dx = -1; dx <= 1; ++dx) around.add(p[row + dx]);
      }
      around.add(p[-1]);
      around.add(p[1]);
    } else {
      for (int j = y0; j <= y1; ++j) {
        for (int i = std::max(x - 1, 0); i <= std::min(x + 1, nx - 1); ++i) {
          if (i != x || j != y) around.add(from[static_cast<std::size_t>(pixelCount(nx, j) + i)]);
        }
      }
    }
    to[x] = std::clamp(*p, around.low, around.high);
  }
}

// Moves each pixel into the range of its eight neighbours, so that single outliers (hot pixels,
// salt and pepper) vanish while edges stay.
void clampImpulses(std::vector<float>& plane, int nx, int ny) {
  checkpoint();
  const std::vector<float> from = plane;
  parallelParts(rowParts(nx, ny), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (int y = static_cast<int>(begin); y < end; ++y) {
      clampImpulsesOfRow(from, nx, ny, y, plane.data() + pixelCount(nx, y));
    }
  });
}

// Plane 0, a pixel that is not a finite number as the smallest finite one; empty without any.
std::vector<float> finitePlane(const Image& img) {
  const std::ptrdiff_t n = pixelCount(img.nx(), img.ny());
  std::vector<float> plane(static_cast<std::size_t>(n));
  const Parts parts(n, kPixelsPerTask, 64);
  std::vector<float> lows(parts.count(), std::numeric_limits<float>::infinity());
  parallelFor(parts.count(), [&](std::size_t k) {
    const std::ptrdiff_t first = parts.begin(k);
    float* v = plane.data() + first;
    readPixels(img, first, parts.end(k) - first, v);
    for (float* const end = plane.data() + parts.end(k); v != end; ++v) {
      if (std::isfinite(*v)) lows[k] = std::min(lows[k], *v);
    }
  });
  const float low = *std::min_element(lows.begin(), lows.end());
  if (!std::isfinite(low)) return {};
  parallelParts(parts, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (float* v = plane.data() + begin; v != plane.data() + end; ++v) {
      if (!std::isfinite(*v)) *v = low;
    }
  });
  return plane;
}

// Plane 0 stretched so that its range without single outliers becomes 0 .. kBrightest; no pixels
// when it has no contrast.
std::vector<float> stretchedPlane(const Image& img) {
  std::vector<float> plane = finitePlane(img);
  if (plane.empty()) return plane;
  checkpoint();
  std::vector<float> calm = plane;
  clampImpulses(calm, img.nx(), img.ny());
  const std::size_t last = calm.size() - 1;
  const double low = orderStatistic(calm, std::min(kOutliers, last));
  const double high = orderStatistic(calm, last - std::min(kOutliers, last));
  if (!(high > low)) return {};
  const double scale = kBrightest / (high - low);
  parallelPixels(static_cast<std::ptrdiff_t>(plane.size()),
                 [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
                   for (float* v = plane.data() + begin; v != plane.data() + end; ++v) {
                     const double above = (static_cast<double>(*v) - low) * scale;
                     *v = std::clamp(static_cast<float>(above), 0.0F, kBrightest);
                   }
                 });
  return plane;
}

// The sum of valueOf(v) over all v, in their order.
template <class T, class ValueOf>
double sumOf(const std::vector<T>& values, const ValueOf& valueOf) {
  const Parts parts(static_cast<std::ptrdiff_t>(values.size()), kPixelsPerTask);
  double sum = 0;
  for (std::size_t k = 0; k < parts.count(); ++k) {
    checkpoint();
    for (std::ptrdiff_t i = parts.begin(k); i < parts.end(k); ++i) {
      sum += valueOf(values[static_cast<std::size_t>(i)]);
    }
  }
  return sum;
}

// The means of 2 x 2 pixels; an odd last row or column is dropped.
std::vector<float> halved(const ScaleLevel& from, int nx, int ny) {
  std::vector<float> result(static_cast<std::size_t>(pixelCount(nx, ny)));
  parallelParts(rowParts(nx, ny), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    float* out = result.data() + begin * nx;
    for (std::ptrdiff_t y = begin; y < end; ++y) {
      const float* row = from.pixels.data() + 2 * y * from.nx;
      const float* next = row + from.nx;
      for (int x = 0; x < nx; ++x, row += 2, next += 2) {
        *out++ = 0.25F * ((row[0] + next[1]) + (row[1] + next[0]));
      }
    }
  });
  return result;
}

// Standard deviation of the noise: the response to the difference of two Laplacians, which planes
// and straight edges leave near 0. The median resists objects; the mean takes over for noise on a
// few pixels only.
float noiseOf(const ScaleLevel& level) {
  const int nx = level.nx;
  const std::ptrdiff_t columns = nx - 2;
  const std::ptrdiff_t rows = level.ny - 2;
  std::vector<float> response(static_cast<std::size_t>(columns * rows));
  parallelParts(rowParts(nx, rows), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    float* r = response.data() + begin * columns;
    for (std::ptrdiff_t y = begin; y < end; ++y) {
      const float* p = level.pixels.data() + (y + 1) * nx + 1;
      for (std::ptrdiff_t x = 0; x < columns; ++x, ++p) {
        const float sides = (p[-1] + p[1]) + (p[-nx] + p[nx]);
        const float corners = (p[-nx - 1] + p[nx + 1]) + (p[-nx + 1] + p[nx - 1]);
        *r++ = std::fabs((4 * p[0] - 2 * sides) + corners) / 6;
      }
    }
  });
  const double sum = sumOf(response, [](float r) { return static_cast<double>(r); });
  const double byMedian = 1.4826 * orderStatistic(response, response.size() / 2);
  const double byMean = 0.5 * sum / static_cast<double>(response.size());
  return std::max(static_cast<float>(std::max(byMedian, byMean)), kMinNoise);
}

void addGradients(ScaleLevel& level) {
  image<float> plane(level.nx, level.ny, 1, 1, 1);
  std::copy(level.pixels.begin(), level.pixels.end(), plane.pixels());
  const image<float> dx = scalespace::gaussian(plane, kGradientSigma, 1, 0, 0);
  const image<float> dy = scalespace::gaussian(plane, kGradientSigma, 0, 1, 0);
  level.gradients.resize(level.pixels.size());
  parallelPixels(dx.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    Gradient* to = level.gradients.data() + begin;
    for (std::ptrdiff_t i = begin; i < end; ++i) *to++ = {dx.pixels()[i], dy.pixels()[i]};
  });
  const double sum = sumOf(level.gradients, [](const Gradient& g) {
    return static_cast<double>(std::sqrt(g.x * g.x + g.y * g.y));
  });
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
