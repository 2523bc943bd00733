#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/reference/voting.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

TEST(CircularVoting, StartsWithItsDefaults) {
  Probe p;
  const auto empty = blank<float>({0, 1});
  EXPECT_TRUE(p.centers().empty());
  EXPECT_TRUE(p.center_weights().empty());
  EXPECT_TRUE(sameImage(p.acc_, empty));
  EXPECT_TRUE(sameImage(p.prevAcc_, empty));
  EXPECT_TRUE(sameImage(p.votingImage(), empty));
  EXPECT_TRUE(p.points_.empty());
  EXPECT_TRUE(p.cones_.empty());
  EXPECT_EQ(p.angleStep_, 0.024543693F);
  EXPECT_EQ(p.angleBins_, 256);
  EXPECT_EQ(p.nx_, 0);
  EXPECT_EQ(p.ny_, 0);
  EXPECT_EQ(p.npix_, 0);
  EXPECT_EQ(p.margin_, 0);
  EXPECT_EQ(p.gradThreshold, 1.0F);
  EXPECT_EQ(p.minRadius, 1);
  EXPECT_EQ(p.maxRadius, 20);
  EXPECT_EQ(p.coneWidth, 10);
  EXPECT_EQ(p.regionType, voting::CircularVoting::Both);
  EXPECT_EQ(p.centerThreshold, 0.0F);
  EXPECT_EQ(p.sigma, 0.0F);
  EXPECT_EQ(p.weighting, 0);
  EXPECT_EQ(p.weightParam, 0.0F);
  EXPECT_FALSE(p.useEdges);
  EXPECT_EQ(p.prefix_, "");
  EXPECT_FALSE(p.saveHistory_);
  EXPECT_TRUE(p.absoluteValues);
}

TEST(CircularVoting, CodesOfTypesAndMethods) {
  EXPECT_EQ(static_cast<int>(voting::CircularVoting::Bright), 0);
  EXPECT_EQ(static_cast<int>(voting::CircularVoting::Dark), 1);
  EXPECT_EQ(static_cast<int>(voting::CircularVoting::Both), 2);
  EXPECT_EQ(static_cast<int>(voting::CircularVoting::Power), 0);
  EXPECT_EQ(static_cast<int>(voting::CircularVoting::Exponential), 1);
}

TEST(SetParams, StoresValidArgumentsUnchanged) {
  Probe p;
  p.setParams(voting::CircularVoting::Dark, 4, 9, 3, -2.5F, 0.3F, 1.5F,
              voting::CircularVoting::Exponential, -7.0F, true, false);
  EXPECT_EQ(p.regionType, voting::CircularVoting::Dark);
  EXPECT_EQ(p.minRadius, 4);
  EXPECT_EQ(p.maxRadius, 9);
  EXPECT_EQ(p.coneWidth, 3);
  EXPECT_EQ(p.gradThreshold, -2.5F);
  EXPECT_EQ(p.centerThreshold, 0.3F);
  EXPECT_EQ(p.sigma, 1.5F);
  EXPECT_EQ(p.weighting, voting::CircularVoting::Exponential);
  EXPECT_EQ(p.weightParam, -7.0F);
  EXPECT_TRUE(p.useEdges);
  EXPECT_FALSE(p.absoluteValues);
}

TEST(SetParams, RepairsRadiiAndConeWidth) {
  struct Row {
    int min, max, width, keptMin, keptMax, keptWidth;
  };
  for (const Row& row :
       {Row{0, 5, 2, 1, 5, 2}, Row{-8, 5, 2, 1, 5, 2}, Row{6, 5, 2, 6, 6, 2}, Row{0, 0, 0, 1, 1, 0},
        Row{-3, -4, 1, 1, 1, 1}, Row{5, 5, -3, 5, 5, 0}, Row{2, 3, 50, 2, 3, 50}}) {
    Probe p;
    VotingParams params;
    params.minRadius = row.min;
    params.maxRadius = row.max;
    params.coneWidth = row.width;
    p.set(params);
    EXPECT_EQ(p.minRadius, row.keptMin);
    EXPECT_EQ(p.maxRadius, row.keptMax);
    EXPECT_EQ(p.coneWidth, row.keptWidth);
  }
}

TEST(SetParams, ClampsTheCenterThresholdUnlessAbsolute) {
  const float inf = std::numeric_limits<float>::infinity();
  for (const auto& [given, kept] : std::vector<std::pair<float, float>>{{0.01F, 0.05F},
                                                                        {7.0F, 1.0F},
                                                                        {0.05F, 0.05F},
                                                                        {1.0F, 1.0F},
                                                                        {0.4F, 0.4F},
                                                                        {-3.0F, 0.05F},
                                                                        {inf, 1.0F},
                                                                        {-inf, 0.05F},
                                                                        {nan, 1.0F}}) {
    VotingParams params;
    params.centerThreshold = given;
    params.absoluteValues = false;
    EXPECT_EQ(Probe(params).centerThreshold, kept) << given;
    params.absoluteValues = true;
    EXPECT_TRUE(sameFloats({Probe(params).centerThreshold}, {given}));
  }
}

TEST(SetParams, MakesSigmaZeroUnlessPositive) {
  for (const auto& [given, kept] : std::vector<std::pair<float, float>>{
           {-1.0F, 0.0F}, {0.0F, 0.0F}, {-0.0F, 0.0F}, {nan, 0.0F}, {1e-6F, 1e-6F}, {3.0F, 3.0F}}) {
    VotingParams params;
    params.sigma = given;
    EXPECT_TRUE(sameFloats({Probe(params).sigma}, {kept})) << given;
  }
}

TEST(CircularVoting, KeepsACopyOfPrefixAndTheHistorySwitch) {
  Probe p;
  std::string prefix = "there/";
  p.setPrefix(prefix);
  prefix = "elsewhere/";
  p.saveHistory(true);
  EXPECT_EQ(p.prefix_, "there/");
  EXPECT_TRUE(p.saveHistory_);
  p.saveHistory(false);
  EXPECT_FALSE(p.saveHistory_);
}

using Cells = std::vector<std::vector<std::pair<int, int>>>;

Cells cellsOf(const voting::Cone2D& cone) {
  Cells result;
  for (const voting::ConePlane2D& plane : cone.planes) {
    result.emplace_back();
    for (const voting::WPoint2D& cell : plane.points) {
      result.back().emplace_back(cell.x, cell.y);
      EXPECT_EQ(cell.weight, 1.0F);
      EXPECT_EQ(cell.offset, cell.y * voting::WPoint2D::nx + cell.x);
    }
  }
  return result;
}

TEST(ComputeCones, OpenAlongTheirDirection) {
  Probe p;
  p.regionType = voting::CircularVoting::Bright;
  voting::WPoint2D::nx = 50;
  p.computeCones(1, 3, 2);
  ASSERT_EQ(p.cones_.size(), 256U);
  EXPECT_EQ(cellsOf(p.cones_[0]),
            (Cells{{{1, 0}}, {{2, 0}, {2, -1}, {2, 1}}, {{3, 0}, {3, -1}, {3, 1}}}));
  EXPECT_EQ(cellsOf(p.cones_[64]),
            (Cells{{{0, 1}}, {{0, 2}, {1, 2}, {-1, 2}}, {{0, 3}, {1, 3}, {-1, 3}}}));
  EXPECT_EQ(p.cones_[0].dx, 1.0F);
  EXPECT_EQ(p.cones_[0].dy, 0.0F);
  EXPECT_EQ(p.cones_[64].dy, 1.0F);
}

TEST(ComputeCones, OfBothHaveTheBackwardPlanesAfterTheForwardPlanes) {
  Probe p;
  p.regionType = voting::CircularVoting::Both;
  voting::WPoint2D::nx = 50;
  p.computeCones(2, 3, 2);
  EXPECT_EQ(cellsOf(p.cones_[0]), (Cells{{{2, 0}, {2, -1}, {2, 1}},
                                         {{3, 0}, {3, -1}, {3, 1}},
                                         {{-2, 0}, {-2, -1}, {-2, 1}},
                                         {{-3, 0}, {-3, -1}, {-3, 1}}}));
}

TEST(ComputeCones, OfWidthZeroAreLinesOfOneCellPerDistance) {
  for (const auto type : {voting::CircularVoting::Bright, voting::CircularVoting::Dark,
                          voting::CircularVoting::Both}) {
    Probe p;
    p.regionType = type;
    voting::WPoint2D::nx = 77;
    p.computeCones(3, 12, 0);
    for (const voting::Cone2D& cone : p.cones_) {
      EXPECT_EQ(cone.planes.size(), type == voting::CircularVoting::Both ? 20U : 10U);
      for (const voting::ConePlane2D& plane : cone.planes) EXPECT_EQ(plane.points.size(), 1U);
    }
  }
}

TEST(ComputeCones, KeepCellsThatLandOnTheSamePixelWhichIsIntended) {
  Probe p;
  p.regionType = voting::CircularVoting::Bright;
  voting::WPoint2D::nx = 50;
  p.computeCones(1, 12, 9);
  const auto count = [](const voting::Cone2D& cone) {
    std::size_t n = 0;
    for (const auto& plane : cellsOf(cone)) n += plane.size();
    return n;
  };
  bool shared = false;
  for (const voting::Cone2D& cone : p.cones_) {
    EXPECT_EQ(count(cone), count(p.cones_[0]));
    std::vector<std::pair<int, int>> all;
    for (const auto& plane : cellsOf(cone)) all.insert(all.end(), plane.begin(), plane.end());
    std::sort(all.begin(), all.end());
    shared = shared || std::adjacent_find(all.begin(), all.end()) != all.end();
  }
  EXPECT_TRUE(shared);
}

// Cells half-way between the axes, at 0.7, 1.4 and 2.1 along both.
TEST(ComputeCones, TruncateCellsLeftOfAndAboveThePointWhichIsIntended) {
  Probe p;
  p.regionType = voting::CircularVoting::Bright;
  voting::WPoint2D::nx = 50;
  p.computeCones(1, 3, 0);
  EXPECT_EQ(cellsOf(p.cones_[32]), (Cells{{{1, 1}}, {{1, 1}}, {{2, 2}}}));
  EXPECT_EQ(cellsOf(p.cones_[160]), (Cells{{{0, 0}}, {{-1, -1}}, {{-2, -2}}}));
}

TEST(ConeMatchesReference, ForRandomRadiiAndWidths) {
  Random random(1);
  for (int round = 0; round < 60; ++round) {
    Probe p;
    p.regionType = static_cast<voting::CircularVoting::RegionType>(round % 3);
    const int r0 = randomInt(random, 1, 12);
    const int R = r0 + (round % 5 == 0 ? 0 : randomInt(random, 0, 12));
    // From lines to fans wider than long.
    const int w = randomInt(random, -1, 3 * R);
    voting::WPoint2D::nx = randomInt(random, 1, 3000);
    p.computeCones(r0, R, w);
    EXPECT_TRUE(sameCones(
        p.cones_, reference::cones(static_cast<int>(p.regionType), r0, R, w, voting::WPoint2D::nx)))
        << "radii " << r0 << " to " << R << ", width " << w;
  }
}

TEST(NextConeRadius, NarrowsDownToZero) {
  struct Row {
    int maxRadius;
    std::vector<int> widths;
  };
  for (const Row& row : {Row{20, {10, 6, 4, 2, 1, 0}}, Row{20, {5, 3, 2, 1, 0}},
                         Row{10, {3, 2, 1, 0}}, Row{20, {0, 0}}}) {
    Probe p;
    for (std::size_t i = 1; i < row.widths.size(); ++i) {
      EXPECT_EQ(p.nextConeRadius(row.maxRadius, row.widths[i - 1]), row.widths[i]);
    }
  }
}

TEST(NextConeRadiusMatchesReference, ForEveryRadiusAndWidth) {
  Probe p;
  for (int R = 1; R <= 60; ++R) {
    for (int w = 0; w <= 130; ++w) {
      ASSERT_EQ(p.nextConeRadius(R, w), reference::nextConeRadius(R, w)) << R << ", " << w;
    }
  }
}

TEST(NextConeRadius, OfANullConeIsZeroWithAMessage) {
  Probe p;
  for (const auto& [R, w] : std::vector<std::pair<int, int>>{{0, 5}, {20, -1}, {-1, 3}, {0, -1}}) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(p.nextConeRadius(R, w), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error in CircularVoting::nextConeRadius: null cone\n");
  }
}

TEST(ComputeAngleIndex, OfTheAxes) {
  const Probe p;
  EXPECT_EQ(p.computeAngleIndex(1, 0), 0);
  EXPECT_EQ(p.computeAngleIndex(0, 1), 64);
  EXPECT_EQ(p.computeAngleIndex(-1, 0), 128);
  EXPECT_EQ(p.computeAngleIndex(0, -1), 192);
}

TEST(ComputeAngleIndex, JustBelowAFullTurnIsTheLastBinWhichIsIntended) {
  const Probe p;
  const float angle = -0.001F;
  EXPECT_EQ(p.computeAngleIndex(std::cos(angle), std::sin(angle)), 255);
  EXPECT_EQ(p.computeAngleIndex(std::cos(angle), std::sin(-angle)), 0);
}

TEST(ComputeAngleIndex, OfACosineOutOfRangeIsZero) {
  const Probe p;
  for (const float sine : {0.0F, 1.0F, -1.0F}) {
    EXPECT_EQ(p.computeAngleIndex(1.001F, sine), 0);
    EXPECT_EQ(p.computeAngleIndex(-1.001F, sine), 0);
    EXPECT_EQ(p.computeAngleIndex(nan, sine), 0);
  }
}

TEST(AngleIndexMatchesReference, AllAroundTheCircle) {
  const Probe p;
  for (int i = -20000; i <= 20000; ++i) {
    const double angle = i * 3.15e-4;
    const auto c = static_cast<float>(std::cos(angle));
    const auto s = static_cast<float>(std::sin(angle));
    ASSERT_EQ(p.computeAngleIndex(c, s), reference::angleIndex(c, s)) << c << ", " << s;
  }
}

// A fan at those ends would take more memory than there is, and its distances overflow.
TEST(ComputeCones, HoldsWildDistances) {
  constexpr int kMax = std::numeric_limits<int>::max();
  Probe p;
  p.angleBins_ = 2;
  voting::WPoint2D::nx = 32767;
  for (const auto type : {Probe::Bright, Probe::Both}) {
    const std::size_t fans = type == Probe::Both ? 2 : 1;
    p.regionType = type;
    p.computeCones(kMax, kMax, 0);
    EXPECT_EQ(p.cones_.at(0).planes.size(), fans);
    EXPECT_EQ(p.cones_.at(0).planes.at(0).points.at(0).x, 32767);
    p.computeCones(-kMax - 1, -kMax - 1, 0);
    EXPECT_EQ(p.cones_.at(0).planes.size(), fans);
    p.computeCones(-2, 1, kMax);
    EXPECT_EQ(p.cones_.at(0).planes.size(), 4 * fans);
    p.computeCones(3, 2, 1);
    EXPECT_TRUE(p.cones_.at(0).planes.empty());
  }
  voting::WPoint2D::nx = 0;
}

}  // namespace
}  // namespace orva::test
