// The brightest pixels of images and arrays.
#include "tests/support/reference/statistics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "orva/image_math/image_math.h"
#include "tests/support/images.h"
#include "tests/support/raw_image.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

using Floats = std::vector<float>;

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

const std::string kNumberHeading = "In float topByPercentage(const Image &img, int numpix)\n";
const std::string kNumberMessage = kNumberHeading + "Error: numpix must be in [0, img.npix()-1]\n";
const std::string kShareMessage =
    "In float image_math::meanOfTopByPercentage(vector<float> img, float p)\n"
    "Error: percentage must be a value in [0, 1]\n";
const std::string kNullMessage = "Warning: img is null, return 0.\n";

const Floats kShares = {0.0F,
                        -0.0F,
                        1e-9F,
                        0.01F,
                        0.1F,
                        1.0F / 3,
                        0.5F,
                        0.75F,
                        0.98F,
                        0.9899F,
                        0.99F,
                        0.999F,
                        std::nextafter(1.0F, 0.0F),
                        kNaN};

image<float> rowOf(const Floats& values) {
  return imageOf<float>({static_cast<int>(values.size()), 1}, values);
}

template <class Operation>
void expectZeroAndMessage(Operation operation, const std::string& message) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(operation(), 0.0F);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
}

TEST(TopByPixelNumber, IsTheLevelOfThatPixelFromTheBrightest) {
  const auto img = imageOf<unsigned char>({7, 1}, {10, 40, 20, 40, 90, 20, 20});
  const Floats levels = {90, 90, 40, 40, 20, 20, 20};
  for (int k = 0; k < 7; ++k) {
    EXPECT_EQ(image_math::topByPixelNumber(img, k), levels[static_cast<std::size_t>(k)]) << k;
  }
}

TEST(TopByPixelNumber, IsAWholeLevel) {
  EXPECT_EQ(image_math::topByPixelNumber(rowOf({7.9F, 7.9F}), 1), 7.0F);
  const image<float> img = rowOf({7.9F, 3.2F, 5.999F, 5.0F});
  EXPECT_EQ(image_math::topByPixelNumber(img, 0), 7.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 1), 7.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 2), 5.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 3), 5.0F);
}

// The lowest level is truncated toward zero, so it lies above the lowest pixel; differences to it
// are truncated toward zero as well.
TEST(TopByPixelNumber, CountingNegativePixelsFromTheLowestIsIntended) {
  const image<float> img = rowOf({-3.5F, -0.5F, -1.25F, -3.9F});
  EXPECT_EQ(image_math::topByPixelNumber(img, 0), 0.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 1), -1.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 2), -2.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 3), -3.0F);
  EXPECT_EQ(image_math::topByPixelNumber(rowOf({-0.9F, 0.9F, 0.5F}), 1), 0.0F);
}

// 1005.99994 is too fine for a float: it rounds up, past the highest level.
TEST(TopByPixelNumber, KeepsPixelsOnTheHighestLevel) {
  const image<float> img = rowOf({-1000.0F, below(6.0F), 3.0F});
  EXPECT_EQ(image_math::topByPixelNumber(img, 1), 5.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 2), 3.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(img, 0.4F), 5.0F);
}

TEST(TopByPixelNumber, CountsTheBrightnessOfColours) {
  const auto img = imageOf<Rgb>({3, 1}, {{0, 0, 0}, {0, 0, 255}, {0, 255, 0}});
  EXPECT_EQ(image_math::topByPixelNumber(img, 1), 182.0F);  // 0.715160 * 255
  EXPECT_EQ(image_math::topByPixelNumber(img, 2), 54.0F);   // 0.212671 * 255
}

TEST(TopByPixelNumber, OfANullImageIsZeroWithAWarningWhateverTheNumber) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}}) {
    for (const int k : {0, 3, -1, kMax, kMin}) {
      expectZeroAndMessage([&] { return image_math::topByPixelNumber(blank<float>(shape), k); },
                           kNumberHeading + kNullMessage);
    }
  }
}

TEST(TopByPixelNumberDeathTest, OutOfRangeEndsTheProcess) {
  const image<float> flat = rowOf({7, 7, 7});
  for (const int k : {-1, 3, kMax, kMin}) {
    EXPECT_EXIT(image_math::topByPixelNumber(flat, k), testing::ExitedWithCode(2),
                testing::Eq(kNumberMessage))
        << k;
  }
  EXPECT_EQ(image_math::topByPixelNumber(flat, 2), 7.0F);
}

// As many levels as ints; bins for all of them would take gigabytes.
TEST(TopByPixelNumber, OfAVeryWideRangeIsExactAsFarAsFloatsAre) {
  const auto img = imageOf<int>({6, 1}, {-2000000000, 2000000000, 0, 100000000, -100000000, 2});
  const Floats levels = {2e9F, 2e9F, 1e8F, 0.0F, 0.0F, -1e8F};
  for (int k = 0; k < 6; ++k) {
    EXPECT_EQ(image_math::topByPixelNumber(img, k), levels[static_cast<std::size_t>(k)]) << k;
  }
}

TEST(TopByPixelNumberMatchesReference, WhereTheRangeGetsWide) {
  Random random(1);
  for (const int range : {1, 2, 1000, 65535, 1048574, 1048575, 1048576, 1048577, 10000000}) {
    for (const int low : {0, -range / 2, -range, 3}) {
      image<int> img = blank<int>({60, 3});
      for (int i = 0; i < img.npix(); ++i) img.pixels()[i] = low + randomInt(random, 0, range);
      img.pixels()[7] = low;
      img.pixels()[9] = low + range;
      for (int k = 0; k < img.npix(); k += 1 + k % 7) {
        EXPECT_EQ(image_math::topByPixelNumber(img, k), reference::topByPixelNumber(img, k));
      }
      for (const float p : kShares) {
        EXPECT_EQ(image_math::meanOfTopByPercentage(img, p),
                  reference::meanOfTopByPercentage(img, p));
      }
    }
  }
}

TEST(TopByPercentage, IsThatOfTheShareRoundedDown) {
  const auto img = imageOf<unsigned char>({4, 1}, {1, 2, 3, 4});
  EXPECT_EQ(image_math::topByPercentage(img, 0.0F), 4.0F);
  EXPECT_EQ(image_math::topByPercentage(img, 0.49F), 4.0F);
  EXPECT_EQ(image_math::topByPercentage(img, below(0.5F)), 4.0F);
  EXPECT_EQ(image_math::topByPercentage(img, 0.5F), 3.0F);
  EXPECT_EQ(image_math::topByPercentage(img, below(0.75F)), 3.0F);
  EXPECT_EQ(image_math::topByPercentage(img, 0.75F), 2.0F);
  EXPECT_EQ(image_math::topByPercentage(img, below(1.0F)), 2.0F);
  EXPECT_EQ(image_math::topByPercentage(img, kNaN), 4.0F);
}

// 0.7F is a little less than 0.7, but its float product with 10 is 7.
TEST(TopByPercentage, MultipliesInSinglePrecision) {
  EXPECT_EQ(
      image_math::topByPercentage(imageOf<int>({10, 1}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), 0.7F),
      3.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(imageOf<int>({10, 1}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}),
                                              0.7F),
            6.0F);
}

TEST(TopByPercentage, OfANullImageIsZeroWithAWarning) {
  for (const float p : {0.0F, 0.5F, 1.0F}) {
    expectZeroAndMessage(
        [p] {
          return image_math::topByPercentage(blank<float>({0, 1}), p);
        },
        kNumberHeading + kNullMessage);
  }
}

TEST(TopByPercentageDeathTest, OfAllPixelsIsOutOfRangeWhichIsIntended) {
  EXPECT_EXIT(image_math::topByPercentage(rowOf({1, 2, 3}), 1.0F), testing::ExitedWithCode(2),
              testing::Eq(kNumberMessage));
}

TEST(TopByPercentageDeathTest, OfAWrongShareEndsTheProcess) {
  const image<float> img = rowOf({1, 2, 3});
  const image<float> none = blank<float>({0, 1});
  for (const float p : {-1.0F, -1e-30F, above(1.0F), 1.005F, 50.0F, kInfinity, -kInfinity}) {
    EXPECT_EXIT(image_math::topByPercentage(img, p), testing::ExitedWithCode(2),
                testing::Eq(kShareMessage))
        << p;
    EXPECT_EXIT(image_math::topByPercentage(none, p), testing::ExitedWithCode(2),
                testing::Eq(kShareMessage))
        << p;
    EXPECT_EXIT(image_math::meanOfTopByPercentage(img, p), testing::ExitedWithCode(2),
                testing::Eq(kShareMessage))
        << p;
    EXPECT_EXIT(image_math::meanOfTopByPercentage(none, p), testing::ExitedWithCode(2),
                testing::Eq(kShareMessage))
        << p;
  }
}

TEST(MeanOfTopByPercentage, TakesTheLastLevelWithAllItsPixels) {
  const auto img = imageOf<unsigned char>({8, 1}, {1, 9, 5, 5, 5, 1, 1, 1});
  EXPECT_EQ(image_math::meanOfTopByPercentage(img, 0.1F), 9.0F);    // no pixel: the highest level
  EXPECT_EQ(image_math::meanOfTopByPercentage(img, 0.125F), 9.0F);  // one
  EXPECT_EQ(image_math::meanOfTopByPercentage(img, 0.25F), 6.0F);   // two, hence four
  EXPECT_EQ(image_math::meanOfTopByPercentage(img, 0.5F), 6.0F);    // four
  EXPECT_EQ(image_math::meanOfTopByPercentage(img, 0.625F), 3.5F);  // five, hence all
  EXPECT_EQ(image_math::meanOfTopByPercentage(img, 1.0F), 3.5F);
}

TEST(MeanOfTopByPercentage, CountsWholeLevels) {
  EXPECT_EQ(image_math::meanOfTopByPercentage(rowOf({7.9F, 7.1F, 5.6F, 1.0F}), 0.5F), 7.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(rowOf({7.9F, 7.1F, 5.6F, 1.9F}), 1.0F), 5.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(rowOf({-3.5F, -0.5F}), 0.0F), 0.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(rowOf({-3.5F, -0.5F}), 0.5F), -1.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(rowOf({7.9F, 7.1F}), 0.9F), 7.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(rowOf({-0.9F, 0.9F}), 0.5F), 0.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(rowOf({1.5F, 9.5F}), kNaN), 9.0F);
}

TEST(MeanOfTopByPercentage, SumsIn32BitsThatWrapAroundWhichIsIntended) {
  EXPECT_EQ(
      image_math::meanOfTopByPercentage(imageOf<int>({4, 1}, {2000000000, 2000000000, 0, 0}), 0.5F),
      static_cast<float>(4000000000LL - 4294967296LL) / 2);
  EXPECT_EQ(image_math::meanOfTopByPercentage(imageOf<int>({3, 1}, {1 << 30, 1 << 30, 0}), 0.7F),
            -1073741824.0F);
}

TEST(MeanOfTopByPercentage, OfANullImageIsZeroWithAWarning) {
  for (const float p : {0.0F, 0.5F, 1.0F, kNaN}) {
    expectZeroAndMessage(
        [p] {
          return image_math::meanOfTopByPercentage(blank<float>({5, 0}), p);
        },
        "In float topByPercentage(const Image &img, float p)\n" + kNullMessage);
  }
}

TEST(MeanOfTopOfAnArray, NearOneIsThePlainMeanWhateverElseTheShareIs) {
  const Floats values = {1.75F, 2.5F, 8.0F};
  for (const float p : {0.99F, 0.995F, 1.0F, 1.005F, 1.01F}) {
    EXPECT_EQ(image_math::meanOfTopByPercentage(values, p), 12.25F / 3) << p;
    EXPECT_EQ(image_math::meanOfTopByPercentage(Floats{}, p), 0.0F);
  }
  // Two of three pixels, at whole levels.
  EXPECT_EQ(image_math::meanOfTopByPercentage(values, below(0.99F)), 5.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(values, 0.98F), 5.0F);
}

TEST(MeanOfTopOfAnArrayDeathTest, OfAWrongShareEndsTheProcess) {
  for (const Floats& values : {Floats{1, 2, 3}, Floats{}}) {
    for (const float p : {-1e-30F, -1.0F, above(1.01F), 1.02F, 2.0F, kInfinity, -kInfinity}) {
      EXPECT_EXIT(image_math::meanOfTopByPercentage(values, p), testing::ExitedWithCode(2),
                  testing::Eq(kShareMessage))
          << p;
    }
  }
}

TEST(MeanOfTopOfAnArray, OfNoElementsIsZeroSilently) {
  for (const float p : {0.0F, 0.5F, 0.98F, kNaN}) {
    expectZeroAndMessage([p] { return image_math::meanOfTopByPercentage(Floats{}, p); }, "");
  }
}

TEST(MeanOfTopOfAnArray, OfOneLevelIsThatLevel) {
  EXPECT_EQ(image_math::meanOfTopByPercentage(Floats{4.5F, 4.25F}, 0.5F), 4.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(Floats{-4.5F}, 0.0F), -4.0F);
}

TEST(MeanOfTopMatchesReferenceAtEveryWidth, ForArrays) {
  Random random(2);
  for (const float range : {1.0F, 30.0F, 3000.0F, 2e9F}) {
    std::uniform_real_distribution<float> value(-range, range);
    forEveryWidth([&](int width) {
      const auto n = static_cast<std::size_t>(width);
      Floats values(n);
      for (float& v : values) v = value(random);
      for (const float p : kShares) {
        EXPECT_EQ(image_math::meanOfTopByPercentage(values, p),
                  reference::meanOfTopByPercentage(values, p));
        if (std::isnan(p) || p < 0.985F) {
          EXPECT_EQ(image_math::meanOfTopByPercentage(values, p),
                    image_math::meanOfTopByPercentage(rowOf(values), p));
        }
      }
    });
  }
}

// Past 32 bits levels are the nearest int, and a NaN is at the lowest level.
TEST(BrightestPixels, OfValuesWithoutALevelAreDefined) {
  const image<float> img = rowOf({5.0F, 1e30F, kNaN, kInfinity, -1e30F});
  EXPECT_EQ(image_math::topByPixelNumber(img, 0), 2147483648.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 2), 2147483648.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 3), 0.0F);
  EXPECT_EQ(image_math::topByPixelNumber(img, 4), -2147483648.0F);
}

TEST(BrightestPixels, ReadPixelsAsFloats) {
  const RawImage img({3, 1}, USHORT, std::vector<unsigned short>{9, 9, 9}, {1.0F, 7.0F, 4.0F});
  EXPECT_EQ(image_math::topByPixelNumber(img, 2), 4.0F);
  EXPECT_EQ(image_math::topByPercentage(img, 0.67F), 4.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(img, 1.0F), 4.0F);
}

TEST(BrightestPixels, AreSilentOtherwise) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  const image<float> img = rowOf({1, 2, 3});
  image_math::topByPixelNumber(img, 1);
  image_math::topByPercentage(img, 0.5F);
  image_math::meanOfTopByPercentage(img, 1.0F);
  image_math::meanOfTopByPercentage(Floats{1, 2, 3}, 0.5F);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// Values of which floats know the level; unsigned ones past 32 bits do not have any.
template <class T>
image<T> randomBrightness(Random& random, const Shape& shape) {
  image<T> img = randomImage<T>(random, shape);
  if constexpr (std::is_same_v<T, unsigned int>) {
    for (int i = 0; i < img.npix(); ++i) img.pixels()[i] /= 3;
  }
  return img;
}

template <class T>
class BrightestPixelMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(BrightestPixelMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(BrightestPixelMatchesReferenceAtEveryWidth, ForOddShapes) {
  Random random(3);
  for (const Shape& shape : oddShapesAndWidths()) {
    const auto img = randomBrightness<TypeParam>(random, shape);
    const int last = img.npix() - 1;
    for (const int k : {0, last, randomInt(random, 0, last), randomInt(random, 0, last)}) {
      EXPECT_EQ(image_math::topByPixelNumber(img, k), reference::topByPixelNumber(img, k));
    }
    for (const float p : kShares) {
      EXPECT_EQ(image_math::topByPercentage(img, p), reference::topByPercentage(img, p));
      EXPECT_EQ(image_math::meanOfTopByPercentage(img, p),
                reference::meanOfTopByPercentage(img, p));
    }
    EXPECT_EQ(image_math::meanOfTopByPercentage(img, 1.0F),
              reference::meanOfTopByPercentage(img, 1.0F));
  }
}

}  // namespace
}  // namespace orva::test
