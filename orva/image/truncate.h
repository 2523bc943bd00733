/// @file
/// Saturating truncation of floating-point numbers to integers, without undefined behaviour.
#ifndef ORVA_IMAGE_TRUNCATE_H
#define ORVA_IMAGE_TRUNCATE_H

#include <limits>

namespace orva {

/// @p v truncated toward zero and saturated to the range of Int; a NaN gives 0.
template <class Int, class Real>
constexpr Int truncateTo(Real v) {
  constexpr Real kMin = static_cast<Real>(std::numeric_limits<Int>::min());
  constexpr Real kPast = static_cast<Real>(Int{1} << (std::numeric_limits<Int>::digits - 1)) * 2;
  if (v > kMin && v < kPast) return static_cast<Int>(v);
  if (v <= kMin) return std::numeric_limits<Int>::min();
  return v >= kPast ? std::numeric_limits<Int>::max() : 0;
}

}  // namespace orva

#endif
