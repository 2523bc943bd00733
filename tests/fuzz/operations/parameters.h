// Parameters of operations and shapes of images, from the bytes of an input. A few bytes are enough
// for odd values: NaN, infinities, the ends of the ranges.
#ifndef ORVA_TESTS_FUZZ_OPERATIONS_PARAMETERS_H
#define ORVA_TESTS_FUZZ_OPERATIONS_PARAMETERS_H

#include "tests/fuzz/fuzz_target.h"
#include "tests/support/images.h"

namespace orva::test {

inline bool takeBool(Input& in) { return in.take<std::uint8_t>() % 2 != 0; }

// A whole number, most often small.
int takeInt(Input& in);

// Any float, most often one of few digits or an odd one.
float takeFloat(Input& in);

// A scale up to about 6, or an odd one. None whose kernel has many taps, as it would take long or
// end the process for want of memory.
float takeSigma(Input& in);

// Such that sigma / ratio is a scale of few taps, too.
float takeRatio(Input& in, float sigma);

// Up to 40 x 40 pixels in up to four frames of any kind, one to three lines of up to 200, or now
// and then no pixels, with any of the sizes 0 and others below it.
Shape takeShape(Input& in);

inline bool hasPixels(const Shape& s) {
  return s.nx > 0 && s.ny > 0 && s.nz > 0 && s.nc > 0 && s.nt > 0;
}

// The same with pixels: for operations whose reference implementations know no other images.
Shape takeFilledShape(Input& in);

// Up to 12 x 12 pixels in up to four frames: for operations that take long.
Shape takeSmallShape(Input& in);

// The same shape, or now and then another.
Shape takeOther(Input& in, const Shape& shape);

}  // namespace orva::test

#endif
