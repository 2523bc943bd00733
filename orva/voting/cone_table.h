// The cones of one pass laid out for fast walks; not installed.
#ifndef ORVA_VOTING_CONE_TABLE_H
#define ORVA_VOTING_CONE_TABLE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orva/voting/circularvoting.h"

namespace orva::voting {

// The cone that opens along +x (and along -x, too, if it is two-sided), without offsets.
Cone2D prototypeCone(int nearest, int farthest, int width, bool twoSided);

// The offset of a cell in the accumulator, in unsigned arithmetic, so that cells outside every
// accumulator do no harm.
inline int offsetOf(int x, int y, int accumulatorWidth) {
  return static_cast<int>(static_cast<unsigned>(y) * static_cast<unsigned>(accumulatorWidth) +
                          static_cast<unsigned>(x));
}

// The turn of a cell to an angle bin, `step` radians wide.
struct Turn {
  Turn(int bin, float step);
  void apply(int& x, int& y) const;

  float cosine;
  float sine;
};

// The cells of the prototype turned to each of `bins` directions, `step` radians apart, cone after
// cone and each in the order of its planes.
class ConeTable {
 public:
  ConeTable(const Cone2D& prototype, int bins, float step, int accumulatorWidth);

  int bins() const { return bins_; }
  bool has(int bin) const { return bin >= 0 && bin < bins_; }
  // Cells of a cone.
  std::size_t size() const { return size_; }
  // The cells of cone `bin` relative to its apex, in the accumulator.
  const int* offsets(int bin) const { return offsets_.data() + first(bin); }

  struct Cell {
    std::int16_t x;
    std::int16_t y;
  };
  const Cell& cell(int bin, int i) const {
    return cells_[first(bin) + static_cast<std::size_t>(i)];
  }

  // Room for a direction found for a cell; below 0 while there is none.
  std::int16_t& direction(int bin, int i) {
    return directions_[first(bin) + static_cast<std::size_t>(i)];
  }

 private:
  std::size_t first(int bin) const { return static_cast<std::size_t>(bin) * size_; }

  int bins_;
  std::size_t size_ = 0;
  std::vector<int> offsets_;
  std::vector<Cell> cells_;
  std::vector<std::int16_t> directions_;
};

}  // namespace orva::voting

#endif
