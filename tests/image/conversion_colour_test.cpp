// Conversions to colour.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "orva/image/image.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/image.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

// Interleaved components.
std::vector<int> componentsOf(const image<Rgb>& img) {
  const auto* bytes = static_cast<const unsigned char*>(img.data());
  return {bytes, bytes + std::ptrdiff_t{3} * img.npix()};
}

template <class T>
class ToRgbMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(ToRgbMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(ToRgbMatchesReferenceAtEveryWidth, AndKeepsTheSizes) {
  Random random(81);
  for (const Shape& s : oddShapesAndWidths()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    const image<Rgb> rgb = toRgbImage(img);
    EXPECT_TRUE(sameImage(rgb, reference::toRgbImage(img)));
    EXPECT_EQ(sizesOf(rgb), sizesOf(img));
  }
}

TEST(ToRgbImage, StretchesGreyAlways) {
  EXPECT_THAT(componentsOf(toRgbImage(imageOf<short>({3, 1}, {0, 1000, 500}))),
              testing::ElementsAre(0, 0, 0, 255, 255, 255, 127, 127, 127));
  EXPECT_THAT(componentsOf(toRgbImage(imageOf<unsigned char>({2, 1}, {10, 20}))),
              testing::ElementsAre(0, 0, 0, 255, 255, 255));
}

TEST(ToRgbImage, BlackForAConstantGreyImageIsIntended) {
  EXPECT_THAT(componentsOf(toRgbImage(imageOf<float>({2, 1}, {9, 9}))),
              testing::ElementsAre(0, 0, 0, 0, 0, 0));
}

TEST(ToRgbImage, CopiesColourBytes) {
  Random random(82);
  image<Rgb> img = randomImage<Rgb>(random, {5, 3, 2, 2, 1});
  const image<Rgb> rgb = toRgbImage(img);
  EXPECT_TRUE(sameImage(rgb, img));
  EXPECT_NE(rgb.data(), img.data());
}

TEST(ToRgbImage, StretchesUnsignedShorts) {
  const RawImage img({2, 1}, USHORT, std::vector<std::uint16_t>{65535, 40000}, {65535, 40000});
  EXPECT_THAT(componentsOf(toRgbImage(img)), testing::ElementsAre(255, 255, 255, 0, 0, 0));
}

TEST(ToRgbImage, LaysColourWithAlphaOverWhite) {
  const std::vector<unsigned char> samples = {9, 99, 199, 0, 9, 99, 199, 255, 0, 100, 255, 51};
  const RawImage img({3, 1}, RGBA, samples, {0, 0, 0});
  // An alpha of a fifth leaves four fifths of white.
  EXPECT_THAT(componentsOf(toRgbImage(img)),
              testing::ElementsAre(255, 255, 255, 9, 99, 199, 204, 224, 255));
}

TEST(ToRgbImageMatchesReference, ForEveryColourAndAlpha) {
  std::vector<unsigned char> samples;
  for (int alpha = 0; alpha < 256; ++alpha)
    for (int c = 0; c < 256; ++c) {
      for (const int v : {c, 255 - c, (c * 7) % 256, alpha}) {
        samples.push_back(static_cast<unsigned char>(v));
      }
    }
  const RawImage img({256, 16, 2, 2, 4}, RGBA, samples, std::vector<float>(65536));
  EXPECT_TRUE(sameImage(toRgbImage(img), reference::toRgbImage(img)));
}

TEST(ToRgbImage, StretchesTheLuminanceOfWideColour) {
  // Luminances 100 and 200 are stretched to 0 and 255, factors 0 and 1.275.
  const std::vector<float> luminances = {100, 200};
  const std::vector<std::int16_t> samples = {50, 60, 70, 100, 200, 40};
  const auto expected = testing::ElementsAre(0, 0, 0, 127, 255, 51);
  EXPECT_THAT(componentsOf(toRgbImage(RawImage({2, 1}, SHORTRGB, samples, luminances))), expected);
  EXPECT_THAT(componentsOf(toRgbImage(RawImage(
                  {2, 1}, INTRGB, std::vector<int>(samples.begin(), samples.end()), luminances))),
              expected);
  EXPECT_THAT(
      componentsOf(toRgbImage(RawImage(
          {2, 1}, FLOATRGB, std::vector<float>(samples.begin(), samples.end()), luminances))),
      expected);
}

TEST(ToRgbImage, KeepsTheLowBitsOfWideColourPastAByte) {
  // A factor of 1 on the second pixel.
  const RawImage img({2, 1}, INTRGB, std::vector<int>{0, 0, 0, 256, 300, -1}, {-255, 255});
  EXPECT_THAT(componentsOf(toRgbImage(img)), testing::ElementsAre(0, 0, 0, 0, 44, 255));
}

TEST(ToRgbImage, HasNoGuardForLuminanceZeroAsIsIntended) {
  // 127 / 0 is infinite: a positive component saturates (low byte 255), a negative one too (low
  // byte 0), and infinity times 0 is no number (0).
  const RawImage img({3, 1}, SHORTRGB, std::vector<short>{0, 0, 0, 5, -5, 0, 1, 1, 1},
                     {-10, 0, 10});
  EXPECT_THAT(componentsOf(toRgbImage(img)), testing::ElementsAre(0, 0, 0, 255, 0, 0, 25, 25, 25));
  // 0 / 0 is no number.
  const RawImage dark({2, 1}, SHORTRGB, std::vector<short>{5, -5, 0, 1, 1, 1}, {0, 255});
  EXPECT_THAT(componentsOf(toRgbImage(dark)), testing::ElementsAre(0, 0, 0, 1, 1, 1));
}

template <class Sample>
void expectReferenceOfWideColour(Random& random, int format) {
  for (const Shape& s : oddShapes()) {
    std::vector<float> luminances;
    std::vector<Sample> samples;
    for (int i = 0; i < s.nx * s.ny * s.nz * s.nc * s.nt; ++i) {
      luminances.push_back(static_cast<float>(randomInt(random, -3, 400)));
      for (int n = 0; n < 3; ++n) samples.push_back(randomPixel<Sample>(random));
    }
    const RawImage img(s, format, samples, luminances);
    const image<Rgb> rgb = toRgbImage(img);
    EXPECT_TRUE(sameImage(rgb, reference::toRgbImage(img))) << format;
    EXPECT_EQ(sizesOf(rgb), sizesOf(img));
  }
}

TEST(ToRgbImageMatchesReference, ForWideColour) {
  Random random(83);
  expectReferenceOfWideColour<short>(random, SHORTRGB);
  expectReferenceOfWideColour<int>(random, INTRGB);
  expectReferenceOfWideColour<float>(random, FLOATRGB);
}

}  // namespace
}  // namespace orva::test
