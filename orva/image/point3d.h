/// @file
/// A voxel position in a stack of planes.
///
/// @code
/// #include "orva/image/point3d.h"
/// orva::Point3D next = orva::Point3D(1, 2, 3) + 1;  // (2, 3, 4)
/// @endcode
#ifndef ORVA_IMAGE_POINT3D_H
#define ORVA_IMAGE_POINT3D_H

#include <cstdint>

#include "orva/image/point_operators.h"

namespace orva {

/// Column, row and frame, in pixels, each kept in 16 bits: larger values wrap modulo 65536.
class Point3D : public PointOperators<Point3D> {
 public:
  std::int16_t x = 0;  ///< column
  std::int16_t y = 0;  ///< row
  std::int16_t z = 0;  ///< frame

  /// The origin.
  constexpr Point3D() = default;
  /// A position; each coordinate keeps its low 16 bits.
  constexpr Point3D(int px, int py, int pz)
      : x(wrapTo16(std::int64_t{px})),
        y(wrapTo16(std::int64_t{py})),
        z(wrapTo16(std::int64_t{pz})) {}

 private:
  friend class PointOperators<Point3D>;

  template <class P, class F>
  static void zip(P& p, const Point3D& q, F f) {
    f(p.x, q.x);
    f(p.y, q.y);
    f(p.z, q.z);
  }
};

}  // namespace orva

#endif
