#include <algorithm>
#include <cmath>
#include <iostream>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/neighbour_box.h"
#include "orva/bip/silent.h"
#include "orva/image/bad_alloc.h"
#include "orva/util/global.h"
#include "orva/util/narrow.h"

namespace orva::bip {
namespace {

constexpr float kPi = 3.1415927F;

// A direction and the extent of a region along it.
struct Slab {
  float dx;
  float dy;
  float dz;
  float min = 0.0F;
  float max = 0.0F;

  float project(int x, int y, int z) const {
    return static_cast<float>(x) * dx + static_cast<float>(y) * dy + static_cast<float>(z) * dz;
  }
};

// Over half a circle. The third component is 0 and adds nothing to a projection.
std::vector<Slab> directions2d(int n) {
  std::vector<Slab> slabs;
  slabs.reserve(static_cast<std::size_t>(n));
  const float step = kPi / static_cast<float>(n);
  for (int k = 0; k < n; ++k) {
    const float a = static_cast<float>(k) * step;
    slabs.push_back({std::cos(a), std::sin(a), 0.0F});
  }
  return slabs;
}

// Over half a sphere.
std::vector<Slab> directions3d(int n) {
  std::vector<Slab> slabs;
  const auto count = static_cast<std::size_t>(n);
  slabs.reserve(4 * count * (count + 1));
  const float step = kPi / static_cast<float>(2 * n);
  for (int i = 0; i <= n; ++i) {
    const float polar = static_cast<float>(i) * step;
    for (int j = 0; j < 4 * n; ++j) {
      const float azimuth = static_cast<float>(j) * step;
      slabs.push_back({std::cos(azimuth) * std::sin(polar), std::sin(azimuth) * std::sin(polar),
                       std::cos(polar)});
    }
  }
  return slabs;
}

// Calls visit(x, y, z, i) for every pixel i of the region's bounding box, in linear order.
template <class Visit>
void forEachInBounds(const Image& img, const RegionFeature& f, Visit visit) {
  for (int z = f.zmin; z <= f.zmax; ++z) {
    for (int y = f.ymin; y <= f.ymax; ++y) {
      const std::ptrdiff_t row = (std::ptrdiff_t{z} * img.ny() + y) * img.nx();
      for (int x = f.xmin; x <= f.xmax; ++x) visit(x, y, z, row + x);
    }
  }
}

void fillHull(image<short>& labels, short region, const RegionFeature& f,
              std::vector<Slab>& slabs) {
  for (Slab& s : slabs) {
    s.min = 999999.0F;
    s.max = -999999.0F;
  }
  short* label = labels.pixels();
  forEachInBounds(labels, f, [&](int x, int y, int z, std::ptrdiff_t i) {
    if (label[i] != region || !isEdge(labels, x, y, z)) return;
    for (Slab& s : slabs) {
      const float p = s.project(x, y, z);
      s.min = std::min(s.min, p);
      s.max = std::max(s.max, p);
    }
  });
  forEachInBounds(labels, f, [&](int x, int y, int z, std::ptrdiff_t i) {
    if (label[i] >= 0) return;
    const bool inside = std::none_of(slabs.begin(), slabs.end(), [&](const Slab& s) {
      const float p = s.project(x, y, z);
      return s.min > p || s.max < p;
    });
    if (inside) label[i] = region;
  });
}

void fillHulls(image<short>& labels, int n, int precision) {
  const std::vector<RegionFeature> features = regionFeatures(labels, n);
  const int directions = std::clamp(precision, 3, 50);
  std::vector<Slab> slabs = exitOnBadAlloc(
      [&] { return labels.nz() == 1 ? directions2d(directions) : directions3d(directions); });
  for (int r = 0; r < n; ++r) {
    fillHull(labels, fittedTo16(r), features[static_cast<std::size_t>(r)], slabs);
  }
}

void reportCount(int n) { std::cout << toString(n) << " regions detected.\n"; }

}  // namespace

void silent::convexHull(image<short>& labels, int precision) {
  if (!labels.isNull()) fillHulls(labels, regionNumber(labels), precision);
}

void convexHull(image<short>& labels, int precision) {
  if (labels.isNull()) return;
  reportCount(regionNumber(labels));
  silent::convexHull(labels, precision);
}

image<short> convexHull(const image<unsigned char>& mask, int precision) {
  int n = 0;
  image<short> labels = regions(mask, n, 255, 1, NEIGHBORHOOD_4);
  if (labels.isNull()) return labels;
  reportCount(n);
  fillHulls(labels, n, precision);
  return labels;
}

}  // namespace orva::bip
