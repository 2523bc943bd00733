// What filters read of an image of another class: pixel(i) or the samples behind data(). The two
// disagree here, so that only one of them gives the result.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/raw_image.h"

namespace orva::test {
namespace {

const Shape kShape{9, 7};

// The floats that are seen pixel by pixel, and others that lie in memory.
class ForeignFilter : public testing::Test {
 protected:
  ForeignFilter() {
    Random random(63);
    pixels_ = randomImage<float>(random, kShape);
    samples_ = randomImage<float>(random, kShape);
  }
  RawImage foreign() const { return {kShape, FLOAT, pixelsOf(samples_), pixelsOf(pixels_)}; }

  image<float> pixels_ = {0, 1, 1, 1, 1};
  image<float> samples_ = {0, 1, 1, 1, 1};
};

TEST_F(ForeignFilter, TakesTheSamples) {
  const RawImage img = foreign();
  EXPECT_TRUE(sameImage(scalespace::gaussian(img, 1.5F, 1, 0, 0), scalespace::dX(samples_, 1.5F)));
  EXPECT_TRUE(
      sameImage(scalespace::smooth(img, 1.5F, 1.0F), scalespace::smooth(samples_, 1.5F, 1.0F)));
  EXPECT_TRUE(
      sameImage(scalespace::gradient(img, 1.5F, 1.0F), scalespace::gradient(samples_, 1.5F, 1.0F)));
  EXPECT_TRUE(sameImage(scalespace::laplacian(img, 1.5F), scalespace::laplacian(samples_, 1.5F)));
  for (const FeatureType type : {LAPLACIAN_NEGATIVE, HESSIAN_MAXIMUM, GRADIENT_CONVEX}) {
    EXPECT_TRUE(sameImage(scalespace::features(img, 1.0F, type, 1.0F),
                          scalespace::features(samples_, 1.0F, type, 1.0F)));
  }
}

TEST_F(ForeignFilter, CombinesPixelByPixel) {
  const RawImage img = foreign();
  EXPECT_TRUE(
      sameImage(scalespace::gradient(img, samples_), scalespace::gradient(pixels_, samples_)));
  EXPECT_TRUE(sameImage(scalespace::gradient(samples_, samples_, img),
                        scalespace::gradient(samples_, samples_, pixels_)));
  EXPECT_TRUE(
      sameImage(scalespace::direction(img, samples_), scalespace::direction(pixels_, samples_)));
  EXPECT_TRUE(sameImage(scalespace::angle(samples_, img), scalespace::angle(samples_, pixels_)));
  EXPECT_TRUE(
      sameImage(scalespace::angleInRadian(img, img), scalespace::angleInRadian(pixels_, pixels_)));
}

TEST_F(ForeignFilter, CutsPixelByPixel) {
  const RawImage img = foreign();
  EXPECT_TRUE(sameImage(scalespace::harmonicCut(img, 1.0F, true, 2),
                        scalespace::harmonicCut(pixels_, 1.0F, true, 2)));
  EXPECT_TRUE(sameImage(scalespace::hcut(img, 1.0F, 1.5F), scalespace::hcut(pixels_, 1.0F, 1.5F)));
}

// Shows other pixels than it holds and makes clones of them.
class Cloned : public RawImage {
 public:
  Cloned(const image<float>& samples, const image<float>& pixels)
      : RawImage(kShape, FLOAT, pixelsOf(samples), pixelsOf(pixels)), clone_(pixels) {}
  Image* clone() const override { return clone_.clone(); }

 private:
  image<float> clone_;
};

TEST_F(ForeignFilter, ReducesTheSamplesIntoAClone) {
  const std::unique_ptr<Image> reduced(scalespace::reduce(Cloned(samples_, pixels_), 0.5F, 1.0F));
  const std::unique_ptr<Image> expected(scalespace::reduce(samples_, 0.5F, 1.0F));
  ASSERT_NE(reduced, nullptr);
  EXPECT_TRUE(sameImage(*reduced, *expected));
}

}  // namespace
}  // namespace orva::test
