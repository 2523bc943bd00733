#include <algorithm>
#include <cstddef>
#include <limits>

#include "orva/bip/bip.h"
#include "orva/bip/silent.h"

namespace orva::bip {

bool silent::removeInternalStructures(image<unsigned char>& mask) {
  if (mask.isNull()) return true;
  constexpr int kLargest = std::numeric_limits<int>::max() - 2;  // leaves room for the padding
  if (std::max({mask.nx(), mask.ny(), mask.nz()}) > kLargest) out_of_memory();
  const int nx = mask.nx();
  const int zOffset = mask.nz() == 1 ? 0 : 1;
  image<unsigned char> padded(nx + 2, mask.ny() + 2, mask.nz() + 2 * zOffset, 1, 1);
  // Row y of plane z of the mask, and its place in the padded image.
  const auto forEachRow = [&](auto copy) {
    for (int z = 0; z < mask.nz(); ++z) {
      for (int y = 0; y < mask.ny(); ++y) {
        const std::ptrdiff_t row = std::ptrdiff_t{z + zOffset} * padded.ny() + y + 1;
        copy(mask.pixels() + (std::ptrdiff_t{z} * mask.ny() + y) * nx,
             padded.pixels() + row * padded.nx() + 1);
      }
    }
  };
  forEachRow([nx](const unsigned char* m, unsigned char* p) { std::copy_n(m, nx, p); });

  const Regions background = regions(padded, 0, 1, NEIGHBORHOOD_4);
  const image<short>& labels = background.labels;
  // The frame's region comes first in raster order, and no other has a larger bounding box.
  constexpr short kBackground = 0;
  std::transform(labels.pixels(), labels.pixels() + labels.npix(), padded.pixels(),
                 [](short k) { return static_cast<unsigned char>(k == kBackground ? 0 : 255); });

  forEachRow([nx](unsigned char* m, const unsigned char* p) { std::copy_n(p, nx, m); });
  return background.areAllLabelled;
}

void removeInternalStructures(image<unsigned char>& mask) {
  if (!silent::removeInternalStructures(mask)) reportIgnoredRegions();
}

}  // namespace orva::bip
