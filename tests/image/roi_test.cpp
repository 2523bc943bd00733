// Rectangles and the sub-images they cut.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <vector>

#include "orva/image/image.h"
#include "tests/support/images.h"
#include "tests/support/reference/image.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

static_assert(!std::is_polymorphic_v<Roi> && std::is_trivially_destructible_v<Roi>);

std::vector<int> boundsOf(const Roi& r) { return {r.xmin(), r.ymin(), r.xmax(), r.ymax()}; }

TEST(Roi, IsEmptyByDefault) {
  EXPECT_THAT(boundsOf(Roi()), testing::ElementsAre(0, 0, -1, -1));
  EXPECT_TRUE(Roi().isEmpty());
}

TEST(Roi, StoresBoundsUnchanged) {
  EXPECT_THAT(boundsOf(Roi(9, -8, 100000, 5)), testing::ElementsAre(9, -8, 100000, 5));
  Roi r;
  r.set(5, 6, -7, -8);
  EXPECT_THAT(boundsOf(r), testing::ElementsAre(5, 6, -7, -8));
}

TEST(Roi, IsEmptyWhenAMaximumLiesBelowItsMinimum) {
  EXPECT_FALSE(Roi(3, 3, 3, 3).isEmpty());
  EXPECT_FALSE(Roi(-3, -3, -2, -1).isEmpty());
  EXPECT_TRUE(Roi(3, 3, 2, 3).isEmpty());
  EXPECT_TRUE(Roi(3, 3, 3, 2).isEmpty());
}

TEST(Roi, BoundsPoints) {
  EXPECT_THAT(boundsOf(Roi(std::vector<Point>{{3, 8}, {1, 9}, {5, 2}})),
              testing::ElementsAre(1, 2, 5, 9));
  EXPECT_THAT(boundsOf(Roi(std::vector<Point>{{-4, 7}})), testing::ElementsAre(-4, 7, -4, 7));
  const Roi none{std::vector<Point>()};
  EXPECT_THAT(boundsOf(none), testing::ElementsAre(0, 0, -1, -1));
  EXPECT_TRUE(none.isEmpty());
}

TEST(Roi, ConvertsFromPoints) {
  static_assert(std::is_convertible_v<std::vector<Point>, Roi>);
  const Roi box = std::vector<Point>{Point(4, -2), Point(1, 7)};
  EXPECT_EQ(box.xmin(), 1);
  EXPECT_EQ(box.ymax(), 7);
}

TEST(Roi, BoundsRandomPointsTightly) {
  Random random(61);
  for (int round = 0; round < 100; ++round) {
    std::vector<Point> points;
    std::vector<int> xs;
    std::vector<int> ys;
    for (int n = randomInt(random, 1, 20); n > 0; --n) {
      points.emplace_back(randomInt(random, -32768, 32767), randomInt(random, -32768, 32767));
      xs.push_back(points.back().x);
      ys.push_back(points.back().y);
    }
    EXPECT_THAT(boundsOf(Roi(points)),
                testing::ElementsAre(*std::min_element(xs.begin(), xs.end()),
                                     *std::min_element(ys.begin(), ys.end()),
                                     *std::max_element(xs.begin(), xs.end()),
                                     *std::max_element(ys.begin(), ys.end())));
  }
}

template <class T>
class SubImage : public testing::Test {};
TYPED_TEST_SUITE(SubImage, PixelTypes);

TYPED_TEST(SubImage, IsTheRectangleOfTheFirstFrame) {
  Random random(62);
  for (int round = 0; round < 100; ++round) {
    const auto img = randomImage<TypeParam>(random, randomShape(random));
    const auto bound = [&random] { return randomInt(random, -4, 15); };
    const Roi r(bound(), bound(), bound(), bound());
    const auto expected =
        reference::Typed<TypeParam>::roi(img, {r.xmin(), r.ymin(), 0}, {r.xmax(), r.ymax(), 0});
    const std::unique_ptr<Image> parts[] = {
        std::unique_ptr<Image>(r.getSubImage(img)),
        std::unique_ptr<Image>(Roi::getSubImage(img, r)),
        std::unique_ptr<Image>(Roi::getSubImage(img, r.xmin(), r.ymin(), r.xmax(), r.ymax()))};
    for (const auto& part : parts) {
      ASSERT_EQ(part == nullptr, expected == nullptr);
      if (part != nullptr) {
        EXPECT_TRUE(sameImage(*part, *expected));
      }
    }
  }
}

TYPED_TEST(SubImage, OfARectangleBesideTheImageIsNull) {
  const image<TypeParam> img(10, 8, 1, 1, 1);
  for (const Roi& r : {Roi(-9, 0, -1, 7), Roi(10, 0, 19, 7), Roi(0, -5, 9, -1), Roi(0, 8, 9, 9),
                       Roi(), Roi(5, 5, 4, 7)}) {
    EXPECT_EQ(r.getSubImage(img), nullptr);
    EXPECT_EQ(Roi::getSubImage(img, r), nullptr);
  }
  EXPECT_EQ(Roi(0, 0, 3, 3).getSubImage(image<TypeParam>(0, 1, 1, 1, 1)), nullptr);
}

TEST(SubImageCorners, PassingThrough16BitsIsIntended) {
  Random random(63);
  const auto img = randomImage<int>(random, {20, 10});
  const std::unique_ptr<Image> wrapped(
      Roi(65536 + 2, -65536 + 1, 65536 + 7, 65536 + 4).getSubImage(img));
  const std::unique_ptr<Image> plain(Roi(2, 1, 7, 4).getSubImage(img));
  ASSERT_NE(wrapped, nullptr);
  EXPECT_TRUE(sameImage(*wrapped, *plain));
  // 40000 wraps below zero, so nothing is left.
  EXPECT_EQ(Roi::getSubImage(img, 0, 0, 40000, 5), nullptr);
}

}  // namespace
}  // namespace orva::test
