// Flooding and the filling of holes against their reference implementations, bit for bit.
#include "orva/detect/flooding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

#include "tests/detect/label_image.h"
#include "tests/support/reference/flooding.h"

namespace orva::test {
namespace {

using detect::Basin;
using detect::flooded;

Basin circularBasin(float x, float y, float radius, float threshold) {
  Basin b{x, y, {}, threshold};
  b.radii.fill(radius);
  return b;
}

image<float> constantImage(int nx, int ny, float value) {
  image<float> img(nx, ny, 1, 1, 1);
  std::fill_n(img.pixels(), img.npix(), value);
  return img;
}

TEST(FloodingMatchesReference, OnRandomImages) {
  std::mt19937 random(7);
  const auto uniform = [&](float low, float high) {
    return low + (high - low) * static_cast<float>(random() % 10000) / 10000.0F;
  };
  int labelled = 0;
  for (int nx = 1; nx <= 49; nx += 4) {
    const int ny = 1 + static_cast<int>(random() % 40);
    image<float> values(nx, ny, 1, 1, 1);
    for (int i = 0; i < values.npix(); ++i) values.pixels()[i] = uniform(0, 1);
    std::vector<Basin> basins;
    for (int k = 0; k < 8; ++k) {
      Basin b{uniform(-0.5F, static_cast<float>(nx) - 0.5F),
              uniform(-0.5F, static_cast<float>(ny) - 0.5F),
              {},
              uniform(0.3F, 0.45F)};
      const float radius = uniform(1.0F, 20.0F);
      for (float& r : b.radii) r = radius * uniform(0.5F, 1.5F);
      basins.push_back(b);
    }
    const image<int> labels = flooded(values, basins);
    EXPECT_EQ(labelsOf(labels), labelsOf(reference::flooded(values, basins))) << nx;
    labelled += labels.npix() -
                static_cast<int>(std::count(labels.pixels(), labels.pixels() + labels.npix(), 0));
  }
  EXPECT_GE(labelled, 2000);
}

// Two basins enter the chamber between them at the same level: the one whose pixel comes first
// takes all that lies lower.
TEST(FloodingMatchesReference, ThroughTwoGates) {
  constexpr int kWidth = 41;
  image<float> values = constantImage(kWidth, 25, 1.0F);
  for (int y = 0; y < 24; ++y) {
    for (const int x : {15, 25}) values.pixels()[y * kWidth + x] = 0.0F;
  }
  const std::vector<Basin> basins{circularBasin(6, 12, 16, 0.5F), circularBasin(34, 12, 16, 0.5F)};
  const image<int> labels = flooded(values, basins);
  EXPECT_EQ(labelsOf(labels), labelsOf(reference::flooded(values, basins)));
  EXPECT_EQ(labels.pixels()[12 * kWidth + 20], 1);
  EXPECT_EQ(labels.pixels()[12 * kWidth + 26], 2);
}

TEST(FloodingMatchesReference, WhereLevelsAreEqual) {
  const image<float> values = constantImage(41, 21, 1.0F);
  const std::vector<Basin> basins{circularBasin(10, 10, 8, 0), circularBasin(20, 10, 8, 0),
                                  circularBasin(30, 10, 8, 0), circularBasin(20, 10, 3, 0)};
  EXPECT_EQ(labelsOf(flooded(values, basins)), labelsOf(reference::flooded(values, basins)));
}

TEST(HoleFillingMatchesReference, OnRandomLabels) {
  std::mt19937 random(3);
  for (const unsigned share : {2U, 3U, 6U}) {
    image<int> labels(37, 29, 1, 1, 1);
    for (int i = 0; i < labels.npix(); ++i) {
      labels.pixels()[i] = random() % share == 0 ? 0 : 1 + static_cast<int>(random() % 9 == 0);
    }
    const image<int> expected = reference::withoutHoles(labels);
    detect::fillHoles(labels);
    EXPECT_EQ(labelsOf(labels), labelsOf(expected)) << share;
  }
}

TEST(Flooding, EqualDiscsShareTheMiddleEvenly) {
  const image<float> values = constantImage(31, 21, 1.0F);
  const image<int> labels =
      flooded(values, {circularBasin(10, 10, 8, 0), circularBasin(20, 10, 8, 0)});
  for (int y = 5; y <= 15; ++y) {
    EXPECT_EQ(labels.pixels()[y * 31 + 14], 1) << y;
    EXPECT_EQ(labels.pixels()[y * 31 + 16], 2) << y;
  }
}

TEST(Flooding, TakesTheCoreWhateverItsValue) {
  const image<float> values = constantImage(21, 21, 0.0F);
  const image<int> labels = flooded(values, {circularBasin(10, 10, 8, 1.0F)});
  EXPECT_EQ(labels.pixels()[10 * 21 + 14], 1);  // 4 of 8 pixels from the center
  EXPECT_EQ(labels.pixels()[10 * 21 + 15], 0);
}

TEST(Flooding, EndsAtTheReach) {
  const image<float> values = constantImage(41, 41, 1.0F);
  const image<int> labels = flooded(values, {circularBasin(20, 20, 10, 0.5F)});
  EXPECT_EQ(labels.pixels()[20 * 41 + 34], 1);
  EXPECT_EQ(labels.pixels()[20 * 41 + 35], 0);
}

TEST(Flooding, TheFirstBasinOfAPixelIsKept) {
  const image<float> values = constantImage(9, 9, 1.0F);
  const image<int> labels =
      flooded(values, {circularBasin(4.2F, 4, 2, 0), circularBasin(3.8F, 4, 2, 0)});
  EXPECT_EQ(labels.pixels()[4 * 9 + 4], 1);
  EXPECT_EQ(std::count(labels.pixels(), labels.pixels() + 81, 2), 0);
}

TEST(Flooding, OfOnePixelAndOfNoBasins) {
  EXPECT_EQ(labelsOf(flooded(constantImage(1, 1, 1.0F), {circularBasin(0, 0, 3, 0)})),
            std::vector<int>{1});
  EXPECT_EQ(labelsOf(flooded(constantImage(2, 1, 1.0F), {})), (std::vector<int>{0, 0}));
}

TEST(HoleFilling, FillsWhatOneLabelEncloses) {
  image<int> labels = labelImage(5, {2, 2, 2, 2, 0,  //
                                     2, 0, 0, 2, 0,  //
                                     2, 2, 2, 2, 0});
  detect::fillHoles(labels);
  EXPECT_EQ(labelsOf(labels), (std::vector<int>{2, 2, 2, 2, 0,  //
                                                2, 2, 2, 2, 0,  //
                                                2, 2, 2, 2, 0}));
}

TEST(HoleFilling, LeavesWhatTwoLabelsEnclose) {
  const std::vector<int> pixels{1, 1, 2, 2,  //
                                1, 0, 0, 2,  //
                                1, 1, 2, 2};
  image<int> labels = labelImage(4, pixels);
  detect::fillHoles(labels);
  EXPECT_EQ(labelsOf(labels), pixels);
}

TEST(HoleFilling, BackgroundLeaksDiagonally) {
  const std::vector<int> pixels{0, 1, 1, 1,  //
                                1, 0, 0, 1,  //
                                1, 1, 1, 1};
  image<int> labels = labelImage(4, pixels);
  detect::fillHoles(labels);
  EXPECT_EQ(labelsOf(labels), pixels);
}

}  // namespace
}  // namespace orva::test
