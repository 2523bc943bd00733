// Images that the filters cannot process: every small one, with sizes below zero among them, and
// those of formats that have no float form.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "orva/scalespace/scalespace.h"
#include "tests/support/raw_image.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

using Sizes = std::vector<int>;

const Sizes kNone = {0, 1, 1, 1, 1};

TEST(SmallImage, IsFilteredToTheSizesItShows) {
  for (const Shape& s : smallShapes()) {
    SCOPED_TRACE(testing::PrintToString(Sizes{s.nx, s.ny, s.nz, s.nc, s.nt}));
    const image<short> img = blank<short>(s);
    const Sizes sizes = img.isNull() ? kNone : sizesOf(img);
    EXPECT_TRUE(isWhole(scalespace::smooth(img, 1.0F, 1.0F), sizes));
    EXPECT_TRUE(isWhole(scalespace::gaussian(img, 1.0F, 1, 0, 1), sizes));
    EXPECT_TRUE(isWhole(scalespace::gradient(img, 1.0F, 1.0F), sizes));
    EXPECT_TRUE(isWhole(scalespace::laplacian(img, 1.0F), sizes));
  }
}

TEST(SmallImage, HasMasksAndCutsOfItsWidthAndHeight) {
  for (const Shape& s : smallShapes()) {
    SCOPED_TRACE(testing::PrintToString(Sizes{s.nx, s.ny, s.nz, s.nc, s.nt}));
    const image<short> img = blank<short>(s);
    for (const int type : {1, 2, 4, 8, 16, 32}) {
      const auto mask = scalespace::features(img, 1.0F, static_cast<FeatureType>(type), 1.0F);
      const bool stack = img.nframes() > 1;
      EXPECT_TRUE(isWhole(
          mask, img.isNull() ? kNone : Sizes{img.nx(), img.ny(), stack ? img.nframes() : 1, 1, 1}));
      EXPECT_EQ(mask.fmax(), 0.0F);
    }
    EXPECT_TRUE(
        isWhole(scalespace::harmonicCut(img, 1.0F, true, 2), {img.nx(), img.ny(), 1, 1, 1}));
    const std::unique_ptr<Image> half(scalespace::reduce(img, 0.5F, 1.0F));
    ASSERT_EQ(half == nullptr, img.isNull());
    if (half) {
      EXPECT_TRUE(isWhole(*half, {1, 1, std::max(img.nframes() / 2, 1), 1, 1}));
    }
  }
}

class ForeignFormat : public testing::TestWithParam<int> {
 protected:
  // Without a float form and without a clone.
  static RawImage some(const Shape& s) {
    const auto count = static_cast<std::size_t>(s.nx) * static_cast<std::size_t>(s.ny * s.nz);
    std::vector<float> values(count);
    for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<float>(i * i % 7);
    return RawImage(s, GetParam(), std::vector<int>(count), values);
  }
};
INSTANTIATE_TEST_SUITE_P(All, ForeignFormat, testing::Values(int{RGBA}, 11, 99, -1));

TEST_P(ForeignFormat, HasNoFilteredForm) {
  for (const Shape& s : {Shape{6, 5}, Shape{6, 5, 4}}) {
    const RawImage img = some(s);
    EXPECT_TRUE(isWhole(scalespace::smooth(img, 1.0F, 1.0F), kNone));
    EXPECT_TRUE(isWhole(scalespace::gaussian(img, 1.0F, 1, 0, 1), kNone));
    EXPECT_TRUE(isWhole(scalespace::gradient(img, 1.0F, 1.0F), kNone));
    EXPECT_TRUE(isWhole(scalespace::laplacian(img, 1.0F), kNone));
  }
}

TEST_P(ForeignFormat, HasNoMarkedFeatures) {
  for (const Shape& s : {Shape{6, 5}, Shape{6, 5, 4}}) {
    for (const int type : {1, 2, 4, 8, 16, 32}) {
      EXPECT_TRUE(
          sameImage(scalespace::features(some(s), 1.0F, static_cast<FeatureType>(type), 1.0F),
                    blank<unsigned char>(s)))
          << type;
    }
  }
}

// The cuts read pixels one by one, which every image has.
TEST_P(ForeignFormat, IsCutLikeItsPixelsAsFloats) {
  const RawImage img = some({6, 5});
  image<float> floats = blank<float>({6, 5});
  for (int i = 0; i < floats.npix(); ++i) floats.setPixel(i, img.pixel(i));
  EXPECT_TRUE(sameImage(scalespace::harmonicCut(img, 1.0F, true, 2),
                        scalespace::harmonicCut(floats, 1.0F, true, 2)));
  EXPECT_TRUE(sameImage(scalespace::hcut(img, 1.0F, 2.0F), scalespace::hcut(floats, 1.0F, 2.0F)));
}

TEST_P(ForeignFormat, IsNotReducedWithoutAClone) {
  EXPECT_EQ(scalespace::reduce(some({6, 5}), 0.5F, 1.0F), nullptr);
  EXPECT_EQ(scalespace::reduce(some({6, 5, 4}), 2.0F, 1.0F), nullptr);
}

// Has a clone, of another kind, to store into.
class WithClone : public RawImage {
 public:
  using RawImage::RawImage;
  Image* clone() const override { return new image<float>(nx(), ny(), nz(), 1, 1); }
};

TEST_P(ForeignFormat, IsNotReducedWithoutBeingSmoothed) {
  const WithClone img({3, 2}, GetParam(), std::vector<int>(6), {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(scalespace::reduce(img, 0.5F, 1.0F), nullptr);
}

}  // namespace
}  // namespace orva::test
