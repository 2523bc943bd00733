/// @file
/// The arithmetic that Point and Point3D share, written once for any number of coordinates.
#ifndef ORVA_IMAGE_POINT_OPERATORS_H
#define ORVA_IMAGE_POINT_OPERATORS_H

#include <cstdint>

#include "orva/image/truncate.h"
#include "orva/util/export.h"

namespace orva {

/// Writes "Warning: divided by 0" to standard error and ends the process with status 1. Despite
/// its word the warning is final; this is intended.
[[noreturn]] ORVA_EXPORT void dividedByZero();

/// Ends the process as the machine's own integer division by zero does, by SIGFPE.
[[noreturn]] ORVA_EXPORT void trapDivision();

/// The low 16 bits of @p v: how every result of point arithmetic is stored.
constexpr std::int16_t wrapTo16(std::int64_t v) { return static_cast<std::int16_t>(v); }

/// @p v truncated toward zero to 32 bits (saturated to that range, a NaN gives 0), of which
/// the low 16 bits are kept.
constexpr std::int16_t wrapTo16(double v) { return wrapTo16(std::int64_t{truncateTo<int>(v)}); }

/// Coordinate-wise operators for the point type @p P, which lists its coordinates through
/// `zip(p, q, f)`: it calls f(p.x, q.x), f(p.y, q.y) and so on.
///
/// Integer forms compute exactly, double forms in double truncated toward zero; every result is
/// stored in 16 bits and wraps modulo 65536. Every division tests its divisor first and ends in
/// dividedByZero() when it is 0.
template <class P>
class PointOperators {
 public:
  /// @name Sums and differences of points
  /// @{

  /// Adds coordinate by coordinate.
  P& operator+=(const P& q) {
    return update(q, [](auto a, auto b) { return a + b; });
  }
  /// Subtracts coordinate by coordinate.
  P& operator-=(const P& q) {
    return update(q, [](auto a, auto b) { return a - b; });
  }
  friend P operator+(P p, const P& q) { return p += q; }
  friend P operator-(P p, const P& q) { return p -= q; }
  friend P operator-(P p) { return p *= -1; }
  /// @}

  /// @name A number added to, subtracted from or multiplied with every coordinate
  /// @{

  /// Adds @p v to every coordinate.
  P& operator+=(int v) {
    return updateEach(wide(v), [](auto a, auto b) { return a + b; });
  }
  /// Subtracts @p v from every coordinate.
  P& operator-=(int v) {
    return updateEach(wide(v), [](auto a, auto b) { return a - b; });
  }
  /// Multiplies every coordinate by @p v.
  P& operator*=(int v) {
    return updateEach(wide(v), [](auto a, auto b) { return a * b; });
  }
  /// Adds @p v to every coordinate.
  P& operator+=(double v) {
    return updateEach(v, [](auto a, auto b) { return a + b; });
  }
  /// Subtracts @p v from every coordinate.
  P& operator-=(double v) {
    return updateEach(v, [](auto a, auto b) { return a - b; });
  }
  /// Multiplies every coordinate by @p v.
  P& operator*=(double v) {
    return updateEach(v, [](auto a, auto b) { return a * b; });
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
  /// 65536 passes the test and ends in trapDivision().
  P& operator/=(int v) {
    if (v == 0) dividedByZero();
    const std::int16_t low = wrapTo16(wide(v));
    if (low == 0) trapDivision();
    return divideEach(low);
  }
  /// Divides every coordinate by @p v.
  P& operator/=(double v) {
    if (v == 0.0) dividedByZero();
    return updateEach(v, [](auto a, auto b) { return a / b; });
  }
  /// Divides by the whole of @p v, unlike `/=`.
  friend P operator/(P p, int v) {
    if (v == 0) dividedByZero();
    return p.divideEach(v);
  }
  friend P operator/(P p, double v) { return p /= v; }
  /// @}

  /// True when all coordinates are equal.
  friend bool operator==(const P& p, const P& q) { return p.equals(q); }

 private:
  using Coordinate = std::int16_t;

  static std::int64_t wide(int v) { return v; }

  template <class F>
  P& update(const P& q, F combine) {
    P& p = static_cast<P&>(*this);
    P::zip(p, q, [combine](Coordinate& a, Coordinate b) {
      a = wrapTo16(combine(std::int64_t{a}, std::int64_t{b}));
    });
    return p;
  }

  // Combines every coordinate with one number: V is std::int64_t or double.
  template <class V, class F>
  P& updateEach(V v, F combine) {
    P& p = static_cast<P&>(*this);
    P::zip(p, p, [v, combine](Coordinate& a, Coordinate) {
      a = wrapTo16(combine(static_cast<V>(a), v));
    });
    return p;
  }

  P& divideEach(int v) {
    return updateEach(wide(v), [](auto a, auto b) { return a / b; });
  }

  bool equals(const P& q) const {
    bool same = true;
    P::zip(static_cast<const P&>(*this), q,
           [&same](Coordinate a, Coordinate b) { same = same && a == b; });
    return same;
  }
};

}  // namespace orva

#endif
