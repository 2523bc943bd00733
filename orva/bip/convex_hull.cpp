#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <memory>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/neighbour_box.h"
#include "orva/bip/rectangle_groups.h"
#include "orva/bip/silent.h"
#include "orva/image/bad_alloc.h"
#include "orva/util/global.h"
#include "orva/util/narrow.h"
#include "orva/util/parallel_for.h"

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
      checkpoint();
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
  const Step all("hulls", 0, 1);
  const std::vector<RegionFeature> features = regionFeatures(labels, n);
  const int directions = std::clamp(precision, 3, 50);
  const std::vector<Slab> slabs = exitOnBadAlloc(
      [&] { return labels.nz() == 1 ? directions2d(directions) : directions3d(directions); });
  // A hull looks at the neighbours of its region's pixels, too. It may see pixels of the hulls
  // before it, so only regions apart from each other are filled at the same time.
  std::vector<Rectangle> bounds;
  bounds.reserve(features.size());
  for (const RegionFeature& f : features) {
    bounds.push_back({f.xmin - 1, f.ymin - 1, f.xmax + 1, f.ymax + 1});
  }
  const Step step("hulls", 0.1, 1);
  exitOnBadAlloc([&] {
    const auto groups = groupsOf(bounds, labels.nx(), labels.ny());
    Workspaces<std::vector<Slab>> workspaces;
    parallelFor(groups.size(), [&](std::size_t k) {
      const auto own = workspaces.take([&] { return std::make_unique<std::vector<Slab>>(slabs); });
      for (const std::size_t r : groups[k]) {
        fillHull(labels, fittedTo16(static_cast<int>(r)), features[r], *own);
      }
    });
  });
}

void reportCount(int n) { std::cout << toString(n) << " regions detected.\n"; }

}  // namespace

void silent::convexHull(image<short>& labels, int precision) {
  if (labels.isNull()) return;
  if (!isCancellable()) return fillHulls(labels, regionNumber(labels), precision);
  // What may be stopped works on a copy.
  image<short> work = labels.duplicate();
  fillHulls(work, regionNumber(work), precision);
  std::copy_n(work.pixels(), work.npix(), labels.pixels());
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
