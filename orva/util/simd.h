// Eight-lane SIMD vectors of floats and ints, compiled for whatever vectors the target has. Not
// installed.
#ifndef ORVA_UTIL_SIMD_H
#define ORVA_UTIL_SIMD_H

#include <cstring>

namespace orva {

constexpr int kLanes = 8;

using FloatVector [[gnu::vector_size(32)]] = float;
using IntVector [[gnu::vector_size(32)]] = int;

inline void load(const float* from, FloatVector& to) { std::memcpy(&to, from, sizeof to); }
inline void store(const FloatVector& from, float* to) { std::memcpy(to, &from, sizeof from); }

}  // namespace orva

#endif
