// Every small image, with sizes below zero among them: these are kept as zeros but multiply as
// passed.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace {

using orva::image;
using orva_test::blank;
using orva_test::isWhole;
using orva_test::sameImage;
using orva_test::Shape;
using orva_test::smallShapes;

using Sizes = std::vector<int>;

const Sizes kNone = {0, 1, 1, 1, 1};

image<unsigned char> full(const Shape& shape) {
  image<unsigned char> mask = blank<unsigned char>(shape);
  std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(255));
  return mask;
}

TEST(SmallMask, IsLabelledAsOneRegionOfTheVolumeItShows) {
  for (const Shape& s : smallShapes()) {
    const image<unsigned char> mask = full(s);
    for (const auto type : {orva::NEIGHBORHOOD_4, orva::NEIGHBORHOOD_8}) {
      int n = 0;
      const image<short> labels = orva::bip::regions(mask, n, 255, 1, type);
      EXPECT_TRUE(
          isWhole(labels, mask.isNull() ? kNone : Sizes({mask.nx(), mask.ny(), mask.nz(), 1, 1})));
      EXPECT_EQ(n, labels.isNull() ? 0 : 1);
      EXPECT_EQ(orva_test::pixelsOf(labels),
                std::vector<short>(static_cast<std::size_t>(labels.npix()), 0));
    }
  }
}

TEST(SmallMask, ErodesToNothingInItsFirstPlane) {
  for (const Shape& s : smallShapes()) {
    image<unsigned char> mask = full(s);
    std::vector<unsigned char> pixels = orva_test::pixelsOf(mask);
    const int plane = std::min(mask.nx() * mask.ny(), mask.npix());
    std::fill_n(pixels.begin(), plane, static_cast<unsigned char>(0));
    orva::bip::erode(mask);
    EXPECT_EQ(orva_test::pixelsOf(mask), pixels);
    image<short> labels = blank<short>(s);
    orva::bip::erode(labels);
    EXPECT_EQ(std::count(labels.pixels(), labels.pixels() + labels.npix(), -1), plane);
  }
}

// All its pixels are at the border.
TEST(SmallMask, DoesNotGrowAndHasNoEdgesAndNoHoles) {
  for (const Shape& s : smallShapes()) {
    image<unsigned char> mask = full(s);
    if (!mask.isNull()) mask.setPixel(0, 0.0F);
    const std::vector<unsigned char> before = orva_test::pixelsOf(mask);
    orva::bip::dilate(mask);
    EXPECT_EQ(orva_test::pixelsOf(mask), before);
    orva::bip::removeInternalStructures(mask);
    EXPECT_EQ(orva_test::pixelsOf(mask), before);
    EXPECT_TRUE(sameImage(orva::bip::edge(mask),
                          mask.isNull() ? blank<unsigned char>({0, 1})
                                        : blank<unsigned char>({mask.nx(), mask.ny()})));
    EXPECT_TRUE(orva::bip::isBinaryImage(mask));
  }
}

TEST(SmallMask, IsMeasuredInTheVolumeItShowsAndCountedInAllOfIt) {
  for (const Shape& s : smallShapes()) {
    const image<short> labels = blank<short>(s);
    const auto features = orva::bip::regionFeatures(labels, full(s));
    ASSERT_EQ(features.size(), labels.isNull() ? 0U : 1U);
    if (!labels.isNull()) {
      EXPECT_EQ(features[0].npix, labels.nx() * labels.ny() * labels.nz());
    }
    const std::vector<int> counts = orva::bip::histogram(full(s), 0, 255);
    EXPECT_EQ(counts[255], labels.npix());
    EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0), labels.npix());
  }
}

// Sizes below zero count as 0 one by one, yet their product is positive.
TEST(NegativeSizes, HaveNoDistancesAndKeepTheirLabels) {
  const Shape s{5, 5, -1, -1};
  EXPECT_EQ(orva::bip::fchamfer(full(s)).npix(), 0);
  EXPECT_EQ(orva::bip::chamfer(blank<short>(s), true).npix(), 0);
  image<short> labels = blank<short>(s);
  orva::bip::propagate(labels, 3.0F);
  EXPECT_TRUE(sameImage(labels, blank<short>(s)));
}

}  // namespace
