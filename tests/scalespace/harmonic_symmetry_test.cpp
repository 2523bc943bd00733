// Flattened peaks, relaxation and reduction of turned and shifted images.
//
// Exceptions: all but reduce() read the first frame alone, so that the others may come in any
// order, but not the first; an image is reduced to the shifted pixels only when it is shifted by a
// whole number of the new ones, and off the border, where smoothing follows the border.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "orva/scalespace/scalespace.h"
#include "tests/scalespace/turned.h"
#include "tests/support/images.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

using Floats = image<float>;

Floats relaxed(const Floats& img, const Mask& mask) {
  Floats result = img.duplicate();
  scalespace::laplaceEquation(result, mask);
  return result;
}

Floats reduced(const Floats& img, float factor) {
  const std::unique_ptr<Image> result(scalespace::reduce(img, factor, 1.0F));
  return dynamic_cast<const Floats&>(*result);
}

// The masks within are those of noise, which follow a turn (see TurnedImages.HaveTurnedFeatures).
// What they relax is off by 3 roundings of a mean at each of 50 steps.
TEST(TurnedImages, AreFlattenedToTheTurnedImage) {
  Random random(421);
  constexpr int kIterations = 3;
  const float error = 2.0F * kIterations * 50.0F * 3.0F * std::ldexp(1e3F, -24);
  const Floats img = randomImage<float>(random, {38, 31});
  for (const bool bright : {true, false}) {
    const Floats flat = scalespace::harmonicCut(img, 1.0F, bright, kIterations);
    ASSERT_FALSE(near(flat, img, 100.0F * error));
    for (const auto turn : planeSymmetries<float>()) {
      EXPECT_TRUE(
          near(scalespace::harmonicCut(turn(img), 1.0F, bright, kIterations), turn(flat), error));
    }
  }
  const Mask blobs = scalespace::hcut(img, 1.0F, 1.5F);
  ASSERT_EQ(blobs.fmax(), 255.0F);
  ASSERT_EQ(blobs.fmin(), 0.0F);
  for (std::size_t t = 0; t < planeSymmetries<float>().size(); ++t) {
    EXPECT_TRUE(sameImage(scalespace::hcut(planeSymmetries<float>()[t](img), 1.0F, 1.5F),
                          planeSymmetries<unsigned char>()[t](blobs)));
  }
}

// Bright where dark was: every sum and every comparison is that of the numbers' opposites.
TEST(NegativeImages, AreFlattenedToTheExactNegative) {
  Random random(422);
  const Floats img = randomImage<float>(random, {33, 26});
  const Floats negative = scaled(img, -1.0F);
  EXPECT_TRUE(sameValues(scalespace::harmonicCut(negative, 1.0F, false, 3),
                         scaled(scalespace::harmonicCut(img, 1.0F, true, 3), -1.0F)));
}

// On a background of 0, which stays 0 when it is smoothed at the border. Each flattening reaches no
// farther than the kernel and its differences, and there are ten of them before a last kernel.
TEST(FramedImages, AreFlattenedAlikeWhereverTheyLie) {
  Random random(423);
  const Floats img = randomImage<float>(random, {14, 13});
  constexpr int kMargin = 12 * (kRadius + 1);
  constexpr int kSize = 2 * kMargin + 26;
  const int low = kMargin;
  const Floats a = framed(img, kSize, kSize, low, low, 0.0F);
  const Floats b = framed(img, kSize, kSize, low + 11, low + 7, 0.0F);
  const int side = 2 * kMargin + 13;  // all that is in reach
  for (const bool bright : {true, false}) {
    EXPECT_TRUE(sameImage(unframed(scalespace::harmonicCut(b, 1.0F, bright, 3), side, side, 11, 7),
                          unframed(scalespace::harmonicCut(a, 1.0F, bright, 3), side, side, 0, 0)));
  }
  EXPECT_TRUE(sameImage(unframed(scalespace::hcut(b, 1.0F, 1.0F), side, side, 11, 7),
                        unframed(scalespace::hcut(a, 1.0F, 1.0F), side, side, 0, 0)));
}

TEST(FramedImages, RelaxAlikeWhereverTheyLie) {
  Random random(424);
  const Floats img = randomImage<float>(random, {14, 13});
  const Mask mask = randomMask(random, {14, 13}, 0.7);
  const auto at = [&](int dx, int dy) {
    return unframed(
        relaxed(framed(img, 30, 31, dx, dy, 7.0F), framed<unsigned char>(mask, 30, 31, dx, dy, 0)),
        14, 13, dx, dy);
  };
  const Floats here = at(1, 1);
  ASSERT_FALSE(sameImage(here, img));
  EXPECT_TRUE(sameImage(at(15, 17), here));
  EXPECT_TRUE(sameImage(at(4, 9), here));
}

// Every second pixel, every third: an image shifted by so many gives the result shifted by one.
TEST(FramedImages, AreReducedToTheShiftedPixels) {
  Random random(425);
  const Floats img = randomImage<float>(random, {18, 12, 2});
  for (const int step : {2, 3}) {
    // A size of whole steps, and a factor that is rounded to no less than their number.
    const auto at = [&](int dx, int dy) {
      const float factor = 1.0F / static_cast<float>(step);
      return unframed(reduced(framed(img, 48, 42, step * dx, step * dy, 5.0F), factor), 18 / step,
                      12 / step, dx, dy);
    };
    const Floats here = at(3, 3);
    ASSERT_EQ(here.nframes(), 1);
    EXPECT_TRUE(sameImage(at(5, 4), here));
    EXPECT_TRUE(sameImage(at(4, 6), here));
  }
}

TEST(ReorderedFrames, BehindTheFirstDoNotChangeAFlattenedOne) {
  Random random(426);
  const Floats img = randomImage<float>(random, {16, 15, 4});
  const Floats some = reordered(img, {0, 3, 1, 2});
  const Mask mask = randomMask(random, {16, 15}, 0.7);
  EXPECT_TRUE(sameImage(scalespace::harmonicCut(some, 1.0F, true, 2),
                        scalespace::harmonicCut(img, 1.0F, true, 2)));
  EXPECT_TRUE(sameImage(scalespace::hcut(some, 1.0F, 1.0F), scalespace::hcut(img, 1.0F, 1.0F)));
  EXPECT_TRUE(sameImage(relaxed(some, mask), reordered(relaxed(img, mask), {0, 3, 1, 2})));
}

}  // namespace
}  // namespace orva::test
