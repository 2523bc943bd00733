// Norms, angles, direction codes, and the mean, minimum and maximum of arrays.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "orva/image_math/image_math.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

// The table of directions, line by line.
int directionOf(float d) {
  if (d < 0 && d >= -22.5F) return 0;
  if (-22.5F > d && d >= -67.5F) return 7;
  if (-67.5F > d && d >= -112.5F) return 6;
  if (-112.5F > d && d >= -157.5F) return 5;
  if (-157.5F > d && d >= -180.0F) return 4;
  if (d < -180.0F) return 5;
  if (0 <= d && d <= 22.5F) return 0;
  if (22.5F < d && d <= 67.5F) return 1;
  if (67.5F < d && d <= 112.5F) return 2;
  if (112.5F < d && d <= 157.5F) return 3;
  return 4;
}

float angleOf(float y, float x) {
  if (y == 0 && x == 0) return 0;
  return static_cast<float>(static_cast<double>(std::atan2(y, x)) * 57.2958);
}

// Both signs, whole numbers with many ties, zeros of both signs.
std::vector<std::pair<float, float>> randomVectors() {
  std::mt19937 random(97);
  std::uniform_real_distribution<float> wide(-1000, 1000);
  std::uniform_int_distribution<int> small(-4, 4);
  std::vector<std::pair<float, float>> vectors;
  for (int round = 0; round < 5000; ++round) {
    vectors.emplace_back(wide(random), wide(random));
    vectors.emplace_back(static_cast<float>(small(random)), static_cast<float>(small(random)));
    vectors.emplace_back(-0.0F, static_cast<float>(small(random)));
    vectors.emplace_back(static_cast<float>(small(random)), -0.0F);
  }
  return vectors;
}

TEST(Norm, IsTheLength) {
  EXPECT_EQ(image_math::norm(3, 4), 5.0F);
  EXPECT_EQ(image_math::norm(-3, -4), 5.0F);
  EXPECT_EQ(image_math::norm(0, 0), 0.0F);
  EXPECT_EQ(image_math::norm2(3, -4), 25.0F);
}

TEST(Norm, IsComputedInSinglePrecision) {
  for (const auto& [a, b] : randomVectors()) {
    const float square = a * a + b * b;
    EXPECT_EQ(image_math::norm2(a, b), square);
    EXPECT_EQ(image_math::norm(a, b), std::sqrt(square));
  }
  EXPECT_EQ(image_math::norm2(1e30F, 0), kInfinity);
}

TEST(Angle, IsInDegreesABitPast180AsIsIntended) {
  EXPECT_EQ(image_math::angle(0, 0), 0.0F);
  EXPECT_EQ(image_math::angle(-0.0F, -0.0F), 0.0F);
  EXPECT_EQ(image_math::angle(0, 1), 0.0F);
  EXPECT_EQ(image_math::angle(1, 0), 90.00003814697266F);
  EXPECT_EQ(image_math::angle(0, -1), 180.00008F);
  EXPECT_EQ(image_math::angle(-0.0F, -1), -180.00008F);
  EXPECT_EQ(image_math::angle(-1, 0), -90.00003814697266F);
}

TEST(AngleMatchesReference, ForRandomVectors) {
  for (const auto& [y, x] : randomVectors())
    EXPECT_EQ(image_math::angle(y, x), angleOf(y, x)) << y << " " << x;
}

TEST(Angle, ChangesItsSignWithY) {
  for (const auto& [y, x] : randomVectors())
    EXPECT_EQ(image_math::angle(-y, x), -image_math::angle(y, x));
}

TEST(Direction, OfBoundariesIsTheSectorNearerToZero) {
  const std::vector<std::pair<float, int>> rows = {
      {-180.0F, 4}, {-157.5F, 5}, {-112.5F, 6}, {-67.5F, 7}, {-22.5F, 0}, {0.0F, 0},  {-0.0F, 0},
      {22.5F, 0},   {67.5F, 1},   {112.5F, 2},  {157.5F, 3}, {180.0F, 4}, {360.0F, 4}};
  for (const auto& [degrees, code] : rows)
    EXPECT_EQ(image_math::direction(degrees), code) << degrees;
  EXPECT_EQ(image_math::direction(22.50001F), 1);
  EXPECT_EQ(image_math::direction(above(157.5F)), 4);
  EXPECT_EQ(image_math::direction(below(-22.5F)), 7);
}

TEST(Direction, FiveBelowMinus180IsIntended) {
  EXPECT_EQ(image_math::direction(-180.1F), 5);
  EXPECT_EQ(image_math::direction(below(-180.0F)), 5);
  EXPECT_EQ(image_math::direction(-kInfinity), 5);
  EXPECT_EQ(image_math::direction(image_math::angle(-0.0F, -1)), 5);
  EXPECT_EQ(image_math::direction(-0.0F, -1.0F), 5);
  EXPECT_EQ(image_math::direction(0.0F, -1.0F), 4);
}

TEST(Direction, OfNaNIsFour) {
  EXPECT_EQ(image_math::direction(kNaN), 4);
  EXPECT_EQ(image_math::direction(-kNaN), 4);
  EXPECT_EQ(image_math::direction(kInfinity), 4);
}

TEST(Direction, FollowsItsTable) {
  for (float base = -202.5F; base <= 202.5F; base += 7.5F) {
    for (const float d : {below(base), base, above(base), base + 1}) {
      EXPECT_EQ(image_math::direction(d), directionOf(d)) << d;
    }
  }
}

TEST(Direction, OfAVectorIsThatOfItsAngle) {
  for (const auto& [y, x] : randomVectors()) {
    EXPECT_EQ(image_math::direction(y, x), directionOf(angleOf(y, x))) << y << " " << x;
  }
  EXPECT_EQ(image_math::direction(0.0F, 0.0F), 0);
  EXPECT_EQ(image_math::direction(-0.0F, -0.0F), 0);
}

TEST(Direction, RunsCounterClockwise) {
  const std::vector<std::pair<float, float>> around = {{0, 1},  {1, 1},   {1, 0},  {1, -1},
                                                       {0, -1}, {-1, -1}, {-1, 0}, {-1, 1}};
  for (std::size_t code = 0; code < around.size(); ++code) {
    EXPECT_EQ(image_math::direction(around[code].first, around[code].second), code);
  }
}

TEST(ArrayStatistics, OfAnEmptyArrayAreZero) {
  const std::vector<float> none;
  EXPECT_EQ(image_math::mean<float>(none), 0.0F);
  EXPECT_EQ(image_math::minimum<float>(none), 0.0F);
  EXPECT_EQ(image_math::maximum<float>(none), 0.0F);
}

TEST(ArrayStatistics, OfOneElementAreThatElement) {
  const std::vector<float> one = {-3.5F};
  EXPECT_EQ(image_math::mean<float>(one), -3.5F);
  EXPECT_EQ(image_math::minimum<float>(one), -3.5F);
  EXPECT_EQ(image_math::maximum<float>(one), -3.5F);
}

TEST(Mean, SumsInSinglePrecision) {
  // In double the sum would be 1.
  EXPECT_EQ(image_math::mean<float>({1e8F, 1.0F, -1e8F}), 0.0F);
  EXPECT_EQ(image_math::mean<float>({1e8F, -1e8F, 1.0F}), 1.0F / 3.0F);
}

TEST(ArrayStatisticMatchesReferenceAtEveryWidth, ForMeanAndExtremes) {
  std::mt19937 random(98);
  std::uniform_real_distribution<float> value(-1000, 1000);
  forEveryWidth([&](int width) {
    const auto n = static_cast<std::size_t>(width);
    std::vector<float> values(n);
    for (float& v : values) v = value(random);
    float sum = 0;
    float low = values[0];
    float high = values[0];
    for (const float v : values) {
      sum += v;
      low = v < low ? v : low;
      high = high < v ? v : high;
    }
    EXPECT_EQ(image_math::mean<float>(values), sum / static_cast<float>(n));
    EXPECT_EQ(image_math::minimum<float>(values), low);
    EXPECT_EQ(image_math::maximum<float>(values), high);
  });
}

}  // namespace
}  // namespace orva::test
