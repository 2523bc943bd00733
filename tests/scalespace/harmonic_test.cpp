#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/sanitizer.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

template <class T>
class HarmonicCut : public testing::Test {};
TYPED_TEST_SUITE(HarmonicCut, PixelTypes);

template <class T>
class HarmonicCutMatchesReference : public testing::Test {};
TYPED_TEST_SUITE(HarmonicCutMatchesReference, PixelTypes);

TYPED_TEST(HarmonicCutMatchesReference, AtManyWidths) {
  Random random(61);
  for (int nx = 1; nx <= kMaxSweepWidth; nx += 1 + nx / 20) {
    const auto img = randomImage<TypeParam>(random, shapeOfWidth(random, nx));
    const float sigma = randomSigma(random, 0.4F, 2.0F);
    const int iterations = randomInt(random, 0, 4);
    for (const bool bright : {true, false})
      EXPECT_TRUE(sameImage(scalespace::harmonicCut(img, sigma, bright, iterations),
                            reference::harmonicCut(img, sigma, bright, iterations)))
          << "width " << nx;
  }
}

TYPED_TEST(HarmonicCut, FollowedByTheBrightMaskIsHcut) {
  Random random(62);
  for (const Shape& shape : {Shape{23, 17}, Shape{9, 12, 2}, Shape{1, 7}, Shape{40, 3}}) {
    const auto img = randomImage<TypeParam>(random, shape);
    EXPECT_TRUE(sameImage(scalespace::hcut(img, 0.8F, 1.6F), reference::hcut(img, 0.8F, 1.6F)));
    EXPECT_TRUE(sameImage(scalespace::hcut(img, 0.8F, 1.6F),
                          scalespace::features(scalespace::harmonicCut(img, 0.8F, true, 10), 1.6F,
                                               LAPLACIAN_NEGATIVE, 1.0F)));
  }
}

TYPED_TEST(HarmonicCut, WithoutIterationsIsTheFirstFrameAsFloats) {
  Random random(63);
  const auto img = randomImage<TypeParam>(random, {6, 5, 2, 2, 1});
  for (const int iterations : {0, -1, -1000}) {
    const auto result = scalespace::harmonicCut(img, 1.0F, true, iterations);
    EXPECT_EQ(result.npix(), 30);
    EXPECT_EQ(result.nz(), 1);
    for (int i = 0; i < result.npix(); ++i) EXPECT_EQ(result.pixel(i), img.pixel(i)) << i;
  }
}

TEST(HarmonicCutForms, OfAnImageWithoutPixelsAreBlackOfItsWidthAndHeight) {
  for (const Shape& shape : {Shape{5, 5, 0}, Shape{4, 3, 1, 0}, Shape{3, 4, 1, 1, 0}}) {
    const auto img = blank<short>(shape);
    EXPECT_TRUE(
        sameImage(scalespace::harmonicCut(img, 1.0F, true, 3), blank<float>({shape.nx, shape.ny})));
    EXPECT_TRUE(
        sameImage(scalespace::hcut(img, 1.0F, 2.0F), blank<unsigned char>({shape.nx, shape.ny})));
  }
  for (const Shape& shape : {Shape{0, 1}, Shape{0, 7}, Shape{7, 0}, Shape{0, 0, 0, 0, 0}}) {
    const auto img = blank<short>(shape);
    EXPECT_TRUE(
        sameImage(scalespace::harmonicCut(img, 1.0F, true, 3), blank<float>({shape.nx, shape.ny})));
    EXPECT_TRUE(sameImage(scalespace::hcut(img, 1.0F, 2.0F), blank<unsigned char>({0, 1})));
  }
}

TEST(HarmonicCutForms, FlattenAPeakAndLeaveAPit) {
  const auto bump = [](float height) {
    auto img = blank<float>({15, 15});
    img.setPixel(7, 7, height);
    return img;
  };
  EXPECT_LT(scalespace::harmonicCut(bump(100), 1.0F, true, 5).pixel(7, 7), 50.0F);
  EXPECT_GT(scalespace::harmonicCut(bump(-100), 1.0F, false, 5).pixel(7, 7), -50.0F);
  EXPECT_EQ(scalespace::harmonicCut(bump(-100), 1.0F, true, 1).pixel(7, 7), -100.0F);
  EXPECT_EQ(scalespace::harmonicCut(bump(100), 1.0F, false, 1).pixel(7, 7), 100.0F);
}

TEST(HarmonicCutForms, OfTheNegatedImageCutTheOtherWay) {
  Random random(64);
  const auto img = randomImage<float>(random, {21, 16});
  EXPECT_TRUE(sameValues(scalespace::harmonicCut(scaled(img, -1.0F), 0.9F, false, 3),
                         scaled(scalespace::harmonicCut(img, 0.9F, true, 3), -1.0F)));
}

TEST(HarmonicCutForms, DoNotChangeTheirInput) {
  Random random(65);
  const auto img = randomImage<float>(random, {21, 16});
  const auto before = img.duplicate();
  scalespace::harmonicCut(img, 1.0F, true, 2);
  scalespace::hcut(img, 1.0F, 2.0F);
  EXPECT_TRUE(sameImage(img, before));
}

TEST(LaplaceEquationMatchesReferenceAtEveryWidth, ForRandomMasks) {
  Random random(66);
  forEveryWidth([&](int nx) {
    const Shape shape{nx, randomInt(random, 1, 9), randomInt(random, 1, 2)};
    auto f = randomImage<float>(random, shape);
    auto expected = f.duplicate();
    const auto mask = randomMask(random, {shape.nx, shape.ny}, 0.6);
    scalespace::laplaceEquation(f, mask);
    reference::laplaceEquation(expected, mask);
    EXPECT_TRUE(sameImage(f, expected));
  });
}

TEST(LaplaceEquation, ChangesOnlyWhereTheMaskIs255) {
  Random random(67);
  const auto before = randomImage<float>(random, {16, 17});
  auto mask = blank<unsigned char>({16, 17});
  for (int i = 0; i < mask.npix(); ++i) mask.setPixel(i, static_cast<float>(i % 255));  // to 254
  auto f = before.duplicate();
  scalespace::laplaceEquation(f, mask);
  EXPECT_TRUE(sameImage(f, before));
  mask.setPixel(5, 6, 255);
  scalespace::laplaceEquation(f, mask);
  const float mean =
      0.25F * (before.pixel(4, 6) + before.pixel(6, 6) + before.pixel(5, 5) + before.pixel(5, 7));
  EXPECT_EQ(f.pixel(5, 6), mean);
  f.setPixel(5, 6, before.pixel(5, 6));
  EXPECT_TRUE(sameImage(f, before));
}

TEST(LaplaceEquation, LeavesTheBorderAndFurtherFrames) {
  Random random(68);
  const auto before = randomImage<float>(random, {8, 7, 3});
  auto f = before.duplicate();
  auto mask = blank<unsigned char>({8, 7, 3});
  std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(255));
  scalespace::laplaceEquation(f, mask);
  const std::vector<bool> interior = Image::interior(8, 7, 1);
  for (int i = 0; i < f.npix(); ++i) {
    if (i >= 56 || !interior[static_cast<std::size_t>(i)])
      EXPECT_EQ(f.pixel(i), before.pixel(i)) << i;
    else
      EXPECT_NE(f.pixel(i), before.pixel(i)) << i;
  }
}

TEST(LaplaceEquation, TakesExactlyFiftyStepsFromTheOldValues) {
  // Two neighbours in a row of zeros swap a quarter of their values in each step.
  auto f = blank<float>({4, 3});
  f.setPixel(1, 1, 1.0F);
  auto mask = blank<unsigned char>({4, 3});
  mask.setPixel(1, 1, 255);
  mask.setPixel(2, 1, 255);
  scalespace::laplaceEquation(f, mask);
  EXPECT_EQ(f.pixel(1, 1), std::ldexp(1.0F, -100));
  EXPECT_EQ(f.pixel(2, 1), 0.0F);
}

TEST(LaplaceEquation, FlipsWithTheImage) {
  // The two horizontal neighbours are added first, so that their exchange changes no bit.
  Random random(69);
  const Shape shape{19, 12};
  auto f = randomImage<float>(random, shape);
  auto mask = randomMask(random, shape, 0.7);
  auto flippedF = f.duplicate();
  auto flippedMask = mask.duplicate();
  for (int y = 0; y < shape.ny; ++y) {
    std::reverse(flippedF.pixels() + y * shape.nx, flippedF.pixels() + (y + 1) * shape.nx);
    std::reverse(flippedMask.pixels() + y * shape.nx, flippedMask.pixels() + (y + 1) * shape.nx);
  }
  scalespace::laplaceEquation(f, mask);
  scalespace::laplaceEquation(flippedF, flippedMask);
  for (int y = 0; y < shape.ny; ++y)
    for (int x = 0; x < shape.nx; ++x)
      EXPECT_EQ(flippedF.pixel(shape.nx - 1 - x, y), f.pixel(x, y)) << x << ", " << y;
}

TEST(LaplaceEquation, OfAMaskOfAnotherSizeOrNullChangesNothing) {
  Random random(70);
  const auto before = randomImage<float>(random, {8, 7});
  for (const Shape& shape : {Shape{7, 8}, Shape{8, 6}, Shape{9, 7}, Shape{0, 1}, Shape{8, 7, 0}}) {
    auto f = before.duplicate();
    auto mask = blank<unsigned char>(shape);
    std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(255));
    scalespace::laplaceEquation(f, mask);
    EXPECT_TRUE(sameImage(f, before));
  }
  image<float> null(0, 1, 1, 1, 1);
  scalespace::laplaceEquation(null, blank<unsigned char>({3, 3}));
  EXPECT_TRUE(null.isNull());
}

template <class T>
class Reduce : public testing::Test {};
TYPED_TEST_SUITE(Reduce, PixelTypes);

template <class T>
class ReduceMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(ReduceMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(ReduceMatchesReferenceAtEveryWidth, ForRandomFactors) {
  Random random(71);
  forEveryWidth([&](int nx) {
    const auto img = randomImage<TypeParam>(random, shapeOfWidth(random, nx));
    const float sigma = randomSigma(random, 0.4F, 2.0F);
    const float factor = randomSigma(random, 0.01F, 1.6F);
    const std::unique_ptr<Image> result(scalespace::reduce(img, factor, sigma));
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(sameImage(*result, reference::reduce(img, factor, sigma)));
  });
}

TYPED_TEST(Reduce, RoundsSizesDownAndKeepsOnePixel) {
  const struct {
    float factor;
    int width, depth;
  } rows[] = {{0.5F, 2, 1}, {0.1F, 1, 1}, {0.39F, 1, 1}, {0.4F, 2, 1},
              {1.0F, 5, 1}, {1.9F, 9, 1}, {2.0F, 10, 2}};
  for (const auto& row : rows) {
    const std::unique_ptr<Image> result(
        scalespace::reduce(blank<TypeParam>({5, 5}), row.factor, 1.0F));
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(sameImage(*result, blank<TypeParam>({row.width, row.width, row.depth})))
        << row.factor;
  }
}

TEST(ReduceBy, NothingOrLessGivesNone) {
  const auto img = blank<unsigned char>({5, 5});
  for (const float factor : {0.0F, -0.0F, -1.0F, -std::numeric_limits<float>::infinity()})
    EXPECT_EQ(scalespace::reduce(img, factor, 1.0F), nullptr) << factor;
}

TEST(ReduceBy, ANullImageGivesNone) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}})
    EXPECT_EQ(scalespace::reduce(blank<short>(shape), 0.5F, 1.0F), nullptr);
}

TEST(ReduceBy, ChannelsAndTimePointsBecomePlanes) {
  const std::unique_ptr<Image> result(
      scalespace::reduce(blank<float>({4, 4, 2, 3, 2}), 0.5F, 1.0F));
  EXPECT_TRUE(sameImage(*result, blank<float>({2, 2, 6})));
}

TEST(ReduceDeathTest, AFactorWhoseSizesDoNotFitEndsAsMemoryThatHasRunOut) {
  const auto img = blank<unsigned char>({5, 5});
  for (const float factor : {1e9F, std::numeric_limits<float>::infinity()})
    EXPECT_EXIT(scalespace::reduce(img, factor, 1.0F), testing::ExitedWithCode(1),
                "^Error: out of memory\n$")
        << factor;
}

TEST(LaplaceEquationDeathTest, NoMemoryForTheScratchCopyEndsTheProcess) {
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer answers failed allocations";
  auto f = blank<float>({4000, 4000});
  const auto mask = blank<unsigned char>({4000, 4000});
  const auto solve = [&] {
    // Less than the process has already: nothing more of this size can be had.
    const rlimit limit{rlim_t{1} << 20, rlim_t{1} << 20};
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(7);
    scalespace::laplaceEquation(f, mask);
  };
  EXPECT_EXIT(solve(), testing::ExitedWithCode(1), "^Out of memory\n$");
}

}  // namespace
}  // namespace orva::test
