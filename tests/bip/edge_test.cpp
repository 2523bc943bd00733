#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/bip.h"
#include "tests/support/shapes.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

const auto& emptyMask() {
  static const image<unsigned char> empty = blank<unsigned char>({0, 1});
  return empty;
}

template <class T>
class EdgeOf : public testing::Test {};
using EdgeTypes = testing::Types<unsigned char, short, int, float>;
TYPED_TEST_SUITE(EdgeOf, EdgeTypes);

// Few values, so that neighbours often are equal.
template <class T>
image<T> randomSteps(Random& random, const Shape& shape) {
  image<T> img = blank<T>(shape);
  const int last = randomInt(random, 1, 3);
  const int often = randomInt(random, 1, 8);
  for (int i = 0; i < img.npix(); ++i) {
    const int v = randomInt(random, 0, often) == 0 ? randomInt(random, 0, last) : 0;
    img.pixels()[i] = static_cast<T>(v);
  }
  return img;
}

TYPED_TEST(EdgeOf, AConstantImageIsZero) {
  image<TypeParam> img = blank<TypeParam>({6, 5});
  std::fill_n(img.pixels(), img.npix(), static_cast<TypeParam>(77));
  EXPECT_TRUE(sameImage(bip::edge(img), blank<unsigned char>({6, 5})));
}

TYPED_TEST(EdgeOf, AVerticalStepMarksBothItsSidesOffTheBorder) {
  image<TypeParam> img = blank<TypeParam>({8, 4});
  for (int i = 0; i < img.npix(); ++i) img.pixels()[i] = static_cast<TypeParam>(i % 8 > 3 ? 9 : 5);
  EXPECT_TRUE(sameImage(bip::edge(img), maskOf({"........", "...##...", "...##...", "........"})));
}

TYPED_TEST(EdgeOf, MarkingASingleOddPixelAloneIsIntended) {
  image<TypeParam> img = blank<TypeParam>({5, 5});
  img.setPixel(2, 2, 1.0F);
  EXPECT_TRUE(sameImage(bip::edge(img), maskOf({".....", ".....", "..#..", ".....", "....."})));
}

TYPED_TEST(EdgeOf, TwoDifferentNeighboursAreEnough) {
  image<TypeParam> img = blank<TypeParam>({3, 3});
  img.setPixel(0, 0, 1.0F);
  EXPECT_TRUE(sameImage(bip::edge(img), blank<unsigned char>({3, 3})));
  img.setPixel(2, 1, 2.0F);
  EXPECT_TRUE(sameImage(bip::edge(img), maskOf({"...", ".#.", "..."})));
}

TYPED_TEST(EdgeOf, OfAStackReadsPlaneZeroOnly) {
  Random random(1);
  for (const Shape& shape : {Shape{7, 6, 3}, Shape{7, 6, 1, 2}, Shape{7, 6, 2, 2, 2}}) {
    const auto img = randomSteps<TypeParam>(random, shape);
    const std::vector<TypeParam> plane(img.pixels(), img.pixels() + 42);
    EXPECT_TRUE(sameImage(bip::edge(img), bip::edge(imageOf<TypeParam>({7, 6}, plane))));
  }
}

TYPED_TEST(EdgeOf, ANullImageIsEmpty) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}}) {
    EXPECT_TRUE(sameImage(bip::edge(blank<TypeParam>(shape)), emptyMask()));
  }
}

template <class T>
class EdgeMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(EdgeMatchesReferenceAtEveryWidth, EdgeTypes);

TYPED_TEST(EdgeMatchesReferenceAtEveryWidth, ForStepsAndNoise) {
  Random random(2);
  forEveryWidth([&](int nx) {
    const Shape shape{nx, randomInt(random, 1, 9)};
    const auto steps = randomSteps<TypeParam>(random, shape);
    EXPECT_TRUE(sameImage(bip::edge(steps), reference::edge(steps)));
    const auto any = randomImage<TypeParam>(random, shape);
    EXPECT_TRUE(sameImage(bip::edge(any), reference::edge(any)));
  });
}

TYPED_TEST(EdgeOf, ATurnedImageIsTurned) {
  Random random(3);
  for (int round = 0; round < 20; ++round) {
    const auto img = randomSteps<TypeParam>(random, {randomInt(random, 1, 40), 15});
    EXPECT_TRUE(sameImage(bip::edge(flipped(img)), flipped(bip::edge(img))));
    EXPECT_TRUE(sameImage(bip::edge(transposed(img)), transposed(bip::edge(img))));
  }
}

TEST(Edge, NaNDiffersFromEverything) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  image<float> img = blank<float>({5, 5});
  std::fill_n(img.pixels(), img.npix(), nan);
  EXPECT_TRUE(sameImage(bip::edge(img), maskOf({".....", ".###.", ".###.", ".###.", "....."})));
  std::fill_n(img.pixels(), img.npix(), 1.0F);
  img.setPixel(2, 2, nan);
  EXPECT_TRUE(sameImage(bip::edge(img), maskOf({".....", ".....", "..#..", ".....", "....."})));
}

TEST(Edge, NegativeZeroEqualsZeroAndInfinitiesEqualThemselves) {
  const float inf = std::numeric_limits<float>::infinity();
  const auto zeros = imageOf<float>({3, 3}, {0, -0.0F, 0, -0.0F, 0, -0.0F, 0, 0, -0.0F});
  EXPECT_TRUE(sameImage(bip::edge(zeros), blank<unsigned char>({3, 3})));
  const auto infinite = imageOf<float>({3, 3}, {inf, inf, inf, inf, inf, inf, inf, inf, -inf});
  EXPECT_TRUE(sameImage(bip::edge(infinite), blank<unsigned char>({3, 3})));
}

TEST(Edge, OfOtherPixelTypesIsEmpty) {
  Random random(4);
  EXPECT_TRUE(sameImage(bip::edge(randomImage<unsigned int>(random, {5, 5})), emptyMask()));
  EXPECT_TRUE(sameImage(bip::edge(randomImage<Rgb>(random, {5, 5})), emptyMask()));
}

TEST(Edge, OfAnImageThatIsNotOfItsFormatsTypeIsEmpty) {
  for (int format = -1; format <= 11; ++format) {
    EXPECT_TRUE(sameImage(bip::edge(ForeignImage(format)), emptyMask())) << format;
  }
}

using Lists = std::vector<std::vector<Point>>;

std::vector<std::vector<std::pair<int, int>>> coordinates(const Lists& lists) {
  std::vector<std::vector<std::pair<int, int>>> result;
  for (const std::vector<Point>& list : lists) {
    result.emplace_back();
    for (const Point& p : list) result.back().emplace_back(p.x, p.y);
  }
  return result;
}

TEST(Boundaries, ListTheEdgePixelsOfEveryRegionRowByRow) {
  const std::vector<std::vector<std::pair<int, int>>> expected = {
      {{2, 1}, {2, 2}, {2, 3}}, {}, {{3, 1}, {3, 2}, {3, 3}}};
  EXPECT_EQ(
      coordinates(bip::boundaries(labelsOf({"000222", "000222", "000222", "000222", "000222"}))),
      expected);
}

TEST(Boundaries, LeaveOutBackgroundAndTheBorder) {
  const std::vector<std::vector<std::pair<int, int>>> expected = {{{2, 1}, {1, 2}, {2, 2}, {2, 3}}};
  EXPECT_EQ(coordinates(bip::boundaries(labelsOf({".....", "..0..", "000..", "..0..", "....."}))),
            expected);
}

TEST(Boundaries, OfNothingAreEmpty) {
  EXPECT_TRUE(bip::boundaries(blank<short>({0, 1})).empty());
  EXPECT_TRUE(bip::boundaries(blank<short>({5, 5, 0})).empty());
  EXPECT_TRUE(bip::boundaries(labelsOf({"...", "...", "..."})).empty());
  EXPECT_EQ(coordinates(bip::boundaries(labelsOf({"01"}))), coordinates(Lists{{}, {}}));
}

TEST(Boundaries, ListsHaveNoSpareCapacity) {
  Random random(7);
  for (const Lists& lists : {bip::boundaries(randomLabels(random, {61, 47}, 9)),
                             bip::boundaries(blank<short>({5, 5}))}) {
    ASSERT_FALSE(lists.empty());
    for (const std::vector<Point>& list : lists) EXPECT_EQ(list.capacity(), list.size());
  }
}

TEST(Boundaries, OfAStackAreThoseOfPlaneZeroWithAListForEveryLabel) {
  Random random(5);
  image<short> labels = randomLabels(random, {9, 8, 2}, 3);
  labels.setPixel(4, 4, 1, 6.0F);
  const Lists lists = bip::boundaries(labels);
  EXPECT_EQ(lists.size(), 7U);
  EXPECT_TRUE(lists.back().empty());
  EXPECT_EQ(coordinates(lists), coordinates(reference::boundaries(labels)));
}

TEST(BoundaryMatchesReferenceAtEveryWidth, ForRandomLabels) {
  Random random(6);
  forEveryWidth([&](int nx) {
    const auto labels = randomLabels(random, {nx, randomInt(random, 1, 10)}, 4);
    EXPECT_EQ(coordinates(bip::boundaries(labels)), coordinates(reference::boundaries(labels)));
  });
}

}  // namespace
}  // namespace orva::test
