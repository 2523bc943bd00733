// Distances and means that are no numbers: every comparison with one fails.
#include <gtest/gtest.h>

#include <cmath>

#include "orva/bip/bip.h"
#include "tests/support/images.h"

namespace orva::test {
namespace {

TEST(PropagateWithNaN, ClearsNoPixel) {
  // 1 reaches its neighbours, the border keeps its values.
  image<short> labels = imageOf<short>({5, 5}, {-1, -2, -3, -4, -5,  //
                                                -6, -1, -1, -1, -7,  //
                                                -8, -1, 1,  -1, -9,  //
                                                -6, -1, -1, -1, -7,  //
                                                -1, -2, -3, -4, -5});
  bip::propagate(labels, std::nanf(""));
  EXPECT_TRUE(sameImage(labels, imageOf<short>({5, 5}, {-1, -2, -3, -4, -5,  //
                                                        -6, 1,  1,  1,  -7,  //
                                                        -8, 1,  1,  1,  -9,  //
                                                        -6, 1,  1,  1,  -7,  //
                                                        -1, -2, -3, -4, -5})));
}

TEST(SelectRegionsWithNaN, KeepsAMeanThatIsNoNumber) {
  const auto brightness = imageOf<float>({6, 1}, {std::nanf(""), 1, 0, 1, 0, 1});
  auto mask = imageOf<unsigned char>({6, 1}, {255, 255, 0, 255, 0, 255});
  bip::selectRegions(mask, brightness, 5.0F, 1);
  EXPECT_TRUE(sameImage(mask, imageOf<unsigned char>({6, 1}, {255, 255, 0, 0, 0, 0})));
}

}  // namespace
}  // namespace orva::test
