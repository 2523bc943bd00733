// Labels that only a later channel or time point holds: they are counted and their brightness is
// summed, but they have no place in the first volume.
#include <gtest/gtest.h>

#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"

namespace orva::test {
namespace {

// Label 0 in the first channel, 1 in both, 2 in the second one alone.
image<short> labels(const Shape& shape) {
  return imageOf<short>(shape, {0, 0, -1, 1,  //
                                2, 2, 1, -1});
}

TEST(LabelsOfALaterChannel, HaveASumForAMean) {
  for (const Shape& shape : {Shape{4, 1, 1, 2}, Shape{4, 1, 1, 1, 2}, Shape{2, 2, 1, 2}}) {
    const auto brightness = imageOf<float>(shape, {1, 2, 3, 4, 50, 60, 7, 8});
    const std::vector<RegionFeature> f = bip::regionFeatures(labels(shape), brightness);
    ASSERT_EQ(f.size(), 3U);
    EXPECT_EQ(f[0].npix, 2);
    EXPECT_EQ(f[0].mean, 1.5F);
    EXPECT_EQ(f[0].var, 0.5F);
    EXPECT_EQ(f[1].npix, 1);
    EXPECT_EQ(f[1].mean, 11.0F);
    EXPECT_EQ(f[1].var, 0.0F);
    EXPECT_EQ(f[2].npix, 0);
    EXPECT_EQ(f[2].radius, 0);
    EXPECT_EQ(f[2].mean, 110.0F);
    EXPECT_EQ(f[2].var, 0.0F);
    for (const int v : {f[2].xmin, f[2].xmax, f[2].ymin, f[2].ymax, f[2].zmin, f[2].zmax, f[2].cx,
                        f[2].cy, f[2].cz}) {
      EXPECT_EQ(v, 0);
    }
  }
}

TEST(LabelsOfALaterChannel, HaveListsAndKeepTheirNumbers) {
  const Shape shape{4, 1, 1, 2};
  const auto brightness = imageOf<float>(shape, {1, 2, 3, 4, 50, 60, 7, 8});
  image<short> img = labels(shape);
  EXPECT_EQ(bip::regionNumber(img), 3);
  EXPECT_EQ(bip::regionIntensityArrays(img, brightness, false),
            (std::vector<std::vector<float>>{{1, 2}, {4, 7}, {50, 60}}));
  EXPECT_EQ(bip::boundaries(img).size(), 3U);
  bip::relabel(img);
  EXPECT_TRUE(sameImage(img, labels(shape)));
}

}  // namespace
}  // namespace orva::test
