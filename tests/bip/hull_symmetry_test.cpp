// Convex hulls of turned and shifted images.
//
// Exceptions: a hull decides pixels at its bounds by rounded projections, which a turn and a shift
// round otherwise; only an even number of directions in a plane has for each its mirror image and
// its transpose; a region may not grow into one filled before it, so that hulls which overlap
// follow the numbers of the regions, and these the raster order.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/symmetries.h"

namespace orva::test {
namespace {

constexpr double kPi = 3.14159265358979;

struct Case {
  Shape shape;
  int precision;
  std::vector<Symmetry<short>> turns;
};

std::vector<Case> cases() {
  return {{{40, 34}, 20, planeSymmetries<short>()}, {{15, 14, 12}, 4, volumeSymmetries<short>()}};
}

// One region of pixels anywhere, the border included.
Labels somePoints(Random& random, const Shape& shape) {
  Labels labels = composed<short>(shape, [](int, int, int) { return short{-1}; });
  for (int i = 0; i < 12; ++i) {
    labels.setPixel(randomInt(random, 0, shape.nx - 1), randomInt(random, 0, shape.ny - 1),
                    randomInt(random, 0, shape.nz - 1), 0.0F);
  }
  return labels;
}

Labels hullOf(const Labels& labels, int precision) {
  Labels hull = labels.duplicate();
  testing::internal::CaptureStdout();
  bip::convexHull(hull, precision);
  testing::internal::GetCapturedStdout();
  return hull;
}

using Direction = std::array<double, 3>;

// Over the half circle, or over the half sphere.
std::vector<Direction> directionsOf(int precision, bool isVolume) {
  std::vector<Direction> result;
  const double step = kPi / (isVolume ? 2 * precision : precision);
  for (int i = isVolume ? 0 : precision; i <= precision; ++i) {
    const double polar = isVolume ? i * step : kPi / 2;
    for (int j = 0; j < (isVolume ? 4 * precision : precision); ++j) {
      result.push_back({std::cos(j * step) * std::sin(polar), std::sin(j * step) * std::sin(polar),
                        isVolume ? std::cos(polar) : 0.0});
    }
  }
  return result;
}

// Whether the projection of a pixel on none of the directions is, but for rounding, the smallest or
// the largest of the region's.
std::vector<bool> areOffBounds(const Labels& labels, int precision) {
  const int nx = labels.nx();
  const int ny = labels.ny();
  std::vector<bool> result(static_cast<std::size_t>(labels.npix()), true);
  for (const Direction& d : directionsOf(precision, labels.nz() > 1)) {
    const auto project = [&](int i) {
      return i % nx * d[0] + i / nx % ny * d[1] + i / (nx * ny) * d[2];
    };
    double min = 1e9;
    double max = -1e9;
    for (int i = 0; i < labels.npix(); ++i) {
      if (labels.pixels()[i] < 0) continue;
      min = std::min(min, project(i));
      max = std::max(max, project(i));
    }
    for (int i = 0; i < labels.npix(); ++i) {
      const double p = project(i);
      if (std::abs(p - min) < 1e-4 || std::abs(p - max) < 1e-4) {
        result[static_cast<std::size_t>(i)] = false;
      }
    }
  }
  return result;
}

void expectSameOffBounds(const Labels& a, const Labels& b, const std::vector<bool>& isOffBounds) {
  int inside = 0;
  for (int i = 0; i < b.npix(); ++i) {
    if (!isOffBounds[static_cast<std::size_t>(i)]) continue;
    ASSERT_EQ(a.pixels()[i], b.pixels()[i]) << i;
    inside += b.pixels()[i] == 0 ? 1 : 0;
  }
  EXPECT_GT(inside, 100);
}

TEST(TurnedLabels, HaveTurnedHulls) {
  Random random(313);
  for (const Case& c : cases()) {
    for (int round = 0; round < 10; ++round) {
      const Labels labels = somePoints(random, c.shape);
      const std::vector<bool> isOffBounds = areOffBounds(labels, c.precision);
      const Labels hull = hullOf(labels, c.precision);
      for (const auto turn : c.turns) {
        expectSameOffBounds(turn(hullOf(turn(labels), c.precision)), hull, isOffBounds);
      }
    }
  }
}

TEST(FramedLabels, HaveTheSameHullsWhereverTheyLie) {
  Random random(321);
  for (const Case& c : cases()) {
    for (int round = 0; round < 10; ++round) {
      const Labels labels = somePoints(random, c.shape);
      const Labels there = hullOf(framed<short>(labels, 60, 50, 5 + round, 11, -1), c.precision);
      expectSameOffBounds(unframed(there, c.shape.nx, c.shape.ny, 5 + round, 11),
                          hullOf(labels, c.precision), areOffBounds(labels, c.precision));
    }
  }
}

// A mask is the labels of its regions: of one region, whatever its turn.
TEST(TurnedMasks, HaveTurnedHulls) {
  Random random(322);
  const int precision = 20;
  for (int round = 0; round < 10; ++round) {
    // Rays from a common middle.
    auto mask = blank<unsigned char>({40, 34});
    for (int ray = 0; ray < 5; ++ray) {
      const double angle = randomInt(random, 0, 359) * kPi / 180;
      for (int k = 0; k < 60; ++k) {
        const int x = static_cast<int>(20 + 0.25 * k * std::cos(angle));
        const int y = static_cast<int>(17 + 0.25 * k * std::sin(angle));
        mask.setPixel(x, y, 255.0F);
        mask.setPixel(x + 1, y, 255.0F);  // no steps along diagonals alone
      }
    }
    const auto hullOfMask = [](const image<unsigned char>& img) {
      testing::internal::CaptureStdout();
      const Labels hull = bip::convexHull(img, precision);
      testing::internal::GetCapturedStdout();
      return hull;
    };
    const Labels labels = bip::regions(mask);
    ASSERT_EQ(bip::regionNumber(labels), 1);
    const std::vector<bool> isOffBounds = areOffBounds(labels, precision);
    const Labels hull = hullOfMask(mask);
    for (std::size_t t = 0; t < 3; ++t) {
      const Labels turned = hullOfMask(planeSymmetries<unsigned char>()[t](mask));
      expectSameOffBounds(planeSymmetries<short>()[t](turned), hull, isOffBounds);
    }
  }
}

}  // namespace
}  // namespace orva::test
