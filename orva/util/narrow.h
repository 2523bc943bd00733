// Narrowing conversions of integers. For the library's own sources; not installed. (Points wrap to
// 16 bits: image/point_operators.h.)
#ifndef ORVA_UTIL_NARROW_H
#define ORVA_UTIL_NARROW_H

namespace orva {

// The low 8 bits, where wrapping is the contract.
constexpr unsigned char wrapTo8(int v) {
  return static_cast<unsigned char>(static_cast<unsigned>(v) & 0xFFU);
}

// A value that is known to fit. The conversion is implicit, so that Clang's sanitizer of implicit
// conversions reports a value that does not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
constexpr short fittedTo16(int v) { return v; }  // NOLINT(bugprone-narrowing-conversions)
#pragma GCC diagnostic pop

}  // namespace orva

#endif
