/// @file
/// A pixel position in a plane.
///
/// @code
/// #include "orva/image/point.h"
/// orva::Point half = orva::Point(7, -7) / 2;  // (3, -3)
/// @endcode
#ifndef ORVA_IMAGE_POINT_H
#define ORVA_IMAGE_POINT_H

#include <cstdint>

#include "orva/image/point_operators.h"

namespace orva {

/// Column and row, in pixels, each kept in 16 bits: larger values wrap modulo 65536.
class Point : public PointOperators<Point> {
 public:
  std::int16_t x = 0;  ///< column
  std::int16_t y = 0;  ///< row

  /// The origin.
  constexpr Point() = default;
  /// A position; each coordinate keeps its low 16 bits.
  constexpr Point(int px, int py) : x(wrapTo16(std::int64_t{px})), y(wrapTo16(std::int64_t{py})) {}

  /// Lexicographic: x first, y breaks a tie.
  friend bool operator<(const Point& p, const Point& q) {
    return p.x != q.x ? p.x < q.x : p.y < q.y;
  }

 private:
  friend class PointOperators<Point>;

  template <class P, class F>
  static void zip(P& p, const Point& q, F f) {
    f(p.x, q.x);
    f(p.y, q.y);
  }
};

}  // namespace orva

#endif
