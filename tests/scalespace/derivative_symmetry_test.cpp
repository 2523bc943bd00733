// Derivatives under their own names, and filters with a sigma for each axis: a derivative along
// x of the transposed image is the transposed derivative along y, and an odd order changes its sign
// with the direction of its axis. A filter whose axes have sigmas of their own follows an exchange
// of axes that exchanges the sigmas, too.
//
// Bounds are those of symmetry_test.cpp. Exception: of mixed derivatives with two sigmas the third
// axis has a sigma of 1; it may be turned, and exchanged together with the name.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "orva/scalespace/scalespace.h"
#include "tests/scalespace/turned.h"
#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

using namespace scalespace;

using Floats = image<float>;
using Filter = std::function<Floats(const Floats&)>;

// Three sigmas whose kernels have no larger radius than kRadius.
constexpr float kA = 1.0F;
constexpr float kB = 0.8F;
constexpr float kC = 0.9F;

Filter by(Floats (*f)(const Image&, float)) {
  return [f](const Floats& img) { return f(img, kA); };
}

Filter by(Floats (*f)(const Image&, float, float), float s1, float s2) {
  return [f, s1, s2](const Floats& img) { return f(img, s1, s2); };
}

Filter by(Floats (*f)(const Image&, float, float, float), float s1, float s2, float s3) {
  return [f, s1, s2, s3](const Floats& img) { return f(img, s1, s2, s3); };
}

struct Derivative {
  Filter filter;
  reference::Orders orders;
  Filter transposed;  // its equal once x and y are exchanged
  Filter onItsSide;   // its equal once x and z are exchanged
};

std::vector<Derivative> derivatives() {
  return {
      {by(dX), {1, 0, 0}, by(dY), by(dZ)},
      {by(dY), {0, 1, 0}, by(dX), by(dY)},
      {by(dZ), {0, 0, 1}, by(dZ), by(dX)},
      {by(dXX), {2, 0, 0}, by(dYY), by(dZZ)},
      {by(dYY), {0, 2, 0}, by(dXX), by(dYY)},
      {by(dZZ), {0, 0, 2}, by(dZZ), by(dXX)},
      {by(dXXX), {3, 0, 0}, by(dYYY), by(dZZZ)},
      {by(dYYY), {0, 3, 0}, by(dXXX), by(dYYY)},
      {by(dZZZ), {0, 0, 3}, by(dZZZ), by(dXXX)},
      {by(dXY), {1, 1, 0}, by(dXY), by(dYZ)},
      {by(dXZ), {1, 0, 1}, by(dYZ), by(dXZ)},
      {by(dYZ), {0, 1, 1}, by(dXZ), by(dXY)},
      {by(dXY, kA, kB), {1, 1, 0}, by(dXY, kB, kA), by(dYZ, kB, kA)},
      {by(dXZ, kA, kB), {1, 0, 1}, by(dYZ, kA, kB), by(dXZ, kB, kA)},
      {by(dYZ, kA, kB), {0, 1, 1}, by(dXZ, kA, kB), by(dXY, kB, kA)},
      {by(dXXY, kA, kB), {2, 1, 0}, by(dXYY, kB, kA), by(dYZZ, kB, kA)},
      {by(dXYY, kA, kB), {1, 2, 0}, by(dXXY, kB, kA), by(dYYZ, kB, kA)},
      {by(dXXZ, kA, kB), {2, 0, 1}, by(dYYZ, kA, kB), by(dXZZ, kB, kA)},
      {by(dXZZ, kA, kB), {1, 0, 2}, by(dYZZ, kA, kB), by(dXXZ, kB, kA)},
      {by(dYYZ, kA, kB), {0, 2, 1}, by(dXXZ, kA, kB), by(dXYY, kB, kA)},
      {by(dYZZ, kA, kB), {0, 1, 2}, by(dXZZ, kA, kB), by(dXXY, kB, kA)},
      {by(dXYZ, kA, kB, kC), {1, 1, 1}, by(dXYZ, kB, kA, kC), by(dXYZ, kC, kB, kA)},
      {by(smooth, kA, kB, kC), {0, 0, 0}, by(smooth, kB, kA, kC), by(smooth, kC, kB, kA)},
      {[](const Floats& img) { return gaussian(img, kA, kB, kC, 3, 0, 1); },
       {3, 0, 1},
       [](const Floats& img) { return gaussian(img, kB, kA, kC, 0, 3, 1); },
       [](const Floats& img) { return gaussian(img, kC, kB, kA, 1, 0, 3); }},
  };
}

// Whether same(actual, expected) holds for every turn of the image in the plane and of its frames.
template <class Same>
void expectTurned(const Derivative& d, const Floats& img, const Same& same) {
  const Floats result = d.filter(img);
  ASSERT_GT(result.max(), 0.0F);
  const auto signedBy = [](const Floats& turned, int order) {
    return scaled(turned, order % 2 == 0 ? 1.0F : -1.0F);
  };
  EXPECT_TRUE(same(d.filter(flipped(img)), signedBy(flipped(result), d.orders.x)));
  EXPECT_TRUE(same(d.filter(upsideDown(img)), signedBy(upsideDown(result), d.orders.y)));
  EXPECT_TRUE(same(d.filter(backToFront(img)), signedBy(backToFront(result), d.orders.z)));
  EXPECT_TRUE(same(d.transposed(transposed(img)), transposed(result)));
}

TEST(NamedDerivatives, OfBrightPixelsAreExactlyTurned) {
  const Floats img = brightPixels(true);
  int row = 0;
  for (const Derivative& d : derivatives()) {
    SCOPED_TRACE(row++);
    expectTurned(d, img, sameValues);
    // Three factors in another order: two of the products are rounded otherwise, on either side.
    const Floats result = d.filter(img);
    const float largest = std::max(result.max(), -result.min());
    EXPECT_TRUE(
        near(d.onItsSide(transposedXZ(img)), transposedXZ(result), std::ldexp(largest, -22)));
  }
}

TEST(NamedDerivatives, AreTurnedUpToTheErrorOfTheirSums) {
  Random random(411);
  const Floats img = randomImage<float>(random, {17, 14, 11});
  int row = 0;
  for (const Derivative& d : derivatives()) {
    SCOPED_TRACE(row++);
    const float error = errorOf(d.orders, true, 1000.0F, {kA, kB, kC});
    const Floats result = d.filter(img);
    ASSERT_GT(result.max(), 100.0F * error);
    const auto same = [error](const Floats& a, const Floats& b) { return near(a, b, error); };
    expectTurned(d, img, same);
    EXPECT_TRUE(same(d.onItsSide(transposedXZ(img)), transposedXZ(result)));
  }
}

// Off the border by more than the kernels' radius, so that smoothing is no exception.
TEST(NamedDerivatives, AreTheSameWhereverAnImageLies) {
  Random random(412);
  const Floats img = randomImage<float>(random, {9, 8, 5});
  const Floats a = framed(img, 30, 28, 10, 9, 3.0F);
  const Floats b = framed(img, 30, 28, 5, 14, 3.0F);
  for (const Derivative& d : derivatives()) {
    EXPECT_TRUE(sameImage(unframed(d.filter(b), 9, 8, 5, 14), unframed(d.filter(a), 9, 8, 10, 9)));
  }
}

// Of whole numbers up to 1000 the squares and their sum are exact, in any order.
TEST(Gradient, OfThreeImagesDoesNotDependOnTheirOrderOrSigns) {
  Random random(413);
  std::vector<Floats> parts;
  for (int i = 0; i < 3; ++i) {
    parts.push_back(composed<float>({9, 8, 6}, [&random](int, int, int) {
      return static_cast<float>(randomInt(random, -1000, 1000));
    }));
  }
  const image<short> norm = gradient(parts[0], parts[1], parts[2]);
  ASSERT_GT(norm.max(), 1000);
  EXPECT_TRUE(sameImage(gradient(parts[1], parts[0], parts[2]), norm));
  EXPECT_TRUE(sameImage(gradient(parts[1], parts[2], parts[0]), norm));
  EXPECT_TRUE(sameImage(gradient(scaled(parts[0], -1.0F), parts[1], parts[2]), norm));
  EXPECT_TRUE(sameImage(gradient(parts[0], scaled(parts[1], -1.0F), parts[2]), norm));
  EXPECT_TRUE(sameImage(gradient(parts[0], parts[1], scaled(parts[2], -1.0F)), norm));
  EXPECT_TRUE(sameImage(gradient(parts[1], parts[0]), gradient(parts[0], parts[1])));

  const auto order = shuffledFrames(random, norm);
  const auto some = [&order](const auto& img) { return transposed(reordered(img, order)); };
  EXPECT_TRUE(sameImage(gradient(some(parts[0]), some(parts[1]), some(parts[2])), some(norm)));
}

}  // namespace
}  // namespace orva::test
