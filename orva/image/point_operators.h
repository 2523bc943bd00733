/// @file
/// The arithmetic that Point and Point3D share, written once for any number of coordinates.
#ifndef ORVA_IMAGE_POINT_OPERATORS_H
#define ORVA_IMAGE_POINT_OPERATORS_H

#include <csignal>
#include <cstdint>
#include <cstdlib>

#include "orva/util/export.h"

namespace orva {

/// Writes "Warning: divided by 0" to standard error and ends the process with status 1. Despite
/// its word the warning is final; this is intended.
[[noreturn]] ORVA_EXPORT void dividedByZero();

/// The low 16 bits of @p v: how every result of point arithmetic is stored.
constexpr std::int16_t wrapTo16(std::int64_t v) { return static_cast<std::int16_t>(v); }

/// @p v truncated toward zero to 32 bits (held at the ends of that range, a NaN gives 0), of which
/// the low 16 bits are kept.
constexpr std::int16_t wrapTo16(double v) {
  constexpr double kMost = 2147483647.0;
  constexpr double kLeast = -2147483648.0;
  if (v > kLeast && v < kMost) return wrapTo16(static_cast<std::int64_t>(v));
  return v >= kMost ? wrapTo16(static_cast<std::int64_t>(kMost)) : std::int16_t{0};
}

/// Coordinate-wise operators for the point type @p P, which lists its coordinates through
/// `zip(p, q, f)`: it calls f(p.x, q.x), f(p.y, q.y) and so on.
///
/// Integer forms compute exactly, double forms in double truncated toward zero; every result is
/// stored in 16 bits and wraps modulo 65536. Every division tests its divisor first and ends in
/// dividedByZero() when it is 0.
template <class P>
class PointOperators {
  using Coordinate = std::int16_t;

  template <class F>
  static P& update(P& p, const P& q, F combine) {
    P::zip(p, q, [combine](Coordinate& a, Coordinate b) { a = wrapTo16(combine(a, b)); });
    return p;
  }

  // The combination of every coordinate with one number: V is std::int64_t or double.
  template <class V, class F>
  static P& update(P& p, V v, F combine) {
    return update(p, p,
                  [v, combine](Coordinate a, Coordinate) { return combine(static_cast<V>(a), v); });
  }

  static bool equal(const P& p, const P& q) {
    bool same = true;
    P::zip(p, q, [&same](Coordinate a, Coordinate b) { same = same && a == b; });
    return same;
  }

  static std::int64_t wide(int v) { return v; }

 public:
  /// @name Sums and differences of points
  /// @{
  friend P& operator+=(P& p, const P& q) {
    return update(p, q, [](auto a, auto b) { return std::int64_t{a} + b; });
  }
  friend P& operator-=(P& p, const P& q) {
    return update(p, q, [](auto a, auto b) { return std::int64_t{a} - b; });
  }
  friend P operator+(P p, const P& q) { return p += q; }
  friend P operator-(P p, const P& q) { return p -= q; }
  friend P operator-(P p) {
    return update(p, p, [](auto a, auto) { return -std::int64_t{a}; });
  }
  /// @}

  /// @name A number added to, subtracted from or multiplied with every coordinate
  /// @{
  friend P& operator+=(P& p, int v) {
    return update(p, wide(v), [](auto a, auto b) { return a + b; });
  }
  friend P& operator-=(P& p, int v) {
    return update(p, wide(v), [](auto a, auto b) { return a - b; });
  }
  friend P& operator*=(P& p, int v) {
    return update(p, wide(v), [](auto a, auto b) { return a * b; });
  }
  friend P& operator+=(P& p, double v) {
    return update(p, v, [](auto a, auto b) { return a + b; });
  }
  friend P& operator-=(P& p, double v) {
    return update(p, v, [](auto a, auto b) { return a - b; });
  }
  friend P& operator*=(P& p, double v) {
    return update(p, v, [](auto a, auto b) { return a * b; });
  }
  friend P operator+(P p, int v) { return p += v; }
  friend P operator+(int v, P p) { return p += v; }
  friend P operator-(P p, int v) { return p -= v; }
  /// Intended: number - point is point - number.
  friend P operator-(int v, P p) { return p -= v; }
  friend P operator*(P p, int v) { return p *= v; }
  friend P operator*(int v, P p) { return p *= v; }
  friend P operator+(P p, double v) { return p += v; }
  friend P operator+(double v, P p) { return p += v; }
  friend P operator-(P p, double v) { return p -= v; }
  /// Intended: number - point is point - number.
  friend P operator-(double v, P p) { return p -= v; }
  friend P operator*(P p, double v) { return p *= v; }
  friend P operator*(double v, P p) { return p *= v; }
  /// @}

  /// @name Division of every coordinate, truncated toward zero
  /// @{

  /// Intended: the zero test sees all of @p v, the division only its low 16 bits. A divisor such as
  /// 65536 passes the test and then ends the process as an integer division by zero does (SIGFPE).
  friend P& operator/=(P& p, int v) {
    if (v == 0) dividedByZero();
    const std::int64_t low = wrapTo16(wide(v));
    if (low == 0) {
      std::raise(SIGFPE);
      std::abort();
    }
    return update(p, low, [](auto a, auto b) { return a / b; });
  }
  friend P& operator/=(P& p, double v) {
    if (v == 0.0) dividedByZero();
    return update(p, v, [](auto a, auto b) { return a / b; });
  }
  /// Divides by the whole of @p v, unlike `/=`.
  friend P operator/(P p, int v) {
    if (v == 0) dividedByZero();
    return update(p, wide(v), [](auto a, auto b) { return a / b; });
  }
  friend P operator/(P p, double v) { return p /= v; }
  /// @}

  /// True when all coordinates are equal.
  friend bool operator==(const P& p, const P& q) { return equal(p, q); }
};

}  // namespace orva

#endif
