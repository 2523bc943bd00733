// Regions of neighbours at reach 1, found run by run. For the library's own sources; not installed.
#ifndef ORVA_BIP_REGION_RUNS_H
#define ORVA_BIP_REGION_RUNS_H

#include <cstddef>

#include "orva/image/image.h"

namespace orva::bip {

enum class Contact {
  Axes,  // pixels that differ by 1 in one coordinate touch
  Box    // pixels that differ by at most 1 in every coordinate touch
};

// Both number the regions in the order of their first pixels and set every pixel of `labels`, whose
// sizes are those of the volume `in`. Pixels of no region, and those of the regions from number
// `most` on, become -1. They return the number of all regions.

// The regions of pixels that equal `value`.
std::ptrdiff_t labelObjects(const unsigned char* in, unsigned char value, Contact contact,
                            std::ptrdiff_t most, image<short>& labels);

// The areas of equal value.
std::ptrdiff_t labelAreas(const unsigned char* in, Contact contact, std::ptrdiff_t most,
                          image<short>& labels);
std::ptrdiff_t labelAreas(const short* in, Contact contact, std::ptrdiff_t most,
                          image<short>& labels);

}  // namespace orva::bip

#endif
