#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

template <class T>
class GradientMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(GradientMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(GradientMatchesReferenceAtEveryWidth, ForOneImage) {
  Random random(31);
  forEveryWidth([&](int nx) {
    const auto img = randomImage<TypeParam>(random, shapeOfWidth(random, nx));
    const float sigma = randomSigma(random, 0.4F, 2.5F);
    const float ratio = nx % 3 == 0 ? 0.0F : randomSigma(random, 0.5F, 3.0F);
    EXPECT_TRUE(
        sameImage(scalespace::gradient(img, sigma, ratio), reference::gradient(img, sigma, ratio)))
        << "ratio " << ratio;
  });
}

TYPED_TEST(GradientMatchesReferenceAtEveryWidth, ForTheLaplacian) {
  Random random(32);
  forEveryWidth([&](int nx) {
    const auto img = randomImage<TypeParam>(random, shapeOfWidth(random, nx));
    const float sigma = randomSigma(random, 0.4F, 2.5F);
    EXPECT_TRUE(sameImage(scalespace::laplacian(img, sigma), reference::laplacian(img, sigma)));
  });
}

TYPED_TEST(GradientMatchesReferenceAtEveryWidth, ForPixelwiseForms) {
  Random random(33);
  forEveryWidth([&](int nx) {
    const Shape shape = shapeOfWidth(random, nx);
    const auto a = randomImage<TypeParam>(random, shape);
    const auto b = randomImage<TypeParam>(random, shape);
    const auto c = randomImage<float>(random, shape);
    EXPECT_TRUE(sameImage(scalespace::gradient(a, c), reference::gradient(a, c)));
    EXPECT_TRUE(sameImage(scalespace::gradient(c, a, b), reference::gradient(c, a, b)));
    EXPECT_TRUE(sameImage(scalespace::direction(c, b), reference::direction(c, b)));
    EXPECT_TRUE(sameImage(scalespace::angle(c, a), reference::angle(c, a)));
    EXPECT_TRUE(sameImage(scalespace::angleInRadian(a, c), reference::angleInRadian(a, c)));
  });
}

TEST(GradientOfOneImage, OfASingleFrameDoesNotUseTheRatio) {
  Random random(34);
  const auto img = randomImage<short>(random, {12, 9});
  const auto expected = scalespace::gradient(img, 1.5F, 1.0F);
  for (const float ratio : {0.0F, -2.0F, 7.0F, kNaN})
    EXPECT_TRUE(sameImage(scalespace::gradient(img, 1.5F, ratio), expected)) << ratio;
}

TEST(GradientOfOneImage, DividingAllAxesOfTheFrameTermIsIntended) {
  Random random(35);
  const auto img = randomImage<float>(random, {8, 7, 5});
  const auto gx = scalespace::gaussian(img, 2.0F, 1, 0, 0);
  const auto gy = scalespace::gaussian(img, 2.0F, 0, 1, 0);
  const auto gz = scalespace::gaussian(img, 0.5F, 0, 0, 1);
  const auto result = scalespace::gradient(img, 2.0F, 4.0F);
  for (int i = 0; i < img.npix(); ++i) {
    const float square =
        gx.pixel(i) * gx.pixel(i) + gy.pixel(i) * gy.pixel(i) + gz.pixel(i) * gz.pixel(i);
    EXPECT_EQ(result.pixel(i), std::sqrt(square)) << i;
  }
}

TEST(GradientOfOneImage, KeepsTheFiveSizes) {
  const auto result = scalespace::gradient(blank<unsigned char>({6, 5, 2, 3, 2}), 1.0F, 1.0F);
  EXPECT_TRUE(sameImage(result, blank<float>({6, 5, 2, 3, 2})));
}

TEST(GradientOfOneImage, DoesNotChangeWhenTheImageIsNegated) {
  Random random(36);
  const auto img = randomImage<float>(random, {17, 11, 3});
  EXPECT_TRUE(sameImage(scalespace::gradient(scaled(img, -1.0F), 1.2F, 2.0F),
                        scalespace::gradient(img, 1.2F, 2.0F)));
}

TEST(GradientOfOneImage, OfANullImageIsNull) {
  for (const Shape& shape : {Shape{0, 1}, Shape{4, 4, 0}}) {
    const auto null = blank<unsigned char>(shape);
    EXPECT_TRUE(scalespace::gradient(null, 1.0F, 1.0F).isNull());
    EXPECT_TRUE(scalespace::laplacian(null, 1.0F).isNull());
  }
}

TEST(PixelwiseForms, OfUnequalSizesGiveTheNullImageOfTheirType) {
  const auto a = blank<float>({4, 3, 2});
  const image<short> nullShort(0, 1, 1, 1, 1);
  const image<unsigned char> nullByte(0, 1, 1, 1, 1);
  const image<float> nullFloat(0, 1, 1, 1, 1);
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  for (const Shape& shape : {Shape{3, 4, 2}, Shape{4, 3, 3}, Shape{4, 4, 2}, Shape{0, 1}}) {
    const auto b = blank<float>(shape);
    EXPECT_TRUE(sameImage(scalespace::gradient(a, b), nullShort));
    EXPECT_TRUE(sameImage(scalespace::gradient(a, a, b), nullShort));
    EXPECT_TRUE(sameImage(scalespace::gradient(a, b, a), nullShort));
    EXPECT_TRUE(sameImage(scalespace::gradient(b, a, a), nullShort));
    EXPECT_TRUE(sameImage(scalespace::direction(a, b), nullByte));
    EXPECT_TRUE(sameImage(scalespace::angle(a, b), nullShort));
    EXPECT_TRUE(sameImage(scalespace::angleInRadian(a, b), nullFloat));
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(PixelwiseForms, OfImagesWithAsManyFramesOfOtherKindIsIntended) {
  Random random(37);
  const auto a = randomImage<float>(random, {3, 2, 4});
  const auto b = randomImage<float>(random, {3, 2, 1, 2, 2});
  const auto sameSizes = imageOf<float>({3, 2, 4}, pixelsOf(b));
  EXPECT_TRUE(sameImage(scalespace::gradient(a, b), scalespace::gradient(a, sameSizes)));
  EXPECT_TRUE(sameImage(scalespace::angleInRadian(b, a), scalespace::angleInRadian(sameSizes, a)));
}

TEST(PixelwiseForms, OfNullImagesAreNull) {
  const image<float> null(0, 1, 1, 1, 1);
  EXPECT_TRUE(scalespace::gradient(null, null).isNull());
  EXPECT_TRUE(scalespace::gradient(null, null, null).isNull());
  EXPECT_TRUE(scalespace::direction(null, null).isNull());
  EXPECT_TRUE(scalespace::angle(null, null).isNull());
  EXPECT_TRUE(scalespace::angleInRadian(null, null).isNull());
}

TEST(PixelwiseForms, NormsAreTruncatedAndKeepTheLowBits) {
  // 40000 is -25536 in 16 bits; infinity is held at 2147483647, whose low bits are -1.
  const auto a = imageOf<float>({6, 1}, {3, 1, 40000, kInfinity, kNaN, 1e30F});
  const auto b = imageOf<float>({6, 1}, {4, 1, 0, 0, 0, 0});
  EXPECT_EQ(pixelsOf(scalespace::gradient(a, b)), (std::vector<short>{5, 1, -25536, -1, 0, -1}));
  const auto c = imageOf<float>({6, 1}, {12, 1, 0, 0, 0, 0});
  EXPECT_EQ(pixelsOf(scalespace::gradient(a, b, c)),
            (std::vector<short>{13, 1, -25536, -1, 0, -1}));
}

TEST(PixelwiseForms, AnglesAreWholeDegreesOfTheFirstImageOverTheSecond) {
  const auto y = imageOf<float>({9, 1}, {0, 0, 1, 1, 1, 0, -0.0F, -1, -1});
  const auto x = imageOf<float>({9, 1}, {0, 1, 1, 0, -1, -1, -1, 0, 1});
  EXPECT_EQ(pixelsOf(scalespace::angle(y, x)),
            (std::vector<short>{0, 0, 45, 90, 135, 180, -180, -90, -45}));
}

TEST(PixelwiseForms, DirectionsAreTheEightSectors) {
  const auto y = imageOf<float>({9, 1}, {0, 0, 1, 1, 1, 0, -1, -1, -1});
  const auto x = imageOf<float>({9, 1}, {0, 1, 1, 0, -1, -1, -1, 0, 1});
  EXPECT_EQ(pixelsOf(scalespace::direction(y, x)),
            (std::vector<unsigned char>{0, 0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(PixelwiseForms, DirectionOfMinusXFromBelowIsFiveIsIntended) {
  const auto y = imageOf<float>({2, 1}, {-0.0F, kNaN});
  const auto x = imageOf<float>({2, 1}, {-1, 1});
  EXPECT_EQ(pixelsOf(scalespace::direction(y, x)), (std::vector<unsigned char>{5, 4}));
}

TEST(PixelwiseForms, RadiansAreSinglePrecision) {
  const auto a = imageOf<float>({2, 2}, {1, 1, 1, 1});
  const auto b = blank<float>({2, 2});
  EXPECT_EQ(pixelsOf(scalespace::angleInRadian(a, b)),
            std::vector<float>(4, 1.57079632679489661923F));
}

TEST(Laplacian, OfASingleFrameHasNoFrameTerm) {
  Random random(38);
  const auto img = randomImage<float>(random, {13, 8});
  const auto xx = scalespace::dXX(img, 1.5F);
  const auto yy = scalespace::dYY(img, 1.5F);
  const auto sum = scalespace::laplacian(img, 1.5F);
  for (int i = 0; i < img.npix(); ++i) EXPECT_EQ(sum.pixel(i), xx.pixel(i) + yy.pixel(i));
}

TEST(Laplacian, ChangesItsSignWithTheImage) {
  Random random(39);
  const auto img = randomImage<float>(random, {13, 8, 4});
  EXPECT_TRUE(sameValues(scalespace::laplacian(scaled(img, -1.0F), 1.5F),
                         scaled(scalespace::laplacian(img, 1.5F), -1.0F)));
}

}  // namespace
}  // namespace orva::test
