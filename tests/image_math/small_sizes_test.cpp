// Every small image, with sizes below zero among them: these are kept as zeros but multiply as
// passed.
#include <gtest/gtest.h>

#include <string>

#include "orva/image_math/image_math.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

// Pixel i is 10 i.
image<float> ramp(const Shape& shape) {
  image<float> img = blank<float>(shape);
  for (int i = 0; i < img.npix(); ++i) img.setPixel(i, static_cast<float>(10 * i));
  return img;
}

TEST(SmallImage, HasItsBrightestPixels) {
  for (const Shape& s : smallShapes()) {
    const image<float> img = ramp(s);
    testing::internal::CaptureStderr();
    const float top = image_math::topByPercentage(img, 0.0F);
    const float mean = image_math::meanOfTopByPercentage(img, 1.0F);
    EXPECT_EQ(testing::internal::GetCapturedStderr().empty(), !img.isNull());
    EXPECT_EQ(top, img.fmax());
    // 0 + 10 + ... is exact.
    EXPECT_EQ(mean, img.isNull() ? 0.0F : 5.0F * static_cast<float>(img.npix() - 1));
    for (int k = 1; k < img.npix(); ++k) {
      EXPECT_EQ(image_math::topByPixelNumber(img, k), static_cast<float>(10 * (img.npix() - k)));
    }
  }
}

// All its pixels are at the border.
TEST(SmallImage, HasNoZeroCrossings) {
  for (const Shape& s : smallShapes()) {
    image<float> img = ramp(s);
    if (!img.isNull()) img.setPixel(0, -1.0F);
    EXPECT_TRUE(image_math::findZeros(img).empty());
    EXPECT_TRUE(image_math::findZeros(img, img).empty());
  }
}

}  // namespace
}  // namespace orva::test
