// Distances, labels spread by them, and convex hulls of turned images.
//
// Exceptions: a distance is a sum of roots, so that a turned path differs in its last bits; the
// passes leave out the border, which follows the scan; of regions at one distance propagate() takes
// that which the scan reaches first; a hull decides pixels at its bounds by rounded projections.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/bip/pictures.h"
#include "tests/support/images.h"
#include "tests/support/turns.h"

namespace {

using orva::image;
using orva_test::framed;
using orva_test::planeTurns;
using orva_test::Random;
using orva_test::randomInt;
using orva_test::randomMask;
using orva_test::sameImage;
using orva_test::Shape;
using orva_test::volumeTurns;

using Mask = image<unsigned char>;
using Labels = image<short>;

// A sum of at most 60 steps below 100 is off by at most 60 * 100 * 2^-24.
constexpr float kPathError = 4e-4F;

// Background all round, so that no distance follows the border.
const Shape kInner[] = {{24, 19}, {30, 7}, {11, 10, 8}};

template <class T>
image<T> withGround(const image<T>& img, T ground) {
  return orva_test::composed<T>(orva_test::shapeOf(img), [&](int x, int y, int f) {
    const bool border = x == 0 || y == 0 || x == img.nx() - 1 || y == img.ny() - 1 ||
                        (img.nz() > 1 && (f == 0 || f == img.nz() - 1));
    return border ? ground : orva_test::pixelAt(img, x, y, f);
  });
}

TEST(TurnedMasks, HaveTurnedDistances) {
  Random random(310);
  for (const Shape& shape : kInner) {
    for (int round = 0; round < 10; ++round) {
      const Mask mask = withGround<unsigned char>(randomMask(random, shape, 0.97), 0);
      const image<float> distance = orva::bip::fchamfer(mask);
      EXPECT_LT(distance.max(), 100.0F);
      for (std::size_t t = 0; t < 4; ++t) {
        const image<float> turned = orva::bip::fchamfer(volumeTurns<unsigned char>()[t](mask));
        const image<float> back = volumeTurns<float>()[t](turned);
        for (int i = 0; i < back.npix(); ++i) {
          ASSERT_NEAR(back.pixels()[i], distance.pixels()[i], kPathError) << i;
        }
      }
    }
  }
}

TEST(TurnedLabels, HaveTurnedDistances) {
  Random random(317);
  for (const Shape& shape : kInner) {
    for (int round = 0; round < 10; ++round) {
      const Labels labels = withGround<short>(orva_test::randomLabels(random, shape, 1), -1);
      const image<float> distance = orva::bip::fchamfer(labels);
      for (std::size_t t = 0; t < 4; ++t) {
        const image<float> turned = orva::bip::fchamfer(volumeTurns<short>()[t](labels));
        const image<float> back = volumeTurns<float>()[t](turned);
        for (int i = 0; i < back.npix(); ++i) {
          ASSERT_NEAR(back.pixels()[i], distance.pixels()[i], kPathError) << i;
        }
      }
    }
  }
}

TEST(FramedMasks, HaveTheSameDistancesWhereverTheyLie) {
  Random random(311);
  for (int round = 0; round < 10; ++round) {
    const Mask mask = withGround<unsigned char>(randomMask(random, {21, 16}, 0.95), 0);
    EXPECT_TRUE(sameImage(orva::bip::fchamfer(framed<unsigned char>(mask, 33, 30, 6, round, 0)),
                          framed(orva::bip::fchamfer(mask), 33, 30, 6, round, 0.0F)));
  }
}

// The labels of pixels that are clearly nearer to one region than to all others.
TEST(TurnedLabels, AreSpreadToTheSamePixels) {
  Random random(312);
  const int n = 4;
  for (int round = 0; round < 12; ++round) {
    Labels seeds = orva_test::blank<short>({26, 21});
    std::fill_n(seeds.pixels(), seeds.npix(), short{-1});
    for (short k = 0; k < n; ++k) {
      seeds.setPixel(randomInt(random, 1, 24), randomInt(random, 1, 19), static_cast<float>(k));
    }
    // Distances to each region alone. A plane of labels of at least 0 is object, which has
    // distances.
    std::vector<image<float>> distances;
    for (short k = 0; k < n; ++k) {
      Mask others = orva_test::blank<unsigned char>({26, 21});
      for (int i = 0; i < others.npix(); ++i) others.pixels()[i] = seeds.pixels()[i] == k ? 0 : 255;
      distances.push_back(orva::bip::fchamfer(others));
    }
    const auto isTied = [&](int i) {
      std::vector<float> d;
      for (const image<float>& from : distances) d.push_back(from.pixels()[i]);
      std::sort(d.begin(), d.end());
      return d[1] - d[0] < 2 * kPathError;
    };
    Labels spread = seeds.duplicate();
    orva::bip::propagate(spread, 9000.0F);
    for (const auto turn : planeTurns<short>()) {
      Labels turned = turn(seeds);
      orva::bip::propagate(turned, 9000.0F);
      const Labels back = turn(turned);
      int compared = 0;
      for (int i = 0; i < back.npix(); ++i) {
        const int x = i % 26;
        const int y = i / 26;
        if (x == 0 || y == 0 || x == 25 || y == 20 || isTied(i)) continue;
        ASSERT_EQ(back.pixels()[i], spread.pixels()[i]) << x << ", " << y;
        ++compared;
      }
      EXPECT_GT(compared, 300);
    }
  }
}

Labels hullOf(const Labels& labels, int directions) {
  Labels hull = labels.duplicate();
  testing::internal::CaptureStdout();
  orva::bip::convexHull(hull, directions);
  testing::internal::GetCapturedStdout();
  return hull;
}

// Whether the projection of (x, y) on one of the directions is, but for rounding, the least or the
// largest of the points'.
bool isAtBounds(const std::vector<std::pair<int, int>>& points, int directions, int x, int y) {
  for (int k = 0; k < directions; ++k) {
    const double a = k * 3.14159265358979 / directions;
    const auto project = [a](int px, int py) { return px * std::cos(a) + py * std::sin(a); };
    double least = 1e9;
    double most = -1e9;
    for (const auto& [px, py] : points) {
      least = std::min(least, project(px, py));
      most = std::max(most, project(px, py));
    }
    const double p = project(x, y);
    if (std::abs(p - least) < 1e-4 || std::abs(p - most) < 1e-4) return true;
  }
  return false;
}

// An even number of directions has for each its mirror image and its transpose.
TEST(TurnedLabels, HaveTurnedHulls) {
  Random random(313);
  const int directions = 20;
  const Shape shape{40, 34};
  for (int round = 0; round < 10; ++round) {
    Labels labels = orva_test::composed<short>(shape, [](int, int, int) { return short{-1}; });
    std::vector<std::pair<int, int>> points;
    for (int i = 0; i < 12; ++i) {
      points.emplace_back(randomInt(random, 4, 35), randomInt(random, 4, 29));
      labels.setPixel(points.back().first, points.back().second, 0.0F);
    }
    const Labels hull = hullOf(labels, directions);
    for (const auto turn : planeTurns<short>()) {
      const Labels back = turn(hullOf(turn(labels), directions));
      int inside = 0;
      for (int y = 0; y < shape.ny; ++y) {
        for (int x = 0; x < shape.nx; ++x) {
          if (isAtBounds(points, directions, x, y)) continue;
          ASSERT_EQ(back.pixel(x, y), hull.pixel(x, y)) << x << ", " << y;
          inside += hull.pixel(x, y) == 0.0F ? 1 : 0;
        }
      }
      EXPECT_GT(inside, 100);
    }
  }
}

}  // namespace
