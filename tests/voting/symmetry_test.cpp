// Centers of turned images.
//
// The cones are not exactly alike in all directions, all of which is intended: cells left of and
// above a point are truncated, not rounded, an angle just below a full turn stays in the last of
// 256 bins, of equal votes the first cell counts, and the middle of a region of votes is rounded
// down. A mirrored cell is one pixel off at most, and so is a middle for being rounded down: so a
// turned image has its centers where they were up to two pixels an axis. Faint further regions of
// votes come and go; only the strongest at each object is compared. Noise breaks the votes of an
// object into regions, and which of them is the strongest may change: then only the rule of scoring
// holds, that a center belongs to an object within half its radius or three pixels of its middle.
// (An image shifted in a frame is exact: compute_test.cpp.)
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/symmetries.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

constexpr int kWidth = 94;
constexpr int kHeight = 62;

struct Place {
  int x;
  int y;
};

double distanceOf(const Place& a, const Place& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// planeSymmetries() applied to a position.
Place turned(const Place& p, std::size_t turn) {
  if (turn == 0) return {kWidth - 1 - p.x, p.y};
  if (turn == 1) return {p.x, kHeight - 1 - p.y};
  return {p.y, p.x};
}

// Of the centers in reach of a place.
Place strongestNear(const Probe& probe, const Place& place, double reach) {
  Place best{-1000, -1000};
  float maxWeight = 0.0F;
  for (std::size_t i = 0; i < probe.centers().size(); ++i) {
    const Place p{probe.centers()[i].x, probe.centers()[i].y};
    if (distanceOf(p, place) > reach || probe.center_weights()[i] <= maxWeight) continue;
    maxWeight = probe.center_weights()[i];
    best = p;
  }
  return best;
}

std::vector<Disc> someDiscs(Random& random) {
  std::vector<Disc> discs;
  for (int i = 0; i < 6; ++i) {
    discs.push_back({16 + 30 * (i % 3) + randomInt(random, -3, 3),
                     16 + 30 * (i / 3) + randomInt(random, -3, 3), randomInt(random, 5, 9)});
  }
  return discs;
}

enum class Noise { None, Some };

void expectTurnedCenters(const image<float>& img, const std::vector<Disc>& discs, int type,
                         Noise noise = Noise::None) {
  VotingParams params;
  params.maxRadius = 12;
  params.coneWidth = 6;
  params.regionType = type;
  params.gradThreshold = 8.0F;
  params.centerThreshold = 0.1F;
  const Probe plain = computed(params, img);
  for (std::size_t t = 0; t < 3; ++t) {
    const Probe other = computed(params, planeSymmetries<float>()[t](img));
    for (const Disc& d : discs) {
      const Place middle{d.x, d.y};
      const Place before = strongestNear(plain, middle, d.radius);
      const Place after = strongestNear(other, turned(middle, t), d.radius);
      ASSERT_GE(before.x, 0) << "no center in the disc";
      ASSERT_GE(after.x, 0) << "no center in the turned disc";
      const double reach = std::max(3.0, 0.5 * d.radius);
      EXPECT_LE(distanceOf(before, middle), reach);
      EXPECT_LE(distanceOf(after, turned(middle, t)), reach) << "turn " << t;
      if (noise == Noise::None) {
        EXPECT_LE(std::abs(turned(before, t).x - after.x), 2) << "turn " << t;
        EXPECT_LE(std::abs(turned(before, t).y - after.y), 2) << "turn " << t;
      }
    }
  }
}

TEST(TurnedImages, OfBrightDiscsHaveTurnedCenters) {
  Random random(801);
  for (int round = 0; round < 8; ++round) {
    const std::vector<Disc> discs = someDiscs(random);
    const auto img = discImage<float>({kWidth, kHeight}, discs, 100.0F, 0.0F);
    expectTurnedCenters(img, discs, 0);
    expectTurnedCenters(img, discs, 2);
  }
}

TEST(TurnedImages, OfDarkDiscsHaveTurnedCenters) {
  Random random(802);
  for (int round = 0; round < 8; ++round) {
    const std::vector<Disc> discs = someDiscs(random);
    expectTurnedCenters(discImage<float>({kWidth, kHeight}, discs, 0.0F, 100.0F), discs, 1);
  }
}

TEST(TurnedImages, OfNoisyDiscsHaveTurnedCenters) {
  Random random(803);
  for (int round = 0; round < 8; ++round) {
    const std::vector<Disc> discs = someDiscs(random);
    auto img = discImage<float>({kWidth, kHeight}, discs, 100.0F, 0.0F);
    for (int i = 0; i < img.npix(); ++i) {
      img.pixels()[i] += static_cast<float>(randomInt(random, 0, 4));
    }
    expectTurnedCenters(img, discs, 0, Noise::Some);
  }
}

// Weights take part in no comparison of directions: as many points vote, and as strongly.
TEST(TurnedImages, HaveTurnedVotingPoints) {
  Random random(804);
  const auto img = discImage<float>({kWidth, kHeight}, someDiscs(random), 100.0F, 0.0F);
  VotingParams params;
  params.absoluteValues = true;
  params.gradThreshold = 8.0F;
  const Probe plain = computed(params, img);
  ASSERT_GT(plain.points_.size(), 500U);
  for (std::size_t t = 0; t < 3; ++t) {
    Probe other = computed(params, planeSymmetries<float>()[t](img));
    ASSERT_EQ(other.points_.size(), plain.points_.size());
    std::vector<float> weights(static_cast<std::size_t>(img.npix()), 0.0F);
    for (const auto& p : other.points_) {
      const Place back = t == 2 ? Place{p.y, p.x} : turned({p.x, p.y}, t);
      weights.at(static_cast<std::size_t>(back.x + kWidth * back.y)) = p.weight;
    }
    for (const auto& p : plain.points_) {
      // Sums of some ten products, taken in another order.
      EXPECT_NEAR(weights.at(static_cast<std::size_t>(p.x + kWidth * p.y)), p.weight,
                  1e-5F * p.weight + 1e-4F);
    }
  }
}

// Rounded right of the point and below it, truncated left of it and above: one pixel apart at most.
TEST(Cones, OfOppositeAnglesAreMirroredUpToOnePixel) {
  for (const int type : {0, 2}) {
    VotingParams params;
    params.regionType = type;
    Probe probe(params);
    probe.computeCones(2, 11, 5);
    for (std::size_t bin = 1; bin < 256; ++bin) {
      const auto& planes = probe.cones_.at(bin).planes;
      const auto& opposite = probe.cones_.at(256 - bin).planes;
      ASSERT_EQ(planes.size(), opposite.size());
      for (std::size_t p = 0; p < planes.size(); ++p) {
        ASSERT_EQ(planes[p].points.size(), opposite[p].points.size());
        for (const auto& cell : planes[p].points) {
          EXPECT_TRUE(std::any_of(opposite[p].points.begin(), opposite[p].points.end(),
                                  [&cell](const auto& other) {
                                    return std::abs(other.x - cell.x) <= 1 &&
                                           std::abs(other.y + cell.y) <= 1;
                                  }))
              << "bin " << bin;
        }
      }
    }
  }
}

// The same products and shares, taken at other cells. The cone's cells may be met more than once.
TEST(Cones, CastShiftedVotesFromAShiftedPoint) {
  Random random(805);
  constexpr int kSide = 90;
  constexpr int kReach = 14;
  VotingParams params;
  params.regionType = 2;
  Probe probe(params);
  voting::WPoint2D::nx = kSide;
  probe.computeCones(2, 11, 5);
  const auto at = [](int x, int y) { return std::ptrdiff_t{y} * kSide + x; };
  voting::VPoint2D point;
  point.weight = 3.7F;
  // Votes from the middle of a square, which has its first cell at (dx, dy).
  const auto background = randomMask(random, {2 * kReach + 1, 2 * kReach + 1}, 0.5);
  for (const int bin : {0, 1, 37, 64, 128, 200, 255}) {
    const auto& cone = probe.cones_.at(static_cast<std::size_t>(bin));
    const auto votes = [&](int dx, int dy, bool isPlain) {
      auto acc = blank<float>({kSide, kSide});
      auto prev = framed(toFloatImage(background), kSide, kSide, dx, dy, 0.0F);
      const std::ptrdiff_t own = at(dx + kReach, dy + kReach);
      if (isPlain) {
        cone.vote(acc.pixels() + own, point);
      } else {
        cone.vote(acc.pixels() + own, prev.pixels() + own, point);
      }
      return acc;
    };
    for (const bool isPlain : {true, false}) {
      const auto here = unframed(votes(0, 0, isPlain), 2 * kReach + 1, 2 * kReach + 1, 0, 0);
      ASSERT_GT(here.max(), 0.0F);
      for (const auto& [dx, dy] : {std::pair{1, 0}, {0, 1}, {37, 22}, {60, 61}}) {
        EXPECT_TRUE(sameImage(votes(dx, dy, isPlain), framed(here, kSide, kSide, dx, dy, 0.0F)));
      }
    }
  }
}

// On a boundary between bins a half is rounded up, and an angle just below a full turn stays in the
// last bin.
TEST(ComputeAngleIndex, OfMirroredDirectionsIsTheMirroredBin) {
  const Probe probe;
  int compared = 0;
  for (int i = 1; i < 4000; ++i) {
    const double angle = i * 3.14159265358979 / 4000;
    const double bins = angle / 3.14159265358979 * 128;
    if (std::abs(bins - std::floor(bins) - 0.5) < 0.01 || bins < 0.5) continue;
    const auto c = static_cast<float>(std::cos(angle));
    const auto s = static_cast<float>(std::sin(angle));
    const int bin = probe.computeAngleIndex(c, s);
    EXPECT_EQ(probe.computeAngleIndex(c, -s), 256 - bin) << angle;
    EXPECT_EQ(probe.computeAngleIndex(-c, s), 128 - bin) << angle;
    ++compared;
  }
  EXPECT_GT(compared, 3800);
}

}  // namespace
}  // namespace orva::test
