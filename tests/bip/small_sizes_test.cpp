// Every small image, with sizes below zero among them: these are kept as zeros but multiply as
// passed.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

using Sizes = std::vector<int>;

const Sizes kNone = {0, 1, 1, 1, 1};

TEST(SmallMask, IsLabelledAsOneRegionOfTheVolumeItShows) {
  for (const Shape& s : smallShapes()) {
    const image<unsigned char> mask = fullMask(s);
    for (const auto type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
      int n = 0;
      const image<short> labels = bip::regions(mask, n, 255, 1, type);
      EXPECT_TRUE(
          isWhole(labels, mask.isNull() ? kNone : Sizes({mask.nx(), mask.ny(), mask.nz(), 1, 1})));
      EXPECT_EQ(n, labels.isNull() ? 0 : 1);
      EXPECT_EQ(pixelsOf(labels), std::vector<short>(static_cast<std::size_t>(labels.npix()), 0));
    }
  }
}

TEST(SmallMask, ErodesToNothingInItsFirstPlane) {
  for (const Shape& s : smallShapes()) {
    image<unsigned char> mask = fullMask(s);
    std::vector<unsigned char> pixels = pixelsOf(mask);
    const int plane = std::min(mask.nx() * mask.ny(), mask.npix());
    std::fill_n(pixels.begin(), plane, static_cast<unsigned char>(0));
    bip::erode(mask);
    EXPECT_EQ(pixelsOf(mask), pixels);
    image<short> labels = blank<short>(s);
    bip::erode(labels);
    EXPECT_EQ(std::count(labels.pixels(), labels.pixels() + labels.npix(), -1), plane);
  }
}

// All its pixels are at the border.
TEST(SmallMask, DoesNotGrowAndHasNoEdgesAndNoHoles) {
  for (const Shape& s : smallShapes()) {
    image<unsigned char> mask = fullMask(s);
    if (!mask.isNull()) mask.setPixel(0, 0.0F);
    const std::vector<unsigned char> before = pixelsOf(mask);
    bip::dilate(mask);
    EXPECT_EQ(pixelsOf(mask), before);
    bip::removeInternalStructures(mask);
    EXPECT_EQ(pixelsOf(mask), before);
    EXPECT_TRUE(sameImage(bip::edge(mask), mask.isNull()
                                               ? blank<unsigned char>({0, 1})
                                               : blank<unsigned char>({mask.nx(), mask.ny()})));
    EXPECT_TRUE(bip::isBinaryImage(mask));
  }
}

TEST(SmallMask, IsMeasuredInTheVolumeItShowsAndCountedInAllOfIt) {
  for (const Shape& s : smallShapes()) {
    const image<short> labels = blank<short>(s);
    const auto features = bip::regionFeatures(labels, fullMask(s));
    ASSERT_EQ(features.size(), labels.isNull() ? 0U : 1U);
    if (!labels.isNull()) {
      EXPECT_EQ(features[0].npix, labels.nx() * labels.ny() * labels.nz());
    }
    const std::vector<int> counts = bip::histogram(fullMask(s), 0, 255);
    EXPECT_EQ(counts[255], labels.npix());
    EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0), labels.npix());
  }
}

// What is left of a mask that is shown is object all over.
TEST(SmallMask, HasNoBackgroundToMeasureTheDistanceTo) {
  for (const Shape& s : smallShapes()) {
    const image<unsigned char> mask = fullMask(s);
    const image<short> labels = blank<short>(s);
    testing::internal::CaptureStderr();
    for (const image<float>& distance : {bip::fchamfer(mask), bip::fchamfer(labels)}) {
      EXPECT_TRUE(isWhole(distance,
                          mask.isNull() ? kNone : Sizes({mask.nx(), mask.ny(), mask.nz(), 1, 1})));
      EXPECT_EQ(pixelsOf(distance),
                std::vector<float>(static_cast<std::size_t>(distance.npix()), 10000.0F));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr().empty(), !mask.isNull());
  }
}

TEST(SmallMask, HasNoBackgroundToFill) {
  for (const Shape& s : smallShapes()) {
    image<short> labels = blank<short>(s);
    const std::vector<short> before = pixelsOf(labels);
    bip::propagate(labels, 5.0F);
    EXPECT_EQ(pixelsOf(labels), before);
    testing::internal::CaptureStdout();
    bip::convexHull(labels, 3);
    const image<short> filled = bip::convexHull(fullMask(s), 3);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(pixelsOf(labels), before);
    EXPECT_EQ(pixelsOf(filled), std::vector<short>(static_cast<std::size_t>(filled.npix()), 0));
  }
}

TEST(SmallMask, IsThresholdedAndSelectedInTheVolumeItShows) {
  for (const Shape& s : smallShapes()) {
    image<unsigned char> mask = fullMask(s);
    const image<unsigned char> above = bip::threshold(mask, 255.0F);
    EXPECT_TRUE(
        isWhole(above, mask.isNull() ? kNone : Sizes({mask.nx(), mask.ny(), mask.nz(), 1, 1})));
    std::vector<unsigned char> pixels = pixelsOf(mask);
    EXPECT_EQ(pixelsOf(above),
              std::vector<unsigned char>(static_cast<std::size_t>(above.npix()), 255));
    bip::selectRegionsBySize(mask, 1000, 0);
    EXPECT_EQ(pixelsOf(mask), pixels);
    testing::internal::CaptureStderr();
    bip::selectRegions(mask, above, 0.0F, 1000);
    const float t = bip::computeThreshold(mask, 1.0F);
    testing::internal::GetCapturedStderr();
    const int volume = std::min(mask.nx() * mask.ny() * mask.nz(), mask.npix());
    std::fill_n(pixels.begin(), volume, static_cast<unsigned char>(0));
    EXPECT_EQ(pixelsOf(mask), pixels);
    EXPECT_TRUE(t >= 0.0F && t <= 255.0F) << t;
  }
}

TEST(SmallLabels, AreOneAreaWithOneNameAndOneList) {
  for (const Shape& s : smallShapes()) {
    image<short> labels = blank<short>(s);
    std::fill_n(labels.pixels(), labels.npix(), short{7});
    int n = -3;
    const image<short> areas = bip::regions(labels, n);
    EXPECT_TRUE(isWhole(
        areas, labels.isNull() ? kNone : Sizes({labels.nx(), labels.ny(), labels.nz(), 1, 1})));
    EXPECT_EQ(n, labels.isNull() ? -3 : areas.isNull() ? 0 : 1);
    EXPECT_EQ(bip::regionNumber(labels), labels.isNull() ? 0 : 8);
    const auto points = bip::boundaries(labels);
    EXPECT_EQ(points.size(), labels.isNull() ? 0U : 8U);
    for (const auto& list : points) EXPECT_TRUE(list.empty());
    const auto lists = bip::regionIntensityArrays(labels, labels, true);
    ASSERT_EQ(lists.size(), labels.isNull() ? 0U : 8U);
    if (!labels.isNull()) {
      EXPECT_EQ(lists[7], std::vector<float>(static_cast<std::size_t>(labels.npix()), 7.0F));
    }
    bip::relabel(labels);
    EXPECT_EQ(labels.fmax(), 0.0F);
    EXPECT_EQ(labels.fmin(), 0.0F);
  }
}

TEST(SmallMask, IsReversedInAllOfItAndHasBlackDistances) {
  for (const Shape& s : smallShapes()) {
    image<unsigned char> mask = fullMask(s);
    testing::internal::CaptureStderr();
    const image<unsigned char> distance = bip::chamfer(mask, false);
    const image<unsigned char> inverted = bip::chamfer(mask, true);
    testing::internal::GetCapturedStderr();
    const auto count = static_cast<std::size_t>(distance.npix());
    EXPECT_EQ(pixelsOf(distance), std::vector<unsigned char>(count, 0));
    EXPECT_EQ(pixelsOf(inverted), std::vector<unsigned char>(count, 255));
    bip::reverse(mask);
    EXPECT_EQ(mask.fmax(), 0.0F);
  }
}

}  // namespace
}  // namespace orva::test
