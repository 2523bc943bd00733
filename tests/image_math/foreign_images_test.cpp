// Statistics ask an image of another class for its pixels, never for its samples.
#include <gtest/gtest.h>

#include <vector>

#include "orva/image_math/image_math.h"
#include "tests/support/raw_image.h"

namespace orva::test {
namespace {

const std::vector<float> kPixels = {40, 10, 30, 20};

RawImage foreign() { return {Shape{2, 2}, BYTE, std::vector<unsigned char>{1, 2, 3, 4}, kPixels}; }

TEST(ForeignStatistics, AreThoseOfThePixels) {
  EXPECT_EQ(image_math::topByPixelNumber(foreign(), 2), 30.0F);
  EXPECT_EQ(image_math::topByPercentage(foreign(), 0.75F), 20.0F);
  EXPECT_EQ(image_math::meanOfTopByPercentage(foreign(), 0.5F), 35.0F);
}

TEST(ForeignStatistics, HaveTheZerosOfThePixels) {
  constexpr int kSide = 7;
  image<float> step = blank<float>({kSide, kSide});
  for (int i = 0; i < step.npix(); ++i) step.setPixel(i, i % kSide < 3 ? -1.0F : 1.0F);
  const RawImage img({kSide, kSide}, FLOAT, std::vector<float>(kSide * kSide, 1.0F),
                     pixelsOf(step));
  EXPECT_FALSE(image_math::findZeros(step).empty());
  EXPECT_TRUE(image_math::findZeros(img) == image_math::findZeros(step));
  EXPECT_TRUE(image_math::findZeros(img, step) == image_math::findZeros(step));
}

}  // namespace
}  // namespace orva::test
