#include <algorithm>
#include <cstddef>
#include <limits>

#include "orva/bip/bip.h"
#include "orva/bip/silent.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {

bool silent::removeInternalStructures(image<unsigned char>& mask) {
  if (mask.isNull()) return true;
  constexpr int kLargest = std::numeric_limits<int>::max() - 2;  // leaves room for the padding
  if (std::max({mask.nx(), mask.ny(), mask.nz()}) > kLargest) out_of_memory();
  const int nx = mask.nx();
  const int zOffset = mask.nz() == 1 ? 0 : 1;
  image<unsigned char> padded(nx + 2, mask.ny() + 2, mask.nz() + 2 * zOffset, 1, 1);
  // Row y of plane z of the mask, and its place in the padded image.
  const auto forEachRow = [&](Interruption interruption, auto copy) {
    const std::ptrdiff_t rows = std::ptrdiff_t{mask.ny()} * mask.nz();
    parallelParts(
        rowParts(nx, rows),
        [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
          for (std::ptrdiff_t i = begin; i < end; ++i) {
            const std::ptrdiff_t plane = i / mask.ny() + zOffset;
            const std::ptrdiff_t row = plane * padded.ny() + i % mask.ny() + 1;
            copy(mask.pixels() + i * nx, padded.pixels() + row * padded.nx() + 1);
          }
        },
        interruption);
  };
  const Step step("holes", 0, 1);
  forEachRow(Interruption::Allowed,
             [nx](const unsigned char* m, unsigned char* p) { std::copy_n(m, nx, p); });

  const Regions background = regions(padded, 0, 1, NEIGHBORHOOD_4);
  const image<short>& labels = background.labels;
  // The frame's region comes first in raster order, and no other has a larger bounding box.
  constexpr short kBackground = 0;
  parallelPixels(labels.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    std::transform(labels.pixels() + begin, labels.pixels() + end, padded.pixels() + begin,
                   [](short k) { return static_cast<unsigned char>(k == kBackground ? 0 : 255); });
  });

  forEachRow(Interruption::Off,
             [nx](unsigned char* m, const unsigned char* p) { std::copy_n(p, nx, m); });
  return background.areAllLabelled;
}

void removeInternalStructures(image<unsigned char>& mask) {
  if (!silent::removeInternalStructures(mask)) reportIgnoredRegions();
}

}  // namespace orva::bip
