// Statistics do not depend on where a pixel lies, zero crossings follow a turned image, and angles
// follow a turned vector.
//
// Exceptions: the mean of an array is summed in its order; points come column by column; an angle
// of -180 degrees and the boundaries between the eight directions belong to one side, so vectors on
// them are left out.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "orva/image_math/image_math.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"
#include "tests/support/symmetries.h"

namespace orva::test {
namespace {

template <class T>
class Brightest : public testing::Test {};
TYPED_TEST_SUITE(Brightest, PixelTypes);

TYPED_TEST(Brightest, PixelsAreTheSameOfRearrangedOnes) {
  Random random(601);
  for (const Shape& shape : oddShapes()) {
    const auto img = randomImage<TypeParam>(random, shape);
    const auto shuffled = reordered(img, shuffledFrames(random, img));
    for (const float p : {0.0F, 0.1F, 0.5F, 0.9F}) {
      const float top = image_math::topByPercentage(img, p);
      const float mean = image_math::meanOfTopByPercentage(img, p);
      EXPECT_EQ(image_math::topByPercentage(shuffled, p), top);
      EXPECT_EQ(image_math::meanOfTopByPercentage(shuffled, p), mean);
      for (const auto turn : volumeSymmetries<TypeParam>()) {
        EXPECT_EQ(image_math::topByPercentage(turn(img), p), top);
        EXPECT_EQ(image_math::meanOfTopByPercentage(turn(img), p), mean);
      }
    }
    for (const int n : {0, 1, img.npix() / 2, img.npix() - 1}) {
      if (n > img.npix() - 1) continue;
      const float top = image_math::topByPixelNumber(img, n);
      EXPECT_EQ(image_math::topByPixelNumber(shuffled, n), top);
      for (const auto turn : volumeSymmetries<TypeParam>()) {
        EXPECT_EQ(image_math::topByPixelNumber(turn(img), n), top);
      }
    }
  }
}

TEST(ShuffledArrays, HaveTheSameExtremesAndNearlyTheSameMean) {
  Random random(605);
  for (const int n : {1, 2, 7, 100, 1000}) {
    std::vector<float> values(static_cast<std::size_t>(n));
    std::vector<float> whole(values.size());
    float size = 0.0F;
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] = randomPixel<float>(random);
      whole[i] = std::trunc(values[i]);
      size += std::abs(values[i]);
    }
    // n - 1 sums, none larger than all magnitudes together, and a quotient, each rounded by at most
    // a 2^-24 share; on either side. One more share for the rounding of that bound.
    const auto share = static_cast<float>(n + 1) * std::ldexp(1.0F, -24);
    const float error = 2.0F * share * size / static_cast<float>(n);
    const float min = image_math::minimum(values);
    const float max = image_math::maximum(values);
    const float mean = image_math::mean(values);
    const float exactMean = image_math::mean(whole);
    for (int round = 0; round < 20; ++round) {
      std::shuffle(values.begin(), values.end(), random);
      std::shuffle(whole.begin(), whole.end(), random);
      EXPECT_EQ(image_math::minimum(values), min);
      EXPECT_EQ(image_math::maximum(values), max);
      EXPECT_NEAR(image_math::mean(values), mean, error);
      // Sums of whole numbers below 2^24 are exact in any order.
      EXPECT_EQ(image_math::mean(whole), exactMean);
      // Levels are whole, and so are their sums.
      for (const float p : {0.0F, 0.3F, 0.8F}) {
        std::vector<float> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(image_math::meanOfTopByPercentage(values, p),
                  image_math::meanOfTopByPercentage(sorted, p));
      }
    }
  }
}

using Pixels = std::vector<std::pair<int, int>>;

template <class Place>
Pixels sorted(const std::vector<Point>& points, const Place& place) {
  Pixels result;
  for (const Point& p : points) result.push_back(place(int{p.x}, int{p.y}));
  std::sort(result.begin(), result.end());
  return result;
}

TEST(FindZeros, OfATurnedImageFindsTheTurnedPixels) {
  Random random(602);
  const int nx = 21;
  const int ny = 16;
  for (int round = 0; round < 10; ++round) {
    const auto a = randomImage<float>(random, {nx, ny});
    const auto b = randomImage<float>(random, {nx, ny});
    const auto same = [](int x, int y) { return std::pair(x, y); };
    const Pixels plain = sorted(image_math::findZeros(a), same);
    const Pixels both = sorted(image_math::findZeros(a, b), same);
    ASSERT_FALSE(plain.empty());
    const auto acrossX = [](int x, int y) { return std::pair(nx - 1 - x, y); };
    const auto acrossY = [](int x, int y) { return std::pair(x, ny - 1 - y); };
    const auto exchanged = [](int x, int y) { return std::pair(y, x); };
    EXPECT_EQ(sorted(image_math::findZeros(flipped(a)), acrossX), plain);
    EXPECT_EQ(sorted(image_math::findZeros(upsideDown(a)), acrossY), plain);
    EXPECT_EQ(sorted(image_math::findZeros(transposed(a)), exchanged), plain);
    EXPECT_EQ(sorted(image_math::findZeros(flipped(a), flipped(b)), acrossX), both);
    EXPECT_EQ(sorted(image_math::findZeros(upsideDown(a), upsideDown(b)), acrossY), both);
    EXPECT_EQ(sorted(image_math::findZeros(transposed(a), transposed(b)), exchanged), both);
  }
}

TEST(TurnedVectors, HaveTheSameNorm) {
  Random random(603);
  for (int round = 0; round < 1000; ++round) {
    const auto x = randomPixel<float>(random);
    const auto y = randomPixel<float>(random);
    EXPECT_EQ(image_math::norm(-x, y), image_math::norm(x, y));
    EXPECT_EQ(image_math::norm(x, -y), image_math::norm(x, y));
    EXPECT_EQ(image_math::norm(y, x), image_math::norm(x, y));
    EXPECT_EQ(image_math::norm2(-x, y), image_math::norm2(x, y));
    EXPECT_EQ(image_math::norm2(x, -y), image_math::norm2(x, y));
    EXPECT_EQ(image_math::norm2(y, x), image_math::norm2(x, y));
  }
}

TEST(TurnedVectors, HaveTurnedAnglesAndDirections) {
  Random random(604);
  int compared = 0;
  for (int round = 0; round < 1000; ++round) {
    const auto x = randomPixel<float>(random);
    const auto y = randomPixel<float>(random);
    const float a = image_math::angle(y, x);
    EXPECT_EQ(image_math::angle(-y, x), -a);
    // The arc tangent is rounded, and 57.2958 is no exact 180 / pi.
    EXPECT_NEAR(image_math::angle(y, -x), std::copysign(180.0F, a) - a, 1e-3F);
    EXPECT_NEAR(image_math::angle(x, y) + a, a < -90.0F ? -270.0F : 90.0F, 1e-3F);
    // Sectors of 45 degrees around the multiples of 45.
    const float offset = std::fmod(std::abs(a) + 22.5F, 45.0F);
    if (offset < 0.01F || offset > 44.99F) continue;
    const int d = image_math::direction(y, x);
    EXPECT_EQ(int{image_math::direction(-y, x)}, (8 - d) % 8);
    EXPECT_EQ(int{image_math::direction(y, -x)}, (12 - d) % 8);
    EXPECT_EQ(int{image_math::direction(x, y)}, (10 - d) % 8);
    EXPECT_EQ(int{image_math::direction(x, -y)}, (d + 2) % 8);
    ++compared;
  }
  EXPECT_GT(compared, 900);
}

}  // namespace
}  // namespace orva::test
