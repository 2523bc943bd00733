#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/reference/bip.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

using Picture = std::vector<std::string>;

// The result of an in-place operation.
template <class T>
image<T> after(void (*operation)(image<T>&), const image<T>& img) {
  image<T> result = img.duplicate();
  operation(result);
  return result;
}

Mask eroded(const Mask& mask) { return after<unsigned char>(bip::erode, mask); }
image<short> eroded(const image<short>& labels) { return after<short>(bip::erode, labels); }
Mask dilated(const Mask& mask) { return after<unsigned char>(bip::dilate, mask); }
Mask filled(const Mask& mask) { return after<unsigned char>(bip::removeInternalStructures, mask); }

// Mostly 0 and 255, some values between.
Mask randomMix(Random& random, const Shape& shape) {
  Mask mask = randomMask(random, shape, 0.1 * randomInt(random, 3, 9));
  for (int i = 0; i < mask.npix(); ++i) {
    if (randomInt(random, 0, 19) == 0) {
      mask.pixels()[i] = static_cast<unsigned char>(randomInt(random, 1, 254));
    }
  }
  return mask;
}

TEST(Erode, RemovesOneLayer) {
  EXPECT_TRUE(sameImage(eroded(maskOf({".....", ".###.", ".###.", ".###.", "....."})),
                        maskOf({".....", ".....", "..#..", ".....", "....."})));
}

TEST(Erode, RemovesObjectPixelsOfTheBorder) {
  EXPECT_TRUE(sameImage(eroded(maskOf({"####", "####", "####", "####"})),
                        maskOf({"....", ".##.", ".##.", "...."})));
}

TEST(Erode, TakesEveryValueBelow255AsOutsideAndKeepsIt) {
  EXPECT_TRUE(sameImage(eroded(maskOf({"######", "######", "######", "#####9"})),
                        maskOf({"......", ".####.", ".###..", ".....9"})));
}

TEST(Erode, OfLabelsRemovesOneLayerOfEveryRegion) {
  EXPECT_TRUE(sameImage(eroded(labelsOf({".....", ".333.", ".333.", ".333.", "....."})),
                        labelsOf({".....", ".....", "..3..", ".....", "....."})));
}

TEST(Erode, OfLabelsRemovesTheCommonBorderOfTouchingRegions) {
  EXPECT_TRUE(sameImage(eroded(labelsOf({"00001111", "00001111", "00001111"})),
                        labelsOf({"........", ".00..11.", "........"})));
}

TEST(Erode, OfLabelsKeepsOtherNegativeValues) {
  const auto labels = imageOf<short>({3, 3}, {-2, -2, -2, -3, 4, -2, -2, -2, -9});
  const auto expected = imageOf<short>({3, 3}, {-2, -2, -2, -3, -1, -2, -2, -2, -9});
  EXPECT_TRUE(sameImage(eroded(labels), expected));
}

TEST(Erode, ClearingPlaneZeroOfAStackAloneIsIntended) {
  for (const Shape& shape : {Shape{5, 5, 2}, Shape{5, 5, 1, 2}, Shape{5, 5, 1, 1, 3}}) {
    Mask mask = blank<unsigned char>(shape);
    std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(255));
    Mask expected = mask.duplicate();
    std::fill_n(expected.pixels(), 25, static_cast<unsigned char>(0));
    EXPECT_TRUE(sameImage(eroded(mask), expected));
    image<short> labels = blank<short>(shape);
    image<short> expectedLabels = labels.duplicate();
    std::fill_n(expectedLabels.pixels(), 25, short{-1});
    EXPECT_TRUE(sameImage(eroded(labels), expectedLabels));
  }
}

TEST(Dilate, GrowsByOnePixel) {
  EXPECT_TRUE(sameImage(dilated(maskOf({".....", ".....", "..#..", ".....", "....."})),
                        maskOf({".....", ".###.", ".###.", ".###.", "....."})));
}

TEST(Dilate, DoesNotGrowBorderPixelsWhichIsIntended) {
  for (const Picture& rows :
       {Picture{"..#..", ".....", "....."}, Picture{".....", "#....", "....."},
        Picture{"....#", ".....", "..#.."}, Picture{"##"}, Picture{"#."}}) {
    EXPECT_TRUE(sameImage(dilated(maskOf(rows)), maskOf(rows)));
  }
}

TEST(Dilate, LeavesValuesBetweenAlone) {
  EXPECT_TRUE(sameImage(dilated(maskOf({"1..9", ".#4.", "5...", "..7."})),
                        maskOf({"1##9", "##4.", "5##.", "..7."})));
}

TEST(Dilate, OfAStackChangesNothingWhichIsIntended) {
  for (const Shape& shape : {Shape{5, 5, 2}, Shape{5, 5, 1, 2}, Shape{5, 5, 1, 1, 3}}) {
    Mask mask = blank<unsigned char>(shape);
    mask.setPixel(2, 2, 255);
    EXPECT_TRUE(sameImage(dilated(mask), mask));
  }
}

TEST(Morphology, LeavesNullImages) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}, Shape{7, 0}}) {
    const Mask mask = blank<unsigned char>(shape);
    EXPECT_TRUE(sameImage(eroded(mask), mask));
    EXPECT_TRUE(sameImage(dilated(mask), mask));
    EXPECT_TRUE(sameImage(filled(mask), mask));
    const auto labels = blank<short>(shape);
    EXPECT_TRUE(sameImage(eroded(labels), labels));
  }
}

// One frame, of a depth and a channel below zero that multiply to one; all of it is border.
TEST(Morphology, OfNegativeSizesWithAPositiveProductHasOnlyBorder) {
  Mask mask(2, 3, -1, -1, 1);
  ASSERT_EQ(mask.npix(), 6);
  std::fill_n(mask.pixels(), 6, static_cast<unsigned char>(255));
  mask.setPixel(3, 0.0F);
  bip::dilate(mask);
  EXPECT_EQ(pixelsOf(mask), (std::vector<unsigned char>{255, 255, 255, 0, 255, 255}));
  bip::erode(mask);
  EXPECT_EQ(pixelsOf(mask), std::vector<unsigned char>(6, 0));
}

TEST(RemoveInternalStructures, FillsTheHoleOfARing) {
  EXPECT_TRUE(sameImage(filled(maskOf({".....", ".###.", ".#.#.", ".###.", "....."})),
                        maskOf({".....", ".###.", ".###.", ".###.", "....."})));
}

TEST(RemoveInternalStructures, KeepsAHoleThatOnlyADiagonalGapTouchesClosed) {
  EXPECT_TRUE(sameImage(filled(maskOf({".....", ".##..", ".#.#.", ".###.", "....."})),
                        maskOf({".....", ".##..", ".###.", ".###.", "....."})));
}

TEST(RemoveInternalStructures, LeavesABayOpen) {
  const Mask mask = maskOf({".....", ".#.#.", ".#.#.", ".###.", "....."});
  EXPECT_TRUE(sameImage(filled(mask), mask));
}

TEST(RemoveInternalStructures, SetsEveryObjectPixelTo255) {
  EXPECT_TRUE(sameImage(filled(maskOf({"123.", "4.5.", "678.", "...9"})),
                        maskOf({"###.", "###.", "###.", "...#"})));
}

TEST(RemoveInternalStructures, OfAnImageAllObjectKeepsIt) {
  EXPECT_TRUE(sameImage(filled(maskOf({"##", "#5"})), maskOf({"##", "##"})));
  EXPECT_TRUE(sameImage(filled(maskOf({"#"})), maskOf({"#"})));
}

// The pixel in the middle is background within its plane's ring, but open along z.
TEST(RemoveInternalStructures, OfAVolumeFillsOnlyWhatIsClosedAlongZToo) {
  Mask volume = blank<unsigned char>({3, 3, 3});
  std::fill_n(volume.pixels(), volume.npix(), static_cast<unsigned char>(255));
  volume.setPixel(1, 1, 1, 0.0F);
  Mask full = volume.duplicate();
  full.setPixel(1, 1, 1, 255.0F);
  EXPECT_TRUE(sameImage(filled(volume), full));
  volume.setPixel(1, 1, 2, 0.0F);
  EXPECT_TRUE(sameImage(filled(volume), volume));
}

// More holes than labels: a grid of single background pixels.
TEST(RemoveInternalStructures, FillsMoreHolesThanThereAreLabels) {
  Mask grid = blank<unsigned char>({401, 401});
  for (int i = 0; i < grid.npix(); ++i) {
    grid.pixels()[i] = i % 401 % 2 == 1 && i / 401 % 2 == 1 ? 0 : 255;
  }
  testing::internal::CaptureStderr();
  const Mask result = filled(grid);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(static_cast<int>(result.min()), 255);
}

void expectMatchesReference(const Mask& mask, const image<short>& labels) {
  EXPECT_TRUE(sameImage(eroded(mask), after<unsigned char>(reference::erode, mask)));
  EXPECT_TRUE(sameImage(dilated(mask), after<unsigned char>(reference::dilate, mask)));
  EXPECT_TRUE(
      sameImage(filled(mask), after<unsigned char>(reference::removeInternalStructures, mask)));
  EXPECT_TRUE(sameImage(eroded(labels), after<short>(reference::erode, labels)));
}

TEST(MorphologyMatchesReferenceAtEveryWidth, ForRandomMasks) {
  Random random(1);
  forEveryWidth([&](int nx) {
    const Shape shape{nx, randomInt(random, 1, 12)};
    expectMatchesReference(randomMix(random, shape), randomLabels(random, shape, 2));
  });
}

TEST(MorphologyMatchesReference, ForOddShapes) {
  Random random(2);
  for (const Shape& shape : oddShapes()) {
    for (int round = 0; round < 10; ++round) {
      expectMatchesReference(randomMix(random, shape), randomLabels(random, shape, 1));
    }
  }
}

TEST(RemoveInternalStructures, DoneTwiceIsDoneOnce) {
  Random random(4);
  for (int round = 0; round < 20; ++round) {
    const Mask once = filled(randomMask(random, {25, 19, 1 + round % 2 * 3}, 0.6));
    EXPECT_TRUE(sameImage(filled(once), once));
  }
}

}  // namespace
}  // namespace orva::test
