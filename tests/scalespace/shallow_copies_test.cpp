// An operation in place changes the pixels that an image shares: every shallow copy shows it.
#include <gtest/gtest.h>

#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"

namespace orva::test {
namespace {

TEST(LaplaceEquationInPlace, IsSeenThroughCopies) {
  Random random(64);
  image<float> img = randomImage<float>(random, {20, 15});
  const image<float> copy(img);
  image<float> expected = img.duplicate();
  const image<float> before = img.duplicate();
  const auto mask = randomMask(random, {20, 15}, 0.5);
  reference::laplaceEquation(expected, mask);
  scalespace::laplaceEquation(img, mask);
  EXPECT_FALSE(sameImage(before, expected));
  EXPECT_TRUE(sameImage(copy, expected));
  EXPECT_EQ(copy.data(), img.data());
}

}  // namespace
}  // namespace orva::test
