// As many regions as a label can number, one more, and many more, and the operations on such
// labels.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/reference/distance.h"

namespace orva::test {
namespace {

constexpr int kMaxRegions = 32768;
const std::string kWarning =
    "In bip::regions\n   Warning: more than 32768 regions, the rest are ignored\n";

// `count` pixels of 255, `step` apart, in a row, a column or a stack of single pixels.
Mask dots(int count, int step, int axis) {
  const int length = (count - 1) * step + 1;
  Mask mask = blank<unsigned char>(axis == 0   ? Shape{length, 1}
                                   : axis == 1 ? Shape{1, length}
                                               : Shape{1, 1, length});
  for (int i = 0; i < length; i += step) mask.pixels()[i] = 255;
  return mask;
}

// The labels that dots have.
std::vector<short> labelsOfDots(int count, int step) {
  std::vector<short> labels(static_cast<std::size_t>((count - 1) * step + 1), -1);
  for (int k = 0; k < std::min(count, kMaxRegions); ++k) {
    labels[static_cast<std::size_t>(k * step)] = static_cast<short>(k);
  }
  return labels;
}

template <class Work>
std::string errorsOf(const Work& work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

class MaxRegions : public testing::TestWithParam<int> {
 protected:
  static bool isTooMany() { return GetParam() > kMaxRegions; }
  static std::string warning() { return isTooMany() ? kWarning : ""; }
};

INSTANTIATE_TEST_SUITE_P(All, MaxRegions,
                         testing::Values(kMaxRegions - 1, kMaxRegions, kMaxRegions + 1,
                                         kMaxRegions + 2, 100000));

TEST_P(MaxRegions, AreNumberedUpToTheLastThatFitsForAllNeighbours) {
  struct Neighbours {
    int reach;
    NeighborhoodType type;
    int step;  // so that dots do not touch
  };
  for (const Neighbours& by :
       {Neighbours{1, NEIGHBORHOOD_4, 2}, Neighbours{1, NEIGHBORHOOD_8, 2},
        Neighbours{2, NEIGHBORHOOD_4, 3}, Neighbours{2, NEIGHBORHOOD_8, 3},
        Neighbours{0, NEIGHBORHOOD_8, 1}, Neighbours{1, static_cast<NeighborhoodType>(5), 1}}) {
    for (int axis = 0; axis < 3; ++axis) {
      const Mask mask = dots(GetParam(), by.step, axis);
      int n = 0;
      Labels labels(0, 1, 1, 1, 1);
      EXPECT_EQ(errorsOf([&] { labels = bip::regions(mask, n, 255, by.reach, by.type); }),
                warning());
      EXPECT_EQ(n, std::min(GetParam(), kMaxRegions));
      EXPECT_EQ(pixelsOf(labels), labelsOfDots(GetParam(), by.step)) << by.step << ' ' << axis;
    }
  }
}

// Every pixel of a partition is an area: the dots and the gaps between them.
TEST_P(MaxRegions, OfPartitionsAreNumberedUpToTheLastThatFits) {
  Mask bytes = blank<unsigned char>({GetParam(), 1});
  Labels shorts = blank<short>({1, GetParam()});
  for (int i = 0; i < GetParam(); ++i) {
    bytes.pixels()[i] = static_cast<unsigned char>(i % 2);
    shorts.pixels()[i] = static_cast<short>(i % 2 == 0 ? -7 : 300);
  }
  for (const auto type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
    for (const int reach : {0, 1}) {
      int n = 0;
      Labels labels(0, 1, 1, 1, 1);
      EXPECT_EQ(errorsOf([&] { labels = bip::regions(bytes, n, -1, reach, type); }), warning());
      EXPECT_EQ(n, std::min(GetParam(), kMaxRegions));
      EXPECT_EQ(pixelsOf(labels), labelsOfDots(GetParam(), 1));
    }
  }
  int n = 0;
  Labels labels(0, 1, 1, 1, 1);
  EXPECT_EQ(errorsOf([&] { labels = bip::regions(shorts, n); }), warning());
  EXPECT_EQ(n, std::min(GetParam(), kMaxRegions));
  EXPECT_EQ(pixelsOf(labels), labelsOfDots(GetParam(), 1));
}

TEST_P(MaxRegions, AreMeasured) {
  const Mask mask = dots(GetParam(), 2, 0);
  Labels labels(0, 1, 1, 1, 1);
  errorsOf([&] { labels = bip::regions(mask); });
  EXPECT_EQ(bip::regionNumber(labels), std::min(GetParam(), kMaxRegions));
  image<float> brightness = blank<float>({mask.nx(), 1});
  for (int i = 0; i < mask.nx(); ++i) brightness.pixels()[i] = static_cast<float>(i);
  const auto features = bip::regionFeatures(labels, brightness);
  const auto lists = bip::regionIntensityArrays(labels, brightness, true);
  ASSERT_EQ(static_cast<int>(features.size()), std::min(GetParam(), kMaxRegions));
  ASSERT_EQ(lists.size(), features.size());
  for (std::size_t k = 0; k < features.size(); ++k) {
    const int x = 2 * static_cast<int>(k);
    EXPECT_EQ(features[k].npix, 1);
    EXPECT_EQ(features[k].cx, x);
    EXPECT_EQ(features[k].mean, static_cast<float>(x));
    EXPECT_EQ(lists[k], std::vector<float>{static_cast<float>(x)});
  }
}

TEST_P(MaxRegions, AreSelectedBySizeAndTheRestStays) {
  Mask mask = dots(GetParam(), 2, 0);
  EXPECT_EQ(errorsOf([&] { bip::selectRegionsBySize(mask, 2, -1); }), warning());
  // The first always stays; those without a label cannot be measured.
  std::vector<unsigned char> expected(static_cast<std::size_t>(mask.npix()), 0);
  expected[0] = 255;
  for (int k = kMaxRegions; k < GetParam(); ++k) expected[static_cast<std::size_t>(2 * k)] = 255;
  EXPECT_EQ(pixelsOf(mask), expected);
}

TEST_P(MaxRegions, HaveTheirHullsAndAreCounted) {
  const Mask mask = dots(GetParam(), 2, 1);
  testing::internal::CaptureStdout();
  Labels labels(0, 1, 1, 1, 1);
  EXPECT_EQ(errorsOf([&] { labels = bip::convexHull(mask, 3); }), warning());
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            std::to_string(std::min(GetParam(), kMaxRegions)) + " regions detected.\n");
  EXPECT_EQ(pixelsOf(labels), labelsOfDots(GetParam(), 2));
}

// The background around the holes is a region too, the first.
TEST_P(MaxRegions, OfHolesAreFilled) {
  const int holes = GetParam() - 1;
  Mask mask = blank<unsigned char>({2 * holes + 1, 3});
  std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(255));
  for (int k = 0; k < holes; ++k) mask.setPixel(2 * k + 1, 1, 0.0F);
  EXPECT_EQ(errorsOf([&] { bip::removeInternalStructures(mask); }), warning());
  EXPECT_EQ(mask.fmin(), 255.0F);
}

TEST_P(MaxRegions, SpreadOverTheirSurroundings) {
  // Three rows, the dots in the middle one; the border is not reached.
  const int width = 2 * GetParam() + 1;
  Mask mask = blank<unsigned char>({width, 3});
  for (int x = 1; x < width; x += 2) mask.setPixel(x, 1, 255.0F);
  Labels labels(0, 1, 1, 1, 1);
  errorsOf([&] { labels = bip::regions(mask); });
  Labels expected = labels.duplicate();
  bip::propagate(labels, 3.0F);
  reference::propagate(expected, 3.0F);
  EXPECT_TRUE(sameImage(labels, expected));
  EXPECT_EQ(labels.max(), static_cast<short>(std::min(GetParam(), kMaxRegions) - 1));
  if (isTooMany()) {
    // A dot without a label is background, and takes that of a neighbour.
    EXPECT_EQ(labels.pixels()[width + 2 * kMaxRegions + 1], kMaxRegions - 1);
  }
}

TEST(MaxLabels, HaveBoundariesAndCloseTheirGaps) {
  // Two patches, of the first and of the last label there is.
  Labels labels = blank<short>({8, 5});
  for (int i = 0; i < 40; ++i) labels.pixels()[i] = i % 8 < 4 ? short{0} : short{32767};
  const auto lists = bip::boundaries(labels);
  ASSERT_EQ(lists.size(), 32768U);
  EXPECT_EQ(lists[0].size(), 3U);
  EXPECT_EQ(lists[32767].size(), 3U);
  bip::relabel(labels);
  EXPECT_EQ(labels.max(), 1);
}

}  // namespace
}  // namespace orva::test
