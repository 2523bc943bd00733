// Sizes whose products pass 31 bits on the way, and sizes below zero.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "tests/support/images.h"

namespace orva::test {
namespace {

// A pixel that differs from those around it, and from those 2^k away.
unsigned char markOf(std::int64_t i) { return static_cast<unsigned char>(i * 131 / 97 + i / 256); }

image<unsigned char> marked(const Shape& shape) {
  image<unsigned char> img = blank<unsigned char>(shape);
  for (int i = 0; i < img.npix(); ++i) img.pixels()[i] = markOf(i);
  return img;
}

TEST(ScaleOfLongAxes, TakesProductsPast31Bits) {
  constexpr std::int64_t kFrom = 70001;
  constexpr std::int64_t kTo = 99991;
  static_assert(kFrom * (kTo - 1) > INT32_MAX);
  const int from = static_cast<int>(kFrom);
  const int to = static_cast<int>(kTo);
  const std::unique_ptr<Image> alongX(marked({from, 1}).scale(to, 1, 1));
  const std::unique_ptr<Image> alongY(marked({1, from}).scale(1, to, 1));
  const std::unique_ptr<Image> alongZ(marked({1, 1, 1, from}).scale(1, 1, to));
  for (int i = 0; i < to; ++i) {
    const auto expected = static_cast<float>(markOf(i * kFrom / kTo));
    ASSERT_EQ(alongX->pixel(i), expected) << i;
    ASSERT_EQ(alongY->pixel(i), expected) << i;
    ASSERT_EQ(alongZ->pixel(i), expected) << i;
  }
}

// The loops that clear the border reach no voxel where a size lies below zero.
TEST(InteriorOfNegativeSizes, IsWholeForTwo) {
  EXPECT_EQ(Image::interior(-3, -4, 1), std::vector<bool>(12, true));
  EXPECT_EQ(Image::interior(-2, 3, -2), std::vector<bool>(12, true));
  EXPECT_EQ(Image::interior(4, -1, -3), std::vector<bool>(12, true));
}

TEST(InteriorOfNegativeSizes, IsEmptyForOneOrThree) {
  EXPECT_TRUE(Image::interior(-3, 4, 1).empty());
  EXPECT_TRUE(Image::interior(3, 4, -1).empty());
  EXPECT_TRUE(Image::interior(-3, -4, -1).empty());
}

}  // namespace
}  // namespace orva::test
