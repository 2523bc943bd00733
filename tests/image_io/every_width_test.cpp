#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orva/image_io/image_io.h"
#include "orva/image_math/image_math.h"
#include "tests/support/negative_image.h"
#include "tests/support/reference/image.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/reference/statistics.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

// Rows of every width, and an image of several blocks.
std::vector<Shape> widthsAndALargeImage() {
  std::vector<Shape> all;
  forEveryWidth([&](int width) { all.push_back({width, 1 + width % 3, 1 + width % 2}); });
  all.push_back({211, 47});
  return all;
}

void expectSameConversions(const Image& img) {
  for (const bool scale : {true, false}) {
    ASSERT_TRUE(sameImage(toByteImage(img, scale), reference::toByteImage(img, scale)));
    ASSERT_TRUE(sameImage(image_io::convertToByteImage(img, scale),
                          reference::convertToByteImage(img, scale)));
  }
  ASSERT_TRUE(sameImage(toRgbImage(img), reference::toRgbImage(img)));
  ASSERT_TRUE(sameImage(toFloatImage(img), reference::toFloatImage(img)));
  namespace io = image_io;
  ASSERT_TRUE(sameImage(io::convertToUIntImage(img), reference::converted<unsigned int>(img)));
  ASSERT_TRUE(sameImage(io::convertToIntImage(img), reference::converted<int>(img)));
  ASSERT_TRUE(sameImage(io::convertToShortImage(img), reference::converted<short>(img)));
  ASSERT_TRUE(sameImage(io::convertToFloatImage(img), reference::converted<float>(img)));
}

template <class T>
class ImageMatchesReferenceAtEveryWidth : public ::testing::Test {};
TYPED_TEST_SUITE(ImageMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(ImageMatchesReferenceAtEveryWidth, WhenConverted) {
  Random random(31);
  for (const Shape& shape : widthsAndALargeImage())
    expectSameConversions(randomImage<TypeParam>(random, shape));
}

template <class T>
::testing::AssertionResult samePixel(T a, T b) {
  return sameImage(imageOf<T>({1, 1}, {a}), imageOf<T>({1, 1}, {b}));
}

TYPED_TEST(ImageMatchesReferenceAtEveryWidth, ForTheFirstOfEqualExtremes) {
  Random random(32);
  using Typed = reference::Typed<TypeParam>;
  for (const Shape& shape : widthsAndALargeImage()) {
    image<TypeParam> img = randomImage<TypeParam>(random, shape);
    if constexpr (std::is_same_v<TypeParam, Rgb>) {
      // Different colours of nearly the same luminance, and equal ones.
      for (int i = 0; i < img.npix(); ++i) img.pixels()[i].c1 = 7;
    }
    ASSERT_TRUE(samePixel(img.min(), Typed::smallest(img)));
    ASSERT_TRUE(samePixel(img.max(), Typed::largest(img)));
  }
}

TYPED_TEST(ImageMatchesReferenceAtEveryWidth, WhenScaled) {
  Random random(33);
  forEveryWidth([&](int width) {
    const image<TypeParam> img = randomImage<TypeParam>(random, {1 + width % 40, 1 + width % 5, 2});
    const std::unique_ptr<image<TypeParam>> own(img.scale(width, 1 + width % 9, 3));
    ASSERT_TRUE(sameImage(*own, *reference::Typed<TypeParam>::scale(img, width, 1 + width % 9, 3)));
  });
}

// Floats of which some are no numbers, infinite, zeros of both signs, or past 32 bits.
image<float> strangeFloats(Random& random, const Shape& shape, bool withNan) {
  image<float> img = randomImage<float>(random, shape);
  for (int i = 0; i < img.npix(); ++i) {
    const float strange[] = {0.0F,          -0.0F,     1e9F,          -3e9F,
                             4294967040.0F, 5e9F,      255.0F,        2147483648.0F,
                             -kInfinity,    kInfinity, 2147483520.0F, std::nanf("")};
    const int which = randomInt(random, 0, 60);
    if (which < (withNan ? 12 : 8)) img.pixels()[i] = strange[which];
  }
  return img;
}

TEST(FloatImageMatchesReferenceAtEveryWidth, ForStrangeFloats) {
  Random random(34);
  for (const Shape& shape : widthsAndALargeImage()) {
    for (const bool withNan : {false, true}) {
      const image<float> img = strangeFloats(random, shape, withNan);
      expectSameConversions(img);
      using Typed = reference::Typed<float>;
      const auto bits = [](float v) { return std::signbit(v) ? -1 : std::isnan(v) ? 2 : 1; };
      ASSERT_EQ(bits(img.min()), bits(Typed::smallest(img)));
      ASSERT_EQ(bits(img.max()), bits(Typed::largest(img)));
      if (!withNan) {
        ASSERT_EQ(img.min(), Typed::smallest(img));
        ASSERT_EQ(img.max(), Typed::largest(img));
      }
    }
  }
}

TEST(FloatImageMatchesReference, WithANanAnywhere) {
  Random random(35);
  image<float> img = randomImage<float>(random, {100, 60});
  for (const int i : {0, 1, 2047, 2048, 3000, 5999}) {
    image<float> other = img.duplicate();
    other.pixels()[i] = std::nanf("");
    expectSameConversions(other);
  }
}

TEST(FloatImageMatchesReference, ForZerosOfBothSigns) {
  image<float> img = blank<float>({70, 1});
  img.pixels()[0] = -0.0F;
  EXPECT_TRUE(std::signbit(img.min()));
  EXPECT_TRUE(std::signbit(img.max()));
  img.pixels()[0] = 0.0F;
  img.pixels()[40] = -0.0F;
  EXPECT_FALSE(std::signbit(img.min()));
  EXPECT_FALSE(std::signbit(img.max()));
}

TEST(FloatImageMatchesReferenceAtEveryWidth, ForItsStatistics) {
  Random random(36);
  for (const Shape& shape : widthsAndALargeImage()) {
    const image<float> a = randomImage<float>(random, shape);
    const image<short> b = randomImage<short>(random, shape);
    for (const float p : {0.0F, 0.1F, 0.5F, 0.9F}) {
      ASSERT_EQ(image_math::topByPercentage(a, p), reference::topByPercentage(a, p));
      ASSERT_EQ(image_math::topByPercentage(b, p), reference::topByPercentage(b, p));
      ASSERT_EQ(image_math::meanOfTopByPercentage(a, p), reference::meanOfTopByPercentage(a, p));
      ASSERT_EQ(image_math::meanOfTopByPercentage(pixelsOf(a), p),
                reference::meanOfTopByPercentage(pixelsOf(a), p));
    }
    ASSERT_TRUE(image_math::findZeros(a) == reference::findZeros(a));
    ASSERT_TRUE(image_math::findZeros(a, b) == reference::findZeros(a, b));
  }
}

TEST(ForeignImageMatchesReference, ByItsPixelsNotItsData) {
  Random random(37);
  const NegativeImage img(randomImage<short>(random, {70, 40}));
  EXPECT_TRUE(sameImage(toByteImage(img, true), reference::toByteImage(img, true)));
  EXPECT_TRUE(sameImage(image_io::convertToIntImage(img), reference::converted<int>(img)));
}

}  // namespace
}  // namespace orva::test
