#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/reference/voting.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

constexpr int side = 40;

voting::VPoint2D pointAt(int x, int y, int angle, float weight) {
  voting::VPoint2D p;
  p.x = static_cast<std::int16_t>(x);
  p.y = static_cast<std::int16_t>(y);
  p.cx = -1;
  p.cy = -2;
  p.angle = static_cast<std::int16_t>(angle);
  p.offset = x + y * side;
  p.weight = weight;
  return p;
}

// Ready for passes on an accumulator of side x side.
Probe probeOnAccumulator(const VotingParams& params) {
  Probe probe(params);
  probe.nx_ = side;
  probe.ny_ = side;
  probe.npix_ = side * side;
  voting::WPoint2D::nx = side;
  probe.acc_ = blank<float>({side, side});
  return probe;
}

// With one cone, for angle 0, of the given cells in one plane.
Probe withCells(const std::vector<std::pair<int, int>>& cells) {
  Probe probe = probeOnAccumulator({});
  voting::Cone2D cone;
  cone.planes.resize(1);
  for (const auto& [x, y] : cells) cone.planes[0].points.emplace_back(x, y, y * side + x, 1.0F);
  probe.cones_ = {cone};
  return probe;
}

TEST(GetMaxDirection, TurnsToTheStrongestCell) {
  Probe probe = withCells({{1, 0}, {0, 3}, {0, -5}});
  probe.acc_.setPixel(21, 20, 2.0F);
  probe.acc_.setPixel(20, 23, 7.0F);
  probe.acc_.setPixel(20, 15, 3.0F);
  probe.acc_.setPixel(20, 20, 99.0F);
  voting::VPoint2D p = pointAt(20, 20, 0, 1.0F);
  probe.getMaxDirection(p);
  EXPECT_EQ(p.cx, 20);
  EXPECT_EQ(p.cy, 23);
  EXPECT_EQ(p.angle, 64);
  EXPECT_EQ(p.x, 20);
  EXPECT_EQ(p.y, 20);
}

TEST(GetMaxDirection, KeepsTheEarlierOfEqualCells) {
  Probe probe = withCells({{1, 0}, {0, -3}, {-2, 0}});
  probe.acc_.setPixel(20, 17, 5.0F);
  probe.acc_.setPixel(18, 20, 5.0F);
  voting::VPoint2D p = pointAt(20, 20, 0, 1.0F);
  probe.getMaxDirection(p);
  EXPECT_EQ(p.angle, 192);
}

TEST(GetMaxDirection, LeavesThePointBelowOneThousandth) {
  for (const float vote : {0.0F, 0.000999F, -8.0F}) {
    Probe probe = withCells({{0, 3}});
    probe.acc_.setPixel(20, 23, vote);
    const voting::VPoint2D before = pointAt(20, 20, 0, 1.0F);
    voting::VPoint2D p = before;
    probe.getMaxDirection(p);
    EXPECT_TRUE(samePoints({p}, {before})) << vote;
  }
  Probe probe = withCells({{0, 3}});
  probe.acc_.setPixel(20, 23, 0.001001F);
  voting::VPoint2D p = pointAt(20, 20, 0, 1.0F);
  probe.getMaxDirection(p);
  EXPECT_EQ(p.angle, 64);
}

TEST(GetMaxDirection, LeavesThePointWhenItsOwnCellIsStrongest) {
  Probe probe = withCells({{0, 3}, {0, 0}});
  probe.acc_.setPixel(20, 23, 4.0F);
  probe.acc_.setPixel(20, 20, 5.0F);
  const voting::VPoint2D before = pointAt(20, 20, 0, 1.0F);
  voting::VPoint2D p = before;
  probe.getMaxDirection(p);
  EXPECT_TRUE(samePoints({p}, {before}));
}

TEST(GetMaxDirection, WrapsWhatItReadsTo16Bits) {
  Probe probe = withCells({{1, 0}});
  probe.cones_[0].planes[0].points[0].x = 32767;  // its offset stays
  probe.acc_.setPixel(21, 20, 2.0F);
  voting::VPoint2D p = pointAt(20, 20, 0, 1.0F);
  probe.getMaxDirection(p);
  EXPECT_EQ(p.cx, 20 + 32767 - 65536);
  EXPECT_EQ(p.cy, 20);
}

TEST(GetMeanDirection, DividesByTheNumberOfCellsWhichIsIntended) {
  Probe probe = withCells({{4, 0}, {0, 4}, {-4, 0}, {0, -4}});
  // (0, 4) with votes 0.5 gives a mean of (0, 0.5), which rounds to (0, 1).
  probe.acc_.setPixel(20, 24, 0.5F);
  voting::VPoint2D p = pointAt(20, 20, 0, 1.0F);
  probe.getMeanDirection(p);
  EXPECT_EQ(p.angle, 64);
  EXPECT_EQ(p.cx, -1);
  EXPECT_EQ(p.cy, -2);
  // With 0.49 it rounds to (0, 0).
  probe.acc_.setPixel(20, 24, 0.49F);
  p.angle = 0;
  probe.getMeanDirection(p);
  EXPECT_EQ(p.angle, 0);
}

TEST(GetMeanDirection, TruncatesNegativeMeansWhichIsIntended) {
  Probe probe = withCells({{-1, 0}});
  probe.acc_.setPixel(19, 20, 0.9F);
  voting::VPoint2D p = pointAt(20, 20, 0, 1.0F);
  probe.getMeanDirection(p);
  EXPECT_EQ(p.angle, 0);
  probe.acc_.setPixel(19, 20, 1.0F);
  probe.getMeanDirection(p);
  EXPECT_EQ(p.angle, 128);
}

TEST(GetMeanDirection, OfAConeWithoutCellsLeavesThePoint) {
  Probe probe = withCells({});
  const voting::VPoint2D before = pointAt(20, 20, 0, 1.0F);
  voting::VPoint2D p = before;
  probe.getMeanDirection(p);
  probe.getMaxDirection(p);
  EXPECT_TRUE(samePoints({p}, {before}));
}

TEST(ConeDirectionMatchesReference, ForRandomVotes) {
  Random random(1);
  for (int round = 0; round < 20; ++round) {
    VotingParams params;
    params.regionType = round % 3;
    Probe probe = probeOnAccumulator(params);
    probe.computeCones(randomInt(random, 1, 3), randomInt(random, 3, 9), randomInt(random, 0, 9));
    for (int i = 0; i < probe.npix_; ++i) {
      probe.acc_.pixels()[i] = round % 2 == 0
                                   ? static_cast<float>(randomInt(random, -1, 3))
                                   : std::uniform_real_distribution<float>(-0.5F, 20.0F)(random);
    }
    for (int i = 0; i < 300; ++i) {
      voting::VPoint2D p =
          pointAt(randomInt(random, 11, side - 12), randomInt(random, 11, side - 12),
                  randomInt(random, 0, 255), 1.0F);
      voting::VPoint2D expected = p;
      probe.getMaxDirection(p);
      reference::turnToMax(expected, probe.cones_, probe.acc_);
      ASSERT_TRUE(samePoints({p}, {expected}));
      probe.getMeanDirection(p);
      reference::turnToMean(expected, probe.cones_, probe.acc_);
      ASSERT_TRUE(samePoints({p}, {expected}));
    }
  }
}

TEST(Vote, WithoutPointsLeavesZeros) {
  Probe probe = probeOnAccumulator({});
  probe.acc_.setPixel(3, 3, 5.0F);
  probe.vote();
  EXPECT_TRUE(sameImage(probe.acc_, blank<float>({side, side})));
  EXPECT_TRUE(sameImage(probe.prevAcc_, blank<float>({side, side})));
  EXPECT_TRUE(sameCones(probe.cones_, reference::cones(0, 1, 10, 0, side)));
}

// Of width 0: the plain vote is 1 on each of ten cells, and so is its redistribution's tenth.
TEST(Vote, OfConeWidthZeroIsOnePlainAndOneRedistributingPass) {
  VotingParams params;
  params.coneWidth = 0;
  params.minRadius = 2;
  params.maxRadius = 9;
  Probe probe = probeOnAccumulator(params);
  probe.points_ = {pointAt(15, 15, 0, 16.0F)};
  probe.vote();
  image<float> plain = blank<float>({side, side});
  image<float> again = blank<float>({side, side});
  for (int d = 2; d <= 9; ++d) {
    plain.setPixel(15 + d, 15, 16.0F);
    again.setPixel(15 + d, 15, 2.0F);
  }
  EXPECT_TRUE(sameImage(probe.prevAcc_, plain));
  EXPECT_TRUE(sameImage(probe.acc_, again));
  EXPECT_EQ(probe.points_[0].cx, 17);
  EXPECT_EQ(probe.points_[0].cy, 15);
}

TEST(Vote, OfAPointWithoutVotesKeepsItsDirection) {
  VotingParams params;
  params.maxRadius = 5;
  Probe alone = probeOnAccumulator(params);
  alone.points_ = {pointAt(10, 10, 3, 2.0F)};
  alone.vote();
  Probe probe = probeOnAccumulator(params);
  probe.points_ = {pointAt(10, 10, 3, 2.0F), pointAt(30, 30, 200, 0.0F)};
  probe.vote();
  EXPECT_TRUE(samePoints({probe.points_[1]}, {pointAt(30, 30, 200, 0.0F)}));
  EXPECT_TRUE(sameImage(probe.acc_, alone.acc_));
}

TEST(Vote, OfANegativeConeWidthIsThePlainPassOnly) {
  VotingParams params;
  Probe probe = probeOnAccumulator(params);
  probe.coneWidth = -1;
  probe.points_ = {pointAt(15, 15, 0, 1.0F), pointAt(25, 20, 130, 3.0F)};
  VotingParams unrepaired = params;
  unrepaired.coneWidth = -1;
  const reference::Voting expected = reference::vote(unrepaired, probe.points_, side, side);
  probe.vote();
  EXPECT_TRUE(sameImage(probe.acc_, expected.acc));
  EXPECT_TRUE(sameImage(probe.prevAcc_, blank<float>({side, side})));
  EXPECT_TRUE(samePoints(probe.points_, expected.points));
}

TEST(VoteMatchesReference, ForPlacedPoints) {
  Random random(2);
  for (int round = 0; round < 10; ++round) {
    VotingParams params;
    params.regionType = round % 3;
    params.minRadius = 1 + round % 4;
    params.maxRadius = 8;
    params.coneWidth = round;
    Probe probe = probeOnAccumulator(params);
    for (int i = randomInt(random, 1, 60); i > 0; --i) {
      probe.points_.push_back(pointAt(randomInt(random, 12, 27), randomInt(random, 12, 27),
                                      randomInt(random, 0, 255),
                                      std::uniform_real_distribution<float>(0.0F, 3.0F)(random)));
      probe.points_.back().offset = -5;
    }
    const reference::Voting expected = reference::vote(params, probe.points_, side, side);
    probe.vote();
    EXPECT_TRUE(sameImage(probe.acc_, expected.acc));
    EXPECT_TRUE(sameImage(probe.prevAcc_, expected.prevAcc));
    EXPECT_TRUE(samePoints(probe.points_, expected.points));
    EXPECT_TRUE(sameCones(probe.cones_, expected.cones));
  }
}

}  // namespace
}  // namespace orva::test
