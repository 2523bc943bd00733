// The layout of a region record in memory that callers compiled against the header rely on.
#include <gtest/gtest.h>

#include <cstddef>

#include "orva/bip/bip.h"

namespace orva::test {
namespace {

TEST(RegionFeatureLayout, IsAsListed) {
  EXPECT_EQ(offsetof(RegionFeature, xmin), 0U);
  EXPECT_EQ(offsetof(RegionFeature, xmax), 4U);
  EXPECT_EQ(offsetof(RegionFeature, ymin), 8U);
  EXPECT_EQ(offsetof(RegionFeature, ymax), 12U);
  EXPECT_EQ(offsetof(RegionFeature, zmin), 16U);
  EXPECT_EQ(offsetof(RegionFeature, zmax), 20U);
  EXPECT_EQ(offsetof(RegionFeature, cx), 24U);
  EXPECT_EQ(offsetof(RegionFeature, cy), 28U);
  EXPECT_EQ(offsetof(RegionFeature, cz), 32U);
  EXPECT_EQ(offsetof(RegionFeature, radius), 36U);
  EXPECT_EQ(offsetof(RegionFeature, npix), 40U);
  EXPECT_EQ(offsetof(RegionFeature, mean), 44U);
  EXPECT_EQ(offsetof(RegionFeature, var), 48U);
}

}  // namespace
}  // namespace orva::test
