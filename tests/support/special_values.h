// Floating-point values at the ends of the range.
#ifndef ORVA_TESTS_SUPPORT_SPECIAL_VALUES_H
#define ORVA_TESTS_SUPPORT_SPECIAL_VALUES_H

#include <cmath>
#include <limits>

namespace orva::test {

inline constexpr float kInfinity = std::numeric_limits<float>::infinity();
inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// The next float in either direction.
inline float below(float v) { return std::nextafter(v, -kInfinity); }
inline float above(float v) { return std::nextafter(v, kInfinity); }

}  // namespace orva::test

#endif
