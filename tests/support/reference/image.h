// Reference implementations of the operations on images: pixel by pixel, in the order of their
// definitions.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_IMAGE_H
#define ORVA_TESTS_SUPPORT_REFERENCE_IMAGE_H

#include <memory>
#include <vector>

#include "tests/support/images.h"

namespace orva::reference {

using test::Rgb;

// The linear index of pixel (x, y, z, c, t).
int indexOf(const Image& img, int x, int y, int z, int c, int t);

// What depends on the pixel type.
template <class T>
struct Typed {
  using Part = std::unique_ptr<image<T>>;

  // One pixel read as a float, and made from one.
  static float toFloat(T v);
  static T fromFloat(float v);

  static T smallest(const image<T>& img);
  static T largest(const image<T>& img);

  // Null where there is no such part.
  static Part roi(const image<T>& img, const Point3D& p1, const Point3D& p2);
  static Part frame(const image<T>& img, int f);
  static Part channel(const image<T>& img, int c, int t);
  static Part timepoint(const image<T>& img, int t);
  static Part scale(const image<T>& img, int sx, int sy, int sz);
};

std::vector<bool> interior(int nx, int ny, int nz);
int round_double(double v);

image<unsigned char> toByteImage(const Image& img, bool scale);
// The same for any format code.
image<unsigned char> convertToByteImage(const Image& img, bool scale);
image<float> toFloatImage(const Image& img);
image<Rgb> toRgbImage(const Image& img);

}  // namespace orva::reference

#endif
