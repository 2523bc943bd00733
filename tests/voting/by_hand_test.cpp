// vote() against its steps taken one by one, with other numbers of directions too, and called
// twice.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/reference/voting.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

constexpr int kWidth = 44;
constexpr int kHeight = 41;

struct Directions {
  int bins;
  float step;
};

const std::vector<Directions>& otherDirections() {
  static const std::vector<Directions> all = {
      {1, 1.0F}, {8, 0.7853982F}, {64, 0.09817477F}, {100, 0.031F}, {500, 0.012566371F}};
  return all;
}

VotingParams paramsOf(int round) {
  VotingParams params;
  params.regionType = round % 3;
  params.minRadius = 1 + round % 4;
  params.maxRadius = 9;
  params.coneWidth = round % 8;
  return params;
}

// An engine with some points inside an accumulator.
Probe withPoints(Random& random, const VotingParams& params, const Directions& directions) {
  Probe probe(params);
  probe.angleBins_ = directions.bins;
  probe.angleStep_ = directions.step;
  probe.nx_ = kWidth;
  probe.ny_ = kHeight;
  probe.npix_ = kWidth * kHeight;
  voting::WPoint2D::nx = kWidth;
  for (int i = 0; i < 40; ++i) {
    voting::VPoint2D p;
    p.x = static_cast<std::int16_t>(randomInt(random, 14, kWidth - 15));
    p.y = static_cast<std::int16_t>(randomInt(random, 14, kHeight - 15));
    p.angle = static_cast<std::int16_t>(randomInt(random, 0, directions.bins - 1));
    p.weight = std::uniform_real_distribution<float>(0.0F, 3.0F)(random);
    probe.points_.push_back(p);
  }
  return probe;
}

// The same as vote(), by the operations on one point.
void voteByHand(Probe& probe) {
  probe.acc_ = blank<float>({kWidth, kHeight});
  probe.prevAcc_ = blank<float>({kWidth, kHeight});
  const auto coneOf = [&probe](const voting::VPoint2D& p) -> const voting::Cone2D& {
    return probe.cones_[static_cast<std::size_t>(p.angle)];
  };
  probe.computeCones(probe.minRadius, probe.maxRadius, probe.coneWidth);
  for (voting::VPoint2D& p : probe.points_) {
    p.offset = p.x + p.y * kWidth;
    coneOf(p).vote(probe.acc_.pixels() + p.offset, p);
  }
  int w = probe.coneWidth;
  while (true) {
    probe.computeCones(probe.minRadius, probe.maxRadius, w);
    for (voting::VPoint2D& p : probe.points_) probe.getMaxDirection(p);
    probe.prevAcc_ = probe.acc_.duplicate();
    probe.acc_ = blank<float>({kWidth, kHeight});
    for (const voting::VPoint2D& p : probe.points_) {
      coneOf(p).vote(probe.acc_.pixels() + p.offset, probe.prevAcc_.pixels() + p.offset, p);
    }
    if (w == 0) break;
    w = probe.nextConeRadius(probe.maxRadius, w);
  }
}

void expectSame(const Probe& probe, const Probe& byHand) {
  EXPECT_TRUE(sameImage(probe.acc_, byHand.acc_));
  EXPECT_TRUE(sameImage(probe.prevAcc_, byHand.prevAcc_));
  EXPECT_TRUE(samePoints(probe.points_, byHand.points_));
  EXPECT_TRUE(sameCones(probe.cones_, byHand.cones_));
}

TEST(VoteByHand, IsTheSameForAnyNumberOfDirections) {
  Random random(71);
  for (const Directions& directions : otherDirections()) {
    for (int round = 0; round < 6; ++round) {
      SCOPED_TRACE(std::to_string(directions.bins) + " bins, round " + std::to_string(round));
      Probe probe = withPoints(random, paramsOf(round), directions);
      Probe byHand = probe;
      probe.vote();
      voteByHand(byHand);
      expectSame(probe, byHand);
    }
  }
}

TEST(VoteByHand, TwiceBeginsWithTurnedPoints) {
  Random random(72);
  for (int round = 0; round < 9; ++round) {
    Probe probe = withPoints(random, paramsOf(round), {256, Probe().angleStep_});
    const reference::Voting once = reference::vote(paramsOf(round), probe.points_, kWidth, kHeight);
    const reference::Voting twice = reference::vote(paramsOf(round), once.points, kWidth, kHeight);
    Probe byHand = probe;
    probe.vote();
    EXPECT_TRUE(sameImage(probe.acc_, once.acc));
    probe.vote();
    EXPECT_TRUE(sameImage(probe.acc_, twice.acc));
    EXPECT_TRUE(sameImage(probe.prevAcc_, twice.prevAcc));
    EXPECT_TRUE(samePoints(probe.points_, twice.points));
    voteByHand(byHand);
    voteByHand(byHand);
    expectSame(probe, byHand);
  }
}

TEST(OtherDirections, HaveConesTurnedByTheirStep) {
  voting::WPoint2D::nx = kWidth;
  for (const Directions& directions : otherDirections()) {
    for (int type = 0; type < 3; ++type) {
      Probe probe;
      probe.regionType = static_cast<Probe::RegionType>(type);
      probe.angleBins_ = directions.bins;
      probe.angleStep_ = directions.step;
      probe.computeCones(2, 9, 5);
      // The first cone is not turned.
      const voting::Cone2D prototype = reference::cones(type, 2, 9, 5, kWidth).at(0);
      std::vector<voting::Cone2D> expected;
      for (int a = 0; a < directions.bins; ++a) {
        const float theta = static_cast<float>(a) * directions.step;
        const float c = std::cos(theta);
        const float s = std::sin(theta);
        voting::Cone2D cone = prototype;
        cone.setDirection(c, s);
        for (voting::ConePlane2D& plane : cone.planes) {
          for (voting::WPoint2D& cell : plane.points) {
            const auto x = static_cast<float>(cell.x);
            const auto y = static_cast<float>(cell.y);
            cell.x = round_double(c * x - s * y);
            cell.y = round_double(s * x + c * y);
            cell.offset = cell.y * kWidth + cell.x;
          }
        }
        expected.push_back(cone);
      }
      EXPECT_TRUE(sameCones(probe.cones_, expected)) << directions.bins << " bins, type " << type;
    }
  }
}

TEST(OtherDirections, AreIndexedByTheirStep) {
  Probe probe;
  probe.angleBins_ = 8;
  probe.angleStep_ = 0.7853982F;
  EXPECT_EQ(probe.computeAngleIndex(1, 0), 0);
  EXPECT_EQ(probe.computeAngleIndex(0.70710678F, 0.70710678F), 1);
  EXPECT_EQ(probe.computeAngleIndex(0, 1), 2);
  EXPECT_EQ(probe.computeAngleIndex(-1, 0), 4);
  EXPECT_EQ(probe.computeAngleIndex(0, -1), 6);
  EXPECT_EQ(probe.computeAngleIndex(0.9999F, -0.01F), 7);
  // A step that does not lead all the way round: what lies behind belongs to the last bin.
  probe.angleBins_ = 3;
  EXPECT_EQ(probe.computeAngleIndex(0, 1), 2);
  EXPECT_EQ(probe.computeAngleIndex(0, -1), 2);
  // Finer steps than a full turn of bins needs.
  probe.angleBins_ = 5000;
  probe.angleStep_ = 0.001F;
  EXPECT_EQ(probe.computeAngleIndex(0, 1), 1571);
  EXPECT_EQ(probe.computeAngleIndex(0, -1), 4712);
}

}  // namespace
}  // namespace orva::test
