// Table of the cells of all cones of a pass; not installed.
#ifndef ORVA_VOTING_CONE_TABLE_H
#define ORVA_VOTING_CONE_TABLE_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "orva/voting/circularvoting.h"

namespace orva::voting {

// The cone that opens along +x and, if two-sided, along -x, too. Offsets of cells are 0. Distances
// are held in -32767 .. 32767.
Cone2D prototypeCone(int nearest, int farthest, int width, bool twoSided);

// The linear offset of a cell in an accumulator, modulo 2^32: cells that lie outside every
// accumulator overflow without harm.
inline int offsetOf(int x, int y, int accumulatorWidth) {
  return static_cast<int>(static_cast<unsigned>(y) * static_cast<unsigned>(accumulatorWidth) +
                          static_cast<unsigned>(x));
}

// The rotation of a cell from +x to an angle bin; bins are `step` radians apart.
struct Rotation {
  Rotation(int bin, float step);
  void apply(int& x, int& y) const;

  float cosine;
  float sine;
};

// The cells of a prototype cone rotated to each of `bins` directions, `step` radians apart. The
// cells of a cone are in the order of its planes.
class ConeTable {
 public:
  ConeTable(const Cone2D& prototype, int bins, float step, int accumulatorWidth);

  int bins() const { return bins_; }
  bool has(int bin) const { return bin >= 0 && bin < bins_; }
  // The number of cells of each cone.
  std::size_t size() const { return size_; }
  // The linear offsets of the cells of cone `bin` relative to its apex.
  const int* offsets(int bin) const { return offsets_.get() + first(bin); }

  // The smallest and the largest of them and of the apex's, 0.
  struct Extent {
    int min = 0;
    int max = 0;
  };
  const Extent& extent(int bin) const { return extents_[static_cast<std::size_t>(bin)]; }
  // Of all cones.
  Extent extent() const;

  struct Cell {
    std::int16_t x;
    std::int16_t y;
  };
  const Cell& cell(int bin, int i) const {
    return cells_[first(bin) + static_cast<std::size_t>(i)];
  }

  // The angle bin in which a cell lies, as the caller caches it; below 0 until then. Several
  // threads may find and cache the same one.
  std::int16_t direction(int bin, int i) const {
    return cached(bin, i).load(std::memory_order_relaxed);
  }
  void setDirection(int bin, int i, std::int16_t direction) const {
    cached(bin, i).store(direction, std::memory_order_relaxed);
  }

 private:
  std::size_t first(int bin) const { return static_cast<std::size_t>(bin) * size_; }
  std::atomic_ref<std::int16_t> cached(int bin, int i) const {
    return std::atomic_ref(directions_[first(bin) + static_cast<std::size_t>(i)]);
  }
  void addCone(int bin, float step, int accumulatorWidth, const std::vector<WPoint2D>& prototype);

  int bins_;
  std::size_t size_ = 0;
  std::unique_ptr<int[]> offsets_;
  std::unique_ptr<Cell[]> cells_;
  std::unique_ptr<std::int16_t[]> directions_;
  std::vector<Extent> extents_;  // one per bin
};

}  // namespace orva::voting

#endif
