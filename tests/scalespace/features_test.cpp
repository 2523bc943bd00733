#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

const FeatureType kTypes[] = {LAPLACIAN_NEGATIVE, LAPLACIAN_POSITIVE, HESSIAN_MAXIMUM,
                              HESSIAN_MINIMUM,    GRADIENT_CONCAVE,   GRADIENT_CONVEX};
const int kUnknownTypes[] = {0, 3, 5, 12, 48, 63, 64, -1};

int countMarked(const image<unsigned char>& mask) {
  const auto pixels = pixelsOf(mask);
  return static_cast<int>(std::count(pixels.begin(), pixels.end(), 255));
}

// A bright disc of radius 10 in the middle of a dark image of 41 x 41.
image<unsigned char> disc() {
  auto img = blank<unsigned char>({41, 41});
  for (int y = 0; y < 41; ++y)
    for (int x = 0; x < 41; ++x)
      if ((x - 20) * (x - 20) + (y - 20) * (y - 20) <= 100) img.setPixel(x, y, 200);
  return img;
}

template <class T>
class FeatureMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(FeatureMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(FeatureMatchesReferenceAtEveryWidth, ForPlanes) {
  Random random(41);
  forEveryWidth([&](int nx) {
    const auto img = randomImage<TypeParam>(random, {nx, randomInt(random, 1, 7)});
    const float sigma = randomSigma(random, 0.4F, 3.0F);
    for (const FeatureType type : kTypes)
      EXPECT_TRUE(sameImage(scalespace::features(img, sigma, type, 1.0F),
                            reference::features(img, sigma, type, 1.0F)))
          << "type " << type;
  });
}

template <class T>
class FeatureMatchesReference : public testing::Test {};
TYPED_TEST_SUITE(FeatureMatchesReference, PixelTypes);

TYPED_TEST(FeatureMatchesReference, ForStacks) {
  Random random(42);
  for (int nx = 1; nx <= 40; ++nx) {
    Shape shape{nx, randomInt(random, 1, 7), randomInt(random, 1, 5), randomInt(random, 1, 2)};
    if (shape.nz * shape.nc < 2) shape.nt = 3;
    const auto img = randomImage<TypeParam>(random, shape);
    const float sigma = randomSigma(random, 0.4F, 3.0F);
    const float ratio = nx % 4 == 0 ? 0.0F : randomSigma(random, 0.5F, 3.0F);
    for (const FeatureType type : kTypes)
      EXPECT_TRUE(sameImage(scalespace::features(img, sigma, type, ratio),
                            reference::features(img, sigma, type, ratio)))
          << "width " << nx << " type " << type << " ratio " << ratio;
  }
}

TEST(FeatureMatchesReference, WithTies) {
  Random random(43);
  for (int round = 0; round < 100; ++round) {
    // At 0.05 the kernel has one tap that is not 0, so that equal pixels stay equal.
    const float sigma = round % 2 == 0 ? 0.05F : 0.5F;
    const Shape shape{randomInt(random, 1, 20), randomInt(random, 1, 12), randomInt(random, 1, 4)};
    const auto img = imageWithTies(random, shape);
    for (const FeatureType type : kTypes)
      EXPECT_TRUE(sameImage(scalespace::features(img, sigma, type, 1.0F),
                            reference::features(img, sigma, type, 1.0F)))
          << "type " << type;
  }
}

TEST(Features, OfABrightDiscSeparateItsInsideFromItsSurroundings) {
  const auto bright = scalespace::features(disc(), 2.0F, LAPLACIAN_NEGATIVE, 1.0F);
  const auto dark = scalespace::features(disc(), 2.0F, LAPLACIAN_POSITIVE, 1.0F);
  for (const int x : {12, 13, 14, 26, 27, 28}) {  // inside, near the rim
    EXPECT_EQ(bright.pixel(x, 20), 255) << x;
    EXPECT_EQ(dark.pixel(x, 20), 0) << x;
  }
  for (const int x : {6, 7, 8, 32, 33, 34}) {  // just outside
    EXPECT_EQ(bright.pixel(x, 20), 0) << x;
    EXPECT_EQ(dark.pixel(x, 20), 255) << x;
  }
}

TEST(Features, OfABrightDiscSeeItsMiddleAtAScaleOfItsOwnSize) {
  EXPECT_EQ(scalespace::features(disc(), 5.0F, LAPLACIAN_NEGATIVE, 1.0F).pixel(20, 20), 255);
  EXPECT_EQ(scalespace::features(disc(), 5.0F, LAPLACIAN_POSITIVE, 1.0F).pixel(20, 20), 0);
}

TEST(Features, OfBothLaplacianSignsAreComplementsOffZeroSums) {
  const auto img = disc();
  const auto sum = scalespace::laplacian(img, 1.5F);
  const auto bright = scalespace::features(img, 1.5F, LAPLACIAN_NEGATIVE, 1.0F);
  const auto dark = scalespace::features(img, 1.5F, LAPLACIAN_POSITIVE, 1.0F);
  int zeros = 0;
  for (int i = 0; i < img.npix(); ++i) {
    EXPECT_EQ(bright.pixel(i), sum.pixel(i) < 0 ? 255 : 0) << i;
    EXPECT_EQ(dark.pixel(i), sum.pixel(i) > 0 ? 255 : 0) << i;
    zeros += sum.pixel(i) == 0 ? 1 : 0;
  }
  EXPECT_GT(zeros, 0);
}

TEST(Features, MarkCapsAndCups) {
  auto cap = blank<float>({9, 9});
  auto saddle = blank<float>({9, 9});
  for (int y = 0; y < 9; ++y) {
    for (int x = 0; x < 9; ++x) {
      const auto xx = static_cast<float>((x - 4) * (x - 4));
      const auto yy = static_cast<float>((y - 4) * (y - 4));
      cap.setPixel(x, y, -xx - yy);
      saddle.setPixel(x, y, xx - yy);
    }
  }
  const auto cup = scaled(cap, -1.0F);
  const struct {
    const image<float>& img;
    int maximum, minimum, concave, convex;
  } rows[] = {{cap, 255, 0, 255, 0}, {cup, 0, 255, 0, 255}, {saddle, 0, 0, 0, 255}};
  for (const auto& row : rows) {
    // At (5, 4) the gradient is along x.
    EXPECT_EQ(scalespace::features(row.img, 0.3F, HESSIAN_MAXIMUM, 1.0F).pixel(5, 4), row.maximum);
    EXPECT_EQ(scalespace::features(row.img, 0.3F, HESSIAN_MINIMUM, 1.0F).pixel(5, 4), row.minimum);
    EXPECT_EQ(scalespace::features(row.img, 0.3F, GRADIENT_CONCAVE, 1.0F).pixel(5, 4), row.concave);
    EXPECT_EQ(scalespace::features(row.img, 0.3F, GRADIENT_CONVEX, 1.0F).pixel(5, 4), row.convex);
  }
}

TEST(Features, OfABlackImageAreEmpty) {
  for (const Shape& shape : {Shape{9, 8}, Shape{9, 8, 5}, Shape{9, 8, 1, 2, 2}}) {
    for (const FeatureType type : kTypes)
      EXPECT_EQ(countMarked(scalespace::features(blank<short>(shape), 1.0F, type, 1.0F)), 0)
          << type;
  }
}

TEST(Features, FollowingTheRoundingOfFiltersIsIntended) {
  for (const Shape& shape : {Shape{33, 21}, Shape{17, 9, 6}}) {
    for (const float v : {1.0F, 100.0F, -3.7F}) {
      auto img = blank<float>(shape);
      std::fill_n(img.pixels(), img.npix(), v);
      for (const FeatureType type : kTypes)
        EXPECT_TRUE(sameImage(scalespace::features(img, 1.3F, type, 1.0F),
                              reference::features(img, 1.3F, type, 1.0F)))
            << v << " type " << type;
    }
  }
}

TEST(Features, ByDifferencesLeaveTheBorderEmpty) {
  Random random(44);
  for (const Shape& shape : {Shape{15, 13}, Shape{9, 8, 6}}) {
    const auto img = randomImage<short>(random, shape);
    const std::vector<bool> interior = img.interior();
    int marked = 0;
    for (const int type : {4, 8, 16, 32}) {
      const auto mask = scalespace::features(img, 0.5F, static_cast<FeatureType>(type), 1.0F);
      for (int i = 0; i < mask.npix(); ++i) {
        if (!interior[static_cast<std::size_t>(i)]) {
          EXPECT_EQ(mask.pixel(i), 0) << type;
        }
        marked += mask.pixel(i) > 0 ? 1 : 0;
      }
    }
    EXPECT_GT(marked, 0);
  }
}

TEST(Features, ByLaplacianDecideTheBorderToo) {
  Random random(45);
  const auto img = randomImage<short>(random, {15, 13});
  const auto sum = scalespace::laplacian(img, 1.0F);
  const auto mask = scalespace::features(img, 1.0F, LAPLACIAN_NEGATIVE, 1.0F);
  int marked = 0;
  for (int x = 0; x < 15; ++x) {
    EXPECT_EQ(mask.pixel(x, 0), sum.pixel(x, 0) < 0 ? 255 : 0) << x;
    marked += mask.pixel(x, 0) > 0 ? 1 : 0;
  }
  EXPECT_GT(marked, 0);
}

TEST(Features, ByDifferencesOfANarrowImageAreEmpty) {
  Random random(46);
  for (const Shape& shape :
       {Shape{1, 9}, Shape{2, 9}, Shape{9, 1}, Shape{9, 2}, Shape{1, 1}, Shape{2, 2},
        Shape{9, 9, 2}, Shape{9, 9, 1, 2}, Shape{2, 9, 5}, Shape{9, 1, 5}}) {
    const auto img = randomImage<short>(random, shape);
    for (const int type : {4, 8, 16, 32})
      EXPECT_EQ(countMarked(scalespace::features(img, 0.5F, static_cast<FeatureType>(type), 1.0F)),
                0)
          << type;
  }
}

TEST(Features, OfAnUnknownTypeOrACombinationAreEmpty) {
  Random random(47);
  for (const Shape& shape : {Shape{9, 7}, Shape{9, 7, 4}}) {
    const auto img = randomImage<unsigned char>(random, shape);
    for (const int type : kUnknownTypes)
      EXPECT_TRUE(sameImage(scalespace::features(img, 1.0F, static_cast<FeatureType>(type), 1.0F),
                            blank<unsigned char>(shape)))
          << type;
  }
}

TEST(Features, OfANullImageAreTheNullByteImage) {
  for (const Shape& shape : {Shape{0, 1}, Shape{0, 0}, Shape{5, 5, 0}, Shape{5, 5, 1, 1, 0}}) {
    for (const FeatureType type : kTypes)
      EXPECT_TRUE(sameImage(scalespace::features(blank<float>(shape), 1.0F, type, 1.0F),
                            image<unsigned char>(0, 1, 1, 1, 1)));
  }
}

TEST(Features, OfAPlaneDoNotUseTheRatio) {
  Random random(48);
  const auto img = randomImage<unsigned char>(random, {19, 13});
  for (const FeatureType type : kTypes) {
    const auto expected = scalespace::features(img, 1.0F, type, 1.0F);
    for (const float ratio : {0.0F, -1.0F, 9.0F, std::numeric_limits<float>::quiet_NaN()})
      EXPECT_TRUE(sameImage(scalespace::features(img, 1.0F, type, ratio), expected)) << type;
  }
}

TEST(Features, OfAStackTakeARatioOfZeroAsOne) {
  Random random(49);
  const auto img = randomImage<unsigned char>(random, {13, 11, 6});
  for (const FeatureType type : kTypes)
    EXPECT_TRUE(sameImage(scalespace::features(img, 1.2F, type, 0.0F),
                          scalespace::features(img, 1.2F, type, 1.0F)))
        << type;
}

TEST(Features, OfAStackDoNotDependOnWhatItsFramesAre) {
  Random random(50);
  const auto planes = randomImage<short>(random, {8, 7, 12});
  for (const Shape& shape : {Shape{8, 7, 1, 12, 1}, Shape{8, 7, 1, 1, 12}, Shape{8, 7, 3, 2, 2}}) {
    const auto img = imageOf<short>(shape, pixelsOf(planes));
    for (const FeatureType type : kTypes)
      EXPECT_TRUE(sameImage(scalespace::features(img, 1.0F, type, 2.0F),
                            scalespace::features(planes, 1.0F, type, 2.0F)))
          << type;
  }
}

TEST(Features, OfAStackSeeASphereAndAShell) {
  auto cap = blank<float>({9, 9, 9});
  auto ridge = blank<float>({9, 9, 9});
  for (int z = 0; z < 9; ++z) {
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 9; ++x) {
        const int plane = (x - 4) * (x - 4) + (y - 4) * (y - 4);
        const int depth = (z - 4) * (z - 4);
        cap.setPixel(x, y, z, static_cast<float>(-plane - depth));
        ridge.setPixel(x, y, z, static_cast<float>(-plane + 3 * depth));
      }
    }
  }
  const auto at = [](const image<float>& img, FeatureType type, int x, int z) {
    return scalespace::features(img, 0.3F, type, 1.0F).pixel(x, 4, z);
  };
  const auto cup = scaled(cap, -1.0F);
  EXPECT_EQ(at(cap, HESSIAN_MAXIMUM, 4, 4), 255);
  EXPECT_EQ(at(cap, HESSIAN_MINIMUM, 4, 4), 0);
  EXPECT_EQ(at(cup, HESSIAN_MINIMUM, 4, 4), 255);
  EXPECT_EQ(at(cup, HESSIAN_MAXIMUM, 4, 4), 0);
  // A cap in each plane that grows along z is no cap of the stack.
  EXPECT_EQ(at(ridge, HESSIAN_MAXIMUM, 4, 4), 0);
  EXPECT_EQ(at(ridge, HESSIAN_MINIMUM, 4, 4), 0);
  EXPECT_EQ(at(ridge, LAPLACIAN_POSITIVE, 4, 4), 255);
  // The curvature along the gradient is that of the axis along which it points.
  EXPECT_EQ(at(ridge, GRADIENT_CONCAVE, 6, 4), 255);
  EXPECT_EQ(at(ridge, GRADIENT_CONVEX, 4, 6), 255);
}

TEST(Features, OfTheNegatedImageAreThoseOfTheOppositeType) {
  Random random(51);
  for (const Shape& shape : {Shape{31, 22}, Shape{12, 10, 7}}) {
    const auto img = randomImage<float>(random, shape);
    const auto negated = scaled(img, -1.0F);
    for (const int type : {1, 4, 16}) {
      const auto opposite = static_cast<FeatureType>(2 * type);
      const auto mask = scalespace::features(img, 1.0F, static_cast<FeatureType>(type), 1.5F);
      EXPECT_TRUE(sameImage(scalespace::features(negated, 1.0F, opposite, 1.5F), mask)) << type;
      EXPECT_GT(countMarked(mask), 0) << type;
    }
  }
}

TEST(Features, DoNotChangeWhenTheImageIsDoubled) {
  Random random(52);
  for (const Shape& shape : {Shape{31, 22}, Shape{12, 10, 7}}) {
    const auto img = randomImage<float>(random, shape);
    const auto doubled = scaled(img, 2.0F);
    for (const FeatureType type : kTypes)
      EXPECT_TRUE(sameImage(scalespace::features(doubled, 1.0F, type, 1.0F),
                            scalespace::features(img, 1.0F, type, 1.0F)))
          << type;
  }
}

TEST(Features, ANaNMarksNothing) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const Shape& shape : {Shape{9, 9}, Shape{9, 9, 5}}) {
    auto img = blank<float>(shape);
    std::fill_n(img.pixels(), img.npix(), nan);
    for (const FeatureType type : kTypes)
      EXPECT_EQ(countMarked(scalespace::features(img, 1.0F, type, 1.0F)), 0) << type;
  }
}

}  // namespace
}  // namespace orva::test
