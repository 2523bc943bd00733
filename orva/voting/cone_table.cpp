#include "orva/voting/cone_table.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orva/util/narrow.h"
#include "orva/util/parallel_for.h"

namespace orva::voting {
namespace {

// Appends the planes of a fan that opens along +x, or along -x for a sign of -1. Each plane begins
// with its cell on the axis; the cells off the axis follow column by column, each in the plane of
// its rounded distance.
void appendFan(std::vector<ConePlane2D>& planes, int minRadius, int maxRadius, int width,
               int sign) {
  const auto first = static_cast<std::ptrdiff_t>(planes.size());
  for (int d = minRadius; d <= maxRadius; ++d) {
    planes.emplace_back(1, WPoint2D(sign * d, 0, 0, 1.0F));
  }
  const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(planes.size()) - first;
  for (int r = minRadius; r <= maxRadius && maxRadius != 0; ++r) {
    const std::int64_t height = std::int64_t{r} * width / maxRadius;
    // Rows beyond maxRadius hold no cells, as these are too far from the apex.
    const int h =
        static_cast<int>(std::max(std::int64_t{-1}, std::min(height, std::int64_t{maxRadius} + 1)));
    for (int dy = -h; dy <= h; ++dy) {
      if (dy == 0) continue;
      const double square = static_cast<double>(dy) * dy + static_cast<double>(r) * r;
      const int d = round_double(static_cast<float>(std::sqrt(square)));
      const std::ptrdiff_t plane = std::ptrdiff_t{d} - minRadius;
      if (plane < 0 || plane >= count) continue;
      planes[static_cast<std::size_t>(first + plane)].points.emplace_back(sign * r, dy, 0, 1.0F);
    }
  }
}

// round_double() without its range checks, for values that fit an int.
int rounded(double v) {
  const int t = static_cast<int>(v);
  return v - t >= 0.5 ? t + 1 : t;
}

}  // namespace

Cone2D prototypeCone(int nearest, int farthest, int width, bool twoSided) {
  constexpr int kMaxDistance = std::numeric_limits<std::int16_t>::max();
  nearest = std::clamp(nearest, -kMaxDistance, kMaxDistance);
  farthest = std::clamp(farthest, -kMaxDistance, kMaxDistance);
  Cone2D cone;
  appendFan(cone.planes, nearest, farthest, width, 1);
  if (twoSided) appendFan(cone.planes, nearest, farthest, width, -1);
  return cone;
}

Rotation::Rotation(int bin, float step) {
  const float theta = static_cast<float>(bin) * step;
  cosine = std::cos(theta);
  sine = std::sin(theta);
}

void Rotation::apply(int& x, int& y) const {
  const auto fx = static_cast<float>(x);
  const auto fy = static_cast<float>(y);
  x = rounded(cosine * fx - sine * fy);
  y = rounded(sine * fx + cosine * fy);
}

ConeTable::ConeTable(const Cone2D& prototype, int bins, float step, int accumulatorWidth)
    : bins_(bins), extents_(static_cast<std::size_t>(bins)) {
  std::vector<WPoint2D> cells;
  for (const ConePlane2D& plane : prototype.planes) {
    cells.insert(cells.end(), plane.points.begin(), plane.points.end());
  }
  size_ = cells.size();
  const std::size_t count = size_ * static_cast<std::size_t>(bins);
  // Uninitialized, so that each task is the first to touch what it writes.
  offsets_ = std::make_unique_for_overwrite<int[]>(count);
  cells_ = std::make_unique_for_overwrite<Cell[]>(count);
  directions_ = std::make_unique_for_overwrite<std::int16_t[]>(count);
  constexpr std::ptrdiff_t kCellsPerTask = 8192;
  const std::ptrdiff_t binsPerTask = kCellsPerTask / static_cast<std::ptrdiff_t>(size_ + 1) + 1;
  parallelParts(Parts(bins, binsPerTask), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t bin = begin; bin < end; ++bin) {
      addCone(static_cast<int>(bin), step, accumulatorWidth, cells);
    }
  });
}

void ConeTable::addCone(int bin, float step, int accumulatorWidth,
                        const std::vector<WPoint2D>& prototype) {
  const Rotation rotation(bin, step);
  int* offset = offsets_.get() + first(bin);
  Cell* to = cells_.get() + first(bin);
  std::fill_n(directions_.get() + first(bin), size_, std::int16_t{-1});
  Extent extent;
  for (const WPoint2D& cell : prototype) {
    int x = cell.x;
    int y = cell.y;
    rotation.apply(x, y);
    *to++ = {fittedTo16(x), fittedTo16(y)};
    *offset = offsetOf(x, y, accumulatorWidth);
    extent.min = std::min(extent.min, *offset);
    extent.max = std::max(extent.max, *offset++);
  }
  extents_[static_cast<std::size_t>(bin)] = extent;
}

ConeTable::Extent ConeTable::extent() const {
  Extent all;
  for (const Extent& e : extents_) {
    all.min = std::min(all.min, e.min);
    all.max = std::max(all.max, e.max);
  }
  return all;
}

}  // namespace orva::voting
