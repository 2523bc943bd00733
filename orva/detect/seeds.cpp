#include "orva/detect/seeds.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

constexpr float kMinSignal = 3.0F;     // of an edge, in standard deviations of the gradient's noise
constexpr float kMinMeanShare = 0.3F;  // of an edge, of the mean gradient
constexpr float kTan225 = 0.41421356F;
constexpr int kRowsPerPoll = 64;
constexpr std::size_t kEdgesPerPoll = 1 << 14;

// How the votes of a band are cast and read.
struct BandShape {
  int nearest;  // distances of the votes
  int farthest;
  int smoothing;    // how often the binomial filter smooths them
  int reach;        // a seed is the maximum within this many pixels
  float threshold;  // votes of a seed
};

BandShape shapeOf(Band band) {
  if (band == Band::Small) return {2, 6, 2, 1, 0.20F};
  return {6, 12, 4, 2, 0.15F};
}

float magnitude(const Gradient& g) { return std::sqrt(g.x * g.x + g.y * g.y); }

// Smooths with 1/4, 1/2, 1/4 along rows, then columns; the border sample is repeated.
void smoothBinomially(std::vector<float>& votes, int nx, int ny, int times) {
  std::vector<float> rows(votes.size());
  const auto weigh = [](float before, float at, float after) {
    return 0.5F * at + 0.25F * (before + after);
  };
  for (int k = 0; k < times; ++k) {
    for (int y = 0; y < ny; ++y) {
      if (y % kRowsPerPoll == 0) checkpoint();
      const float* in = votes.data() + std::ptrdiff_t{y} * nx;
      float* out = rows.data() + std::ptrdiff_t{y} * nx;
      out[0] = weigh(in[0], in[0], in[1]);
      for (int x = 1; x + 1 < nx; ++x) out[x] = weigh(in[x - 1], in[x], in[x + 1]);
      out[nx - 1] = weigh(in[nx - 2], in[nx - 1], in[nx - 1]);
    }
    for (int y = 0; y < ny; ++y) {
      if (y % kRowsPerPoll == 0) checkpoint();
      const float* at = rows.data() + std::ptrdiff_t{y} * nx;
      const float* before = y > 0 ? at - nx : at;
      const float* after = y + 1 < ny ? at + nx : at;
      float* out = votes.data() + std::ptrdiff_t{y} * nx;
      for (int x = 0; x < nx; ++x) out[x] = weigh(before[x], at[x], after[x]);
    }
  }
}

// Whether (x, y) holds more than the pixels within `reach` before it in raster order, and no less
// than those after it.
bool isMaximum(const std::vector<float>& votes, int nx, int ny, int x, int y, int reach) {
  const float v = votes[static_cast<std::size_t>(std::ptrdiff_t{y} * nx + x)];
  const int x0 = std::max(x - reach, 0);
  const int x1 = std::min(x + reach, nx - 1);
  const int y1 = std::min(y + reach, ny - 1);
  for (int j = std::max(y - reach, 0); j <= y1; ++j) {
    const float* row = votes.data() + std::ptrdiff_t{j} * nx;
    for (int i = x0; i <= x1; ++i) {
      const bool isBefore = j < y || (j == y && i < x);
      if (row[i] > v || (isBefore && row[i] == v)) return false;
    }
  }
  return true;
}

// The edge pixels of a row that is not at the border, with their magnitudes as weights.
void addEdgesOfRow(const ScaleLevel& level, const std::vector<float>& magnitudes, float threshold,
                   int y, std::vector<EdgePixel>& edges) {
  const int nx = level.nx;
  const std::ptrdiff_t row = std::ptrdiff_t{y} * nx;
  for (int x = 1; x + 1 < nx; ++x) {
    const float* m = magnitudes.data() + row + x;
    if (!(*m > threshold)) continue;
    const Gradient& g = level.gradients[static_cast<std::size_t>(row + x)];
    const int stepX = std::fabs(g.x) > kTan225 * std::fabs(g.y) ? (g.x > 0 ? 1 : -1) : 0;
    const int stepY = std::fabs(g.y) > kTan225 * std::fabs(g.x) ? (g.y > 0 ? 1 : -1) : 0;
    const std::ptrdiff_t step = std::ptrdiff_t{stepY} * nx + stepX;
    if (m[step] > *m || m[-step] > *m) continue;
    edges.push_back({x, y, g.x / *m, g.y / *m, *m});
  }
}

}  // namespace

std::vector<EdgePixel> edgePixels(const ScaleLevel& level) {
  const float threshold =
      std::max(kMinSignal * level.gradientNoise, kMinMeanShare * level.meanGradient);
  std::vector<float> magnitudes(level.gradients.size());
  parallelPixels(static_cast<std::ptrdiff_t>(magnitudes.size()),
                 [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
                   std::transform(level.gradients.begin() + begin, level.gradients.begin() + end,
                                  magnitudes.begin() + begin, magnitude);
                 });
  const Parts parts = rowParts(level.nx, level.ny);
  std::vector<std::vector<EdgePixel>> found(parts.count());
  parallelFor(parts.count(), [&](std::size_t k) {
    const auto end = static_cast<int>(std::min<std::ptrdiff_t>(parts.end(k), level.ny - 1));
    for (int y = std::max(1, static_cast<int>(parts.begin(k))); y < end; ++y) {
      addEdgesOfRow(level, magnitudes, threshold, y, found[k]);
    }
  });
  std::vector<EdgePixel> edges;
  for (const std::vector<EdgePixel>& part : found) {
    edges.insert(edges.end(), part.begin(), part.end());
  }
  checkpoint();
  double sum = 0;
  for (const EdgePixel& e : edges) sum += std::sqrt(e.weight);
  if (edges.empty()) return edges;
  // A weak edge counts by its strength, a strong one hardly more than a typical one.
  const double meanRoot = sum / static_cast<double>(edges.size());
  const auto typical = static_cast<float>(meanRoot * meanRoot);
  for (EdgePixel& e : edges) e.weight = 2 * e.weight / (e.weight + typical);
  return edges;
}

std::vector<Seed> seeds(const ScaleLevel& level, const std::vector<EdgePixel>& edges,
                        Polarity polarity, Band band) {
  const int nx = level.nx;
  const int ny = level.ny;
  const BandShape shape = shapeOf(band);
  const float sign = polarity == Polarity::Bright ? 1.0F : -1.0F;
  std::vector<float> votes(level.pixels.size(), 0.0F);
  for (std::size_t k = 0; k < edges.size(); ++k) {
    if (k % kEdgesPerPoll == 0) checkpoint();
    const EdgePixel& e = edges[k];
    for (int r = shape.nearest; r <= shape.farthest; ++r) {
      const float reach = sign * static_cast<float>(r);
      const int x = static_cast<int>(std::floor(static_cast<float>(e.x) + e.dx * reach + 0.5F));
      const int y = static_cast<int>(std::floor(static_cast<float>(e.y) + e.dy * reach + 0.5F));
      if (x < 0 || y < 0 || x >= nx || y >= ny) continue;
      votes[static_cast<std::size_t>(std::ptrdiff_t{y} * nx + x)] +=
          e.weight / static_cast<float>(r);
    }
  }
  smoothBinomially(votes, nx, ny, shape.smoothing);
  std::vector<Seed> found;
  for (int y = 0; y < ny; ++y) {
    if (y % kRowsPerPoll == 0) checkpoint();
    for (int x = 0; x < nx; ++x) {
      const float v = votes[static_cast<std::size_t>(std::ptrdiff_t{y} * nx + x)];
      if (v > shape.threshold && isMaximum(votes, nx, ny, x, y, shape.reach)) {
        found.push_back({x, y, band, v});
      }
    }
  }
  return found;
}

}  // namespace orva::detect
