// The small functions that pixels and points are made with.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "orva/image/image.h"
#include "orva/image/truncate.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

TEST(Luminance, IntendedOrderOfTheWeightsIsBlueGreenRed) {
  EXPECT_EQ(luminance(GenericRgb<unsigned char>{100, 0, 0}), static_cast<float>(7.2169));
  EXPECT_EQ(luminance(GenericRgb<unsigned char>{0, 100, 0}), static_cast<float>(71.516));
  EXPECT_EQ(luminance(GenericRgb<unsigned char>{0, 0, 100}), static_cast<float>(21.2671));
}

TEST(Luminance, TakesEveryComponentType) {
  EXPECT_EQ(luminance(GenericRgb<short>{0, -100, 0}), static_cast<float>(-71.516));
  EXPECT_EQ(luminance(GenericRgb<int>{0, 100000, 0}), static_cast<float>(71516));
  EXPECT_EQ(luminance(GenericRgb<float>{0.0F, 0.5F, 0.0F}), static_cast<float>(0.35758));
}

TEST(TruncateTo, CutsTowardZero) {
  EXPECT_EQ(truncateTo<int>(2.9F), 2);
  EXPECT_EQ(truncateTo<int>(-2.9), -2);
  EXPECT_EQ(truncateTo<unsigned int>(4294967040.0F), 4294967040U);
  EXPECT_EQ(truncateTo<std::int64_t>(-1e15), -1000000000000000);
}

TEST(TruncateTo, IsHeldAtTheEndsOfTheRange) {
  EXPECT_EQ(truncateTo<int>(2147483648.0F), 2147483647);
  EXPECT_EQ(truncateTo<int>(-kInfinity), -2147483647 - 1);
  EXPECT_EQ(truncateTo<unsigned int>(-0.5F), 0U);
  EXPECT_EQ(truncateTo<unsigned int>(kInfinity), 4294967295U);
  EXPECT_EQ(truncateTo<short>(40000.0), 32767);
  EXPECT_EQ(truncateTo<int>(std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(WrapTo16, KeepsTheLowBits) {
  EXPECT_EQ(wrapTo16(std::int64_t{32768}), -32768);
  EXPECT_EQ(wrapTo16(std::int64_t{-65537}), -1);
  EXPECT_EQ(wrapTo16(65537.9), 1);
  EXPECT_EQ(wrapTo16(1e12), -1);  // 2147483647 first
}

}  // namespace
}  // namespace orva::test
