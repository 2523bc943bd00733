// Sigmas, ratios and pixels that are no sensible numbers: the filters end, and give what their
// definitions give.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

class DegenerateSigma : public testing::TestWithParam<float> {};

INSTANTIATE_TEST_SUITE_P(All, DegenerateSigma,
                         testing::Values(0.0F, -0.0F, 1e-30F, 1e-10F, -1e-10F, -0.4F, -2.0F, -1e30F,
                                         kNaN, kInfinity, -kInfinity, 4e9F, 1e20F, 3e38F,
                                         12000.0F));

const Shape kShapes[] = {{7, 5}, {6, 4, 3}, {1, 1}, {3, 1, 1, 2}};

TEST_P(DegenerateSigma, FiltersMatchTheReference) {
  const float s = GetParam();
  Random random(81);
  for (const Shape& shape : kShapes) {
    const auto img = randomImage<short>(random, shape);
    for (int order = 0; order <= 3; ++order) {
      EXPECT_TRUE(sameValues(scalespace::gaussian(img, s, order, 0, 3 - order),
                             reference::gaussian(img, {s, s, s}, {order, 0, 3 - order})));
    }
    EXPECT_TRUE(sameValues(scalespace::smooth(img, s, s, s), reference::smooth(img, {s, s, s})));
    EXPECT_TRUE(
        sameValues(scalespace::smooth(img, 1.0F, s), reference::smooth(img, {1, 1, 1.0F / s})));
    EXPECT_TRUE(sameValues(scalespace::laplacian(img, s), reference::laplacian(img, s)));
    EXPECT_TRUE(sameValues(scalespace::gradient(img, s, 2.0F), reference::gradient(img, s, 2.0F)));
    EXPECT_TRUE(sameValues(scalespace::gradient(img, 1.0F, s), reference::gradient(img, 1.0F, s)));
  }
}

TEST_P(DegenerateSigma, FeaturesMatchTheReference) {
  const float s = GetParam();
  Random random(82);
  for (const Shape& shape : kShapes) {
    const auto img = randomImage<unsigned char>(random, shape);
    for (const int type : {1, 2, 4, 8, 16, 32}) {
      const auto feature = static_cast<FeatureType>(type);
      EXPECT_TRUE(sameImage(scalespace::features(img, s, feature, 1.0F),
                            reference::features(img, s, type, 1.0F)))
          << type;
      EXPECT_TRUE(sameImage(scalespace::features(img, 1.0F, feature, s),
                            reference::features(img, 1.0F, type, s)))
          << type;
    }
  }
}

TEST_P(DegenerateSigma, CutsAndReductionsMatchTheReference) {
  const float s = GetParam();
  Random random(83);
  const auto img = randomImage<short>(random, {7, 5});
  EXPECT_TRUE(sameValues(scalespace::harmonicCut(img, s, true, 2),
                         reference::harmonicCut(img, s, true, 2)));
  EXPECT_TRUE(sameImage(scalespace::hcut(img, s, 1.0F), reference::hcut(img, s, 1.0F)));
  EXPECT_TRUE(sameImage(scalespace::hcut(img, 1.0F, s), reference::hcut(img, 1.0F, s)));
  const std::unique_ptr<Image> reduced(scalespace::reduce(img, 0.5F, s));
  ASSERT_NE(reduced, nullptr);
  EXPECT_TRUE(sameImage(*reduced, reference::reduce(img, 0.5F, s)));
}

TEST(DegenerateScale, ASigmaOfZeroGivesNoNumbers) {
  Random random(84);
  const auto img = randomImage<float>(random, {4, 3});
  const auto smoothed = scalespace::smooth(img, 0.0F, 1.0F);
  const auto filtered = scalespace::gaussian(img, 0.0F, 1, 0, 0);
  for (int i = 0; i < img.npix(); ++i) {
    EXPECT_TRUE(std::isnan(smoothed.pixel(i))) << i;
    EXPECT_TRUE(std::isnan(filtered.pixel(i))) << i;
  }
}

TEST(DegenerateScale, AHugeSigmaThatFitsIsConvolvedInFull) {
  Random random(85);
  const auto img = randomImage<float>(random, {3, 2});
  const float s = 30000.0F;
  EXPECT_TRUE(sameImage(scalespace::smooth(img, s, 1.0F), reference::smooth(img, {s, s, s})));
  EXPECT_TRUE(sameImage(scalespace::gaussian(img, s, 1, 0, 0),
                        reference::gaussian(img, {s, s, s}, {1, 0, 0})));
}

TEST(DegenerateScale, ARatioOfZeroSmoothingToBlackIsIntended) {
  // The infinite sigma has five taps of 0.
  Random random(86);
  const auto img = randomImage<unsigned char>(random, {4, 3, 3});
  EXPECT_TRUE(sameValues(scalespace::smooth(img, 1.0F, 0.0F), blank<float>({4, 3, 3})));
}

TEST(FilterMatchesReference, ForPixelsThatAreNoNumbers) {
  Random random(87);
  for (const Shape& shape : {Shape{17, 9}, Shape{9, 6, 4}}) {
    auto img = randomImage<float>(random, shape);
    const float values[] = {kNaN, kInfinity, -kInfinity, 3e38F, -3e38F, 1e-40F};
    for (int i = 0; i < 6; ++i) img.setPixel(randomInt(random, 0, img.npix() - 1), values[i]);
    const reference::Triple s{0.6F, 0.6F, 0.6F};
    EXPECT_TRUE(sameValues(scalespace::gaussian(img, 0.6F, 1, 0, 2),
                           reference::gaussian(img, s, {1, 0, 2})));
    EXPECT_TRUE(sameValues(scalespace::smooth(img, 0.6F, 1.0F), reference::smooth(img, s)));
    for (const int type : {1, 2, 4, 8, 16, 32})
      EXPECT_TRUE(sameImage(scalespace::features(img, 0.6F, static_cast<FeatureType>(type), 1.0F),
                            reference::features(img, 0.6F, type, 1.0F)))
          << type;
  }
}

TEST(DegenerateFactor, ThatIsNoNumberGivesOnePixel) {
  const std::unique_ptr<Image> result(scalespace::reduce(blank<float>({5, 5}), kNaN, 1.0F));
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->npix(), 1);
}

TEST(DegenerateSigmaDeathTest, ATapCountPast32BitsEndsTheProcess) {
  const auto img = blank<unsigned char>({5, 5});
  const auto exits = testing::ExitedWithCode(1);
  const char* message = "^Out of memory\n$";
  EXPECT_EXIT(scalespace::gaussian(img, 4e8F, 0, 0, 0), exits, message);
  EXPECT_EXIT(scalespace::smooth(img, 4e8F, 1.0F), exits, message);
  EXPECT_EXIT(scalespace::gradient(img, 4e8F, 1.0F), exits, message);
  EXPECT_EXIT(scalespace::features(img, 4e8F, LAPLACIAN_NEGATIVE, 1.0F), exits, message);
  EXPECT_EXIT(scalespace::features(img, 4e8F, HESSIAN_MAXIMUM, 1.0F), exits, message);
}

}  // namespace
}  // namespace orva::test
