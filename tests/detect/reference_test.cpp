// The search's parts against their reference implementations, bit for bit.
#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

#include "orva/detect/outline.h"
#include "orva/detect/scale_levels.h"
#include "orva/detect/seeds.h"
#include "tests/detect/scenes.h"
#include "tests/support/reference/outline.h"
#include "tests/support/reference/seeds.h"

namespace orva::test {
namespace {

using detect::Band;
using detect::bestOutline;
using detect::EdgePixel;
using detect::kRays;
using detect::Polarity;
using detect::ScaleLevel;
using detect::scaleLevels;
using detect::Seed;

TEST(SeedSearchMatchesReference, OnEveryLevel) {
  std::size_t edges = 0;
  std::size_t seeds = 0;
  for (const double noise : {0.0, 12.0}) {
    image<float> img = drawn(133, 97, discGrid(133, 97, 4, 12, 4));
    addNoise(img, noise, 4);
    for (const ScaleLevel& level : scaleLevels(img)) {
      const std::vector<EdgePixel> found = detect::edgePixels(level);
      const std::vector<EdgePixel> expected = reference::edgePixels(level);
      ASSERT_EQ(found.size(), expected.size());
      for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].x, expected[i].x);
        EXPECT_EQ(found[i].y, expected[i].y);
        EXPECT_EQ(found[i].dx, expected[i].dx);
        EXPECT_EQ(found[i].dy, expected[i].dy);
        EXPECT_EQ(found[i].weight, expected[i].weight);
      }
      edges += found.size();
      for (const Polarity polarity : {Polarity::Bright, Polarity::Dark}) {
        for (const Band band : {Band::Small, Band::Usual}) {
          const std::vector<Seed> a = detect::seeds(level, found, polarity, band);
          const std::vector<Seed> b = reference::seeds(level, expected, polarity, band);
          ASSERT_EQ(a.size(), b.size());
          for (std::size_t i = 0; i < a.size(); ++i) {
            EXPECT_EQ(a[i].x, b[i].x);
            EXPECT_EQ(a[i].y, b[i].y);
            EXPECT_EQ(a[i].band, b[i].band);
            EXPECT_EQ(a[i].votes, b[i].votes);
          }
          seeds += a.size();
        }
      }
    }
  }
  EXPECT_GE(edges, 1000U);
  EXPECT_GE(seeds, 200U);
}

TEST(OutlineMatchesReference, AroundEveryPlace) {
  std::mt19937 random(17);
  image<float> img = drawn(97, 83, discGrid(97, 83, 6, 10, 4));
  addNoise(img, 12.0, 4);
  int compared = 0;
  for (const ScaleLevel& level : scaleLevels(img)) {
    for (int i = 0; i < 300; ++i) {
      const auto x = static_cast<float>(random() % static_cast<unsigned>(4 * level.nx)) / 4;
      const auto y = static_cast<float>(random() % static_cast<unsigned>(4 * level.ny)) / 4;
      const Polarity polarity = i % 2 == 0 ? Polarity::Bright : Polarity::Dark;
      const Band band = i % 3 == 0 ? Band::Small : Band::Usual;
      const auto a = bestOutline(level, polarity, x, y, band);
      const auto b = reference::bestOutline(level, polarity, x, y, band);
      ASSERT_EQ(a.has_value(), b.has_value()) << x << ' ' << y;
      if (!a) continue;
      ++compared;
      EXPECT_EQ(a->value, b->value);
      for (std::size_t t = 0; t < kRays; ++t) {
        EXPECT_EQ(a->rays[t].step, b->rays[t].step) << x << ' ' << y << ' ' << t;
        EXPECT_EQ(a->rays[t].radius, b->rays[t].radius) << x << ' ' << y << ' ' << t;
        EXPECT_EQ(a->rays[t].edge, b->rays[t].edge) << x << ' ' << y << ' ' << t;
        EXPECT_EQ(a->rays[t].ascent, b->rays[t].ascent) << x << ' ' << y << ' ' << t;
      }
    }
  }
  EXPECT_GE(compared, 300);
}

}  // namespace
}  // namespace orva::test
