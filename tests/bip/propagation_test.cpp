#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/reference/distance.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

const float kRoot2 = std::sqrt(2.0F);
const float kRoot3 = std::sqrt(3.0F);

image<short> propagated(const image<short>& labels, float maxDistance) {
  image<short> result = labels.duplicate();
  bip::propagate(result, maxDistance);
  return result;
}

// Background of several negative values with a few labelled pixels, their labels with gaps.
image<short> randomSeeds(Random& random, const Shape& shape) {
  const std::vector<short> labels = {0, 1, 5, 77, 32767};
  const std::vector<short> backgrounds = {-1, -1, -2, -300, -32768};
  const int odds = randomInt(random, 2, 60);
  image<short> img = blank<short>(shape);
  for (int i = 0; i < img.npix(); ++i) {
    const bool isSeed = randomInt(random, 0, odds) == 0;
    img.pixels()[i] =
        (isSeed ? labels : backgrounds)[static_cast<std::size_t>(randomInt(random, 0, 4))];
  }
  return img;
}

TEST(Propagate, WithoutLabelsGivesMinusOne) {
  for (const Shape& shape : {Shape{1, 1}, Shape{6, 5}, Shape{6, 5, 4}}) {
    image<short> labels = blank<short>(shape);
    std::fill_n(labels.pixels(), labels.npix(), short{-5});
    image<short> expected = blank<short>(shape);
    std::fill_n(expected.pixels(), expected.npix(), short{-1});
    EXPECT_TRUE(sameImage(propagated(labels, 100.0F), expected));
  }
}

TEST(Propagate, SplitsTheBackgroundByTheNearestRegion) {
  EXPECT_TRUE(sameImage(propagated(labelsOf({"..........",  //
                                             ".3.....8..",  //
                                             ".........."}),
                                   100.0F),
                        labelsOf({"..........",  //
                                  ".33338888.",  //
                                  ".........."})));
}

// The middle pixel is as far from both. Backward steps list the right one before the left; the left
// one comes first, in the forward pass, and an equal distance does not replace it.
TEST(Propagate, OfEqualDistancesKeepsTheEarlierPass) {
  EXPECT_TRUE(sameImage(propagated(labelsOf({".......", ".4...2.", "......."}), 9.0F),
                        labelsOf({".......", ".44422.", "......."})));
  EXPECT_TRUE(sameImage(propagated(labelsOf({".....", "..4..", ".....", "..2..", "....."}), 9.0F),
                        labelsOf({".....", ".444.", ".444.", ".222.", "....."})));
}

TEST(Propagate, OfEqualStepsTakesTheFirstInTheOrderOfTheSteps) {
  // All four diagonal neighbours are as far.
  EXPECT_TRUE(sameImage(propagated(labelsOf({"1.2", "...", "3.4"}), 9.0F),
                        labelsOf({"1.2", ".1.", "3.4"})));
  EXPECT_TRUE(sameImage(propagated(labelsOf({"..2", "...", "3.4"}), 9.0F),
                        labelsOf({"..2", ".2.", "3.4"})));
  // The left neighbour and the upper one: y counts before x.
  EXPECT_TRUE(sameImage(propagated(labelsOf({".1.", "2..", "..."}), 9.0F),
                        labelsOf({".1.", "21.", "..."})));
  // The right neighbour and the lower one.
  EXPECT_TRUE(sameImage(propagated(labelsOf({"...", "..2", ".3."}), 9.0F),
                        labelsOf({"...", ".22", ".3."})));
  // In a volume z counts before y and x.
  image<short> volume = blank<short>({3, 3, 3});
  std::fill_n(volume.pixels(), volume.npix(), short{-1});
  volume.setPixel(0, 1, 1, 7.0F);
  volume.setPixel(1, 0, 1, 8.0F);
  volume.setPixel(1, 1, 0, 9.0F);
  EXPECT_EQ(propagated(volume, 9.0F).pixel(1, 1, 1), 9.0F);
  volume.setPixel(1, 1, 0, -1.0F);
  EXPECT_EQ(propagated(volume, 9.0F).pixel(1, 1, 1), 8.0F);
}

TEST(Propagate, LetsTheBackwardPassOverrideAFartherLabel) {
  EXPECT_TRUE(sameImage(propagated(labelsOf({"1..", "..2", "..."}), 9.0F),
                        labelsOf({"1..", ".22", "..."})));
}

TEST(Propagate, TakesStepsOfSumZeroInBothPassesWhichIsIntended) {
  // Of two labels at one distance the forward pass brings the left one, by a step from below;
  // without that step the backward pass would bring the right one.
  const auto halfWay = labelsOf({".........", ".........", ".........", "..1...2..", "........."});
  EXPECT_EQ(propagated(halfWay, 9.0F).pixel(4, 2), 1.0F);
  // A long way up to the right is one of the backward pass.
  const auto corner =
      labelsOf({".......", ".......", ".......", ".......", ".......", ".1.....", "......."});
  EXPECT_EQ(propagated(corner, 6.0F).pixel(5, 1), 1.0F);
}

TEST(Propagate, DoesNotReachTheBorderWhichIsIntended) {
  EXPECT_TRUE(sameImage(propagated(labelsOf({"6....", ".....", ".....", "....."}), 9000.0F),
                        labelsOf({"6....", ".666.", ".666.", "....."})));
  image<short> volume = blank<short>({4, 4, 4});
  std::fill_n(volume.pixels(), volume.npix(), short{-1});
  volume.setPixel(1, 1, 1, 3.0F);
  image<short> expected = volume.duplicate();
  for (const int z : {1, 2}) {
    for (const int y : {1, 2}) {
      for (const int x : {1, 2}) expected.setPixel(x, y, z, 3.0F);
    }
  }
  EXPECT_TRUE(sameImage(propagated(volume, 9000.0F), expected));
}

TEST(Propagate, OfOneOrTwoPlanesOrRowsChangesNoBackgroundToALabel) {
  EXPECT_TRUE(sameImage(propagated(labelsOf({"..5.."}), 9.0F), labelsOf({"..5.."})));
  EXPECT_TRUE(
      sameImage(propagated(labelsOf({"..5..", "....."}), 9.0F), labelsOf({"..5..", "....."})));
  image<short> volume = blank<short>({5, 5, 2});
  std::fill_n(volume.pixels(), volume.npix(), short{-1});
  volume.setPixel(2, 2, 0, 3.0F);
  EXPECT_TRUE(sameImage(propagated(volume, 9.0F), volume));
}

TEST(Propagate, KeepsWhatIsNearerThanTheDistanceAndNotWhatIsAtIt) {
  const image<short> labels = labelsOf({".......",  //
                                        ".......",  //
                                        ".......",  //
                                        "...2...",  //
                                        ".......",  //
                                        ".......",  //
                                        "......."});
  const image<short> axial = labelsOf({".......",  //
                                       ".......",  //
                                       "...2...",  //
                                       "..222..",  //
                                       "...2...",  //
                                       ".......",  //
                                       "......."});
  const image<short> ring = labelsOf({".......",  //
                                      ".......",  //
                                      "..222..",  //
                                      "..222..",  //
                                      "..222..",  //
                                      ".......",  //
                                      "......."});
  EXPECT_TRUE(sameImage(propagated(labels, 1.0F), labels));
  EXPECT_TRUE(sameImage(propagated(labels, 0.001F), labels));
  EXPECT_TRUE(sameImage(propagated(labels, std::nextafter(1.0F, 2.0F)), axial));
  EXPECT_TRUE(sameImage(propagated(labels, kRoot2), axial));
  EXPECT_TRUE(sameImage(propagated(labels, std::nextafter(kRoot2, 2.0F)), ring));
  EXPECT_TRUE(sameImage(propagated(labels, 1.5F), ring));
  EXPECT_TRUE(sameImage(propagated(labels, 2.0F), ring));
}

TEST(Propagate, OfAVolumeTakesTheDiagonalAtTheRootOfThree) {
  image<short> volume = blank<short>({3, 3, 3});
  std::fill_n(volume.pixels(), volume.npix(), short{-1});
  for (const int corner : {0, 2}) {
    image<short> labels = volume.duplicate();
    labels.setPixel(corner, corner, corner, 3.0F);
    EXPECT_TRUE(sameImage(propagated(labels, kRoot3), labels));
    EXPECT_EQ(propagated(labels, std::nextafter(kRoot3, 2.0F)).pixel(1, 1, 1), 3.0F);
  }
}

TEST(Propagate, ClearingAllForADistanceOf0OrLessIsIntended) {
  const image<short> labels = labelsOf({"0..", ".12", "..."});
  for (const float d : {0.0F, -0.0F, -1.0F, -kInfinity}) {
    EXPECT_TRUE(sameImage(propagated(labels, d), labelsOf({"...", "...", "..."}))) << d;
  }
}

TEST(Propagate, KeepingUnreachedPixelsBeyond10000IsIntended) {
  const auto labels = imageOf<short>({3, 3}, {-2, -3, -4, -5, -6, -7, -8, -9, 1});
  const auto cleared = imageOf<short>({3, 3}, {-1, -1, -1, -1, 1, -1, -1, -1, 1});
  const auto kept = imageOf<short>({3, 3}, {-2, -3, -4, -5, 1, -7, -8, -9, 1});
  EXPECT_TRUE(sameImage(propagated(labels, 9999.0F), cleared));
  EXPECT_TRUE(sameImage(propagated(labels, 10000.0F), cleared));
  for (const float d : {std::nextafter(10000.0F, kInfinity), 10001.0F, kInfinity, kNaN}) {
    EXPECT_TRUE(sameImage(propagated(labels, d), kept)) << d;
  }
}

TEST(Propagate, OfOtherNegativeValuesGivesALabelOrMinusOne) {
  const auto labels = imageOf<short>({4, 3}, {-9, -9, -9, -9, -9, -300, -32768, 4, -9, -9, -9, -9});
  const auto expected = imageOf<short>({4, 3}, {-1, -1, -1, -1, -1, -1, 4, 4, -1, -1, -1, -1});
  EXPECT_TRUE(sameImage(propagated(labels, 1.5F), expected));
}

TEST(Propagate, LeavesLabelledPixels) {
  Random random(1);
  for (int round = 0; round < 20; ++round) {
    const image<short> before = randomSeeds(random, {13, 11, 1 + round % 2 * 4});
    const image<short> after = propagated(before, 50.0F);
    for (int i = 0; i < before.npix(); ++i) {
      if (before.pixels()[i] >= 0) {
        EXPECT_EQ(after.pixels()[i], before.pixels()[i]);
      }
    }
  }
}

TEST(Propagate, StopsWhereDistancesEnd) {
  for (const bool atStart : {true, false}) {
    image<short> labels = blank<short>({10020, 3});
    std::fill_n(labels.pixels(), labels.npix(), short{-4});
    labels.setPixel(atStart ? 1 : 10018, 1, 6.0F);
    for (const float d : {9999.0F, 10000.0F, kInfinity}) {
      image<short> expected = labels.duplicate();
      for (int x = 0; x < 10020; ++x) {
        const int steps = std::abs(x - (atStart ? 1 : 10018));
        const bool reached = x > 0 && x < 10019 && steps < 10000;
        for (int y = 0; y < 3; ++y) {
          const short background = d == kInfinity ? short{-4} : short{-1};
          const bool isLabel = y == 1 && reached && static_cast<float>(steps) < d;
          expected.pixels()[x + 10020 * y] = isLabel ? short{6} : background;
        }
      }
      EXPECT_TRUE(sameImage(propagated(labels, d), expected)) << d;
    }
  }
}

TEST(Propagate, ProcessesTheFirstVolume) {
  Random random(2);
  for (const Shape& shape : {Shape{9, 8, 1, 3}, Shape{9, 8, 1, 1, 2}, Shape{7, 6, 4, 2, 2}}) {
    const image<short> labels = randomSeeds(random, shape);
    image<short> first = blank<short>({shape.nx, shape.ny, shape.nz});
    std::copy_n(labels.pixels(), first.npix(), first.pixels());
    bip::propagate(first, 3.0F);
    image<short> expected = labels.duplicate();
    std::copy_n(first.pixels(), first.npix(), expected.pixels());
    EXPECT_TRUE(sameImage(propagated(labels, 3.0F), expected));
  }
}

TEST(Propagate, LeavesNullImages) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}, Shape{7, 0}}) {
    const auto labels = blank<short>(shape);
    EXPECT_TRUE(sameImage(propagated(labels, 5.0F), labels));
  }
}

// No volume is left of a depth below zero.
TEST(Propagate, OfNegativeSizesWithAPositiveProductChangesNothing) {
  image<short> labels(5, 5, -1, -1, 1);
  ASSERT_EQ(labels.npix(), 25);
  std::fill_n(labels.pixels(), 25, short{-2});
  labels.pixels()[12] = 3;
  const std::vector<short> before = pixelsOf(labels);
  bip::propagate(labels, 5.0F);
  EXPECT_EQ(pixelsOf(labels), before);
}

void expectMatchesReference(const image<short>& labels) {
  const float above = std::nextafter(10000.0F, kInfinity);
  for (const float d : {0.0F, -1.0F, 0.5F, 1.0F, 1.4F, kRoot2, 1.5F, kRoot3, 2.0F, 2.5F, 7.3F,
                        9999.0F, 10000.0F, above, 10001.0F, kInfinity, kNaN}) {
    image<short> expected = labels.duplicate();
    reference::propagate(expected, d);
    EXPECT_TRUE(sameImage(propagated(labels, d), expected)) << d;
  }
}

TEST(PropagationMatchesReferenceAtEveryWidth, ForOddShapes) {
  Random random(3);
  for (const Shape& shape : oddShapesAndWidths()) {
    expectMatchesReference(randomSeeds(random, shape));
  }
}

TEST(PropagationMatchesReferenceAtEveryWidth, ForManyPlanesAndVolumes) {
  Random random(4);
  forEveryWidth([&](int nx) {
    expectMatchesReference(randomSeeds(random, {nx, randomInt(random, 3, 25)}));
  });
  for (int round = 0; round < 60; ++round) {
    expectMatchesReference(randomSeeds(
        random, {randomInt(random, 1, 14), randomInt(random, 1, 14), randomInt(random, 1, 8)}));
  }
}

}  // namespace
}  // namespace orva::test
