// What lies elsewhere on a wide background is measured and selected alike, at its new place.
//
// No exceptions for whole regions; edges are not marked on the border, so that images have a
// background of two pixels around them where edges matter. Regions themselves, erosion, dilation
// and edges are in symmetry_test.cpp, distances and hulls in files of their own.
#include <gtest/gtest.h>

#include <vector>

#include "orva/bip/bip.h"
#include "orva/image_math/image_math.h"
#include "tests/support/images.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

constexpr int kWidth = 37;
constexpr int kHeight = 34;

struct Shift {
  int dx;
  int dy;
};

Shift randomShift(Random& random) { return {randomInt(random, 0, 16), randomInt(random, 0, 17)}; }

template <class T>
image<T> shifted(const image<T>& img, const Shift& by, T background) {
  return framed<T>(img, kWidth, kHeight, by.dx, by.dy, background);
}

// The image with a background of two pixels around it.
template <class T>
image<T> onBackground(const image<T>& img, T background) {
  return framed<T>(img, img.nx() + 4, img.ny() + 4, 2, 2, background);
}

void expectShifted(const std::vector<Point>& there, const std::vector<Point>& here,
                   const Shift& by) {
  ASSERT_EQ(there.size(), here.size());
  for (std::size_t i = 0; i < here.size(); ++i) {
    EXPECT_EQ(there[i].x, here[i].x + by.dx);
    EXPECT_EQ(there[i].y, here[i].y + by.dy);
  }
}

// Sums are taken of the same values in the same order.
TEST(FramedLabels, HaveShiftedFeaturesAndTheSameBrightness) {
  Random random(331);
  const int n = 5;
  for (const Shape& shape : {Shape{20, 16}, Shape{9, 11, 4}}) {
    for (int round = 0; round < 10; ++round) {
      const Shift by = randomShift(random);
      const Labels labels = randomLabels(random, shape, n - 2);  // the last label has no pixels
      const image<float> img = randomImage<float>(random, shape);
      const Labels movedLabels = shifted<short>(labels, by, -1);
      const image<float> movedImg = shifted(img, by, 9.0F);
      const auto here = bip::regionFeatures(labels, n, img);
      const auto there = bip::regionFeatures(movedLabels, n, movedImg);
      ASSERT_EQ(there.size(), here.size());
      for (std::size_t k = 0; k < here.size(); ++k) {
        const RegionFeature& f = here[k];
        const RegionFeature& g = there[k];
        const int dx = f.npix > 0 ? by.dx : 0;
        const int dy = f.npix > 0 ? by.dy : 0;
        EXPECT_EQ((std::vector{g.xmin, g.xmax, g.cx}),
                  (std::vector{f.xmin + dx, f.xmax + dx, f.cx + dx}));
        EXPECT_EQ((std::vector{g.ymin, g.ymax, g.cy}),
                  (std::vector{f.ymin + dy, f.ymax + dy, f.cy + dy}));
        EXPECT_EQ((std::vector{g.zmin, g.zmax, g.cz, g.npix, g.radius}),
                  (std::vector{f.zmin, f.zmax, f.cz, f.npix, f.radius}));
        EXPECT_EQ(g.mean, f.mean);
        EXPECT_EQ(g.var, f.var);
      }
      for (const bool sorted : {false, true}) {
        EXPECT_EQ(bip::regionIntensityArrays(movedLabels, movedImg, sorted),
                  bip::regionIntensityArrays(labels, img, sorted));
      }
    }
  }
}

TEST(FramedLabels, HaveShiftedBoundariesInTheSameOrder) {
  Random random(332);
  for (int round = 0; round < 10; ++round) {
    const Shift by = randomShift(random);
    const Labels labels = onBackground<short>(randomLabels(random, {16, 12}, 3), -1);
    const auto here = bip::boundaries(labels);
    const auto there = bip::boundaries(shifted<short>(labels, by, -1));
    ASSERT_EQ(there.size(), here.size());
    for (std::size_t k = 0; k < here.size(); ++k) expectShifted(there[k], here[k], by);
  }
}

TEST(FramedImages, HaveShiftedZerosInTheSameOrder) {
  Random random(333);
  for (const float background : {-1.0F, 0.0F}) {
    for (int round = 0; round < 10; ++round) {
      const Shift by = randomShift(random);
      const auto a = onBackground(randomImage<float>(random, {16, 12}), background);
      const auto b = onBackground(randomImage<float>(random, {16, 12}), background);
      const auto here = image_math::findZeros(a);
      ASSERT_FALSE(here.empty());
      expectShifted(image_math::findZeros(shifted(a, by, background)), here, by);
      expectShifted(image_math::findZeros(shifted(a, by, background), shifted(b, by, background)),
                    image_math::findZeros(a, b), by);
    }
  }
}

TEST(FramedMasks, KeepTheSameRegionsWhereverTheyLie) {
  Random random(334);
  for (const Shape& shape : {Shape{20, 16}, Shape{9, 11, 4}}) {
    for (int round = 0; round < 10; ++round) {
      const Shift by = randomShift(random);
      const Mask mask = randomMask(random, shape, shape.nz == 1 ? 0.45 : 0.2);
      const auto img = randomImage<unsigned char>(random, shape);
      Mask here = mask.duplicate();
      Mask there = shifted<unsigned char>(mask, by, 0);
      bip::selectRegions(here, img, 120.0F, 3);
      bip::selectRegions(there, shifted<unsigned char>(img, by, 77), 120.0F, 3);
      ASSERT_FALSE(sameImage(here, mask));
      EXPECT_TRUE(sameImage(there, shifted<unsigned char>(here, by, 0)));

      here = mask.duplicate();
      there = shifted<unsigned char>(mask, by, 0);
      bip::selectRegionsBySize(here, 3, 12);
      bip::selectRegionsBySize(there, 3, 12);
      ASSERT_FALSE(sameImage(here, mask));
      EXPECT_TRUE(sameImage(there, shifted<unsigned char>(here, by, 0)));
    }
  }
}

}  // namespace
}  // namespace orva::test
