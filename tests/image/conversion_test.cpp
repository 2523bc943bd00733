// Conversions to bytes and to floats.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include "orva/image/image.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/image.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

using Bytes = std::vector<unsigned char>;

template <class T>
Bytes bytesOf(const std::vector<T>& pixels, bool scale) {
  return pixelsOf(toByteImage(imageOf<T>({static_cast<int>(pixels.size()), 1}, pixels), scale));
}

// An image of any format code with the given pixels, its samples of no account.
RawImage valuesOnly(int format, const std::vector<float>& values) {
  const Shape shape{static_cast<int>(values.size()), 1};
  return {shape, format, std::vector<std::int32_t>(values.size() * 4), values};
}

template <class T>
class Conversion : public testing::Test {};
TYPED_TEST_SUITE(Conversion, PixelTypes);

TYPED_TEST(Conversion, OfANullImageIsTheNullImage) {
  for (const Shape& s : {Shape{0, 1}, Shape{5, 5, 0}, Shape{0, 0, 0, 0, 0}}) {
    const image<TypeParam> none(s.nx, s.ny, s.nz, s.nc, s.nt);
    EXPECT_THAT(sizesOf(toFloatImage(none)), testing::ElementsAre(0, 1, 1, 1, 1));
    EXPECT_THAT(sizesOf(toByteImage(none, false)), testing::ElementsAre(0, 1, 1, 1, 1));
    EXPECT_THAT(sizesOf(toByteImage(none, true)), testing::ElementsAre(0, 1, 1, 1, 1));
    EXPECT_THAT(sizesOf(toRgbImage(none)), testing::ElementsAre(0, 1, 1, 1, 1));
  }
}

template <class T>
class ConversionMatchesReference : public testing::Test {};
TYPED_TEST_SUITE(ConversionMatchesReference, PixelTypes);

TYPED_TEST(ConversionMatchesReference, ToBytes) {
  Random random(71);
  for (const Shape& s : oddShapes()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    for (const bool scale : {false, true}) {
      EXPECT_TRUE(sameImage(toByteImage(img, scale), reference::toByteImage(img, scale)));
    }
  }
}

template <class T>
class ConversionMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(ConversionMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(ConversionMatchesReferenceAtEveryWidth, ToBytesInNarrowRanges) {
  Random random(72);
  forEveryWidth([&](int width) {
    image<TypeParam> img(width, 2, 1, 1, 1);
    const int low = randomInt(random, -20, 250);
    const int high = low + randomInt(random, 0, 60);
    for (int i = 0; i < img.npix(); ++i) {
      img.setPixel(i, static_cast<float>(randomInt(random, low, high)));
    }
    for (const bool scale : {false, true}) {
      EXPECT_TRUE(sameImage(toByteImage(img, scale), reference::toByteImage(img, scale)));
    }
  });
}

TYPED_TEST(ConversionMatchesReferenceAtEveryWidth, ToFloats) {
  Random random(73);
  for (const Shape& s : oddShapesAndWidths()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    const image<float> f = toFloatImage(img);
    EXPECT_TRUE(sameImage(f, reference::toFloatImage(img)));
    EXPECT_EQ(sizesOf(f), sizesOf(img));
  }
}

TEST(ToByteImage, OfBytesWithoutScalingSharesPixels) {
  image<unsigned char> img = imageOf<unsigned char>({2, 1, 1, 2, 1}, {5, 9, 20, 30});
  const image<unsigned char> same = toByteImage(img, false);
  EXPECT_EQ(same.data(), img.data());
  EXPECT_TRUE(sameImage(same, img));
  img.setPixel(1, 77);
  EXPECT_EQ(same.pixel(1), 77);
}

TEST(ToByteImage, OfBytesWithScalingIsANewStretchedImage) {
  const image<unsigned char> img = imageOf<unsigned char>({3, 1}, {10, 15, 20});
  const image<unsigned char> stretched = toByteImage(img, true);
  EXPECT_NE(stretched.data(), img.data());
  EXPECT_THAT(pixelsOf(stretched), testing::ElementsAre(0, 127, 255));
  EXPECT_THAT(pixelsOf(img), testing::ElementsAre(10, 15, 20));
}

TEST(ToByteImage, BlackForAConstantImageIsIntended) {
  EXPECT_THAT(bytesOf<float>({0.5F, 0.5F, 0.5F}, false), testing::Each(0));
  EXPECT_THAT(bytesOf<short>({200, 200}, false), testing::Each(0));
  EXPECT_THAT(bytesOf<unsigned char>({200, 200}, true), testing::Each(0));
  EXPECT_THAT(bytesOf<float>({0.50002F, 0.5F}, true), testing::Each(0));
  EXPECT_THAT(bytesOf<int>({7}, true), testing::Each(0));
  EXPECT_THAT(bytesOf<float>({0, 0.00009F}, true), testing::Each(0));
  EXPECT_THAT(bytesOf<float>({0, 0.00011F}, true), testing::ElementsAre(0, 255));
  // This float lies just below the limit, which is a double.
  EXPECT_THAT(bytesOf<float>({0, 0.0001F}, true), testing::Each(0));
}

TEST(ToByteImage, StretchesFractionsOnlyWhenAsked) {
  EXPECT_THAT(bytesOf<float>({0.2F, 0.8F}, true), testing::ElementsAre(0, 255));
  EXPECT_THAT(bytesOf<float>({0.2F, 1.8F, 254.9F}, false), testing::ElementsAre(0, 1, 254));
}

TEST(ToByteImage, KeepsValuesOfTheByteRange) {
  EXPECT_THAT(bytesOf<short>({10, 200, 55}, false), testing::ElementsAre(10, 200, 55));
  EXPECT_THAT(bytesOf<short>({0, 255, 1}, false), testing::ElementsAre(0, 255, 1));
  EXPECT_THAT(bytesOf<short>({10, 200, 105}, true), testing::ElementsAre(0, 255, 127));
}

TEST(ToByteImage, StretchesValuesOutsideTheByteRange) {
  EXPECT_THAT(bytesOf<short>({-1, 200, 100}, false), testing::ElementsAre(0, 255, 101 * 255 / 201));
  EXPECT_THAT(bytesOf<short>({0, 256, 128}, false), testing::ElementsAre(0, 255, 127));
  EXPECT_THAT(bytesOf<float>({0, 255.01F}, false), testing::ElementsAre(0, 255));
}

TEST(ToByteImage, GivesTheMaximumExactly255) {
  Random random(74);
  std::uniform_real_distribution<float> value(-1e6F, 1e6F);
  for (int round = 0; round < 3000; ++round) {
    const float a = value(random);
    const float b = value(random);
    if (a == b) continue;
    EXPECT_THAT(bytesOf<float>({std::min(a, b), std::max(a, b)}, true),
                testing::ElementsAre(0, 255))
        << a << " " << b;
  }
}

TEST(ToByteImage, KeepsTheOrderOfOperations) {
  // Whole quotients are where another order would truncate to another byte.
  for (int range = 1; range <= 1500; ++range) {
    image<int> img(range + 1, 1, 1, 1, 1);
    std::iota(img.pixels(), img.pixels() + img.npix(), range % 7 - 3);
    EXPECT_TRUE(sameImage(toByteImage(img, true), reference::toByteImage(img, true))) << range;
  }
}

TEST(ToByteImageMatchesReference, NextToEveryByteBoundary) {
  Random random(78);
  std::uniform_real_distribution<float> value(1, 1e5F);
  for (int round = 0; round < 40; ++round) {
    std::vector<float> pixels = {0, value(random)};
    const float high = pixels.back();
    for (int byte = 1; byte < 255; ++byte) {
      float v = static_cast<float>(byte) * high / 255.0F;
      for (int step = 0; step < 3; ++step) v = std::nextafter(v, 0.0F);
      for (int step = 0; step < 7; ++step, v = std::nextafter(v, high)) pixels.push_back(v);
    }
    const image<float> img = imageOf<float>({static_cast<int>(pixels.size()), 1}, pixels);
    EXPECT_TRUE(sameImage(toByteImage(img, true), reference::toByteImage(img, true))) << high;
  }
}

TEST(ToByteImage, FollowsTheFormulaForInfinities) {
  EXPECT_THAT(bytesOf<float>({0, 5, kInfinity}, true), testing::ElementsAre(0, 0, 255));
  EXPECT_THAT(bytesOf<float>({-kInfinity, 5, 9}, true), testing::ElementsAre(0, 0, 255));
  EXPECT_THAT(bytesOf<float>({kInfinity, kInfinity}, true), testing::ElementsAre(255, 255));
  EXPECT_THAT(bytesOf<float>({kNaN}, false), testing::ElementsAre(0));
}

TEST(ToByteImage, ReadsColourAsLuminance) {
  const image<Rgb> img = imageOf<Rgb>({3, 1}, {{10, 10, 10}, {0, 0, 100}, {0, 200, 0}});
  // Luminances 10, 21.2671 and 143.032, within the byte range.
  EXPECT_THAT(pixelsOf(toByteImage(img, false)), testing::ElementsAre(10, 21, 143));
  EXPECT_THAT(pixelsOf(toByteImage(img, true)), testing::ElementsAre(0, 21, 255));
}

TEST(ToByteImage, TakesAllFramesAsPlanes) {
  Random random(75);
  const image<short> img = randomImage<short>(random, {4, 3, 3, 2, 2});
  EXPECT_THAT(sizesOf(toByteImage(img, false)), testing::ElementsAre(4, 3, 12, 1, 1));
  const image<float> twoChannels = randomImage<float>(random, {4, 3, 5, 2, 1});
  EXPECT_THAT(sizesOf(toByteImage(twoChannels, true)), testing::ElementsAre(4, 3, 10, 1, 1));
}

TEST(ToByteImage, AcceptsEveryKnownFormat) {
  for (int format = INT; format <= RGBA; ++format) {
    const RawImage img = valuesOnly(format, {-4, 0, 12, 4});
    EXPECT_THAT(pixelsOf(toByteImage(img, false)), testing::ElementsAre(0, 63, 255, 127)) << format;
    EXPECT_THAT(pixelsOf(toByteImage(valuesOnly(format, {5, 8.7F}), false)),
                testing::ElementsAre(5, 8));
  }
}

TEST(ToByteImage, ReadsBytesOfAnyImage) {
  EXPECT_THAT(pixelsOf(toByteImage(valuesOnly(BYTE, {5, 200}), false)),
              testing::ElementsAre(5, 200));
}

TEST(ToByteImage, OfBytesOfAnyImageWithoutScalingKeepsValuesAndSizes) {
  for (const std::vector<float>& values :
       {std::vector<float>{7, 7}, {0, 0}, {255, 255}, {5, 200}}) {
    const Bytes bytes(values.begin(), values.end());
    for (const Shape& s : {Shape{2, 1}, Shape{1, 1, 1, 2}, Shape{1, 1, 1, 1, 2}}) {
      const image<unsigned char> result = toByteImage(RawImage(s, BYTE, bytes, values), false);
      EXPECT_EQ(pixelsOf(result), bytes);
      EXPECT_EQ(sizesOf(result), (std::vector<int>{s.nx, s.ny, s.nz, s.nc, s.nt}));
    }
  }
}

TEST(ToByteImage, GivesZeroForNaN) {
  EXPECT_THAT(bytesOf<float>({0, kNaN, 10}, false), testing::ElementsAre(0, 0, 10));
  EXPECT_THAT(bytesOf<float>({0, kNaN, 10}, true), testing::ElementsAre(0, 0, 255));
}

TYPED_TEST(Conversion, OfTheReversedPixelsIsReversed) {
  Random random(77);
  image<TypeParam> img = randomImage<TypeParam>(random, {23, 3, 2});
  const auto reversed = [](auto conversion) {
    std::reverse(conversion.pixels(), conversion.pixels() + conversion.npix());
    return conversion;
  };
  const image<unsigned char> bytes = toByteImage(img, true).duplicate();
  const image<float> floats = toFloatImage(img);
  std::reverse(img.pixels(), img.pixels() + img.npix());
  EXPECT_TRUE(sameImage(toByteImage(img, true), reversed(bytes)));
  EXPECT_TRUE(sameImage(toFloatImage(img), reversed(floats)));
}

TEST(Conversions, OfAnUnknownFormatAreNull) {
  for (const int format : {11, 12, 255, 100000, -1}) {
    const RawImage img = valuesOnly(format, {1, 2, 3});
    EXPECT_TRUE(toByteImage(img, false).isNull()) << format;
    EXPECT_TRUE(toByteImage(img, true).isNull()) << format;
    EXPECT_TRUE(toFloatImage(img).isNull()) << format;
    EXPECT_TRUE(toRgbImage(img).isNull()) << format;
  }
}

TEST(ToFloatImage, OfFloatsIsTheSameBits) {
  const image<float> img = imageOf<float>({7, 1}, {-0.0F, kInfinity, kNaN, -kNaN, 1e-42F, 0.1F,
                                                   std::numeric_limits<float>::signaling_NaN()});
  const image<float> f = toFloatImage(img);
  EXPECT_TRUE(sameImage(f, img));
  EXPECT_NE(f.data(), img.data());
}

TEST(ToFloatImage, KeepsUnsignedValues) {
  EXPECT_THAT(pixelsOf(toFloatImage(imageOf<unsigned int>({2, 1}, {4294967295U, 3000000000U}))),
              testing::ElementsAre(4294967296.0F, 3000000000.0F));
  const RawImage img({2, 1}, USHORT, std::vector<std::uint16_t>{65535, 40000}, {0, 0});
  EXPECT_THAT(pixelsOf(toFloatImage(img)), testing::ElementsAre(65535.0F, 40000.0F));
}

TEST(ToFloatImage, RoundsLargeIntegersToTheNearestFloat) {
  EXPECT_THAT(pixelsOf(toFloatImage(imageOf<int>({2, 1}, {16777217, -2147483647}))),
              testing::ElementsAre(16777216.0F, -2147483648.0F));
}

TEST(ToFloatImage, ReadsSamplesOfGreyAndPixelsOfColour) {
  Random random(76);
  for (const Shape& s : oddShapes()) {
    std::vector<float> values;
    std::vector<std::uint32_t> samples;
    for (int i = 0; i < s.nx * s.ny * s.nz * s.nc * s.nt; ++i) {
      values.push_back(randomPixel<float>(random));
      for (int n = 0; n < 3; ++n) samples.push_back(randomPixel<unsigned int>(random));
    }
    for (int format = BYTE; format <= FLOATRGB; ++format) {
      const RawImage img(s, format, samples, values);
      const image<float> f = toFloatImage(img);
      EXPECT_TRUE(sameImage(f, reference::toFloatImage(img))) << format;
      if (format >= RGB) {
        EXPECT_EQ(pixelsOf(f), values) << format;
      }
    }
  }
}

TEST(ToFloatImage, OfColourWithAlphaIsNull) {
  EXPECT_THAT(sizesOf(toFloatImage(valuesOnly(RGBA, {1, 2}))), testing::ElementsAre(0, 1, 1, 1, 1));
}

}  // namespace
}  // namespace orva::test
