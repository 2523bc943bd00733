// Shapes and scales for the comparisons of scale-space operations with the reference
// implementations.
#ifndef ORVA_TESTS_SCALESPACE_SHAPES_H
#define ORVA_TESTS_SCALESPACE_SHAPES_H

#include "tests/support/images.h"

namespace orva::test {

// A shape of the given width with few rows, and with planes, channels and time points at times.
inline Shape shapeOfWidth(Random& random, int nx) {
  Shape shape{nx, randomInt(random, 1, 6)};
  if (randomInt(random, 0, 1) == 1) {
    shape.nz = randomInt(random, 1, 3);
    shape.nc = randomInt(random, 1, 2);
    shape.nt = randomInt(random, 1, 2);
  }
  return shape;
}

inline float randomSigma(Random& random, float low = 0.3F, float high = 4.0F) {
  return std::uniform_real_distribution<float>(low, high)(random);
}

// An image of few grey levels, so that differences are often exactly 0.
inline image<float> imageWithTies(Random& random, const Shape& shape) {
  image<float> img = blank<float>(shape);
  std::generate_n(img.pixels(), img.npix(),
                  [&random] { return static_cast<float>(randomInt(random, 0, 2)); });
  return img;
}

// Every pixel times `factor`.
inline image<float> scaled(const image<float>& img, float factor) {
  image<float> result = img.duplicate();
  for (int i = 0; i < img.npix(); ++i) result.pixels()[i] *= factor;
  return result;
}

// As sameImage, but any NaN equals any other and 0 equals -0.
inline ::testing::AssertionResult sameValues(const image<float>& a, const image<float>& b) {
  if (a.npix() != b.npix()) return ::testing::AssertionFailure() << "pixel counts differ";
  for (int i = 0; i < a.npix(); ++i) {
    const float x = a.pixels()[i];
    const float y = b.pixels()[i];
    const bool bothNaN = x != x && y != y;
    if (!(x == y) && !bothNaN)
      return ::testing::AssertionFailure() << "pixel " << i << " is " << x << " and " << y;
  }
  return ::testing::AssertionSuccess();
}

}  // namespace orva::test

#endif
