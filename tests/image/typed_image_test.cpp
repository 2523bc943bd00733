// One pixel at a time: reading, storing, the smallest and the largest.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "tests/support/images.h"
#include "tests/support/reference/image.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

static_assert(std::is_aggregate_v<Rgb> && sizeof(Rgb) == 3 && std::is_trivially_copyable_v<Rgb>);
static_assert(sizeof(GenericRgb<float>) == 3 * sizeof(float));

template <class T>
class TypedImage : public testing::Test {};
TYPED_TEST_SUITE(TypedImage, PixelTypes);

// What `v` becomes in a pixel of type T.
template <class T>
T stored(float v) {
  image<T> img(1, 1, 1, 1, 1);
  img.setPixel(0, v);
  return img.pixels()[0];
}

// The same as a number, the first component for colour.
template <class T>
double storedNumber(float v) {
  if constexpr (std::is_same_v<T, Rgb>) {
    return stored<T>(v).c0;
  } else {
    return stored<T>(v);
  }
}

template <class T>
bool sameBits(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

TYPED_TEST(TypedImage, StartsBlackWithItsSizes) {
  for (const Shape& s : oddShapes()) {
    const image<TypeParam> img(s.nx, s.ny, s.nz, s.nc, s.nt);
    EXPECT_EQ(sizesOf(img), (std::vector<int>{s.nx, s.ny, s.nz, s.nc, s.nt}));
    EXPECT_EQ(img.data(), img.pixels());
    ASSERT_NE(img.pixels(), nullptr);
    const auto* bytes = static_cast<const unsigned char*>(img.data());
    const std::ptrdiff_t size = std::ptrdiff_t{img.npix()} * img.pixelSize();
    EXPECT_EQ(std::count(bytes, bytes + size, 0), size);
  }
}

TEST(TypedImageFormat, HasCodeAndSizeOfItsType) {
  const auto check = [](const Image& img, int format, int size) {
    EXPECT_EQ(img.format(), format);
    EXPECT_EQ(img.pixelSize(), size);
  };
  check(image<unsigned char>(1, 1, 1, 1, 1), BYTE, 1);
  check(image<int>(1, 1, 1, 1, 1), INT, 4);
  check(image<short>(1, 1, 1, 1, 1), SHORT, 2);
  check(image<float>(1, 1, 1, 1, 1), FLOAT, 4);
  check(image<unsigned int>(1, 1, 1, 1, 1), UINT, 4);
  check(image<Rgb>(1, 1, 1, 1, 1), RGB, 3);
}

TYPED_TEST(TypedImage, WithoutPixelsHasNoData) {
  for (const Shape& s : {Shape{0, 1}, Shape{5, 5, 0}, Shape{3, 0, 2}, Shape{4, 4, 1, 1, 0}}) {
    const image<TypeParam> img(s.nx, s.ny, s.nz, s.nc, s.nt);
    EXPECT_TRUE(img.isNull());
    EXPECT_EQ(img.data(), nullptr);
    EXPECT_TRUE(sameBits(img.min(), TypeParam{}));
    EXPECT_TRUE(sameBits(img.max(), TypeParam{}));
    EXPECT_EQ(img.fmin(), 0.0F);
    EXPECT_EQ(img.fmax(), 0.0F);
  }
}

TYPED_TEST(TypedImage, ReadsEveryPixelAtItsLinearIndex) {
  Random random(21);
  for (int round = 0; round < 20; ++round) {
    const Shape s = randomShape(random);
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    const auto expected = [&img](int i) {
      return reference::Typed<TypeParam>::toFloat(img.pixels()[i]);
    };
    int i = 0;
    for (int t = 0; t < s.nt; ++t)
      for (int c = 0; c < s.nc; ++c)
        for (int z = 0; z < s.nz; ++z)
          for (int y = 0; y < s.ny; ++y)
            for (int x = 0; x < s.nx; ++x, ++i) {
              ASSERT_EQ(img.pixel(x, y, z, c, t), expected(i));
              ASSERT_EQ(img.pixel(i), expected(i));
            }
    for (int f = 0; f < img.nframes(); ++f) {
      // The three-argument form runs on into later channels and time points.
      EXPECT_EQ(img.pixel(s.nx - 1, 0, f), expected(f * s.nx * s.ny + s.nx - 1));
    }
    EXPECT_EQ(img.pixel(s.nx - 1, s.ny - 1), expected(s.nx * s.ny - 1));
    EXPECT_EQ(img.pixel(Point(0, s.ny - 1)), expected((s.ny - 1) * s.nx));
  }
}

TYPED_TEST(TypedImage, StoresEveryPixelAtItsLinearIndex) {
  const Shape s{4, 3, 2, 3, 2};
  const auto check = [](const image<TypeParam>& img, int index) {
    image<TypeParam> expected(4, 3, 2, 3, 2);
    expected.pixels()[index] = reference::Typed<TypeParam>::fromFloat(77);
    EXPECT_TRUE(sameImage(img, expected)) << index;
  };
  image<TypeParam> img = blank<TypeParam>(s);
  img.setPixel(143, 77);
  check(img, 143);
  img = blank<TypeParam>(s);
  img.setPixel(3, 2, 77);
  check(img, 11);
  img = blank<TypeParam>(s);
  img.setPixel(1, 2, 1, 77);
  check(img, 1 + 2 * 4 + 12);
  img = blank<TypeParam>(s);
  img.setPixel(1, 0, 4, 77);
  check(img, 1 + 4 * 12);
  img = blank<TypeParam>(s);
  img.setPixel(0, 1, 1, 2, 77);
  check(img, 4 + 12 + 2 * 24);
  img = blank<TypeParam>(s);
  img.setPixel(3, 1, 1, 2, 1, 77);
  check(img, 3 + 4 + 12 + 2 * 24 + 72);
}

TYPED_TEST(TypedImage, StoresAnyFloatByItsRule) {
  Random random(22);
  std::vector<float> values = {0.0F,        -0.0F,        0.99F,        -0.99F,       255.0F,
                               256.0F,      -1.0F,        300.7F,       -300.7F,      32767.0F,
                               32768.0F,    -32769.0F,    65536.0F,     2147483520.F, 2147483648.F,
                               2147483904., -2147483648., -2147483904., 4294967040.F, 4294967296.F,
                               1e20F,       -1e20F,       kInfinity,    -kInfinity,   kNaN};
  std::uniform_real_distribution<float> exponent(-3, 34);
  for (int round = 0; round < 2000; ++round) {
    const float v = std::exp2(exponent(random));
    values.push_back(round % 2 == 0 ? v : -v);
  }
  for (const float v : values) {
    EXPECT_TRUE(sameBits(stored<TypeParam>(v), reference::Typed<TypeParam>::fromFloat(v))) << v;
  }
}

TEST(SetPixel, WrapsInsteadOfClampingInBytesAndShorts) {
  EXPECT_EQ(stored<unsigned char>(300.0F), 44);
  EXPECT_EQ(stored<unsigned char>(256.0F), 0);
  EXPECT_EQ(stored<unsigned char>(-1.0F), 255);
  EXPECT_EQ(stored<unsigned char>(-0.9F), 0);
  EXPECT_EQ(stored<short>(40000.0F), -25536);
  EXPECT_EQ(stored<short>(-40000.0F), 25536);
  EXPECT_EQ(stored<int>(-7.9F), -7);
}

TEST(SetPixel, HoldsUnsignedIntWithinItsRange) {
  EXPECT_EQ(stored<unsigned int>(-5.0F), 0U);
  EXPECT_EQ(stored<unsigned int>(-0.5F), 0U);
  EXPECT_EQ(stored<unsigned int>(3000000000.0F), 3000000000U);
  EXPECT_EQ(stored<unsigned int>(4294967296.0F), 4294967295U);
  EXPECT_EQ(stored<unsigned int>(kInfinity), 4294967295U);
}

TEST(SetPixel, SaturatesAt32BitsBeforeTheLowBitsAreKept) {
  const std::vector<std::pair<float, std::int64_t>> rows = {
      {2147483648.0F, 2147483647}, {1e30F, 2147483647},         {kInfinity, 2147483647},
      {-1e30F, -2147483648LL},     {-kInfinity, -2147483648LL}, {kNaN, 0}};
  for (const auto& [v, whole] : rows) {
    EXPECT_EQ(stored<int>(v), whole) << v;
    EXPECT_EQ(stored<short>(v), static_cast<short>(whole & 0xFFFF)) << v;
    EXPECT_EQ(stored<unsigned char>(v), static_cast<unsigned char>(whole & 0xFF)) << v;
    EXPECT_EQ(storedNumber<Rgb>(v), static_cast<unsigned char>(whole & 0xFF)) << v;
  }
  EXPECT_EQ(stored<unsigned int>(kNaN), 0U);
}

TEST(SetPixel, LeavesFloatsUnchanged) {
  EXPECT_TRUE(sameBits(stored<float>(-0.0F), -0.0F));
  EXPECT_EQ(stored<float>(1e-40F), 1e-40F);
  EXPECT_EQ(stored<float>(kInfinity), kInfinity);
  EXPECT_TRUE(std::isnan(stored<float>(kNaN)));
}

TEST(SetPixel, MakesAColourPixelGrey) {
  image<Rgb> img(1, 1, 1, 1, 1);
  img.setPixel(0, 100.7F);
  EXPECT_TRUE(sameBits(img.pixels()[0], Rgb{100, 100, 100}));
  EXPECT_NEAR(img.pixel(0), 100.0, 1e-5);
}

TEST(Pixel, LuminanceWeighingTheThirdComponentAsRedIsIntended) {
  const image<Rgb> img =
      imageOf<Rgb>({4, 1}, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {10, 20, 30}});
  EXPECT_EQ(img.pixel(0), static_cast<float>(0.072169 * 255));
  EXPECT_EQ(img.pixel(1), static_cast<float>(0.71516 * 255));
  EXPECT_EQ(img.pixel(2), static_cast<float>(0.212671 * 255));
  EXPECT_EQ(img.pixel(3), static_cast<float>(0.072169 * 10 + 0.71516 * 20 + 0.212671 * 30));
}

TEST(Pixel, RoundsLargeIntegersToFloat) {
  EXPECT_EQ(imageOf<int>({1, 1}, {16777217}).pixel(0), 16777216.0F);
  EXPECT_EQ(imageOf<int>({1, 1}, {-2147483647}).pixel(0), -2147483648.0F);
  EXPECT_EQ(imageOf<unsigned int>({1, 1}, {4294967295U}).pixel(0), 4294967296.0F);
}

template <class T>
class TypedImageMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(TypedImageMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(TypedImageMatchesReferenceAtEveryWidth, ForTheExtremes) {
  Random random(23);
  for (const Shape& s : oddShapesAndWidths()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    const TypeParam low = reference::Typed<TypeParam>::smallest(img);
    const TypeParam high = reference::Typed<TypeParam>::largest(img);
    EXPECT_TRUE(sameBits(img.min(), low));
    EXPECT_TRUE(sameBits(img.max(), high));
    EXPECT_EQ(img.fmin(), reference::Typed<TypeParam>::toFloat(low));
    EXPECT_EQ(img.fmax(), reference::Typed<TypeParam>::toFloat(high));
  }
}

TEST(MinMax, TellLargeIntegersApartThatAreTheSameFloat) {
  const image<int> img = imageOf<int>({3, 1}, {16777217, 16777216, 16777218});
  EXPECT_EQ(img.min(), 16777216);
  EXPECT_EQ(img.max(), 16777218);
  const image<unsigned int> big = imageOf<unsigned int>({2, 1}, {4294967295U, 4294967294U});
  EXPECT_EQ(big.min(), 4294967294U);
  EXPECT_EQ(big.max(), 4294967295U);
}

TEST(MinMax, TakeTheFirstOfEquals) {
  const image<float> zeros = imageOf<float>({2, 1}, {-0.0F, 0.0F});
  EXPECT_TRUE(std::signbit(zeros.min()));
  EXPECT_TRUE(std::signbit(zeros.max()));
}

TEST(MinMax, TakeTheFirstOfColoursWithTheSameLuminance) {
  // Two colours whose luminance is the same float.
  std::vector<Rgb> seen;
  Random random(24);
  std::vector<std::pair<float, Rgb>> colours;
  for (int i = 0; i < 20000; ++i) {
    const Rgb colour = randomPixel<Rgb>(random);
    colours.emplace_back(reference::Typed<Rgb>::toFloat(colour), colour);
  }
  std::stable_sort(colours.begin(), colours.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  const auto pair =
      std::adjacent_find(colours.begin(), colours.end(), [](const auto& a, const auto& b) {
        return a.first == b.first && !sameBits(a.second, b.second);
      });
  ASSERT_NE(pair, colours.end());
  const Rgb first = pair->second;
  const Rgb second = std::next(pair)->second;
  const image<Rgb> img = imageOf<Rgb>({2, 1}, {first, second});
  EXPECT_TRUE(sameBits(img.min(), first));
  EXPECT_TRUE(sameBits(img.max(), first));
}

TEST(MinMax, CompareNaNsWithLessInStorageOrder) {
  const image<float> first = imageOf<float>({3, 1}, {kNaN, -1, 1});
  EXPECT_TRUE(std::isnan(first.min()));
  EXPECT_TRUE(std::isnan(first.max()));
  const image<float> later = imageOf<float>({4, 1}, {1, kNaN, -2, 3});
  EXPECT_EQ(later.min(), -2);
  EXPECT_EQ(later.max(), 3);
}

TEST(MinMax, OfColourIsTheLuminanceOfTheChosenPixel) {
  const image<Rgb> img = imageOf<Rgb>({3, 1}, {{255, 0, 0}, {0, 20, 0}, {0, 0, 255}});
  EXPECT_EQ(img.fmin(), static_cast<float>(0.71516 * 20));
  EXPECT_EQ(img.fmax(), static_cast<float>(0.212671 * 255));
  EXPECT_TRUE(sameBits(img.min(), Rgb{0, 20, 0}));
  EXPECT_TRUE(sameBits(img.max(), Rgb{0, 0, 255}));
}

TEST(GenericRgb, IsOrderedByLuminance) {
  EXPECT_TRUE((Rgb{255, 0, 0}) < (Rgb{0, 0, 255}));
  EXPECT_FALSE((Rgb{0, 0, 255}) < (Rgb{255, 0, 0}));
  EXPECT_TRUE((Rgb{0, 0, 255}) < (Rgb{0, 255, 0}));
  EXPECT_FALSE((Rgb{1, 2, 3}) < (Rgb{1, 2, 3}));
}

}  // namespace
}  // namespace orva::test
