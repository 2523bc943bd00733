// Every small image, with sizes below zero among them: these are kept as zeros but multiply as
// passed. What is made from such an image has the sizes it shows.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

using Sizes = std::vector<int>;

// The given sizes, and the pixels are the first of `source`.
testing::AssertionResult isStartOf(const Image& source, const Image& img, const Sizes& sizes) {
  const testing::AssertionResult whole = isWhole(img, sizes);
  if (!whole) return whole;
  if (img.npix() > source.npix()) return testing::AssertionFailure() << "too many pixels";
  for (int i = 0; i < img.npix(); ++i) {
    if (img.pixel(i) != source.pixel(i)) return testing::AssertionFailure() << "pixel " << i;
  }
  return testing::AssertionSuccess();
}

// A part that exists if `exists`.
testing::AssertionResult isPart(const Image& source, Image* part, bool exists, const Sizes& sizes) {
  const std::unique_ptr<Image> owned(part);
  if ((owned != nullptr) != exists) {
    return testing::AssertionFailure() << (exists ? "null" : "not null");
  }
  return exists ? isStartOf(source, *owned, sizes) : testing::AssertionSuccess();
}

std::string described(const Shape& s) {
  return testing::PrintToString(Sizes{s.nx, s.ny, s.nz, s.nc, s.nt});
}

template <class T>
class SmallImage : public testing::Test {
 protected:
  // Pixel i is i.
  static image<T> ramp(const Shape& shape) {
    image<T> img = blank<T>(shape);
    for (int i = 0; i < img.npix(); ++i) img.setPixel(i, static_cast<float>(i));
    return img;
  }
};
TYPED_TEST_SUITE(SmallImage, PixelTypes);

TYPED_TEST(SmallImage, HasThePixelsOfItsSizesAsPassed) {
  for (const Shape& s : smallShapes()) {
    SCOPED_TRACE(described(s));
    const auto img = this->ramp(s);
    EXPECT_EQ(img.npix(), s.nx * s.ny * s.nz * s.nc * s.nt);
    EXPECT_EQ(img.pixels() == nullptr, img.npix() == 0);
    EXPECT_EQ(img.fmin(), 0.0F);
    EXPECT_EQ(img.fmax(), img.isNull() ? 0.0F : img.pixel(img.npix() - 1));
    EXPECT_EQ(static_cast<int>(img.interior().size()),
              std::max(img.nx() * img.ny() * img.nframes(), 0));
  }
}

TYPED_TEST(SmallImage, IsCopiedAsItIsAndClonedWithTheSizesItShows) {
  for (const Shape& s : smallShapes()) {
    SCOPED_TRACE(described(s));
    const auto img = this->ramp(s);
    const std::unique_ptr<Image> copy(img.copy());
    EXPECT_TRUE(sameImage(*copy, img));
    EXPECT_EQ(copy->data(), img.data());
    EXPECT_TRUE(isPart(img, img.clone(), true, sizesOf(img)));
    EXPECT_TRUE(isStartOf(img, img.duplicate(), sizesOf(img)));
  }
}

TYPED_TEST(SmallImage, HasPartsOfTheSizesItShows) {
  for (const Shape& s : smallShapes()) {
    SCOPED_TRACE(described(s));
    const auto img = this->ramp(s);
    const int nx = img.nx();
    const int ny = img.ny();
    const int nz = img.nz();
    const bool has = !img.isNull();
    EXPECT_TRUE(isPart(img, img.frame(0), has && img.nframes() > 0, {nx, ny, 1, 1, 1}));
    const bool hasTime = has && img.nt() > 0;
    EXPECT_TRUE(isPart(img, img.channel(0, 0), hasTime && img.nc() > 0, {nx, ny, nz, 1, 1}));
    EXPECT_TRUE(isPart(img, img.timepoint(0), hasTime, {nx, ny, nz, img.nc(), 1}));
    const bool hasBox = nx > 0 && ny > 0 && img.nframes() > 0;
    EXPECT_TRUE(
        isPart(img, img.roi({-3, -3, -3}, {9, 9, 9}), hasBox, {nx, ny, img.nframes(), 1, 1}));
  }
}

TYPED_TEST(SmallImage, IsScaledToAnySize) {
  for (const Shape& s : smallShapes()) {
    SCOPED_TRACE(described(s));
    const auto img = this->ramp(s);
    const std::unique_ptr<Image> larger(img.scale(3, 2, 4));
    EXPECT_TRUE(isWhole(*larger, {3, 2, 4, 1, 1}));
    EXPECT_EQ(larger->pixel(0), 0.0F);
    EXPECT_TRUE(isPart(img, img.scale(-1, -1, -1), true,
                       {img.nx(), img.ny(), std::max(img.nframes(), 0), 1, 1}));
  }
}

TYPED_TEST(SmallImage, IsConvertedToTheSizesItShows) {
  const Sizes none = {0, 1, 1, 1, 1};
  for (const Shape& s : smallShapes()) {
    SCOPED_TRACE(described(s));
    const auto img = this->ramp(s);
    const Sizes stack = {img.nx(), img.ny(), std::max(img.nframes(), 0), 1, 1};
    EXPECT_TRUE(isStartOf(img, toFloatImage(img), img.isNull() ? none : sizesOf(img)));
    EXPECT_TRUE(isWhole(toRgbImage(img), img.isNull() ? none : sizesOf(img)));
    EXPECT_TRUE(isWhole(toByteImage(img, true), img.isNull() ? none : stack));
    if (img.format() == BYTE) {
      const image<unsigned char> bytes = toByteImage(img, false);
      EXPECT_EQ(sizesOf(bytes), img.isNull() ? none : sizesOf(img));
      EXPECT_EQ(bytes.data(), img.data());
    } else {
      EXPECT_TRUE(isWhole(toByteImage(img, false), img.isNull() ? none : stack));
    }
  }
}

}  // namespace
}  // namespace orva::test
