// Images of another pixel type, against their reference implementations.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

const std::vector<float>& awkwardFloats() {
  static const std::vector<float> values = {
      0,           -0.0F,        0.5F,         0.999999F,    -0.5F,         -0.999999F,
      1.5F,        -1.5F,        254.9F,       255,          255.5F,        256,
      257.7F,      -1,           -256.5F,      32767.5F,     32768,         -32768.5F,
      -32769,      65535.5F,     65536,        65537.25F,    70000,         16777215,
      16777216,    2147483520,   2147483648.F, 2147483904.F, -2147483648.F, -2147483904.F,
      4294967040., 4294967296.F, 5e9F,         -5e9F,        1e30F,         -1e30F,
      kInfinity,   -kInfinity,   1e-40F,       -1e-40F};
  return values;
}

Shape rowOf(std::size_t count) { return {static_cast<int>(count), 1}; }

// An image of any format code with the given pixels, its samples of no account.
RawImage valuesOnly(const Shape& s, int format, const std::vector<float>& values) {
  return {s, format, std::vector<std::int32_t>(values.size() * 3), values};
}

void expectAll(const Image& img) {
  EXPECT_TRUE(
      sameImage(image_io::convertToUIntImage(img), reference::converted<unsigned int>(img)));
  EXPECT_TRUE(sameImage(image_io::convertToIntImage(img), reference::converted<int>(img)));
  EXPECT_TRUE(sameImage(image_io::convertToFloatImage(img), reference::converted<float>(img)));
  EXPECT_TRUE(sameImage(image_io::convertToShortImage(img), reference::converted<short>(img)));
  for (const bool rescale : {false, true}) {
    EXPECT_TRUE(sameImage(image_io::convertToByteImage(img, rescale),
                          reference::convertToByteImage(img, rescale)))
        << rescale;
  }
}

template <class T>
class ConvertTo : public testing::Test {};
TYPED_TEST_SUITE(ConvertTo, PixelTypes);

template <class T>
class ConvertToMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(ConvertToMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(ConvertToMatchesReferenceAtEveryWidth, ForEveryType) {
  Random random(311);
  for (const Shape& s : oddShapesAndWidths()) {
    expectAll(randomImage<TypeParam>(random, s));
  }
}

template <class T>
class ConvertToMatchesReference : public testing::Test {};
TYPED_TEST_SUITE(ConvertToMatchesReference, PixelTypes);

TYPED_TEST(ConvertToMatchesReference, InNarrowRanges) {
  Random random(312);
  for (int round = 0; round < 200; ++round) {
    image<TypeParam> img(randomInt(random, 1, 20), 2, 1, 2, 1);
    const int low = randomInt(random, -5, 255);
    const int high = low + randomInt(random, 0, 20);
    for (int i = 0; i < img.npix(); ++i) {
      img.setPixel(i, static_cast<float>(randomInt(random, low, high)));
    }
    expectAll(img);
  }
}

TYPED_TEST(ConvertTo, EveryTypeTakesAllFramesAsPlanes) {
  Random random(313);
  const image<TypeParam> img = randomImage<TypeParam>(random, {4, 3, 3, 2, 2});
  const std::vector<int> sizes = {4, 3, 12, 1, 1};
  EXPECT_TRUE(isWhole(image_io::convertToUIntImage(img), sizes));
  EXPECT_TRUE(isWhole(image_io::convertToIntImage(img), sizes));
  EXPECT_TRUE(isWhole(image_io::convertToFloatImage(img), sizes));
  EXPECT_TRUE(isWhole(image_io::convertToShortImage(img), sizes));
  EXPECT_TRUE(isWhole(image_io::convertToByteImage(img, true), sizes));
}

TYPED_TEST(ConvertTo, EveryTypeOfANullImageIsTheNullImage) {
  for (const Shape& s : {Shape{0, 1}, Shape{5, 5, 0}, Shape{0, 0, 0, 0, 0}}) {
    const image<TypeParam> none = blank<TypeParam>(s);
    const std::vector<int> sizes = {0, 1, 1, 1, 1};
    EXPECT_TRUE(isWhole(image_io::convertToUIntImage(none), sizes));
    EXPECT_TRUE(isWhole(image_io::convertToIntImage(none), sizes));
    EXPECT_TRUE(isWhole(image_io::convertToFloatImage(none), sizes));
    EXPECT_TRUE(isWhole(image_io::convertToShortImage(none), sizes));
    EXPECT_TRUE(isWhole(image_io::convertToByteImage(none, false), sizes));
    EXPECT_TRUE(isWhole(image_io::convertToByteImage(none, true), sizes));
  }
}

TYPED_TEST(ConvertTo, ANewImageLeavesTheOldAlone) {
  Random random(314);
  image<TypeParam> img = randomImage<TypeParam>(random, {6, 5});
  const image<TypeParam> before = img.duplicate();
  const auto expectApart = [&](const Image& converted) { EXPECT_NE(converted.data(), img.data()); };
  expectApart(image_io::convertToUIntImage(img));
  expectApart(image_io::convertToIntImage(img));
  expectApart(image_io::convertToFloatImage(img));
  expectApart(image_io::convertToShortImage(img));
  expectApart(image_io::convertToByteImage(img, true));
  EXPECT_TRUE(sameImage(img, before));
}

TEST(ConvertToAll, ReadsPixelsOfAnyFormatCode) {
  Random random(315);
  std::uniform_real_distribution<float> value(-400, 400);
  for (int format = -2; format <= 13; ++format) {
    const Shape s{5, 3, 2, 1, 2};
    std::vector<float> values(60);
    for (float& v : values) v = value(random);
    expectAll(valuesOnly(s, format, values));
    for (float& v : values) v = std::fabs(v) / 2;
    expectAll(valuesOnly(s, format, values));
  }
}

TEST(ConvertToMatchesReference, ForAwkwardFloats) {
  const std::vector<float>& values = awkwardFloats();
  for (std::size_t first = 0; first < values.size(); ++first) {
    for (std::size_t count = 1; first + count <= values.size(); ++count) {
      const std::vector<float> some(values.begin() + static_cast<std::ptrdiff_t>(first),
                                    values.begin() + static_cast<std::ptrdiff_t>(first + count));
      expectAll(imageOf<float>(rowOf(count), some));
    }
  }
}

TEST(ConvertToUInt, TruncatesAndHoldsAtTheEnds) {
  const image<float> img =
      imageOf<float>({8, 1}, {1.9F, -0.9F, -1, -5e9F, 4294967040.F, 4294967296.F, kInfinity, kNaN});
  EXPECT_THAT(pixelsOf(image_io::convertToUIntImage(img)),
              testing::ElementsAre(1U, 0U, 0U, 0U, 4294967040U, 4294967295U, 4294967295U, 0U));
}

TEST(ConvertToInt, TruncatesTowardZeroAndHoldsAtTheEnds) {
  const image<float> img = imageOf<float>(
      {8, 1}, {1.9F, -1.9F, 2147483520.F, 2147483648.F, -2147483648.F, -1e30F, -kInfinity, kNaN});
  EXPECT_THAT(pixelsOf(image_io::convertToIntImage(img)),
              testing::ElementsAre(1, -1, 2147483520, 2147483647, -2147483647 - 1, -2147483647 - 1,
                                   -2147483647 - 1, 0));
}

TEST(ConvertToInt, GoesByWayOfFloatsAsIsIntended) {
  const image<int> img = imageOf<int>({3, 1}, {16777217, -16777217, 2147483647});
  EXPECT_THAT(pixelsOf(image_io::convertToIntImage(img)),
              testing::ElementsAre(16777216, -16777216, 2147483647));
  EXPECT_THAT(pixelsOf(image_io::convertToFloatImage(img)),
              testing::ElementsAre(16777216.F, -16777216.F, 2147483648.F));
}

TEST(ConvertToShort, KeepsTheLow16BitsAsIsIntended) {
  const image<float> img = imageOf<float>(
      {10, 1}, {1.9F, -1.9F, 32767.9F, 32768, -32769, 65535, 65536, 65537.9F, 1e30F, -1e30F});
  EXPECT_THAT(pixelsOf(image_io::convertToShortImage(img)),
              testing::ElementsAre(1, -1, 32767, -32768, 32767, -1, 0, 1, -1, 0));
}

TEST(ConvertToFloat, KeepsValuesAsTheyAre) {
  const std::vector<float>& values = awkwardFloats();
  EXPECT_EQ(pixelsOf(image_io::convertToFloatImage(imageOf<float>(rowOf(values.size()), values))),
            values);
  const image<float> nan = image_io::convertToFloatImage(imageOf<float>({1, 1}, {kNaN}));
  EXPECT_TRUE(std::isnan(nan.pixels()[0]));
}

TEST(ConvertToFloat, ReadsColourAsLuminance) {
  const image<Rgb> img = imageOf<Rgb>({3, 1}, {{10, 10, 10}, {0, 0, 100}, {0, 200, 0}});
  EXPECT_THAT(pixelsOf(image_io::convertToFloatImage(img)),
              testing::ElementsAre(10.F, 21.2671F, 143.032F));
}

TEST(ConvertToByte, OfBytesWithoutRescalingShares) {
  image<unsigned char> img = imageOf<unsigned char>({2, 1, 1, 2, 1}, {5, 9, 20, 30});
  const image<unsigned char> same = image_io::convertToByteImage(img, false);
  EXPECT_EQ(same.data(), img.data());
  EXPECT_TRUE(sameImage(same, img));
  img.setPixel(1, 77);
  EXPECT_EQ(same.pixel(1), 77);
}

std::vector<unsigned char> bytesOf(const std::vector<float>& values, bool rescale) {
  return pixelsOf(
      image_io::convertToByteImage(imageOf<float>(rowOf(values.size()), values), rescale));
}

TEST(ConvertToByte, OfAConstantImageIsBlackAsIsIntended) {
  EXPECT_THAT(bytesOf({7.5F, 7.5F, 7.5F}, false), testing::ElementsAre(0, 0, 0));
  EXPECT_THAT(bytesOf({300, 300}, false), testing::ElementsAre(0, 0));
  EXPECT_THAT(bytesOf({200}, true), testing::ElementsAre(0));
  EXPECT_THAT(bytesOf({0, 0.00009F}, true), testing::Each(0));
  EXPECT_THAT(bytesOf({0, 0.0001F}, true), testing::Each(0));  // this float lies below the limit
  EXPECT_THAT(bytesOf({0, 0.00011F}, true), testing::ElementsAre(0, 255));
}

TEST(ConvertToByte, TruncatesWithinTheByteRangeUnlessAsked) {
  EXPECT_THAT(bytesOf({0.9F, 10.9F, 255}, false), testing::ElementsAre(0, 10, 255));
  EXPECT_THAT(bytesOf({10.9F, 0.9F, 20}, false), testing::ElementsAre(10, 0, 20));
  EXPECT_THAT(bytesOf({10, 20, 15}, true), testing::ElementsAre(0, 255, 127));
  EXPECT_THAT(bytesOf({20, 10, 15}, true), testing::ElementsAre(255, 0, 127));
}

TEST(ConvertToByte, StretchesOutsideTheByteRange) {
  EXPECT_THAT(bytesOf({-1, 254, 100}, false), testing::ElementsAre(0, 255, 101));
  EXPECT_THAT(bytesOf({0, 255.5F}, false), testing::ElementsAre(0, 255));
  EXPECT_THAT(bytesOf({0, 510, 101}, false), testing::ElementsAre(0, 255, 50));
}

TEST(ConvertToByte, GivesTheMaximumExactly255) {
  Random random(316);
  std::uniform_real_distribution<float> value(-1e6F, 1e6F);
  for (int round = 0; round < 2000; ++round) {
    const float low = value(random);
    const float high = low + 1 + std::fabs(value(random));
    ASSERT_THAT(bytesOf({low, high}, true), testing::ElementsAre(0, 255)) << low << " " << high;
  }
}

TEST(ConvertToMatchesReference, NextToEveryByteBoundary) {
  Random random(317);
  std::uniform_real_distribution<float> value(1, 1e5F);
  for (int round = 0; round < 20; ++round) {
    std::vector<float> pixels = {0, value(random)};
    const float high = pixels.back();
    for (int byte = 1; byte < 255; ++byte) {
      float v = static_cast<float>(byte) * high / 255.0F;
      for (int step = 0; step < 3; ++step) v = std::nextafter(v, 0.0F);
      for (int step = 0; step < 7; ++step, v = std::nextafter(v, high)) pixels.push_back(v);
    }
    expectAll(imageOf<float>(rowOf(pixels.size()), pixels));
  }
}

TEST(ConvertToAll, OfAnImageClassOfItsOwnWithoutPixelsIsNull) {
  const BareImage none(0, 3, 1, 1, 1);
  EXPECT_THAT(sizesOf(image_io::convertToByteImage(none, false)),
              testing::ElementsAre(0, 1, 1, 1, 1));
  EXPECT_THAT(sizesOf(image_io::convertToShortImage(none)), testing::ElementsAre(0, 1, 1, 1, 1));
}

}  // namespace
}  // namespace orva::test
