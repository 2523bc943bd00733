#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/selection.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

const std::string kSizeMessage =
    "In bip::regionFeatures\n   Warning: label and brightness must have the same size\n"
    "   Brightness image ignored\n";
const std::string kFailedMessage = "bip::regionFeatures failed.\n";

// The bits, so that the order of a sum shows; any NaN is like any other.
::testing::AssertionResult sameFloat(float a, float b) {
  if ((std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << a << " and " << b;
}

Mask selected(const Mask& mask, const Image& brightness, float minMean, int minSize,
              const std::string& message = "") {
  Mask result = mask.duplicate();
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  bip::selectRegions(result, brightness, minMean, minSize);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
  return result;
}

Mask selectedBySize(const Mask& mask, int minSize, int maxSize) {
  Mask result = mask.duplicate();
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  bip::selectRegionsBySize(result, minSize, maxSize);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  return result;
}

Mask randomMix(Random& random, const Shape& shape) {
  Mask mask = randomMask(random, shape, 0.1 * randomInt(random, 1, 7));
  for (int i = 0; i < mask.npix(); ++i) {
    if (randomInt(random, 0, 9) == 0) {
      mask.pixels()[i] = static_cast<unsigned char>(randomInt(random, 1, 254));
    }
  }
  return mask;
}

TEST(Threshold, Is255FromTheThresholdOn) {
  const auto img = imageOf<float>({5, 1}, {1.0F, 2.4999998F, 2.5F, 2.5000002F, 9.0F});
  EXPECT_EQ(pixelsOf(bip::threshold(img, 2.5F)), (Bytes{0, 0, 255, 255, 255}));
  EXPECT_EQ(pixelsOf(bip::threshold(img, 0.5F)), Bytes(5, 255));
  EXPECT_EQ(pixelsOf(bip::threshold(img, 9.5F)), Bytes(5, 0));
  EXPECT_EQ(pixelsOf(bip::threshold(imageOf<float>({2, 1}, {-0.0F, 0.0F}), 0.0F)), Bytes(2, 255));
}

TEST(Threshold, OfNaNIsZero) {
  const auto img = imageOf<float>({4, 1}, {kNaN, -kInfinity, kInfinity, 0});
  EXPECT_EQ(pixelsOf(bip::threshold(img, -kInfinity)), (Bytes{0, 255, 255, 255}));
  EXPECT_EQ(pixelsOf(bip::threshold(img, kInfinity)), (Bytes{0, 0, 255, 0}));
  EXPECT_EQ(pixelsOf(bip::threshold(img, kNaN)), Bytes(4, 0));
}

TEST(Threshold, ReadsPixelsAsFloats) {
  // As an int the pixel is below, as a float it rounds up to the threshold.
  EXPECT_EQ(pixelsOf(bip::threshold(imageOf<int>({2, 1}, {2000000000 - 1, 1999999000}), 2e9F)),
            (Bytes{255, 0}));
  // Samples that differ from pixel().
  EXPECT_EQ(pixelsOf(bip::threshold(
                RawImage({2, 1}, USHORT, std::vector<unsigned short>{9, 1}, {1.0F, 9.0F}), 5.0F)),
            (Bytes{0, 255}));
}

TEST(Threshold, OfANullImageIsEmpty) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}, Shape{7, 0, 3}}) {
    EXPECT_TRUE(isWhole(bip::threshold(blank<float>(shape), 1.0F), {0, 1, 1, 1, 1}));
  }
}

template <class T>
class ThresholdMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(ThresholdMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(ThresholdMatchesReferenceAtEveryWidth, ForOddShapes) {
  Random random(1);
  for (const Shape& shape : oddShapesAndWidths()) {
    const auto img = randomImage<TypeParam>(random, shape);
    const float own = img.pixel(randomInt(random, 0, img.npix() - 1));
    for (const float t : {own, std::nextafter(own, kInfinity), 0.0F, 100.5F, -kInfinity, kNaN}) {
      EXPECT_TRUE(sameImage(bip::threshold(img, t), reference::threshold(img, t)));
    }
  }
}

TEST(ComputeThreshold, OfANullImageIsZeroWithAWarning) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}}) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(sameFloat(bip::computeThreshold(blank<float>(shape), 2.0F), 0.0F));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Warning: \nIn bip::computeThreshold, input image is empty!\n0 returned\n");
  }
}

int countOf(const Mask& mask, int value) {
  return static_cast<int>(std::count(mask.pixels(), mask.pixels() + mask.npix(), value));
}

Mask blobsOf(const Image& img, float scale) {
  return scalespace::features(img, scale, LAPLACIAN_NEGATIVE, 1.0F);
}

TEST(ComputeThreshold, LiesBetweenTheMeansInsideAndOutsideBrightBlobs) {
  image<float> img = blank<float>({16, 16});
  std::fill_n(img.pixels(), img.npix(), 8.0F);
  for (int y = 6; y < 10; ++y) {
    for (int x = 6; x < 10; ++x) img.setPixel(x, y, 40.0F);
  }
  const Mask blobs = blobsOf(img, 1.0F);
  float sums[2] = {0, 0};
  for (int i = 0; i < img.npix(); ++i) sums[blobs.pixels()[i] == 255 ? 1 : 0] += img.pixel(i);
  const int inside = countOf(blobs, 255);
  ASSERT_GT(inside, 0);
  ASSERT_LT(inside, 256);
  const float expected =
      (sums[0] / static_cast<float>(256 - inside) + sums[1] / static_cast<float>(inside)) / 2;
  EXPECT_EQ(bip::computeThreshold(img, 1.0F), expected);
  EXPECT_GT(expected, 8.0F);
  EXPECT_LT(expected, 40.0F);
}

// Far from the blobs the Laplacian is exactly zero, neither bright nor dark.
TEST(ComputeThreshold, CountsFlatPixelsAsOutside) {
  Random random(5);
  for (const Shape& shape : {Shape{60, 50}, Shape{30, 25, 4}}) {
    auto img = blank<unsigned char>(shape);
    for (int blob = 0; blob < 3; ++blob) {
      img.pixels()[randomInt(random, 0, img.npix() - 1)] = 200;
    }
    const Mask blobs = blobsOf(img, 1.5F);
    const int inside = countOf(blobs, 255);
    ASSERT_GT(inside, 0);
    float sums[2] = {0, 0};
    for (int i = 0; i < img.npix(); ++i) sums[blobs.pixels()[i] == 255 ? 1 : 0] += img.pixel(i);
    // All the bright pixels lie inside.
    EXPECT_EQ(sums[0], 0.0F);
    EXPECT_EQ(bip::computeThreshold(img, 1.5F), sums[1] / static_cast<float>(inside) * 0.5F);
  }
}

TEST(ComputeThreshold, WithoutBlobsOrWithoutTheRestIsHalfTheMean) {
  EXPECT_EQ(bip::computeThreshold(blank<int>({6, 5}), 2.0F), 0.0F);
  // The Laplacian of a constant does not quite vanish; its sign changes with that of the constant.
  int empty = 0;
  int whole = 0;
  for (const float v : {64.0F, -64.0F}) {
    image<float> img = blank<float>({8, 8});
    std::fill_n(img.pixels(), img.npix(), v);
    const int inside = countOf(blobsOf(img, 1.0F), 255);
    empty += inside == 0 ? 1 : 0;
    whole += inside == 64 ? 1 : 0;
    EXPECT_EQ(bip::computeThreshold(img, 1.0F), inside == 0 || inside == 64 ? v / 2 : v) << inside;
  }
  EXPECT_EQ(empty, 1);
  EXPECT_EQ(whole, 1);
}

TEST(ComputeThreshold, SumsInSinglePrecisionInLinearOrder) {
  Random random(2);
  for (int round = 0; round < 20; ++round) {
    image<float> img = randomImage<float>(random, {40, 30});
    for (int i = 0; i < img.npix(); i += 17) img.pixels()[i] *= 1e6F;
    EXPECT_TRUE(
        sameFloat(bip::computeThreshold(img, 1.5F), reference::computeThreshold(img, 1.5F)));
  }
}

template <class T>
class ComputeThresholdMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(ComputeThresholdMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(ComputeThresholdMatchesReferenceAtEveryWidth, ForOddShapes) {
  Random random(3);
  for (const Shape& shape : oddShapesAndWidths()) {
    const auto img = randomImage<TypeParam>(random, shape);
    for (const float scale : {0.7F, 2.0F}) {
      EXPECT_TRUE(
          sameFloat(bip::computeThreshold(img, scale), reference::computeThreshold(img, scale)));
    }
  }
}

TEST(SelectRegions, ErasesWhatIsSmallOrDark) {
  const Mask mask = maskOf({"##.#.", ".#..#", "#..##"});
  const auto brightness = imageOf<float>({5, 3}, {1, 2, 0, 9, 0, 0, 6, 0, 0, 3, 5, 0, 0, 3, 3});
  // Sizes 3, 1, 3, 1 and means 3, 9, 3, 5.
  EXPECT_TRUE(sameImage(selected(mask, brightness, 3.0F, 3), maskOf({"##...", ".#..#", "...##"})));
  EXPECT_TRUE(
      sameImage(selected(mask, brightness, 3.0000002F, 1), maskOf({"...#.", ".....", "#...."})));
  EXPECT_TRUE(sameImage(selected(mask, brightness, 0.0F, 4), blank<unsigned char>({5, 3})));
  EXPECT_TRUE(sameImage(selected(mask, brightness, 9.5F, 1), blank<unsigned char>({5, 3})));
  EXPECT_TRUE(sameImage(selected(mask, brightness, 9.0F, 1), maskOf({"...#.", ".....", "....."})));
  for (const int minSize : {1, 0, -1, kMin}) {
    EXPECT_TRUE(sameImage(selected(mask, brightness, -kInfinity, minSize), mask));
    EXPECT_TRUE(sameImage(selected(mask, brightness, kNaN, minSize), mask));
  }
}

TEST(SelectRegions, LeavesValuesOtherThan255) {
  const Mask mask = maskOf({"1#9", "5.2"});
  EXPECT_TRUE(sameImage(selected(mask, blank<int>({3, 2}), 1.0F, 1), maskOf({"1.9", "5.2"})));
}

TEST(SelectRegions, OfAMaskWithoutRegionsReportsItAndLeavesIt) {
  for (const Mask& mask : {maskOf({"...", "..."}), maskOf({"1.5", "9.3"})}) {
    EXPECT_TRUE(sameImage(selected(mask, blank<float>({3, 2}), 1.0F, 9, kFailedMessage), mask));
  }
  const Mask mask = maskOf({"..."});
  EXPECT_TRUE(sameImage(
      selected(mask, blank<float>({2, 1}), 1.0F, 9, kSizeMessage + kFailedMessage), mask));
}

TEST(SelectRegions, TakesBrightnessOfAnotherSizeAsZeroAndWarns) {
  const Mask mask = maskOf({"##.#", "...#", "#..."});
  const auto other = imageOf<float>({3, 4}, std::vector<float>(12, 100.0F));
  EXPECT_TRUE(
      sameImage(selected(mask, other, 0.0F, 2, kSizeMessage), maskOf({"##.#", "...#", "...."})));
  EXPECT_TRUE(sameImage(selected(mask, other, -1.0F, 1, kSizeMessage), mask));
  EXPECT_TRUE(
      sameImage(selected(mask, other, 0.001F, 1, kSizeMessage), blank<unsigned char>({4, 3})));
}

TEST(SelectRegions, WithoutBrightnessTakesItAsZeroSilently) {
  const Mask mask = maskOf({"##.#"});
  EXPECT_TRUE(sameImage(selected(mask, blank<float>({0, 1}), 0.0F, 2), maskOf({"##.."})));
  EXPECT_TRUE(sameImage(selected(mask, blank<float>({0, 1}), 1.0F, 1), maskOf({"...."})));
}

TEST(SelectRegions, LeavesNullMasksSilently) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}}) {
    const auto mask = blank<unsigned char>(shape);
    EXPECT_TRUE(sameImage(selected(mask, blank<float>({2, 2}), 1.0F, 1), mask));
    EXPECT_TRUE(sameImage(selectedBySize(mask, 1, 2), mask));
  }
}

TEST(SelectRegionsBySize, KeepsTheFirstRegionWhichIsIntended) {
  const Mask mask = maskOf({"#.##", "....", "###.", "...#"});
  EXPECT_TRUE(sameImage(selectedBySize(mask, 5, -1), maskOf({"#...", "....", "....", "...."})));
  EXPECT_TRUE(sameImage(selectedBySize(mask, 2, -1), maskOf({"#.##", "....", "###.", "...."})));
  EXPECT_TRUE(sameImage(selectedBySize(maskOf({"###.#"}), 1, 1), maskOf({"###.#"})));
}

TEST(SelectRegionsBySize, KeepsRegionsAsLargeAsEitherBound) {
  const Mask mask = maskOf({"#.#.##", "......", "###.##", ".....#", "####.#"});
  EXPECT_TRUE(sameImage(selectedBySize(mask, 2, 3),
                        maskOf({"#...##", "......", "###...", "......", "......"})));
  EXPECT_TRUE(sameImage(selectedBySize(mask, 4, 4),
                        maskOf({"#.....", "......", "....##", ".....#", "####.#"})));
  const Mask first = maskOf({"#.....", "......", "......", "......", "......"});
  EXPECT_TRUE(sameImage(selectedBySize(mask, 3, 2), first));
  EXPECT_TRUE(sameImage(selectedBySize(mask, 1, 0), first));
  EXPECT_TRUE(sameImage(selectedBySize(mask, kMax, kMax), first));
}

TEST(SelectRegionsBySize, OfANegativeMaxHasNoLimit) {
  const Mask mask = maskOf({"#.####", "......", "######"});
  for (const int maxSize : {-1, -9, kMin, kMax, 18}) {
    EXPECT_TRUE(sameImage(selectedBySize(mask, 1, maxSize), mask));
  }
}

TEST(SelectRegionsBySize, OfAMinBelowOneDoesNothing) {
  const Mask mask = maskOf({"#.####", "1..9.5", "######"});
  for (const int minSize : {0, -1, kMin}) {
    for (const int maxSize : {10, 0, -1}) {
      EXPECT_TRUE(sameImage(selectedBySize(mask, minSize, maxSize), mask));
    }
  }
}

TEST(SelectRegionsBySize, OfAMaskWithoutRegionsIsSilent) {
  const Mask mask = maskOf({"1.5", "..9"});
  EXPECT_TRUE(sameImage(selectedBySize(mask, 100, 0), mask));
}

// Of more regions than labels the rest have no label and stay.
TEST(SelectRegions, LeavesTheRegionsThatHaveNoLabel) {
  Mask board = blank<unsigned char>({301, 301});
  for (int i = 0; i < board.npix(); i += 2) board.pixels()[i] = 255;
  Mask expected = board.duplicate();
  std::fill_n(expected.pixels(), 2 * 32768, static_cast<unsigned char>(0));
  testing::internal::CaptureStderr();
  Mask mask = board.duplicate();
  bip::selectRegions(mask, board, 0.0F, 2);
  EXPECT_TRUE(sameImage(mask, expected));
  mask = board.duplicate();
  bip::selectRegionsBySize(mask, 2, -1);
  expected.pixels()[0] = 255;
  EXPECT_TRUE(sameImage(mask, expected));
  const std::string overflow =
      "In bip::regions\n   Warning: more than 32768 regions, the rest are ignored\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), overflow + overflow);
}

TEST(RegionSelectionMatchesReferenceAtEveryWidth, ForOddShapes) {
  Random random(4);
  for (const Shape& shape : oddShapesAndWidths()) {
    const Mask mask = randomMix(random, shape);
    const auto brightness = randomImage<float>(random, shape);
    for (int round = 0; round < 4; ++round) {
      const int minSize = randomInt(random, -1, 6);
      const int maxSize = randomInt(random, -2, 9);
      const auto mean = static_cast<float>(randomInt(random, -300, 300));
      Mask expected = mask.duplicate();
      reference::selectRegions(expected, brightness, mean, minSize);
      testing::internal::CaptureStderr();
      Mask own = mask.duplicate();
      bip::selectRegions(own, brightness, mean, minSize);
      testing::internal::GetCapturedStderr();
      EXPECT_TRUE(sameImage(own, expected));
      expected = mask.duplicate();
      reference::selectRegionsBySize(expected, minSize, maxSize);
      EXPECT_TRUE(sameImage(selectedBySize(mask, minSize, maxSize), expected));
    }
  }
}

}  // namespace
}  // namespace orva::test
