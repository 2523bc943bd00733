// The detector's parts, each by itself.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "orva/detect/candidate.h"
#include "orva/detect/elementary.h"
#include "orva/detect/outline.h"
#include "orva/detect/overlap.h"
#include "orva/detect/polygon.h"
#include "orva/detect/scale_levels.h"
#include "tests/detect/scenes.h"

namespace orva::test {
namespace {

using detect::Band;
using detect::bestOutline;
using detect::Candidate;
using detect::kRays;
using detect::Polarity;
using detect::ScaleLevel;
using detect::scaleLevels;

TEST(Elementary, LogarithmAndExponentialAreAccurate) {
  for (double x = 1e-12; x < 1e12; x *= 1.37) {
    EXPECT_NEAR(detect::naturalLog(x), std::log(x), 1e-11) << x;
  }
  EXPECT_EQ(detect::naturalLog(1.0), 0.0);
  for (double x = -50; x < 50; x += 0.37) {
    EXPECT_NEAR(detect::exponential(x) / std::exp(x), 1.0, 1e-11) << x;
  }
  EXPECT_EQ(detect::exponential(0.0), 1.0);
  EXPECT_EQ(detect::logistic(0.0), 0.5);
}

TEST(ScaleLevels, EachIsTheMeanOfFourPixels) {
  image<float> img = drawn(67, 50, {});
  addNoise(img, 20.0, 1);
  const std::vector<ScaleLevel> levels = scaleLevels(img);
  ASSERT_EQ(levels.size(), 2U);  // 67 x 50 and 33 x 25; 16 x 12 is too small
  EXPECT_EQ(levels[1].nx, 33);
  EXPECT_EQ(levels[1].ny, 25);
  EXPECT_EQ(levels[1].factor, 2.0F);
  for (int y = 0; y < 25; ++y) {
    for (int x = 0; x < 33; ++x) {
      const float* p = levels[0].pixels.data() + 2 * y * 67 + 2 * x;
      EXPECT_FLOAT_EQ(levels[1].pixels[static_cast<std::size_t>(y * 33 + x)],
                      (p[0] + p[1] + p[67] + p[68]) / 4);
    }
  }
}

TEST(ScaleLevels, NoiseIsMeasured) {
  image<float> img = drawn(256, 256, {disc(100, 100, 30)}, 100.0);
  addNoise(img, 7.0, 3);
  const ScaleLevel level = scaleLevels(img)[0];
  const auto meanAround = [&level](int x, int y) {
    double sum = 0;
    for (int j = y - 10; j <= y + 10; ++j) {
      for (int i = x - 10; i <= x + 10; ++i) {
        sum += level.pixels[static_cast<std::size_t>(j * level.nx + i)];
      }
    }
    return sum / 441;
  };
  const double perGreyLevel = (meanAround(100, 100) - meanAround(200, 200)) / 100;
  EXPECT_NEAR(level.noise / perGreyLevel, 7.0, 0.5);
}

TEST(ScaleLevels, SingleOutliersVanish) {
  image<float> img = drawn(64, 64, {disc(30, 30, 12)});
  image<float> hot = drawn(64, 64, {disc(30, 30, 12)});
  hot.pixels()[30 * 64 + 30] = 1e6F;
  hot.pixels()[10 * 64 + 50] = -1e6F;
  hot.pixels()[40 * 64] = 1e6F;
  hot.pixels()[63] = 1e6F;
  EXPECT_EQ(scaleLevels(hot)[0].pixels, scaleLevels(img)[0].pixels);
}

// A disc's outline from a place off its center.
detect::Outline outlineOfDisc(const std::vector<ScaleLevel>& levels, double x, double y) {
  const auto o = bestOutline(levels[0], Polarity::Bright, static_cast<float>(x),
                             static_cast<float>(y), Band::Usual);
  EXPECT_TRUE(o.has_value());
  return o.value_or(detect::Outline{});
}

TEST(Outline, FollowsTheEdge) {
  const std::vector<ScaleLevel> levels = scaleLevels(drawn(80, 80, {disc(40.3, 39.6, 10)}));
  const detect::Outline o = outlineOfDisc(levels, 42, 38);
  for (std::size_t t = 0; t < kRays; ++t) {
    const double x = o.x + o.rays[t].radius * detect::kDirections[t].x;
    const double y = o.y + o.rays[t].radius * detect::kDirections[t].y;
    EXPECT_NEAR(std::hypot(x - 40.3, y - 39.6), 10.0, 0.25) << t;
    EXPECT_TRUE(o.rays[t].isVisible);
  }
  EXPECT_FALSE(bestOutline(levels[0], Polarity::Dark, 40, 40, Band::Usual)
                   .value_or(detect::Outline{})
                   .value > 0.5F);
}

TEST(Polygon, CircleHasItsMeasures) {
  ScaleLevel level;
  level.nx = 100;
  level.ny = 100;
  detect::Outline o{50, 50, {}, 0};
  for (auto& ray : o.rays) ray.radius = 10;
  const detect::PolygonShape s = detect::shapeOf(level, o);
  EXPECT_NEAR(s.radius, 10.0, 1e-5);
  EXPECT_NEAR(s.x, 0.0, 1e-5);
  EXPECT_NEAR(s.y, 0.0, 1e-5);
  EXPECT_NEAR(s.axisRatio, 1.0, 1e-5);
  EXPECT_NEAR(s.solidity, 1.0, 1e-5);
  EXPECT_NEAR(s.roundness, 1.0, 0.01);
  o.x = -0.5F;  // the left half is outside
  EXPECT_NEAR(detect::shapeOf(level, o).area, s.area / 2, 0.01);
  EXPECT_NEAR(detect::shapeOf(level, o).x, 4 * 10 / (3 * 3.14159265), 0.05);
}

Candidate circle(float x, float y, float radius) {
  Candidate c;
  c.x = c.seedX = x;
  c.y = c.seedY = y;
  c.radius = radius;
  c.radii.fill(radius);
  return c;
}

TEST(Overlap, SharesAreOfTheFirstArea) {
  EXPECT_EQ(detect::overlapShare(circle(0, 0, 10), circle(0, 0, 10)), 1.0F);
  EXPECT_EQ(detect::overlapShare(circle(0, 0, 10), circle(25, 0, 10)), 0.0F);
  EXPECT_EQ(detect::overlapShare(circle(3, 0, 4), circle(0, 0, 10)), 1.0F);
  EXPECT_NEAR(detect::overlapShare(circle(0, 0, 10), circle(10, 0, 10)), 0.39F, 0.1F);
}

TEST(Overlap, HigherLogitStays) {
  std::vector<Candidate> c{circle(0, 0, 10), circle(4, 0, 10), circle(40, 0, 10), circle(41, 0, 30),
                           circle(90, 0, 2)};
  const std::vector<double> logits{1, 2, 3, 2.5, -1};
  for (std::size_t i = 0; i < c.size(); ++i) c[i].logit = logits[i];
  EXPECT_EQ(detect::withoutOverlaps(c, 0.0), (std::vector<std::size_t>{2, 1}));
  EXPECT_EQ(detect::withoutOverlaps(c, -5.0), (std::vector<std::size_t>{2, 1, 4}));
}

}  // namespace
}  // namespace orva::test
