// Results beside those of the reference implementations: bit for bit, but any NaN equals any NaN.
#ifndef ORVA_TESTS_FUZZ_OPERATIONS_COMPARE_H
#define ORVA_TESTS_FUZZ_OPERATIONS_COMPARE_H

#include <bit>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_target.h"
#include "tests/support/images.h"

namespace orva::test {

inline bool isSame(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) || (a != a && b != b);
}

inline bool isSame(const Image& a, const Image& b) {
  const auto shape = [](const Image& i) {
    return std::vector<int>{i.format(), i.nx(), i.ny(), i.nz(), i.nc(), i.nt()};
  };
  if (shape(a) != shape(b)) return false;
  if (a.npix() == 0) return true;
  if (a.format() == FLOAT) {
    const auto* pixels = static_cast<const float*>(a.data());
    return std::equal(pixels, pixels + a.npix(), static_cast<const float*>(b.data()),
                      [](float v, float w) { return isSame(v, w); });
  }
  return std::memcmp(
             a.data(), b.data(),
             static_cast<std::size_t>(a.npix()) * static_cast<std::size_t>(a.pixelSize())) == 0;
}

inline bool isSame(int a, int b) { return a == b; }
inline bool isSame(bool a, bool b) { return a == b; }
inline bool isSame(const Point& a, const Point& b) { return a == b; }

template <class T>
bool isSame(const std::vector<T>& a, const std::vector<T>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const T& v, const T& w) { return isSame(v, w); });
}

// No image where the reference implementation has none.
inline bool isSame(const Image* a, const Image* b) {
  return a == nullptr || b == nullptr ? a == b : isSame(*a, *b);
}

template <class Result, class Reference = Result>
void requireSame(const Result& result, const Reference& expected, const char* operation) {
  if (!isSame(result, expected))
    require(false, (std::string(operation) + " as the reference").c_str());
}

}  // namespace orva::test

#endif
