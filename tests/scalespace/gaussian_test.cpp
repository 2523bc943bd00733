#include <gtest/gtest.h>

#include <limits>

#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

reference::Triple randomSigmas(Random& random) {
  return {randomSigma(random), randomSigma(random), randomSigma(random)};
}

reference::Orders randomOrders(Random& random) {
  return {randomInt(random, 0, 3), randomInt(random, 0, 3), randomInt(random, 0, 3)};
}

template <class T>
class GaussianMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(GaussianMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(GaussianMatchesReferenceAtEveryWidth, ForRandomSigmas) {
  Random random(11);
  forEveryWidth([&](int nx) {
    const image<TypeParam> img = randomImage<TypeParam>(random, shapeOfWidth(random, nx));
    const reference::Triple s = randomSigmas(random);
    const reference::Orders o = randomOrders(random);
    EXPECT_TRUE(sameImage(scalespace::gaussian(img, s.x, s.y, s.z, o.x, o.y, o.z),
                          reference::gaussian(img, s, o)));
    EXPECT_TRUE(sameImage(scalespace::gaussian(img, s.x, o.x, o.y, o.z),
                          reference::gaussian(img, {s.x, s.x, s.x}, o)));
  });
}

template <class T>
class SmoothMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(SmoothMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(SmoothMatchesReferenceAtEveryWidth, ForRandomSigmas) {
  Random random(12);
  forEveryWidth([&](int nx) {
    const image<TypeParam> img = randomImage<TypeParam>(random, shapeOfWidth(random, nx));
    const reference::Triple s = randomSigmas(random);
    EXPECT_TRUE(sameImage(scalespace::smooth(img, s.x, s.y, s.z), reference::smooth(img, s)));
    const float ratio = randomSigma(random, 0.5F, 3.0F);
    EXPECT_TRUE(sameImage(scalespace::smooth(img, s.x, ratio),
                          reference::smooth(img, {s.x, s.x, s.x / ratio})));
  });
}

template <class T>
class Gaussian : public testing::Test {};
TYPED_TEST_SUITE(Gaussian, PixelTypes);

TYPED_TEST(Gaussian, OfOnePixelIsItsValue) {
  Random random(13);
  const auto img = randomImage<TypeParam>(random, {1, 1});
  for (int order = 0; order <= 3; ++order)
    EXPECT_EQ(scalespace::gaussian(img, 2.0F, order, order, order).pixel(0), img.pixel(0));
  EXPECT_EQ(scalespace::smooth(img, 2.0F, 1.0F).pixel(0), img.pixel(0));
}

TYPED_TEST(Gaussian, KeepsTheFiveSizesAndTheInput) {
  Random random(14);
  const Shape shape{7, 5, 2, 3, 2};
  const auto img = randomImage<TypeParam>(random, shape);
  const auto before = img.duplicate();
  const std::vector<image<float>> results = {scalespace::gaussian(img, 1.0F, 1, 0, 0),
                                             scalespace::smooth(img, 1.0F, 1.0F)};
  for (const image<float>& result : results) {
    EXPECT_EQ(result.nx(), 7);
    EXPECT_EQ(result.ny(), 5);
    EXPECT_EQ(result.nz(), 2);
    EXPECT_EQ(result.nc(), 3);
    EXPECT_EQ(result.nt(), 2);
  }
  EXPECT_TRUE(sameImage(img, before));
}

TYPED_TEST(Gaussian, OfANullImageIsANullFloatImage) {
  for (const Shape& shape : {Shape{0, 1}, Shape{0, 0}, Shape{5, 5, 0}, Shape{5, 5, 1, 0}}) {
    const auto img = blank<TypeParam>(shape);
    EXPECT_TRUE(scalespace::gaussian(img, 2.0F, 1, 1, 1).isNull());
    EXPECT_TRUE(scalespace::gaussian(img, 1.0F, 2.0F, 3.0F, 0, 0, 0).isNull());
    EXPECT_TRUE(scalespace::smooth(img, 2.0F, 1.0F).isNull());
    EXPECT_TRUE(scalespace::smooth(img, 1.0F, 2.0F, 3.0F).isNull());
  }
}

// Columns and stacks run through other loops than rows do.
TEST(SeparableFilterMatchesReferenceAtEveryWidth, AlongColumnsAndPlanes) {
  Random random(15);
  forEveryWidth([&](int n) {
    const int few = randomInt(random, 1, 19);
    for (const Shape& shape : {Shape{few, n}, Shape{few, 2, n}, Shape{3, few, 1, 1, n % 40 + 1}}) {
      const auto img = randomImage<float>(random, shape);
      const reference::Triple s = randomSigmas(random);
      const reference::Orders o = randomOrders(random);
      EXPECT_TRUE(sameImage(scalespace::gaussian(img, s.x, s.y, s.z, o.x, o.y, o.z),
                            reference::gaussian(img, s, o)))
          << "length " << n;
      EXPECT_TRUE(sameImage(scalespace::smooth(img, s.x, s.y, s.z), reference::smooth(img, s)))
          << "length " << n;
    }
  });
}

TEST(SeparableFilterMatchesReference, WithKernelsLongerThanTheLine) {
  Random random(16);
  for (int round = 0; round < 60; ++round) {
    const Shape shape{randomInt(random, 1, 20), randomInt(random, 1, 20), randomInt(random, 1, 4)};
    const auto img = randomImage<float>(random, shape);
    const float s = randomSigma(random, 3.0F, 40.0F);
    const reference::Orders o = randomOrders(random);
    EXPECT_TRUE(sameImage(scalespace::gaussian(img, s, o.x, o.y, o.z),
                          reference::gaussian(img, {s, s, s}, o)));
    EXPECT_TRUE(sameImage(scalespace::smooth(img, s, s, s), reference::smooth(img, {s, s, s})));
  }
}

TEST(SeparableFilters, GiveTheKernelForOneBrightPixel) {
  for (int order = 0; order <= 3; ++order) {
    const reference::Kernel kernel = reference::gaussianKernel(1.5F, order);
    auto row = blank<float>({21, 1});
    row.setPixel(10, 1.0F);
    const auto result = scalespace::gaussian(row, 1.5F, order, 0, 0);
    for (int k = -kernel.radius; k <= kernel.radius; ++k)
      EXPECT_EQ(result.pixel(10 + k), kernel.tap(k)) << "order " << order << " tap " << k;
    EXPECT_EQ(result.pixel(10 - kernel.radius - 1), 0.0F);
    EXPECT_EQ(result.pixel(10 + kernel.radius + 1), 0.0F);
  }
}

TEST(SeparableFilters, OfAConstantLine) {
  const float v = 100;
  const reference::Kernel kernel = reference::gaussianKernel(1.0F, 0);
  float sum = 0;
  for (const float tap : kernel.taps) sum += tap;
  const auto line = imageOf<float>({12, 1}, std::vector<float>(12, v));
  const auto repeated = scalespace::gaussian(line, 1.0F, 0, 0, 0);
  const auto dropped = scalespace::smooth(line, 1.0F, 1.0F);
  float lost = 0;
  for (int i = kernel.radius; i >= 0; --i) {
    EXPECT_NEAR(repeated.pixel(i), v * sum, 1e-4) << i;
    EXPECT_EQ(repeated.pixel(i), repeated.pixel(kernel.radius)) << i;
    EXPECT_NEAR(dropped.pixel(i), v * (sum - lost) / (1 - lost), 1e-4) << i;
    if (i > 0) lost += kernel.tap(i);
  }
}

TEST(SeparableFilters, SkipAnAxisOfLengthOneWhateverItsOrderAndSigma) {
  Random random(17);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const auto row = randomImage<float>(random, {9, 1});
  const auto column = imageOf<float>({1, 9}, pixelsOf(row));
  const auto depth = imageOf<float>({1, 1, 9}, pixelsOf(row));
  const auto filtered = pixelsOf(scalespace::gaussian(row, 1.2F, nan, nan, 1, 3, 2));
  EXPECT_EQ(filtered, pixelsOf(reference::gaussian(row, {1.2F, 1, 1}, {1, 0, 0})));
  EXPECT_EQ(filtered, pixelsOf(scalespace::gaussian(column, nan, 1.2F, nan, 2, 1, 3)));
  EXPECT_EQ(filtered, pixelsOf(scalespace::gaussian(depth, nan, nan, 1.2F, 3, 2, 1)));
  const auto smoothed = pixelsOf(scalespace::smooth(row, 1.2F, nan, nan));
  EXPECT_EQ(smoothed, pixelsOf(scalespace::smooth(column, nan, 1.2F, nan)));
  EXPECT_EQ(smoothed, pixelsOf(scalespace::smooth(depth, nan, nan, 1.2F)));
}

TEST(SeparableFilters, MakeNoKernelForASkippedAxisOfADerivative) {
  // A sigma of 4e8 would end the process.
  const auto row = imageOf<float>({3, 1}, {1, 2, 3});
  EXPECT_EQ(pixelsOf(scalespace::gaussian(row, 1.0F, 4e8F, 4e8F, 0, 0, 0)),
            pixelsOf(scalespace::gaussian(row, 1.0F, 1.0F, 1.0F, 0, 0, 0)));
}

// A sigma of 4e8 has more taps than 32 bits count.
TEST(SeparableFilters, SmoothMakesTheKernelsOfAllAxesFirst) {
  const auto pixel = imageOf<float>({1, 1}, {1});
  const image<float> null(0, 1, 1, 1, 1);
  const auto ends = testing::ExitedWithCode(1);
  const char* const message = "^Out of memory\n$";
  EXPECT_EXIT(scalespace::smooth(pixel, 4e8F, 1.0F, 1.0F), ends, message);
  EXPECT_EXIT(scalespace::smooth(pixel, 1.0F, 4e8F, 1.0F), ends, message);
  EXPECT_EXIT(scalespace::smooth(pixel, 1.0F, 1.0F, 4e8F), ends, message);
  EXPECT_EXIT(scalespace::smooth(pixel, 4e8F, 1e9F), ends, message);
  EXPECT_EXIT(scalespace::smooth(pixel, 1.0F, 2.5e-9F), ends, message);
  EXPECT_EXIT(scalespace::smooth(null, 4e8F, 1e9F), ends, message);
}

TEST(SeparableFilters, CountChannelsAndTimePointsAsPlanesIsIntended) {
  Random random(18);
  const auto stack = randomImage<short>(random, {5, 4, 12});
  for (const Shape& shape : {Shape{5, 4, 1, 12, 1}, Shape{5, 4, 1, 1, 12}, Shape{5, 4, 2, 3, 2}}) {
    const auto folded = imageOf<short>(shape, pixelsOf(stack));
    EXPECT_EQ(pixelsOf(scalespace::gaussian(folded, 1.1F, 0, 1, 2)),
              pixelsOf(scalespace::gaussian(stack, 1.1F, 0, 1, 2)));
    EXPECT_EQ(pixelsOf(scalespace::smooth(folded, 1.1F, 2.0F)),
              pixelsOf(scalespace::smooth(stack, 1.1F, 2.0F)));
  }
}

TEST(SeparableFilters, ShiftWithTheImageAwayFromTheBorder) {
  Random random(19);
  const auto img = randomImage<float>(random, {60, 1});
  const int shift = 7;
  auto moved = blank<float>({60, 1});
  for (int i = shift; i < 60; ++i) moved.setPixel(i, img.pixel(i - shift));
  const int margin = 8;  // the radius for a sigma of 2
  for (int order = 0; order <= 3; ++order) {
    const auto a = scalespace::gaussian(img, 2.0F, order, 0, 0);
    const auto b = scalespace::gaussian(moved, 2.0F, order, 0, 0);
    for (int i = shift + margin; i < 60 - margin; ++i)
      EXPECT_EQ(b.pixel(i), a.pixel(i - shift)) << i;
  }
}

TEST(SeparableFilters, ScaleExactlyWithANegativePowerOfTwo) {
  Random random(20);
  const auto img = randomImage<float>(random, {23, 17, 3});
  const auto opposite = scaled(img, -4.0F);
  EXPECT_TRUE(sameValues(scalespace::gaussian(opposite, 1.3F, 1, 2, 0),
                         scaled(scalespace::gaussian(img, 1.3F, 1, 2, 0), -4.0F)));
  EXPECT_TRUE(sameValues(scalespace::smooth(opposite, 1.3F, 1.0F),
                         scaled(scalespace::smooth(img, 1.3F, 1.0F), -4.0F)));
}

}  // namespace
}  // namespace orva::test
