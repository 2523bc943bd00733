// The 3x3 box of a pixel (3x3x3 in a volume), cut to the image. For the library's own sources; not
// installed.
#ifndef ORVA_BIP_NEIGHBOUR_BOX_H
#define ORVA_BIP_NEIGHBOUR_BOX_H

#include <algorithm>
#include <cstddef>

#include "orva/image/image.h"

namespace orva::bip {

// Calls visit(i) for every row that the box of a pixel in row y of plane z covers, with the index i
// of the first pixel of the row.
template <class Visit>
void forEachRowOfBox(const Image& img, int y, int z, Visit visit) {
  for (int w = std::max(z - 1, 0); w <= std::min(z + 1, img.nz() - 1); ++w) {
    for (int v = std::max(y - 1, 0); v <= std::min(y + 1, img.ny() - 1); ++v) {
      visit((std::ptrdiff_t{w} * img.ny() + v) * img.nx());
    }
  }
}

// Whether holds(i) for the index i of any pixel of the box; stops at the first in linear order.
template <class Holds>
bool anyInBox(const Image& img, int x, int y, int z, Holds holds) {
  const int x1 = std::min(x + 1, img.nx() - 1);
  const int y1 = std::min(y + 1, img.ny() - 1);
  const int z1 = std::min(z + 1, img.nz() - 1);
  for (int w = std::max(z - 1, 0); w <= z1; ++w) {
    for (int v = std::max(y - 1, 0); v <= y1; ++v) {
      const std::ptrdiff_t row = (std::ptrdiff_t{w} * img.ny() + v) * img.nx();
      for (int u = std::max(x - 1, 0); u <= x1; ++u) {
        if (holds(row + u)) return true;
      }
    }
  }
  return false;
}

// True when a pixel of the box differs from its center. The image border alone makes no edge.
inline bool isEdge(const image<short>& img, int x, int y, int z) {
  if (img.isNull()) return false;
  const short own = img.pixels()[(std::ptrdiff_t{z} * img.ny() + y) * img.nx() + x];
  return anyInBox(img, x, y, z, [&](std::ptrdiff_t i) { return img.pixels()[i] != own; });
}

}  // namespace orva::bip

#endif
