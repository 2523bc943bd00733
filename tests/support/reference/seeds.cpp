#include "tests/support/reference/seeds.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orva::test::reference {
namespace {

using detect::Band;
using detect::EdgePixel;
using detect::ScaleLevel;

// Numbers on the grid of a level.
class Grid {
 public:
  Grid(int nx, int ny)
      : nx_(nx), ny_(ny), values_(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny)) {}

  int nx() const { return nx_; }
  int ny() const { return ny_; }
  bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < nx_ && y < ny_; }
  float& at(int x, int y) {
    return values_[static_cast<std::size_t>(y) * static_cast<std::size_t>(nx_) +
                   static_cast<std::size_t>(x)];
  }
  // The border is repeated outside.
  float repeated(int x, int y) { return at(std::clamp(x, 0, nx_ - 1), std::clamp(y, 0, ny_ - 1)); }

 private:
  int nx_;
  int ny_;
  std::vector<float> values_;
};

Grid smoothed(Grid votes) {
  Grid rows(votes.nx(), votes.ny());
  for (int y = 0; y < votes.ny(); ++y) {
    for (int x = 0; x < votes.nx(); ++x) {
      rows.at(x, y) =
          0.5F * votes.at(x, y) + 0.25F * (votes.repeated(x - 1, y) + votes.repeated(x + 1, y));
    }
  }
  Grid result(votes.nx(), votes.ny());
  for (int y = 0; y < votes.ny(); ++y) {
    for (int x = 0; x < votes.nx(); ++x) {
      result.at(x, y) =
          0.5F * rows.at(x, y) + 0.25F * (rows.repeated(x, y - 1) + rows.repeated(x, y + 1));
    }
  }
  return result;
}

// The first of the largest within `reach`.
bool isFirstMaximum(Grid& votes, int x, int y, int reach) {
  int bestX = x;
  int bestY = y;
  bool isKnown = false;
  for (int j = y - reach; j <= y + reach; ++j) {
    for (int i = x - reach; i <= x + reach; ++i) {
      if (!votes.contains(i, j)) continue;
      if (!isKnown || votes.at(i, j) > votes.at(bestX, bestY)) {
        bestX = i;
        bestY = j;
        isKnown = true;
      }
    }
  }
  return bestX == x && bestY == y;
}

// The step to the pixel along a component of the gradient, in eighths of a turn.
int stepAlong(float along, float across) {
  if (!(std::fabs(along) > 0.41421356F * std::fabs(across))) return 0;
  return along > 0 ? 1 : -1;
}

}  // namespace

std::vector<EdgePixel> edgePixels(const ScaleLevel& level) {
  const float threshold = std::max(3.0F * level.gradientNoise, 0.3F * level.meanGradient);
  const auto gradient = [&](int x, int y) {
    return level.gradients[static_cast<std::size_t>(y) * static_cast<std::size_t>(level.nx) +
                           static_cast<std::size_t>(x)];
  };
  const auto magnitude = [&](int x, int y) {
    const detect::Gradient g = gradient(x, y);
    return std::sqrt(g.x * g.x + g.y * g.y);
  };
  std::vector<EdgePixel> edges;
  double roots = 0;
  for (int y = 1; y < level.ny - 1; ++y) {
    for (int x = 1; x < level.nx - 1; ++x) {
      const float m = magnitude(x, y);
      if (!(m > threshold)) continue;
      const detect::Gradient g = gradient(x, y);
      const int dx = stepAlong(g.x, g.y);
      const int dy = stepAlong(g.y, g.x);
      if (magnitude(x + dx, y + dy) > m || magnitude(x - dx, y - dy) > m) continue;
      edges.push_back({x, y, g.x / m, g.y / m, m});
      roots += std::sqrt(m);
    }
  }
  const double root = roots / static_cast<double>(edges.size());
  for (EdgePixel& e : edges) {
    e.weight = 2 * e.weight / (e.weight + static_cast<float>(root * root));
  }
  return edges;
}

std::vector<detect::Seed> seeds(const ScaleLevel& level, const std::vector<EdgePixel>& edges,
                                detect::Polarity polarity, Band band) {
  const bool isSmall = band == Band::Small;
  Grid votes(level.nx, level.ny);
  for (const EdgePixel& e : edges) {
    for (int r = isSmall ? 2 : 6; r <= (isSmall ? 6 : 12); ++r) {
      const float distance = static_cast<float>(polarity == detect::Polarity::Bright ? r : -r);
      const int x = static_cast<int>(std::floor(static_cast<float>(e.x) + e.dx * distance + 0.5F));
      const int y = static_cast<int>(std::floor(static_cast<float>(e.y) + e.dy * distance + 0.5F));
      if (votes.contains(x, y)) votes.at(x, y) += e.weight / static_cast<float>(r);
    }
  }
  for (int k = 0; k < (isSmall ? 2 : 4); ++k) votes = smoothed(votes);
  std::vector<detect::Seed> found;
  for (int y = 0; y < level.ny; ++y) {
    for (int x = 0; x < level.nx; ++x) {
      if (votes.at(x, y) > (isSmall ? 0.20F : 0.15F) &&
          isFirstMaximum(votes, x, y, isSmall ? 1 : 2)) {
        found.push_back({x, y, band, votes.at(x, y)});
      }
    }
  }
  return found;
}

}  // namespace orva::test::reference
