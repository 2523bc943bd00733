// What operations read of an image of another class: pixel(i) or the samples behind data(). The two
// disagree here, so that only one of them gives the result.
#include <gtest/gtest.h>

#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/negative_image.h"
#include "tests/support/printed.h"
#include "tests/support/raw_image.h"

namespace orva::test {
namespace {

// One row of six pixels: 0, 255, 0, 255, 0, 255 in memory, and others when asked for.
RawImage disagreeing(const std::vector<float>& pixels) {
  return {Shape{6, 1}, BYTE, std::vector<unsigned char>{0, 255, 0, 255, 0, 255}, pixels};
}
const std::vector<float> kPixels = {10, 20, 30, 40, 50, 60};

TEST(ForeignImage, IsThresholdedByPixel) {
  EXPECT_TRUE(sameImage(bip::threshold(disagreeing(kPixels), 35.0F),
                        imageOf<unsigned char>({6, 1}, {0, 0, 0, 255, 255, 255})));
}

TEST(ForeignImage, IsMeasuredByPixel) {
  const image<short> labels = imageOf<short>({6, 1}, {0, 0, -1, 1, 1, 1});
  const auto features = bip::regionFeatures(labels, 2, disagreeing(kPixels));
  ASSERT_EQ(features.size(), 2U);
  EXPECT_EQ(features[0].mean, 15.0F);
  EXPECT_EQ(features[0].var, 50.0F);
  EXPECT_EQ(features[1].mean, 50.0F);
  EXPECT_EQ(features[1].var, 100.0F);
  const std::vector<std::vector<float>> lists = {{10, 20}, {40, 50, 60}};
  EXPECT_EQ(bip::regionIntensityArrays(labels, 2, disagreeing(kPixels), false), lists);
  EXPECT_EQ(bip::regionIntensityArrays(labels, 2, disagreeing({20, 10, 30, 60, 50, 40}), true),
            lists);
}

TEST(ForeignImage, SelectsRegionsByPixel) {
  auto mask = imageOf<unsigned char>({6, 1}, {255, 255, 0, 255, 0, 255});
  bip::selectRegions(mask, disagreeing(kPixels), 30.0F, 1);
  EXPECT_TRUE(sameImage(mask, imageOf<unsigned char>({6, 1}, {0, 0, 0, 255, 0, 255})));
}

TEST(ForeignImage, IsBinaryByItsSamples) {
  EXPECT_TRUE(bip::isBinaryImage(disagreeing(kPixels)));
  EXPECT_FALSE(
      bip::isBinaryImage(RawImage({2, 1}, BYTE, std::vector<unsigned char>{0, 7}, {0, 255})));
}

// The features are those of the samples, whose bright side is x = 3; the brightness is that of the
// pixels.
TEST(ForeignImage, HasTheThresholdOfBoth) {
  const RawImage img({7, 1}, BYTE, std::vector<unsigned char>{0, 0, 0, 255, 0, 0, 0},
                     {7, 1, 1, 9, 1, 1, 1});
  EXPECT_EQ(bip::computeThreshold(img, 0.5F), (2.0F + 9.0F) / 2);
}

TEST(ForeignImage, HasNoEdgesUnlessItIsATypedOne) {
  EXPECT_TRUE(bip::edge(disagreeing(kPixels)).isNull());
  // A typed image's samples are seen through its class.
  image<short> step = blank<short>({5, 5});
  for (int i = 0; i < step.npix(); ++i) step.setPixel(i, i % 5 < 2 ? 0.0F : 9.0F);
  struct Flat : image<short> {
    using image<short>::image;
    explicit Flat(const image<short>& img) : image<short>(img) {}
    using image<short>::pixel;
    float pixel(int) const override { return 4.0F; }
  };
  EXPECT_TRUE(sameImage(bip::edge(Flat(step)), bip::edge(step)));
  EXPECT_EQ(bip::edge(step).max(), 255);
}

}  // namespace
}  // namespace orva::test
