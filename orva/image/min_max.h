// The minimum and maximum of an array of floats, by SIMD. For the library's own sources; not
// installed.
#ifndef ORVA_IMAGE_MIN_MAX_H
#define ORVA_IMAGE_MIN_MAX_H

#include <cstddef>

namespace orva {

struct MinMax {
  float min;
  float max;
  bool hasNan;  // min and max are then undefined
};

// The minimum and maximum of at least one value. The sign of a zero is undefined.
MinMax findMinMax(const float* values, std::ptrdiff_t count);

// The minimum and maximum of two parts of an array.
MinMax united(const MinMax& a, const MinMax& b);

}  // namespace orva

#endif
