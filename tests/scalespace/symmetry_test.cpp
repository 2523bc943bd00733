// Filters have no preferred direction: a turned image gives the turned result, with the sign that
// an odd order takes along a turned axis.
//
// A sum that is taken the other way round differs in its last bits. So the comparison is exact for
// images of a few bright pixels, which have one term to each sum, and otherwise allows the error
// of the sums: of m products each at most a share of m + 1 times 2^-24. Masks may differ where that
// error decides. Exceptions: frames are filtered along, so they may be passed from back to front
// but in no other order; near its border smoothing depends on where the border is; a reduced image
// takes lower neighbours, so it can be transposed but not flipped.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "orva/scalespace/scalespace.h"
#include "tests/scalespace/turned.h"
#include "tests/support/images.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

using Floats = image<float>;
using Filter = std::function<Floats(const Floats&)>;

// What has the same definition for all axes.
std::vector<Filter> evenFilters() {
  return {[](const Floats& img) { return scalespace::smooth(img, 1.0F, 1.0F); },
          [](const Floats& img) { return scalespace::gaussian(img, 1.0F, 0, 0, 0); },
          [](const Floats& img) { return scalespace::gaussian(img, 1.0F, 2, 2, 0); },
          [](const Floats& img) { return scalespace::gradient(img, 1.0F, 1.0F); },
          [](const Floats& img) { return scalespace::laplacian(img, 1.0F); }};
}

TEST(BrightPixels, HaveExactlyTurnedResults) {
  for (const bool stack : {false, true}) {
    const Floats img = brightPixels(stack);
    for (const Filter& filter : evenFilters()) {
      const Floats result = filter(img);
      for (const auto turn : volumeSymmetries<float>()) {
        EXPECT_TRUE(sameValues(filter(turn(img)), turn(result)));
      }
    }
  }
}

TEST(BrightPixels, ChangeTheSignOfOddOrdersWithTheAxis) {
  const auto sign = [](int order) { return order % 2 == 0 ? 1.0F : -1.0F; };
  const Floats img = brightPixels(true);
  for (int ox = 0; ox <= 3; ++ox) {
    for (int oy = 0; oy <= 3; ++oy) {
      const int oz = (ox + oy) % 4;
      const Floats result = scalespace::gaussian(img, 1.0F, ox, oy, oz);
      EXPECT_TRUE(sameValues(scalespace::gaussian(flipped(img), 1.0F, ox, oy, oz),
                             scaled(flipped(result), sign(ox))));
      EXPECT_TRUE(sameValues(scalespace::gaussian(upsideDown(img), 1.0F, ox, oy, oz),
                             scaled(upsideDown(result), sign(oy))));
      EXPECT_TRUE(sameValues(scalespace::gaussian(backToFront(img), 1.0F, ox, oy, oz),
                             scaled(backToFront(result), sign(oz))));
      EXPECT_TRUE(
          sameValues(scalespace::gaussian(transposed(img), 1.0F, oy, ox, oz), transposed(result)));
    }
  }
}

TEST(BrightPixels, HaveExactlyTurnedFeaturesByLaplacian) {
  for (const bool stack : {false, true}) {
    const Floats img = brightPixels(stack);
    for (const auto type : {LAPLACIAN_NEGATIVE, LAPLACIAN_POSITIVE}) {
      const auto mask = scalespace::features(img, 1.0F, type, 1.0F);
      ASSERT_EQ(mask.fmax(), 255.0F);
      for (std::size_t t = 0; t < 4; ++t) {
        EXPECT_TRUE(
            sameImage(scalespace::features(volumeSymmetries<float>()[t](img), 1.0F, type, 1.0F),
                      volumeSymmetries<unsigned char>()[t](mask)));
      }
    }
  }
}

TEST(BrightPixels, AreReducedToTheTransposedPixels) {
  const Floats img = brightPixels(false);
  for (const float factor : {0.5F, 0.3F, 1.7F}) {
    const std::unique_ptr<Image> a(scalespace::reduce(img, factor, 1.0F));
    const std::unique_ptr<Image> b(scalespace::reduce(transposed(img), factor, 1.0F));
    EXPECT_TRUE(
        sameValues(dynamic_cast<const Floats&>(*b), transposed(dynamic_cast<const Floats&>(*a))));
  }
}

TEST(TurnedImages, HaveTurnedResultsUpToTheErrorOfTheirSums) {
  Random random(401);
  for (const Shape& shape : {Shape{33, 27}, Shape{3, 40}, Shape{50, 2}, Shape{14, 11, 9}}) {
    const bool stack = shape.nz > 1;
    const Floats img = randomImage<float>(random, shape);
    // The sum of three derivatives, or the root of their squares, has no larger error than three.
    const float error = 3.0F * errorOf({2, 2, 2}, stack, 1000.0F);
    for (const Filter& filter : evenFilters()) {
      const Floats result = filter(img);
      ASSERT_GT(result.max(), 100.0F * error);
      for (const auto turn : volumeSymmetries<float>()) {
        EXPECT_TRUE(near(filter(turn(img)), turn(result), error));
      }
    }
  }
}

TEST(TurnedImages, ChangeTheSignOfOddOrdersUpToTheErrorOfTheirSums) {
  Random random(402);
  const Floats img = randomImage<float>(random, {21, 18, 7});
  const float error = errorOf({1, 3, 1}, true, 1000.0F);
  const Floats result = scalespace::gaussian(img, 1.0F, 1, 3, 1);
  ASSERT_GT(result.max(), 100.0F * error);
  for (const auto turn : {flipped<float>, upsideDown<float>, backToFront<float>}) {
    EXPECT_TRUE(
        near(scalespace::gaussian(turn(img), 1.0F, 1, 3, 1), scaled(turn(result), -1.0F), error));
  }
  EXPECT_TRUE(
      near(scalespace::gaussian(transposed(img), 1.0F, 3, 1, 1), transposed(result), error));
}

// Of noise a pixel decides within the error of the sums, a share of some 2^-18, about once in 2^18
// pixels: none is expected among these few thousand.
TEST(TurnedImages, HaveTurnedFeatures) {
  Random random(403);
  for (const Shape& shape : {Shape{70, 60}, Shape{18, 17, 15}}) {
    const Floats img = randomImage<float>(random, shape);
    for (const int type : {1, 2, 4, 8, 16, 32}) {
      const auto feature = static_cast<FeatureType>(type);
      const auto mask = scalespace::features(img, 1.0F, feature, 1.0F);
      ASSERT_EQ(mask.fmax(), 255.0F);
      for (std::size_t t = 0; t < 4; ++t) {
        const auto back = volumeSymmetries<unsigned char>()[t](
            scalespace::features(volumeSymmetries<float>()[t](img), 1.0F, feature, 1.0F));
        EXPECT_TRUE(sameImage(back, mask)) << "type " << type << " turn " << t;
      }
    }
  }
}

// The border of a constant background repeats the background.
TEST(FramedImages, AreFilteredAlikeWhereverTheyLie) {
  Random random(404);
  for (const float background : {0.0F, 77.0F}) {
    const Floats img = randomImage<float>(random, {13, 12, 3});
    const Floats a = framed(img, 40, 38, 13, 11, background);
    for (const auto& [dx, dy] : {std::pair{1, 1}, {26, 25}, {1, 20}}) {
      const Floats b = framed(img, 40, 38, dx, dy, background);
      for (int order = 0; order <= 3; ++order) {
        EXPECT_TRUE(sameImage(
            unframed(scalespace::gaussian(b, 1.0F, order, 3 - order, 0), 13, 12, dx, dy),
            unframed(scalespace::gaussian(a, 1.0F, order, 3 - order, 0), 13, 12, 13, 11)));
      }
      EXPECT_TRUE(sameImage(unframed(scalespace::gradient(b, 1.0F, 1.0F), 13, 12, dx, dy),
                            unframed(scalespace::gradient(a, 1.0F, 1.0F), 13, 12, 13, 11)));
      EXPECT_TRUE(sameImage(
          unframed(scalespace::features(b, 1.0F, LAPLACIAN_NEGATIVE, 1.0F), 13, 12, dx, dy),
          unframed(scalespace::features(a, 1.0F, LAPLACIAN_NEGATIVE, 1.0F), 13, 12, 13, 11)));
    }
  }
}

TEST(FramedImages, AreSmoothedAlikeFarFromTheBorder) {
  Random random(405);
  const Floats img = randomImage<float>(random, {13, 12, 2});
  const int minOffset = kRadius + 1;
  const Floats a = framed(img, 40, 38, 13, 11, 5.0F);
  for (const auto& [dx, dy] : {std::pair{minOffset, minOffset},
                               {40 - 13 - minOffset, 38 - 12 - minOffset},
                               {minOffset, 12}}) {
    const Floats b = framed(img, 40, 38, dx, dy, 5.0F);
    EXPECT_TRUE(sameImage(unframed(scalespace::smooth(b, 1.0F, 1.0F), 13, 12, dx, dy),
                          unframed(scalespace::smooth(a, 1.0F, 1.0F), 13, 12, 13, 11)));
    for (const int type : {4, 8, 16, 32}) {
      const auto feature = static_cast<FeatureType>(type);
      EXPECT_TRUE(sameImage(unframed(scalespace::features(b, 1.0F, feature, 1.0F), 13, 12, dx, dy),
                            unframed(scalespace::features(a, 1.0F, feature, 1.0F), 13, 12, 13, 11)))
          << type;
    }
  }
}

// A step of the equation is off by at most 3 roundings of a mean, which further steps do not
// enlarge.
TEST(TurnedImages, RelaxToTheTurnedImageUpToTheErrorOfTheirSums) {
  Random random(406);
  const Floats img = randomImage<float>(random, {24, 19});
  const auto mask = randomMask(random, {24, 19}, 0.7);
  Floats relaxed = img.duplicate();
  scalespace::laplaceEquation(relaxed, mask);
  for (std::size_t t = 0; t < 3; ++t) {
    Floats turned = planeSymmetries<float>()[t](img);
    scalespace::laplaceEquation(turned, planeSymmetries<unsigned char>()[t](mask));
    EXPECT_TRUE(near(turned, planeSymmetries<float>()[t](relaxed),
                     2.0F * 50.0F * 3.0F * std::ldexp(1e3F, -24)));
  }
}

TEST(RearrangedPixels, HaveTheRearrangedNormsAndAngles) {
  Random random(407);
  const Floats a = randomImage<float>(random, {9, 8, 6});
  const Floats b = randomImage<float>(random, {9, 8, 6});
  const auto order = shuffledFrames(random, a);
  const auto some = [&order](const Floats& img) { return flipped(reordered(img, order)); };
  EXPECT_TRUE(sameImage(scalespace::angle(some(a), some(b)),
                        flipped(reordered(scalespace::angle(a, b), order))));
  EXPECT_TRUE(sameImage(scalespace::gradient(some(a), some(b)),
                        flipped(reordered(scalespace::gradient(a, b), order))));
  EXPECT_TRUE(sameImage(scalespace::direction(some(a), some(b)),
                        flipped(reordered(scalespace::direction(a, b), order))));
  EXPECT_TRUE(sameImage(scalespace::angleInRadian(some(a), some(b)),
                        some(scalespace::angleInRadian(a, b))));
}

}  // namespace
}  // namespace orva::test
