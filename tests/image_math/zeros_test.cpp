// The zero crossings of images.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "orva/image_math/image_math.h"
#include "tests/support/images.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/statistics.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

using Points = std::vector<std::pair<int, int>>;

Points plain(const std::vector<Point>& points) {
  Points result;
  for (const Point& p : points) result.emplace_back(p.x, p.y);
  return result;
}

// Patches of both signs, and zeros of both.
image<float> randomSigns(Random& random, const Shape& shape) {
  const std::vector<float> values = {-2.5F, -0.0F, 0.0F, 3.0F, -1e-30F, 1e-30F};
  image<float> img = blank<float>(shape);
  for (int i = 0; i < img.npix(); ++i) {
    const bool asAbove = i >= shape.nx && randomInt(random, 0, 3) > 0;
    img.pixels()[i] = asAbove ? img.pixels()[i - shape.nx]
                              : values[static_cast<std::size_t>(randomInt(random, 0, 5))];
  }
  return img;
}

// Columns 0 .. 2 below zero, the others at least zero.
image<float> step(float right) {
  image<float> img = blank<float>({6, 5});
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 6; ++x) img.setPixel(x, y, x < 3 ? -1.0F : right);
  }
  return img;
}

TEST(FindZeros, GoesColumnByColumnAndLeavesOutTheBorder) {
  EXPECT_EQ(plain(image_math::findZeros(step(1.0F))),
            (Points{{2, 1}, {2, 2}, {2, 3}, {3, 1}, {3, 2}, {3, 3}}));
}

TEST(FindZeros, CountsZeroAsPositiveAndNaNAsNegative) {
  EXPECT_EQ(plain(image_math::findZeros(step(0.0F))), plain(image_math::findZeros(step(1.0F))));
  EXPECT_EQ(plain(image_math::findZeros(step(-0.0F))), plain(image_math::findZeros(step(1.0F))));
  EXPECT_EQ(plain(image_math::findZeros(step(std::numeric_limits<float>::quiet_NaN()))), Points());
  EXPECT_EQ(plain(image_math::findZeros(step(-std::numeric_limits<float>::denorm_min()))),
            Points());
}

TEST(FindZeros, NeedsTwoNeighboursOfTheOtherSignWhichIsIntended) {
  auto img = imageOf<short>({5, 5}, std::vector<short>(25, 4));
  img.setPixel(2, 2, -1.0F);
  EXPECT_EQ(plain(image_math::findZeros(img)), (Points{{2, 2}}));
  img.setPixel(3, 2, -1.0F);
  EXPECT_EQ(plain(image_math::findZeros(img)),
            (Points{{2, 1}, {2, 2}, {2, 3}, {3, 1}, {3, 2}, {3, 3}}));
}

TEST(FindZeros, OfImagesOfOneSignAreNone) {
  EXPECT_TRUE(image_math::findZeros(blank<float>({7, 7})).empty());
  Random random(1);
  EXPECT_TRUE(image_math::findZeros(randomImage<unsigned char>(random, {7, 7})).empty());
}

TEST(FindZeros, ReadsPlaneZero) {
  image<float> img = blank<float>({6, 5, 2, 2});
  const image<float> plane = step(2.0F);
  std::copy_n(plane.pixels(), 30, img.pixels() + 30);
  EXPECT_TRUE(image_math::findZeros(img).empty());
  std::copy_n(plane.pixels(), 30, img.pixels());
  EXPECT_EQ(plain(image_math::findZeros(img)), plain(image_math::findZeros(plane)));
}

TEST(FindZeros, OfANullImageAreNoneSilently) {
  testing::internal::CaptureStderr();
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}, Shape{5, 0}}) {
    const auto none = blank<float>(shape);
    EXPECT_TRUE(image_math::findZeros(none).empty());
    EXPECT_TRUE(image_math::findZeros(none, none).empty());
    EXPECT_TRUE(image_math::findZeros(none, step(1.0F)).empty());
    EXPECT_TRUE(image_math::findZeros(step(1.0F), none).empty());
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(FindZerosOfBoth, AreThoseThatTheImagesShare) {
  image<float> lower = blank<float>({6, 5});
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 6; ++x) lower.setPixel(x, y, y < 2 ? 3.0F : -3.0F);
  }
  // Columns 2 and 3, rows 1 and 2.
  const Points shared = {{2, 1}, {2, 2}, {3, 1}, {3, 2}};
  EXPECT_EQ(plain(image_math::findZeros(step(1.0F), lower)), shared);
  EXPECT_EQ(plain(image_math::findZeros(lower, step(1.0F))), shared);
  EXPECT_TRUE(image_math::findZeros(step(1.0F), blank<float>({6, 5})).empty());
  EXPECT_TRUE(image_math::findZeros(blank<float>({6, 5}), step(1.0F)).empty());
}

TEST(FindZerosOfBoth, OfDifferentSizesAreNone) {
  const image<float> img = step(1.0F);
  for (const Shape& shape :
       {Shape{5, 6}, Shape{6, 6}, Shape{7, 5}, Shape{6, 5, 2}, Shape{6, 5, 1, 2}}) {
    image<float> other = blank<float>(shape);
    for (int i = 0; i < other.npix(); ++i) other.pixels()[i] = i % 3 == 0 ? 1.0F : -1.0F;
    EXPECT_TRUE(image_math::findZeros(img, other).empty());
    EXPECT_TRUE(image_math::findZeros(other, img).empty());
  }
}

TEST(FindZerosOfBoth, OfFramesOfDifferentKindsAreIntended) {
  Random random(2);
  const image<float> a = randomSigns(random, {12, 11, 4});
  for (const Shape& shape : {Shape{12, 11, 1, 4}, Shape{12, 11, 1, 1, 4}, Shape{12, 11, 2, 1, 2}}) {
    const image<float> b = randomSigns(random, shape);
    EXPECT_EQ(plain(image_math::findZeros(a, b)), plain(reference::findZeros(a, b)));
    EXPECT_FALSE(image_math::findZeros(a, b).empty());
  }
}

TEST(FindZerosOfBoth, OfPixelTypesThatDifferAreFound) {
  const auto ints = imageOf<int>({3, 3}, {1, 1, 1, -5, -5, -5, -5, -5, -5});
  const auto floats = imageOf<float>({3, 3}, {-1, 1, 1, -5, 5, 5, -5, 5, 5});
  EXPECT_EQ(plain(image_math::findZeros(ints, floats)), (Points{{1, 1}}));
}

// One frame of no depth has no mask; the other image has one.
TEST(FindZerosOfBoth, OfNegativeSizesWithAPositiveProductAreNone) {
  image<float> odd(6, 5, -1, -1, 1);
  ASSERT_EQ(odd.npix(), 30);
  const image<float> img = step(1.0F);
  ASSERT_TRUE(odd.equalSize(img));
  std::copy_n(img.pixels(), 30, odd.pixels());
  EXPECT_TRUE(image_math::findZeros(odd).empty());
  EXPECT_TRUE(image_math::findZeros(odd, img).empty());
  EXPECT_TRUE(image_math::findZeros(img, odd).empty());
}

TEST(FindZerosMatchesReferenceAtEveryWidth, ForOddShapes) {
  Random random(3);
  for (const Shape& shape : oddShapesAndWidths()) {
    for (const int rows : {shape.ny, shape.ny + 6}) {
      Shape s = shape;
      s.ny = rows;
      const image<float> a = randomSigns(random, s);
      const image<float> b = randomSigns(random, s);
      EXPECT_EQ(plain(image_math::findZeros(a)), plain(reference::findZeros(a)));
      EXPECT_EQ(plain(image_math::findZeros(a, b)), plain(reference::findZeros(a, b)));
    }
  }
}

template <class T>
class FindZerosMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(FindZerosMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(FindZerosMatchesReferenceAtEveryWidth, ForEveryPixelType) {
  Random random(4);
  forEveryWidth([&](int nx) {
    const Shape shape{nx, 9};
    const auto a = randomImage<TypeParam>(random, shape);
    const auto b = randomImage<float>(random, shape);
    EXPECT_EQ(plain(image_math::findZeros(a)), plain(reference::findZeros(a)));
    EXPECT_EQ(plain(image_math::findZeros(a, b)), plain(reference::findZeros(a, b)));
  });
}

}  // namespace
}  // namespace orva::test
