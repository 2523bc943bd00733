// Planes and stacks so large in one direction that they are filtered part by part: in tiles of
// columns, in strips of the pixels of a frame.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"

namespace orva::test {
namespace {

// Wide planes, tall planes, and stacks of hundreds of frames.
const std::vector<Shape>& partedShapes() {
  static const std::vector<Shape> all = {{6001, 9},         {20011, 3},   {49170, 1},
                                         {1201, 61},        {5, 4, 700},  {13, 9, 700},
                                         {97, 3, 2, 9, 31}, {6001, 2, 2}, {3, 2500}};
  return all;
}

std::string nameOf(const Shape& s) {
  return std::to_string(s.nx) + " x " + std::to_string(s.ny) + " x " + std::to_string(s.nz);
}

TEST(SeparableFilterMatchesReference, ForDerivativesInParts) {
  Random random(61);
  const std::vector<reference::Orders> orders = {{0, 0, 0}, {1, 0, 2}, {0, 3, 1}, {2, 1, 0}};
  for (const Shape& shape : partedShapes()) {
    const auto img = randomImage<short>(random, shape);
    for (std::size_t k = 0; k < orders.size(); ++k) {
      const reference::Triple s{1.3F + static_cast<float>(k), 0.8F + 2.0F * static_cast<float>(k),
                                2.1F};
      const reference::Orders o = orders[k];
      EXPECT_TRUE(sameImage(scalespace::gaussian(img, s.x, s.y, s.z, o.x, o.y, o.z),
                            reference::gaussian(img, s, o)))
          << nameOf(shape) << ", orders " << k;
    }
  }
}

TEST(SeparableFilterMatchesReference, ForSmoothingInParts) {
  Random random(62);
  for (const Shape& shape : partedShapes()) {
    const auto img = randomImage<float>(random, shape);
    for (const float sigma : {1.0F, 4.5F}) {
      EXPECT_TRUE(sameImage(scalespace::smooth(img, sigma, 2.0F * sigma, 3.0F),
                            reference::smooth(img, {sigma, 2.0F * sigma, 3.0F})))
          << nameOf(shape) << ", sigma " << sigma;
    }
  }
}

}  // namespace
}  // namespace orva::test
