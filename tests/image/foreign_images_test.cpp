// What conversions read of an image of another class: pixel(i) or the samples behind data(). The
// two disagree here, so that only one of them gives the result.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/images.h"
#include "tests/support/raw_image.h"

namespace orva::test {
namespace {

template <class T>
RawImage foreign(int format, const std::vector<T>& samples, const std::vector<float>& pixels) {
  return {Shape{static_cast<int>(pixels.size()), 1}, format, samples, pixels};
}

TEST(ForeignConversion, ToBytesAsksForPixels) {
  const auto check = [](const RawImage& img) {
    EXPECT_TRUE(sameImage(toByteImage(img, false), imageOf<unsigned char>({3, 1}, {10, 20, 30})));
    EXPECT_TRUE(sameImage(toByteImage(img, true), imageOf<unsigned char>({3, 1}, {0, 127, 255})));
  };
  check(foreign<unsigned char>(BYTE, {1, 2, 3}, {10, 20, 30}));
  check(foreign<short>(SHORT, {1, 2, 3}, {10, 20, 30}));
  check(foreign<int>(INT, {1, 2, 3}, {10, 20, 30}));
  check(foreign<unsigned>(UINT, {1, 2, 3}, {10, 20, 30}));
  check(foreign<float>(FLOAT, {1, 2, 3}, {10, 20, 30}));
  check(foreign<unsigned short>(USHORT, {1, 2, 3}, {10, 20, 30}));
}

TEST(ForeignConversion, ToFloatsTakesSamplesOfGrey) {
  const auto check = [](const RawImage& img) {
    EXPECT_TRUE(sameImage(toFloatImage(img), imageOf<float>({3, 1}, {1, 2, 3})));
  };
  check(foreign<unsigned char>(BYTE, {1, 2, 3}, {10, 20, 30}));
  check(foreign<short>(SHORT, {1, 2, 3}, {10, 20, 30}));
  check(foreign<int>(INT, {1, 2, 3}, {10, 20, 30}));
  check(foreign<unsigned>(UINT, {1, 2, 3}, {10, 20, 30}));
  check(foreign<float>(FLOAT, {1, 2, 3}, {10, 20, 30}));
  check(foreign<unsigned short>(USHORT, {1, 2, 3}, {10, 20, 30}));
}

TEST(ForeignConversion, ToFloatsAsksForPixelsOfColour) {
  const auto check = [](const RawImage& img) {
    EXPECT_TRUE(sameImage(toFloatImage(img), imageOf<float>({2, 1}, {10, 20})));
  };
  check(foreign<unsigned char>(RGB, {1, 2, 3, 4, 5, 6}, {10, 20}));
  check(foreign<short>(SHORTRGB, {1, 2, 3, 4, 5, 6}, {10, 20}));
  check(foreign<int>(INTRGB, {1, 2, 3, 4, 5, 6}, {10, 20}));
  check(foreign<float>(FLOATRGB, {1, 2, 3, 4, 5, 6}, {10, 20}));
}

TEST(ForeignConversion, ToColourAsksForPixelsOfGrey) {
  const auto expected = imageOf<Rgb>({3, 1}, {{0, 0, 0}, {127, 127, 127}, {255, 255, 255}});
  EXPECT_TRUE(sameImage(toRgbImage(foreign<short>(SHORT, {7, 2, 3}, {10, 20, 30})), expected));
  EXPECT_TRUE(sameImage(toRgbImage(foreign<float>(FLOAT, {7, 2, 3}, {10, 20, 30})), expected));
}

TEST(ForeignConversion, ToColourTakesSamplesOfColour) {
  EXPECT_TRUE(sameImage(toRgbImage(foreign<unsigned char>(RGB, {1, 2, 3, 4, 5, 6}, {10, 20})),
                        imageOf<Rgb>({2, 1}, {{1, 2, 3}, {4, 5, 6}})));
  EXPECT_TRUE(
      sameImage(toRgbImage(foreign<unsigned char>(RGBA, {1, 2, 3, 255, 4, 5, 6, 0}, {10, 20})),
                imageOf<Rgb>({2, 1}, {{1, 2, 3}, {255, 255, 255}})));
}

// The luminance, 10 and 30 stretched to 0 and 255, is that of the pixels; the samples are scaled by
// 255 / 30 = 8.5.
TEST(ForeignConversion, ToColourScalesByThePixels) {
  const auto expected = imageOf<Rgb>({2, 1}, {{0, 0, 0}, {34, 42, 51}});
  EXPECT_TRUE(
      sameImage(toRgbImage(foreign<short>(SHORTRGB, {1, 2, 3, 4, 5, 6}, {10, 30})), expected));
  EXPECT_TRUE(sameImage(toRgbImage(foreign<int>(INTRGB, {1, 2, 3, 4, 5, 6}, {10, 30})), expected));
  EXPECT_TRUE(
      sameImage(toRgbImage(foreign<float>(FLOATRGB, {1, 2, 3, 4, 5, 6}, {10, 30})), expected));
}

}  // namespace
}  // namespace orva::test
