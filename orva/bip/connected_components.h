// Connected components for neighbours at reach 1, by union-find over the runs of the rows. For the
// library's own sources; not installed.
#ifndef ORVA_BIP_CONNECTED_COMPONENTS_H
#define ORVA_BIP_CONNECTED_COMPONENTS_H

#include <cstddef>
#include <optional>

#include "orva/image/image.h"

namespace orva::bip {

enum class Connectivity {
  Axes,  // pixels that differ by 1 in one coordinate touch
  Box    // pixels that differ by at most 1 in every coordinate touch
};

// These number the regions in the order of their first pixels and set every pixel of `labels`,
// which has the size of the volume `in`. Pixels of no region, and those of the regions from number
// `limit` on, become -1. They return the number of all regions, or nothing, with undefined labels,
// if they would need more than `bytes` bytes of memory beside the labels: a picture with very many
// small runs.

// The regions of pixels that equal `value`.
std::optional<std::ptrdiff_t> labelObjects(const unsigned char* in, unsigned char value,
                                           Connectivity connectivity, std::ptrdiff_t limit,
                                           std::size_t bytes, image<short>& labels);

// The areas of equal value.
std::optional<std::ptrdiff_t> labelAreas(const unsigned char* in, Connectivity connectivity,
                                         std::ptrdiff_t limit, std::size_t bytes,
                                         image<short>& labels);
std::optional<std::ptrdiff_t> labelAreas(const short* in, Connectivity connectivity,
                                         std::ptrdiff_t limit, std::size_t bytes,
                                         image<short>& labels);

}  // namespace orva::bip

#endif
