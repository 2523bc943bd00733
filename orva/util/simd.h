// Eight-lane SIMD vectors of floats and ints, compiled for whatever vectors the target has. Not
// installed.
#ifndef ORVA_UTIL_SIMD_H
#define ORVA_UTIL_SIMD_H

#include <cstring>

namespace orva {

constexpr int kLanes = 8;

using Lanes [[gnu::vector_size(32)]] = float;
using IntLanes [[gnu::vector_size(32)]] = int;

inline void load(const float* from, Lanes& to) { std::memcpy(&to, from, sizeof to); }
inline void store(const Lanes& from, float* to) { std::memcpy(to, &from, sizeof from); }

}  // namespace orva

#endif
