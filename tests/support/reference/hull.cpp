#include "tests/support/reference/hull.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "tests/support/reference/bip.h"

namespace orva::reference {
namespace {

constexpr float pi = 3.1415927F;

struct Direction {
  float x;
  float y;
  float z;
};

std::vector<Direction> directionsOf(bool volume, int precision) {
  const int n = std::clamp(precision, 3, 50);
  std::vector<Direction> directions;
  if (!volume) {
    for (int k = 0; k < n; ++k) {
      const float a = static_cast<float>(k) * (pi / static_cast<float>(n));
      directions.push_back({std::cos(a), std::sin(a), 0.0F});
    }
    return directions;
  }
  const float step = pi / static_cast<float>(2 * n);
  for (int i = 0; i <= n; ++i) {
    const float theta = static_cast<float>(i) * step;
    for (int j = 0; j < 4 * n; ++j) {
      const float phi = static_cast<float>(j) * step;
      directions.push_back(
          {std::cos(phi) * std::sin(theta), std::sin(phi) * std::sin(theta), std::cos(theta)});
    }
  }
  return directions;
}

// The same sum for a plane and a volume: in a plane the last product is a zero.
float projection(const Direction& d, int x, int y, int z) {
  return static_cast<float>(x) * d.x + static_cast<float>(y) * d.y + static_cast<float>(z) * d.z;
}

template <class Action>
void forBox(const RegionFeature& f, Action action) {
  for (int z = f.zmin; z <= f.zmax; ++z) {
    for (int y = f.ymin; y <= f.ymax; ++y) {
      for (int x = f.xmin; x <= f.xmax; ++x) action(x, y, z);
    }
  }
}

}  // namespace

void convexHull(image<short>& labels, int precision) {
  if (labels.isNull()) return;
  const int n = reference::regionNumber(labels);
  const std::vector<RegionFeature> features = reference::regionFeatures(labels, n, nullptr);
  const std::vector<Direction> directions = directionsOf(labels.nz() > 1, precision);
  struct Range {
    float low = 999999.0F;
    float high = -999999.0F;
  };
  for (int r = 0; r < n; ++r) {
    const RegionFeature& f = features[static_cast<std::size_t>(r)];
    const auto pixel = [&labels](int x, int y, int z) -> short& {
      return labels.pixels()[x + labels.nx() * (y + labels.ny() * z)];
    };
    std::vector<Range> ranges(directions.size());
    forBox(f, [&](int x, int y, int z) {
      if (pixel(x, y, z) != r || !isEdge(labels, x, y, z)) return;
      for (std::size_t d = 0; d < directions.size(); ++d) {
        const float p = projection(directions[d], x, y, z);
        ranges[d].low = std::min(ranges[d].low, p);
        ranges[d].high = std::max(ranges[d].high, p);
      }
    });
    forBox(f, [&](int x, int y, int z) {
      if (pixel(x, y, z) >= 0) return;
      for (std::size_t d = 0; d < directions.size(); ++d) {
        const float p = projection(directions[d], x, y, z);
        if (p < ranges[d].low || p > ranges[d].high) return;
      }
      pixel(x, y, z) = static_cast<short>(r);
    });
  }
}

image<short> convexHull(const image<unsigned char>& mask, int precision) {
  int n = 0;
  image<short> labels = reference::regions(mask, n, 255, 1, 4);
  reference::convexHull(labels, precision);
  return labels;
}

}  // namespace orva::reference
