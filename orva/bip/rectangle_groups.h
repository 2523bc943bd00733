// Groups of rectangles that may overlap, for work on disjoint parts of an image at the same time.
// For the library's own sources; not installed.
#ifndef ORVA_BIP_RECTANGLE_GROUPS_H
#define ORVA_BIP_RECTANGLE_GROUPS_H

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "orva/bip/union_find.h"

namespace orva::bip {

// Columns x0 .. x1 and rows y0 .. y1.
struct Rectangle {
  int x0;
  int y0;
  int x1;
  int y1;
};

// The indices of the rectangles of each group, in ascending order. Rectangles of different groups
// share no pixel of a plane of nx columns and ny rows; what lies outside is cut off.
inline std::vector<std::vector<std::size_t>> groupsOf(const std::vector<Rectangle>& rectangles,
                                                      int nx, int ny) {
  constexpr int kSide = 16;  // pixels of the squares by which rectangles are compared
  constexpr int kNone = -1;
  const std::size_t columns = static_cast<std::size_t>(nx / kSide) + 1;
  const std::size_t rows = static_cast<std::size_t>(ny / kSide) + 1;
  std::vector<int> owners(columns * rows, kNone);
  UnionFind<> sets;
  for (const Rectangle& r : rectangles) {
    int set = sets.add();
    const auto squareOf = [](int v, int n) {  // an image without pixels has one, too
      return static_cast<std::size_t>(std::max(0, std::min(v, n - 1)) / kSide);
    };
    for (std::size_t y = squareOf(r.y0, ny); y <= squareOf(r.y1, ny); ++y) {
      for (std::size_t x = squareOf(r.x0, nx); x <= squareOf(r.x1, nx); ++x) {
        int& owner = owners[y * columns + x];
        if (owner != kNone) set = sets.join(owner, set);
        owner = set;
      }
    }
  }
  const std::ptrdiff_t count = sets.number(std::numeric_limits<std::ptrdiff_t>::max());
  std::vector<std::vector<std::size_t>> groups(static_cast<std::size_t>(count));
  for (std::size_t k = 0; k < rectangles.size(); ++k) {
    groups[static_cast<std::size_t>(sets.numberOf(static_cast<int>(k)))].push_back(k);
  }
  return groups;
}

}  // namespace orva::bip

#endif
