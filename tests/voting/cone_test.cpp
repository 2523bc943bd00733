#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>
#include <vector>

#include "orva/voting/circularvoting.h"

namespace orva::test {
namespace {

using Floats = std::vector<float>;

voting::VPoint2D pointOfWeight(float weight) {
  voting::VPoint2D p;
  p.weight = weight;
  return p;
}

// Two planes of cells at the offsets 1, 2 and 4, the last of them twice.
voting::Cone2D exampleCone() {
  voting::Cone2D cone;
  cone.planes.resize(2);
  cone.planes[0].points = {voting::WPoint2D(1, 0, 1, 1.0F), voting::WPoint2D(2, 0, 2, 0.5F)};
  cone.planes[1].points = {voting::WPoint2D(4, 0, 4, 1.0F), voting::WPoint2D(4, 0, 4, 1.0F)};
  return cone;
}

TEST(WPoint2D, HoldsItsArguments) {
  const voting::WPoint2D p(3, -4, 17, 0.25F);
  EXPECT_EQ(p.x, 3);
  EXPECT_EQ(p.y, -4);
  EXPECT_EQ(p.offset, 17);
  EXPECT_EQ(p.weight, 0.25F);
}

TEST(VPoint2D, StartsAsZeroWithCoordinatesOfSixteenBits) {
  const voting::VPoint2D p;
  EXPECT_EQ(p.x, 0);
  EXPECT_EQ(p.y, 0);
  EXPECT_EQ(p.cx, 0);
  EXPECT_EQ(p.cy, 0);
  EXPECT_EQ(p.angle, 0);
  EXPECT_EQ(p.offset, 0);
  EXPECT_EQ(p.weight, 0.0F);
  static_assert(std::is_same_v<decltype(p.x), std::int16_t>);
  static_assert(std::is_same_v<decltype(p.y), std::int16_t>);
  static_assert(std::is_same_v<decltype(p.cx), std::int16_t>);
  static_assert(std::is_same_v<decltype(p.cy), std::int16_t>);
  static_assert(std::is_same_v<decltype(p.angle), std::int16_t>);
}

TEST(ConePlane2D, HoldsCopiesOfACell) {
  const voting::ConePlane2D plane(3, voting::WPoint2D(1, 2, 3, 4.0F));
  ASSERT_EQ(plane.points.size(), 3U);
  for (const voting::WPoint2D& p : plane.points) {
    EXPECT_EQ(p.x, 1);
    EXPECT_EQ(p.y, 2);
    EXPECT_EQ(p.offset, 3);
    EXPECT_EQ(p.weight, 4.0F);
  }
  EXPECT_TRUE(voting::ConePlane2D(0, voting::WPoint2D()).points.empty());
  EXPECT_TRUE(voting::ConePlane2D(-2, voting::WPoint2D()).points.empty());
}

TEST(ConePlane2D, SetPosUsesTheWidthOfWPoint2D) {
  voting::ConePlane2D plane;
  plane.points = {voting::WPoint2D(2, -1, 99, 1.0F), voting::WPoint2D(-3, 2, 0, 1.0F),
                  voting::WPoint2D(0, 0, 5, 1.0F)};
  voting::WPoint2D::nx = 100;
  voting::ConePlane2D::nx = 7;
  voting::Cone2D::nx = 9;
  plane.setPos();
  EXPECT_EQ(plane.points[0].offset, -98);
  EXPECT_EQ(plane.points[1].offset, 197);
  EXPECT_EQ(plane.points[2].offset, 0);
}

TEST(Cone2D, StartsEmptyAlongX) {
  const voting::Cone2D cone;
  EXPECT_TRUE(cone.planes.empty());
  EXPECT_EQ(cone.dx, 1.0F);
  EXPECT_EQ(cone.dy, 0.0F);
}

TEST(Cone2D, StoresADirectionUnchanged) {
  voting::Cone2D cone;
  cone.setDirection(3.0F, -4.0F);
  EXPECT_EQ(cone.dx, 3.0F);
  EXPECT_EQ(cone.dy, -4.0F);
}

TEST(Cone2D, InitSetsTheOffsetsOfAllPlanes) {
  voting::Cone2D cone;
  cone.planes = {voting::ConePlane2D(2, voting::WPoint2D(1, 1, 0, 1.0F)),
                 voting::ConePlane2D(1, voting::WPoint2D(0, -2, 0, 1.0F))};
  voting::WPoint2D::nx = 10;
  cone.init();
  EXPECT_EQ(cone.planes[0].points[0].offset, 11);
  EXPECT_EQ(cone.planes[0].points[1].offset, 11);
  EXPECT_EQ(cone.planes[1].points[0].offset, -20);
}

TEST(Cone2D, CopiesOwnTheirCells) {
  const voting::Cone2D cone = exampleCone();
  voting::Cone2D other = cone;
  other.planes[0].points[0].offset = 77;
  other.planes.pop_back();
  EXPECT_EQ(cone.planes.size(), 2U);
  EXPECT_EQ(cone.planes[0].points[0].offset, 1);
}

TEST(Cone2D, PlainVoteAddsTheWeightOfThePointTimesThatOfTheCell) {
  Floats acc = {1, 1, 1, 1, 1, 1};
  exampleCone().vote(acc.data(), pointOfWeight(8.0F));
  EXPECT_EQ(acc, (Floats{1, 9, 5, 1, 17, 1}));
}

TEST(Cone2D, PlainVoteCountsFromThePointer) {
  Floats acc(7, 0.0F);
  voting::Cone2D cone;
  cone.planes = {voting::ConePlane2D(1, voting::WPoint2D(-3, 0, -3, 1.0F))};
  cone.vote(acc.data() + 4, pointOfWeight(2.0F));
  EXPECT_EQ(acc, (Floats{0, 2, 0, 0, 0, 0, 0}));
}

TEST(Cone2D, RedistributingVoteSharesByThePreviousVotes) {
  Floats acc(6, 0.0F);
  Floats prev = {100, 1, 3, 100, 2, 100};
  exampleCone().vote(acc.data(), prev.data(), pointOfWeight(16.0F));
  // The sum is 1 + 3 + 2 + 2; the cell in the cone twice gets its share twice.
  EXPECT_EQ(acc, (Floats{0, 2, 6, 0, 8, 0}));
  EXPECT_EQ(prev, (Floats{100, 1, 3, 100, 2, 100}));
}

TEST(Cone2D, RedistributingWithoutWeightsOfCellsIsIntended) {
  voting::Cone2D cone = exampleCone();
  for (voting::ConePlane2D& plane : cone.planes) {
    for (voting::WPoint2D& cell : plane.points) cell.weight = 0.0F;
  }
  Floats acc(6, 0.0F);
  Floats prev = {0, 1, 1, 0, 1, 0};
  cone.vote(acc.data(), prev.data(), pointOfWeight(4.0F));
  EXPECT_EQ(acc, (Floats{0, 1, 1, 0, 2, 0}));
}

TEST(Cone2D, RedistributingVoteIsDroppedBelowOneThousandth) {
  for (const float sum : {0.0F, 0.000999F, -5.0F}) {
    Floats acc(6, 0.0F);
    Floats prev = {9, sum, 0, 9, 0, 9};
    exampleCone().vote(acc.data(), prev.data(), pointOfWeight(1.0F));
    EXPECT_EQ(acc, Floats(6, 0.0F)) << sum;
  }
  Floats acc(6, 0.0F);
  Floats prev = {9, 0.001001F, 0, 9, 0, 9};
  exampleCone().vote(acc.data(), prev.data(), pointOfWeight(1.0F));
  EXPECT_EQ(acc[1], 1.0F / 0.001001F * 0.001001F);
}

TEST(Cone2D, WithoutCellsVotesForNothing) {
  voting::Cone2D noCells;
  noCells.planes.resize(3);
  for (const voting::Cone2D& cone : {voting::Cone2D(), noCells}) {
    Floats acc = {1, 2, 3};
    Floats prev = {4, 5, 6};
    cone.vote(acc.data(), pointOfWeight(1.0F));
    cone.vote(acc.data(), prev.data(), pointOfWeight(1.0F));
    EXPECT_EQ(acc, (Floats{1, 2, 3}));
  }
}

}  // namespace
}  // namespace orva::test
