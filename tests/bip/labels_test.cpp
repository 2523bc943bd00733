#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/bip.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

TEST(RegionNumber, IsTheLargestLabelPlusOne) {
  EXPECT_EQ(bip::regionNumber(imageOf<short>({4, 1}, {3, -1, 0, 2})), 4);
  EXPECT_EQ(bip::regionNumber(imageOf<short>({1, 2}, {32767, 0})), 32768);
  EXPECT_EQ(bip::regionNumber(imageOf<short>({1, 1, 1, 1, 3}, {-1, -1, 6})), 7);
}

TEST(RegionNumber, IsZeroWithoutLabels) {
  EXPECT_EQ(bip::regionNumber(imageOf<short>({3, 1}, {-1, -1, -1})), 0);
  EXPECT_EQ(bip::regionNumber(imageOf<short>({3, 1}, {-5, -32768, -2})), 0);
  EXPECT_EQ(bip::regionNumber(blank<short>({0, 1})), 0);
}

TEST(RegionNumber, IsTheCountOfALabelling) {
  Random random(4);
  for (int round = 0; round < 20; ++round) {
    const auto mask = randomMask(random, {19, 11}, 0.03 * round);
    int n = 0;
    const image<short> labels = bip::regions(mask, n, 255, 1, NEIGHBORHOOD_4);
    EXPECT_EQ(bip::regionNumber(labels), n);
  }
}

TEST(Relabel, ClosesGaps) {
  auto labels = imageOf<short>({5, 1}, {0, 3, 3, 7, -1});
  bip::relabel(labels);
  EXPECT_EQ(pixelsOf(labels), (std::vector<short>{0, 1, 1, 2, -1}));
}

TEST(Relabel, KeepsTheOrderOfLabelsAndAllNegativeValues) {
  auto labels = imageOf<short>({6, 1}, {9, -2, 32767, 4, -32768, 9});
  bip::relabel(labels);
  EXPECT_EQ(pixelsOf(labels), (std::vector<short>{1, -2, 2, 0, -32768, 1}));
}

TEST(Relabel, LeavesANullImage) {
  auto labels = blank<short>({4, 0});
  bip::relabel(labels);
  EXPECT_TRUE(sameImage(labels, blank<short>({4, 0})));
}

TEST(RelabelMatchesReference, ForRandomLabels) {
  Random random(5);
  for (const Shape& shape :
       {Shape{1, 1}, Shape{30, 1}, Shape{1, 30}, Shape{8, 7, 3}, Shape{5, 4, 1, 2, 2}}) {
    for (const int maxLabel : {0, 5, 40, 32767}) {
      image<short> labels = blank<short>(shape);
      for (int i = 0; i < labels.npix(); ++i) {
        labels.pixels()[i] = static_cast<short>(randomInt(random, -2, maxLabel));
      }
      image<short> expected = labels.duplicate();
      bip::relabel(labels);
      reference::relabel(expected);
      EXPECT_TRUE(sameImage(labels, expected));
    }
  }
}

TEST(IsBinaryImage, NeedsEveryByteToBe0Or255) {
  EXPECT_TRUE(bip::isBinaryImage(imageOf<unsigned char>({2, 2}, {0, 255, 255, 0})));
  EXPECT_FALSE(bip::isBinaryImage(imageOf<unsigned char>({2, 2}, {0, 255, 255, 1})));
  EXPECT_FALSE(bip::isBinaryImage(imageOf<unsigned char>({1, 1}, {254})));
}

TEST(IsBinaryImage, ReadsAllChannelsAndTimePoints) {
  EXPECT_FALSE(bip::isBinaryImage(imageOf<unsigned char>({1, 1, 1, 2, 2}, {0, 255, 0, 7})));
  EXPECT_TRUE(bip::isBinaryImage(imageOf<unsigned char>({1, 1, 1, 2, 2}, {0, 255, 0, 0})));
}

TEST(IsBinaryImage, IsTrueWithoutPixels) {
  EXPECT_TRUE(bip::isBinaryImage(blank<unsigned char>({0, 1})));
  EXPECT_TRUE(bip::isBinaryImage(blank<unsigned char>({5, 5, 0})));
}

// Sizes below zero are kept as zeros but multiply as passed.
TEST(IsBinaryImage, IsTrueForANegativePixelCount) {
  const BareImage img(-2, 3, 1, 1, 1);
  ASSERT_EQ(img.npix(), -6);
  EXPECT_TRUE(bip::isBinaryImage(img));
}

TEST(IsBinaryImage, IsFalseForEveryOtherPixelType) {
  EXPECT_FALSE(bip::isBinaryImage(blank<short>({2, 2})));
  EXPECT_FALSE(bip::isBinaryImage(blank<int>({2, 2})));
  EXPECT_FALSE(bip::isBinaryImage(blank<unsigned int>({2, 2})));
  EXPECT_FALSE(bip::isBinaryImage(blank<float>({2, 2})));
  EXPECT_FALSE(bip::isBinaryImage(blank<Rgb>({2, 2})));
  EXPECT_FALSE(bip::isBinaryImage(blank<short>({0, 1})));
}

TEST(IsBinaryImageMatchesReference, WithAndWithoutAThirdValue) {
  Random random(6);
  for (int round = 0; round < 40; ++round) {
    auto img = randomMask(random, {randomInt(random, 1, 9), 3, 2}, 0.5);
    if (round % 2 == 0) {
      img.pixels()[randomInt(random, 0, img.npix() - 1)] =
          static_cast<unsigned char>(randomInt(random, 0, 255));
    }
    EXPECT_EQ(bip::isBinaryImage(img), reference::isBinaryImage(img));
  }
}

TEST(Reverse, ComplementsEveryByteOfAllFrames) {
  image<unsigned char> img = blank<unsigned char>({8, 4, 2, 2, 2});
  std::iota(img.pixels(), img.pixels() + img.npix(), static_cast<unsigned char>(0));
  bip::reverse(img);
  for (int i = 0; i < img.npix(); ++i) ASSERT_EQ(img.pixels()[i], 255 - i);
}

TEST(Reverse, LeavesANullImage) {
  auto img = blank<unsigned char>({5, 5, 0});
  bip::reverse(img);
  EXPECT_TRUE(sameImage(img, blank<unsigned char>({5, 5, 0})));
}

TEST(ReverseMatchesReferenceAtEveryWidth, AndUndoesItself) {
  Random random(7);
  forEveryWidth([&](int nx) {
    const auto before = randomImage<unsigned char>(random, {nx, randomInt(random, 1, 3)});
    image<unsigned char> img = before.duplicate();
    image<unsigned char> expected = before.duplicate();
    bip::reverse(img);
    reference::reverse(expected);
    EXPECT_TRUE(sameImage(img, expected));
    bip::reverse(img);
    EXPECT_TRUE(sameImage(img, before));
  });
}

}  // namespace
}  // namespace orva::test
