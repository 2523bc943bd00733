// Regions of more than 2^24 pixels, whose numbers and sums a float does not hold, and regions far
// from the origin.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/printed.h"
#include "tests/support/reference/hull.h"

namespace orva::test {
namespace {

// Plane 0 with a region of its first `count` pixels.
image<short> regionOf(int count) {
  image<short> labels = blank<short>({4099, 4096});
  EXPECT_GT(labels.npix(), count);
  std::fill(labels.pixels() + count, labels.pixels() + labels.npix(), short{-1});
  return labels;
}

// A number that lies between two floats, and one that does so when it is lowered by 1.
class RegionOfOver2To24Pixels : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Numbers, RegionOfOver2To24Pixels,
                         testing::Values((1 << 24) + 3, (1 << 24) + 4));

TEST_P(RegionOfOver2To24Pixels, IsMeasuredToTheBit) {
  const int count = GetParam();
  const image<short> labels = regionOf(count);
  image<unsigned char> brightness = blank<unsigned char>({4099, 4096});
  for (int i = 0; i < count; ++i) {
    brightness.pixels()[i] = static_cast<unsigned char>(i % 7 < 3 ? 1 : 0);
  }
  // From here on each sum is one of large and small numbers.
  std::fill_n(brightness.pixels(), 70000, static_cast<unsigned char>(200));
  float sum = 0.0F;
  for (int i = 0; i < count; ++i) sum += static_cast<float>(brightness.pixels()[i]);
  const float mean = sum / static_cast<float>(count);
  float squares = 0.0F;
  for (int i = 0; i < count; ++i) {
    const float d = static_cast<float>(brightness.pixels()[i]) - mean;
    squares += d * d;
  }
  const std::vector<RegionFeature> f = bip::regionFeatures(labels, 1, brightness);
  ASSERT_EQ(f.size(), 1U);
  EXPECT_EQ(f[0].npix, count);
  EXPECT_EQ(f[0].mean, mean);
  EXPECT_EQ(f[0].var, squares / static_cast<float>(count - 1));
  EXPECT_EQ(f[0].radius, 2310);
  EXPECT_EQ(f[0].cx, 2048);
}

// Added one by one they come no farther than 2^24, and the number is rounded to an even float.
TEST(RegionOfOnes, OfOver2To24PixelsHasASumThatStops) {
  image<unsigned char> ones = blank<unsigned char>({4099, 4096});
  std::fill_n(ones.pixels(), ones.npix(), static_cast<unsigned char>(1));
  const RegionFeature f = bip::regionFeatures(regionOf((1 << 24) + 3), 1, ones).at(0);
  EXPECT_EQ(f.mean, 16777216.0F / 16777220.0F);
}

// Blobs with holes and bays in a volume that reaches far along one axis.
image<short> farBlobs(Random& random, const Shape& shape, int x0, int y0, int z0) {
  image<short> labels = blank<short>(shape);
  std::fill_n(labels.pixels(), labels.npix(), short{-1});
  for (int z = 0; z < 9; ++z) {
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 9; ++x) {
        if (randomInt(random, 0, 3) > 0) continue;
        const int i = x0 + x + shape.nx * (y0 + y + shape.ny * (z0 + z));
        labels.pixels()[i] = static_cast<short>(x < 5 ? 0 : 1);
      }
    }
  }
  return labels;
}

TEST(ConvexHullMatchesReference, ForAVolumeFarOff) {
  Random random(57);
  constexpr int kFar = 30000;
  constexpr int kAt = kFar - 11;
  for (const int precision : {3, 7, 20}) {
    for (int axis = 0; axis < 3; ++axis) {
      const int nx = axis == 0 ? kFar : 12;
      const int ny = axis == 1 ? kFar : 12;
      const int nz = axis == 2 ? kFar : 12;
      image<short> labels = farBlobs(random, {nx, ny, nz}, axis == 0 ? kAt : 1, axis == 1 ? kAt : 1,
                                     axis == 2 ? kAt : 1);
      image<short> expected = labels.duplicate();
      reference::convexHull(expected, precision);
      EXPECT_FALSE(sameImage(labels, expected)) << "nothing to fill";
      printedBy([&] { bip::convexHull(labels, precision); });
      EXPECT_TRUE(sameImage(labels, expected)) << "axis " << axis << ", precision " << precision;
    }
  }
}

}  // namespace
}  // namespace orva::test
