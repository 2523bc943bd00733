// Parts of images: boxes, frames, channels, time points; and resampling.
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/images.h"
#include "tests/support/reference/image.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

template <class T>
class Parts : public testing::Test {
 protected:
  using Reference = reference::Typed<T>;

  // Takes over `part` and compares it with `expected`; both may be null.
  static testing::AssertionResult same(Image* part, const std::unique_ptr<image<T>>& expected) {
    const std::unique_ptr<Image> owned(part);
    if (owned == nullptr || expected == nullptr) {
      if ((owned == nullptr) == (expected == nullptr)) return testing::AssertionSuccess();
      return testing::AssertionFailure() << (owned ? "not null" : "null");
    }
    if (dynamic_cast<image<T>*>(owned.get()) == nullptr) {
      return testing::AssertionFailure() << "another type";
    }
    return sameImage(*owned, *expected);
  }
};
TYPED_TEST_SUITE(Parts, PixelTypes);

template <class T>
class PartMatchesReference : public Parts<T> {};
TYPED_TEST_SUITE(PartMatchesReference, PixelTypes);

TYPED_TEST(PartMatchesReference, ForRois) {
  Random random(41);
  for (int round = 0; round < 300; ++round) {
    const image<TypeParam> img = randomImage<TypeParam>(random, randomShape(random));
    const auto corner = [&random] {
      return Point3D(randomInt(random, -3, 14), randomInt(random, -3, 14),
                     randomInt(random, -3, 30));
    };
    const Point3D p1 = corner();
    const Point3D p2 = corner();
    EXPECT_TRUE(this->same(img.roi(p1, p2), TestFixture::Reference::roi(img, p1, p2)));
  }
}

TYPED_TEST(Parts, RoiPastTheImageIsTheWholeFrame) {
  Random random(42);
  const image<TypeParam> img = randomImage<TypeParam>(random, {64, 64});
  const std::unique_ptr<Image> part(img.roi(Point3D(-5, -5, 0), Point3D(1000, 1000, 0)));
  ASSERT_NE(part, nullptr);
  EXPECT_TRUE(sameImage(*part, img));
  EXPECT_NE(part->data(), img.data());
}

TYPED_TEST(Parts, RoiWithNothingLeftIsNull) {
  const image<TypeParam> img(8, 6, 2, 1, 1);
  const std::pair<Point3D, Point3D> rows[] = {{{3, 0, 0}, {2, 5, 0}},   {{0, 4, 0}, {7, 3, 0}},
                                              {{0, 0, 1}, {7, 5, 0}},   {{8, 0, 0}, {9, 5, 0}},
                                              {{-4, 0, 0}, {-1, 5, 0}}, {{0, 6, 0}, {7, 9, 0}},
                                              {{0, 0, 2}, {7, 5, 5}},   {{0, 0, -3}, {7, 5, -1}}};
  for (const auto& [p1, p2] : rows) EXPECT_EQ(img.roi(p1, p2), nullptr);
  EXPECT_EQ(image<TypeParam>(0, 1, 1, 1, 1).roi({0, 0, 0}, {5, 5, 5}), nullptr);
  EXPECT_EQ(image<TypeParam>(5, 5, 0, 1, 1).roi({0, 0, 0}, {5, 5, 5}), nullptr);
}

TYPED_TEST(Parts, RoiRunsThroughFramesOfAllChannelsAndTimePoints) {
  Random random(43);
  const image<TypeParam> img = randomImage<TypeParam>(random, {3, 2, 2, 3, 2});
  const std::unique_ptr<Image> part(img.roi({0, 0, 0}, {2, 1, 100}));
  ASSERT_NE(part, nullptr);
  EXPECT_TRUE(sameImage(*part, imageOf<TypeParam>({3, 2, 12}, pixelsOf(img))));
}

TYPED_TEST(PartMatchesReference, ForFrames) {
  Random random(44);
  for (const Shape& s : oddShapes()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    for (int f = -1; f <= img.nframes() + 1; ++f) {
      EXPECT_TRUE(this->same(img.frame(f), TestFixture::Reference::frame(img, f))) << f;
    }
  }
}

TYPED_TEST(PartMatchesReference, ForChannels) {
  Random random(45);
  for (const Shape& s : oddShapes()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    for (int t = -1; t <= s.nt; ++t)
      for (int c = -1; c <= s.nc; ++c) {
        EXPECT_TRUE(this->same(img.channel(c, t), TestFixture::Reference::channel(img, c, t)))
            << c << " " << t;
      }
  }
}

TYPED_TEST(PartMatchesReference, ForTimePoints) {
  Random random(46);
  for (const Shape& s : oddShapes()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    for (int t = -1; t <= s.nt; ++t) {
      EXPECT_TRUE(this->same(img.timepoint(t), TestFixture::Reference::timepoint(img, t))) << t;
    }
  }
}

template <class T>
class PartMatchesReferenceAtEveryWidth : public Parts<T> {};
TYPED_TEST_SUITE(PartMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(PartMatchesReferenceAtEveryWidth, ForEveryKindOfPart) {
  Random random(50);
  forEveryWidth([&](int width) {
    const auto img = randomImage<TypeParam>(random, {width, 1 + width % 3, 2, 2, 2});
    const Point3D p1(randomInt(random, -2, width - 1), randomInt(random, -1, 1), 0);
    const Point3D p2(randomInt(random, p1.x, width + 2), 3, randomInt(random, 0, 7));
    EXPECT_TRUE(this->same(img.roi(p1, p2), TestFixture::Reference::roi(img, p1, p2)));
    const int f = randomInt(random, 0, 7);
    EXPECT_TRUE(this->same(img.frame(f), TestFixture::Reference::frame(img, f)));
    EXPECT_TRUE(
        this->same(img.channel(f % 2, f / 4), TestFixture::Reference::channel(img, f % 2, f / 4)));
    EXPECT_TRUE(this->same(img.timepoint(f % 2), TestFixture::Reference::timepoint(img, f % 2)));
  });
}

TYPED_TEST(Parts, OutsideTheImageOrOfANullImageAreNull) {
  const image<TypeParam> img(3, 3, 2, 3, 2);
  EXPECT_EQ(img.frame(img.nframes()), nullptr);
  EXPECT_EQ(img.frame(-1), nullptr);
  EXPECT_EQ(img.channel(3, 0), nullptr);
  EXPECT_EQ(img.channel(-1, 0), nullptr);
  EXPECT_EQ(img.channel(0, 2), nullptr);
  EXPECT_EQ(img.channel(0, -1), nullptr);
  EXPECT_EQ(img.timepoint(2), nullptr);
  EXPECT_EQ(img.timepoint(-1), nullptr);
  for (const image<TypeParam>& none :
       {image<TypeParam>(0, 1, 1, 1, 1), image<TypeParam>(5, 0, 1, 1, 1)}) {
    EXPECT_EQ(none.frame(0), nullptr);
    EXPECT_EQ(none.channel(0, 0), nullptr);
    EXPECT_EQ(none.timepoint(0), nullptr);
  }
}

TYPED_TEST(Parts, OwnTheirPixels) {
  const image<TypeParam> img(3, 3, 1, 1, 1);
  const std::unique_ptr<Image> parts[] = {
      std::unique_ptr<Image>(img.frame(0)), std::unique_ptr<Image>(img.channel(0, 0)),
      std::unique_ptr<Image>(img.timepoint(0)), std::unique_ptr<Image>(img.scale(-1, -1, -1)),
      std::unique_ptr<Image>(img.roi({0, 0, 0}, {2, 2, 0}))};
  for (const auto& part : parts) {
    part->setPixel(4, 50);
    EXPECT_EQ(img.pixel(4), 0.0F);
  }
}

TYPED_TEST(PartMatchesReference, ForScaledImages) {
  Random random(47);
  for (int round = 0; round < 200; ++round) {
    const image<TypeParam> img = randomImage<TypeParam>(random, randomShape(random));
    const int sx = randomInt(random, -1, 30);
    const int sy = randomInt(random, -1, 20);
    const int sz = randomInt(random, -1, 8);
    EXPECT_TRUE(this->same(img.scale(sx, sy, sz), TestFixture::Reference::scale(img, sx, sy, sz)))
        << sx << " " << sy << " " << sz;
  }
}

TYPED_TEST(PartMatchesReferenceAtEveryWidth, ForScaledImages) {
  Random random(48);
  forEveryWidth([&](int width) {
    const image<TypeParam> img = randomImage<TypeParam>(random, {width, 2});
    const int sx = randomInt(random, 1, kMaxSweepWidth);
    EXPECT_TRUE(this->same(img.scale(sx, 3, 1), TestFixture::Reference::scale(img, sx, 3, 1)));
  });
}

TYPED_TEST(Parts, ScaleBySizesBelowZeroStacksAllFrames) {
  Random random(49);
  const image<TypeParam> img = randomImage<TypeParam>(random, {4, 3, 2, 3, 2});
  const std::unique_ptr<Image> part(img.scale(-1, -7, -2));
  EXPECT_TRUE(sameImage(*part, imageOf<TypeParam>({4, 3, 12}, pixelsOf(img))));
}

TYPED_TEST(Parts, ScaleToSizeZeroHasNoPixels) {
  const image<TypeParam> img(4, 3, 2, 1, 1);
  const std::unique_ptr<Image> part(img.scale(0, 5, 5));
  ASSERT_NE(part, nullptr);
  EXPECT_EQ(sizesOf(*part), (std::vector<int>{0, 5, 5, 1, 1}));
  EXPECT_TRUE(part->isNull());
}

TYPED_TEST(Parts, ScaleOfANullImageIsBlack) {
  const image<TypeParam> none(0, 1, 1, 1, 1);
  const std::unique_ptr<Image> part(none.scale(3, 2, 1));
  EXPECT_TRUE(sameImage(*part, image<TypeParam>(3, 2, 1, 1, 1)));
  const std::unique_ptr<Image> same(none.scale(-1, -1, -1));
  EXPECT_TRUE(same->isNull());
}

TEST(Scale, TakesTheLowerNeighbour) {
  const image<int> img = imageOf<int>({5, 1}, {10, 11, 12, 13, 14});
  const std::unique_ptr<image<int>> smaller(img.scale(3, 1, 1));
  EXPECT_EQ(pixelsOf(*smaller), (std::vector<int>{10, 11, 13}));
  const std::unique_ptr<image<int>> larger(img.scale(8, 1, 1));
  EXPECT_EQ(pixelsOf(*larger), (std::vector<int>{10, 10, 11, 11, 12, 13, 13, 14}));
}

}  // namespace
}  // namespace orva::test
