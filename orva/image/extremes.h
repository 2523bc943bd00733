// The smallest and largest of many floats. For the library's own sources; not installed.
#ifndef ORVA_IMAGE_EXTREMES_H
#define ORVA_IMAGE_EXTREMES_H

#include <cstddef>

namespace orva {

struct Extremes {
  float least;
  float most;
  bool hasNan;  // if so, the others mean nothing
};

// Of at least one value. Whether a zero that is found is a negative one is not told.
Extremes extremesOf(const float* values, std::ptrdiff_t count);

}  // namespace orva

#endif
