#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/reference/bip.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

using Lists = std::vector<std::vector<float>>;

const std::string mismatchMessage =
    "In bip::regionFeatures\n   Warning: label and brightness must have the same size\n"
    "   Brightness image ignored\n";

// All fields, the floats by their bits.
void expectSame(const std::vector<RegionFeature>& a, const std::vector<RegionFeature>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t k = 0; k < a.size(); ++k) {
    EXPECT_EQ(std::memcmp(&a[k], &b[k], sizeof(RegionFeature)), 0)
        << "region " << k << ": npix " << a[k].npix << ", " << b[k].npix << "; mean " << a[k].mean
        << ", " << b[k].mean << "; var " << a[k].var << ", " << b[k].var;
  }
}

// One region that covers everything.
image<short> full(const Shape& shape) { return blank<short>(shape); }

RegionFeature only(const std::vector<RegionFeature>& features) {
  EXPECT_EQ(features.size(), 1U);
  return features.at(0);
}

TEST(RegionFeature, HasThirteenWordsThatStartAsZero) {
  static_assert(sizeof(RegionFeature) == 13 * 4);
  const RegionFeature f;
  const std::vector<unsigned char> zeros(sizeof f, 0);
  EXPECT_EQ(std::memcmp(&f, zeros.data(), sizeof f), 0);
}

TEST(RegionFeatures, MeasureBoxCentroidSizeAndBrightness) {
  const image<short> labels = labelsOf({"..00",  //
                                        ".1.0",  //
                                        "1110"});
  const auto brightness = imageOf<float>({4, 3}, {9, 9, 1, 2, 9, 4, 9, 3, 8, 0, 4, 6});
  const std::vector<RegionFeature> f = bip::regionFeatures(labels, brightness);
  ASSERT_EQ(f.size(), 2U);
  EXPECT_EQ(f[0].xmin, 2);
  EXPECT_EQ(f[0].xmax, 3);
  EXPECT_EQ(f[0].ymin, 0);
  EXPECT_EQ(f[0].ymax, 2);
  EXPECT_EQ(f[0].zmin, 0);
  EXPECT_EQ(f[0].zmax, 0);
  EXPECT_EQ(f[0].cx, 2);  // 11 / 4
  EXPECT_EQ(f[0].cy, 0);  // 3 / 4
  EXPECT_EQ(f[0].cz, 0);
  EXPECT_EQ(f[0].npix, 4);
  EXPECT_EQ(f[0].radius, 1);
  EXPECT_EQ(f[0].mean, 3.0F);
  EXPECT_EQ(f[0].var, 14.0F / 3.0F);
  EXPECT_EQ(f[1].xmin, 0);
  EXPECT_EQ(f[1].xmax, 2);
  EXPECT_EQ(f[1].ymin, 1);
  EXPECT_EQ(f[1].ymax, 2);
  EXPECT_EQ(f[1].cx, 1);
  EXPECT_EQ(f[1].cy, 1);
  EXPECT_EQ(f[1].npix, 4);
  EXPECT_EQ(f[1].mean, 4.0F);
  EXPECT_EQ(f[1].var, 32.0F / 3.0F);
}

TEST(RegionFeatures, OfALabelWithoutPixelsAreAllZero) {
  const image<short> labels = labelsOf({"0.2"});
  const auto brightness = imageOf<unsigned char>({3, 1}, {7, 8, 9});
  const std::vector<RegionFeature> f = bip::regionFeatures(labels, 5, brightness);
  ASSERT_EQ(f.size(), 5U);
  const RegionFeature zero;
  for (const std::size_t k : {1U, 3U, 4U}) {
    EXPECT_EQ(std::memcmp(&f[k], &zero, sizeof zero), 0) << k;
  }
}

TEST(RegionFeatures, OfOnePixelHaveRadiusOneAndNoVariance) {
  const RegionFeature f =
      only(bip::regionFeatures(labelsOf({"..", ".0"}), imageOf<short>({2, 2}, {1, 2, 3, -4})));
  EXPECT_EQ(f.radius, 1);
  EXPECT_EQ(f.mean, -4.0F);
  EXPECT_EQ(f.var, 0.0F);
}

TEST(RegionFeatures, RadiusIsThatOfTheDiscInAPlaneAndOfTheBallInAVolume) {
  EXPECT_EQ(only(bip::regionFeatures(full({10, 10}))).radius, 5);
  EXPECT_EQ(only(bip::regionFeatures(full({5, 5, 4}))).radius, 2);
  EXPECT_EQ(only(bip::regionFeatures(full({1, 1, 2}))).radius, 1);
}

// These counts are just enough for the constants 3.14159 and 12.56636; with more digits of pi the
// radii would be one less.
TEST(RegionFeatures, RadiusUsesTheRoundedPiWhichIsIntended) {
  EXPECT_EQ(only(bip::regionFeatures(full({314159, 10}))).radius, 1000);
  EXPECT_EQ(only(bip::regionFeatures(full({452389, 1, 2}))).radius, 60);
}

TEST(RegionFeatures, CentroidIsRoundedDown) {
  const RegionFeature f = only(bip::regionFeatures(full({2, 4, 6})));
  EXPECT_EQ(f.cx, 0);
  EXPECT_EQ(f.cy, 1);
  EXPECT_EQ(f.cz, 2);
}

TEST(RegionFeatures, CentroidOfAVeryLargeRegionIsRight) {
  const RegionFeature f = only(bip::regionFeatures(full({100000, 50})));
  EXPECT_EQ(f.cx, 49999);
  EXPECT_EQ(f.cy, 24);
}

TEST(RegionFeatures, IgnoreLabelsFromNUpward) {
  const std::vector<RegionFeature> f = bip::regionFeatures(labelsOf({"0123", "0.11"}), 2);
  ASSERT_EQ(f.size(), 2U);
  EXPECT_EQ(f[0].npix, 2);
  EXPECT_EQ(f[1].npix, 3);
  EXPECT_EQ(f[1].xmax, 3);
}

TEST(RegionFeatures, IgnoreLabelsFromNUpwardAlsoWithBrightness) {
  const std::vector<RegionFeature> f =
      bip::regionFeatures(labelsOf({"0123"}), 2, imageOf<int>({4, 1}, {5, 6, 7, 8}));
  ASSERT_EQ(f.size(), 2U);
  EXPECT_EQ(f[0].mean, 5.0F);
  EXPECT_EQ(f[1].mean, 6.0F);
}

TEST(RegionFeatures, OfNoLabelsAreAnEmptyList) {
  const image<short> labels = labelsOf({"01."});
  EXPECT_TRUE(bip::regionFeatures(labels, 0).empty());
  EXPECT_TRUE(bip::regionFeatures(labels, 0, blank<float>({3, 1})).empty());
  EXPECT_TRUE(bip::regionFeatures(labelsOf({"..."})).empty());
  EXPECT_TRUE(bip::regionFeatures(labelsOf({"..."}), blank<float>({3, 1})).empty());
}

TEST(RegionFeatures, OfANullLabelImageAreAnEmptyList) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}}) {
    EXPECT_TRUE(bip::regionFeatures(blank<short>(shape)).empty());
    EXPECT_TRUE(bip::regionFeatures(blank<short>(shape), 3).empty());
    EXPECT_TRUE(bip::regionFeatures(blank<short>(shape), 3, blank<float>({2, 2})).empty());
    EXPECT_TRUE(bip::regionFeatures(blank<short>(shape), blank<float>({2, 2})).empty());
  }
}

TEST(RegionFeatures, IgnoreANullBrightnessSilently) {
  const image<short> labels = labelsOf({"00", "11"});
  testing::internal::CaptureStderr();
  const auto f = bip::regionFeatures(labels, 2, blank<float>({0, 1}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  expectSame(f, reference::regionFeatures(labels, 2, nullptr));
}

TEST(RegionFeatures, IgnoreABrightnessOfAnotherSizeWithAWarning) {
  const image<short> labels = blank<short>({4, 3, 2});
  for (const Shape& shape : {Shape{3, 4, 2}, Shape{4, 3}, Shape{12, 1, 2}, Shape{4, 3, 2, 2}}) {
    Random random(1);
    const auto brightness = randomImage<float>(random, shape);
    testing::internal::CaptureStderr();
    const auto f = bip::regionFeatures(labels, 1, brightness);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), mismatchMessage);
    expectSame(f, reference::regionFeatures(labels, 1, nullptr));
    testing::internal::CaptureStderr();
    expectSame(bip::regionFeatures(labels, brightness), f);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), mismatchMessage);
  }
}

TEST(RegionFeatures, OfNoLabelsStillWarnOfABrightnessOfAnotherSize) {
  const auto brightness = blank<float>({2, 3});
  const auto expectWarning = [](auto measure) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(measure().empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), mismatchMessage);
  };
  expectWarning([&] { return bip::regionFeatures(labelsOf({"01."}), 0, brightness); });
  expectWarning([&] { return bip::regionFeatures(labelsOf({"..."}), brightness); });
}

TEST(RegionFeatures, TakingBrightnessOfOtherFramesIsIntended) {
  Random random(2);
  const auto labels = randomLabels(random, {4, 3, 12}, 2);
  for (const Shape& shape : {Shape{4, 3, 1, 12}, Shape{4, 3, 2, 3, 2}, Shape{4, 3, 1, 1, 12}}) {
    const auto brightness = randomImage<float>(random, shape);
    expectSame(bip::regionFeatures(labels, 3, brightness),
               reference::regionFeatures(labels, 3, &brightness));
  }
}

// In single precision 2^24 + 1 is 2^24, so ones after the large pixel are lost, before it they are
// not.
TEST(RegionFeatures, MeanIsSummedInLinearOrderInSinglePrecision) {
  const float large = 16777216.0F;
  const image<short> labels = full({4, 1});
  EXPECT_EQ(only(bip::regionFeatures(labels, imageOf<float>({4, 1}, {large, 1, 1, 1}))).mean,
            large / 4.0F);
  EXPECT_EQ(only(bip::regionFeatures(labels, imageOf<float>({4, 1}, {1, 1, 1, large}))).mean,
            (large + 4.0F) / 4.0F);
}

TEST(RegionFeatures, OfANaNPixelSpoilOnlyItsOwnRegion) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const auto f = bip::regionFeatures(labelsOf({"0011"}), imageOf<float>({4, 1}, {nan, 1, 2, 4}));
  EXPECT_TRUE(f.at(0).mean != f.at(0).mean);
  EXPECT_EQ(f.at(1).mean, 3.0F);
  EXPECT_EQ(f.at(1).var, 2.0F);
}

TEST(RegionFeatures, ColumnsKeepTheOrderOfTheList) {
  std::vector<RegionFeature> list(3);
  for (int k = 0; k < 3; ++k) {
    list[static_cast<std::size_t>(k)].npix = 5 - k;
    list[static_cast<std::size_t>(k)].mean = 0.5F + static_cast<float>(k);
    list[static_cast<std::size_t>(k)].var = 9.0F - static_cast<float>(k);
  }
  EXPECT_EQ(RegionFeature::npixArray(list), (std::vector<int>{5, 4, 3}));
  EXPECT_EQ(RegionFeature::meanArray(list), (std::vector<float>{0.5F, 1.5F, 2.5F}));
  EXPECT_EQ(RegionFeature::varArray(list), (std::vector<float>{9, 8, 7}));
  EXPECT_TRUE(RegionFeature::npixArray({}).empty());
  EXPECT_TRUE(RegionFeature::meanArray({}).empty());
  EXPECT_TRUE(RegionFeature::varArray({}).empty());
}

template <class T>
class RegionFeatureMatchesReference : public testing::Test {};
TYPED_TEST_SUITE(RegionFeatureMatchesReference, PixelTypes);

TYPED_TEST(RegionFeatureMatchesReference, ForEveryPixelType) {
  Random random(4);
  for (const Shape& shape : oddShapes()) {
    for (const int maxLabel : {0, 3, 30}) {
      const auto labels = randomLabels(random, shape, maxLabel);
      const auto brightness = randomImage<TypeParam>(random, shape);
      const int n = maxLabel + 1 + randomInt(random, 0, 2);
      expectSame(bip::regionFeatures(labels, n, brightness),
                 reference::regionFeatures(labels, n, &brightness));
      expectSame(bip::regionFeatures(labels, brightness),
                 reference::regionFeatures(labels, reference::regionNumber(labels), &brightness));
      const int fewer = randomInt(random, 0, n);
      expectSame(bip::regionFeatures(labels, fewer),
                 reference::regionFeatures(labels, fewer, nullptr));
      expectSame(bip::regionFeatures(labels),
                 reference::regionFeatures(labels, reference::regionNumber(labels), nullptr));
    }
  }
}

TYPED_TEST(RegionFeatureMatchesReference, ForListsOfBrightness) {
  Random random(5);
  for (const Shape& shape : oddShapes()) {
    for (const bool sorted : {false, true}) {
      const auto labels = randomLabels(random, shape, 5);
      const auto brightness = randomImage<TypeParam>(random, shape);
      const int n = randomInt(random, 0, 7);
      EXPECT_EQ(bip::regionIntensityArrays(labels, n, brightness, sorted),
                reference::regionIntensityArrays(labels, n, brightness, sorted));
      EXPECT_EQ(bip::regionIntensityArrays(labels, brightness, sorted),
                reference::regionIntensityArrays(labels, reference::regionNumber(labels),
                                                 brightness, sorted));
    }
  }
}

TEST(RegionIntensityArrays, HoldEachRegionInLinearOrderOrSorted) {
  const image<short> labels = labelsOf({"02.", "003"});
  const auto brightness = imageOf<unsigned char>({3, 2}, {9, 5, 1, 7, 8, 4});
  EXPECT_EQ(bip::regionIntensityArrays(labels, brightness, false),
            (Lists{{9, 7, 8}, {}, {5}, {4}}));
  EXPECT_EQ(bip::regionIntensityArrays(labels, brightness, true), (Lists{{7, 8, 9}, {}, {5}, {4}}));
  EXPECT_EQ(bip::regionIntensityArrays(labels, 1, brightness, true), (Lists{{7, 8, 9}}));
  EXPECT_EQ(bip::regionIntensityArrays(labels, 6, brightness, false),
            (Lists{{9, 7, 8}, {}, {5}, {4}, {}, {}}));
}

template <class T>
void expectSortedAlike(Random& random, const Shape& shape) {
  const auto brightness = randomImage<T>(random, shape);
  EXPECT_EQ(bip::regionIntensityArrays(full(shape), brightness, true),
            reference::regionIntensityArrays(full(shape), 1, brightness, true))
      << brightness.nx() << " x " << brightness.ny();
}

TEST(RegionIntensityArrays, ListsHaveNoSpareCapacity) {
  Random random(8);
  const Shape shape{61, 47, 2};
  const image<short> labels = randomLabels(random, shape, 9);
  for (const bool sorted : {false, true}) {
    for (const Lists& lists :
         {bip::regionIntensityArrays(labels, 12, labels, sorted),
          bip::regionIntensityArrays(labels, randomImage<float>(random, shape), sorted),
          bip::regionIntensityArrays(labels, randomImage<unsigned char>(random, shape), sorted)}) {
      ASSERT_GE(lists.size(), 10U);
      for (const std::vector<float>& list : lists) EXPECT_EQ(list.capacity(), list.size());
    }
  }
}

TEST(RegionIntensityArrayMatchesReference, ForSortedListsOfEveryLength) {
  Random random(11);
  std::vector<Shape> shapes = {{300, 200}};
  for (int n = 1; n <= 140; ++n) shapes.push_back({n, 1});
  for (const Shape& shape : shapes) {
    expectSortedAlike<unsigned char>(random, shape);
    expectSortedAlike<short>(random, shape);
    expectSortedAlike<float>(random, shape);
  }
}

TEST(RegionIntensityArrays, SortedHaveTheNaNsLast) {
  Random random(7);
  for (const Shape& shape : {Shape{1, 1}, Shape{9, 1}, Shape{40, 30}}) {
    for (const int share : {2, 5, 1}) {  // one pixel of so many is a NaN
      const auto labels = randomLabels(random, shape, 3);
      auto brightness = randomImage<float>(random, shape);
      for (int i = 0; i < brightness.npix(); ++i) {
        if (randomInt(random, 1, share) == 1) {
          brightness.setPixel(i, std::numeric_limits<float>::quiet_NaN());
        }
      }
      const Lists lists = bip::regionIntensityArrays(labels, 4, brightness, true);
      const Lists expected = reference::regionIntensityArrays(labels, 4, brightness, true);
      ASSERT_EQ(lists.size(), expected.size());
      for (std::size_t k = 0; k < lists.size(); ++k) {
        EXPECT_THAT(lists[k], testing::Pointwise(testing::NanSensitiveFloatEq(), expected[k])) << k;
      }
    }
  }
}

TEST(RegionIntensityArrays, OfNumbersAndNaNsAreTheNumbersThenTheNaNs) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  const auto brightness = imageOf<float>({7, 1}, {nan, 3, infinity, nan, -infinity, 1, nan});
  const Lists lists = bip::regionIntensityArrays(full({7, 1}), brightness, true);
  ASSERT_EQ(lists.size(), 1U);
  EXPECT_THAT(lists[0], testing::ElementsAre(-infinity, 1, 3, infinity, testing::IsNan(),
                                             testing::IsNan(), testing::IsNan()));
}

TEST(RegionIntensityArrays, AreEmptyForNullLabelsAndOtherSizes) {
  const image<short> labels = labelsOf({"00", "11"});
  testing::internal::CaptureStderr();
  for (const bool sorted : {false, true}) {
    EXPECT_TRUE(bip::regionIntensityArrays(labels, 2, blank<float>({4, 1}), sorted).empty());
    EXPECT_TRUE(bip::regionIntensityArrays(labels, blank<float>({0, 1}), sorted).empty());
    EXPECT_TRUE(
        bip::regionIntensityArrays(blank<short>({0, 1}), 2, blank<float>({0, 1}), sorted).empty());
    EXPECT_TRUE(
        bip::regionIntensityArrays(blank<short>({0, 1}), blank<float>({2, 2}), sorted).empty());
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Histogram, CountsTheValuesFromLowToHighInAllFrames) {
  image<unsigned char> img = blank<unsigned char>({16, 8, 2, 2, 1});
  for (int i = 0; i < img.npix(); ++i) img.pixels()[i] = static_cast<unsigned char>(i % 256);
  const std::vector<int> counts = bip::histogram(img, 10, 20);
  ASSERT_EQ(counts.size(), 256U);
  for (int v = 0; v < 256; ++v) {
    EXPECT_EQ(counts[static_cast<std::size_t>(v)], v >= 10 && v <= 20 ? 2 : 0) << v;
  }
}

TEST(Histogram, HasAlways256Entries) {
  const auto img = imageOf<unsigned char>({3, 1}, {0, 255, 255});
  const std::vector<int> zeros(256, 0);
  EXPECT_EQ(bip::histogram(img, 20, 10), zeros);
  EXPECT_EQ(bip::histogram(img, 256, 1000), zeros);
  EXPECT_EQ(bip::histogram(img, -1000, -1), zeros);
  EXPECT_EQ(bip::histogram(blank<unsigned char>({0, 1}), 0, 255), zeros);
  std::vector<int> all = zeros;
  all.front() = 1;
  all.back() = 2;
  EXPECT_EQ(bip::histogram(img, -1000, 1000), all);
}

TEST(HistogramMatchesReferenceAtEveryWidth, ForRandomRanges) {
  Random random(6);
  forEveryWidth([&](int nx) {
    const auto img = randomImage<unsigned char>(random, {nx, 3, 1, 2, 1});
    const int low = randomInt(random, -10, 265);
    const int high = randomInt(random, -10, 265);
    EXPECT_EQ(bip::histogram(img, low, high), reference::histogram(img, low, high));
  });
}

}  // namespace
}  // namespace orva::test
