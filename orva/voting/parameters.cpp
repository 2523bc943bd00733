#include <algorithm>
#include <cmath>
#include <iostream>

#include "orva/image/bad_alloc.h"
#include "orva/image/truncate.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/cone_table.h"

namespace orva::voting {
namespace {

constexpr float kPi = 3.14159265F;

Cone2D rotated(const Cone2D& prototype, const Rotation& rotation) {
  Cone2D cone = prototype;
  for (ConePlane2D& plane : cone.planes) {
    for (WPoint2D& cell : plane.points) rotation.apply(cell.x, cell.y);
  }
  cone.setDirection(rotation.cosine, rotation.sine);
  cone.init();
  return cone;
}

}  // namespace

CircularVoting::CircularVoting()
    : acc_(0, 1, 1, 1, 1),
      prevAcc_(0, 1, 1, 1, 1),
      votingImage_(0, 1, 1, 1, 1),
      angleStep_((kPi + kPi) * 0.00390625F) {}

CircularVoting::~CircularVoting() = default;

void CircularVoting::setParams(RegionType type, int nearest, int farthest, int width,
                               float gradient, float threshold, float scale, WeightingMethod method,
                               float param, bool edges, bool absolute) {
  constexpr float kMinShare = 0.05F;
  absoluteValues = absolute;
  regionType = type;
  minRadius = nearest > 0 ? nearest : 1;
  maxRadius = std::max(farthest, minRadius);
  coneWidth = std::max(width, 0);
  gradThreshold = gradient;
  centerThreshold = threshold;
  if (!absolute) centerThreshold = std::max(threshold <= 1.0F ? threshold : 1.0F, kMinShare);
  sigma = scale > 0.0F ? scale : 0.0F;
  weighting = method;
  weightParam = param;
  useEdges = edges;
}

void CircularVoting::computeCones(int nearest, int farthest, int width) {
  exitOnBadAlloc([&] {
    const Cone2D prototype = prototypeCone(nearest, farthest, width, regionType == Both);
    cones_.assign(static_cast<std::size_t>(angleBins_), Cone2D());
    for (int bin = 0; bin < angleBins_; ++bin) {
      cones_[static_cast<std::size_t>(bin)] = rotated(prototype, Rotation(bin, angleStep_));
    }
  });
}

int CircularVoting::nextConeRadius(int farthest, int width) {
  if (farthest <= 0 || width < 0) {
    std::cerr << "Error in CircularVoting::nextConeRadius: null cone\n";
    return 0;
  }
  const double r = farthest;
  return truncateTo<int>(r * std::tan(0.7 * std::atan(width / r)));
}

int CircularVoting::computeAngleIndex(float cosine, float sine) const {
  float angle = std::acos(cosine);
  if (sine < 0.0F) angle = 6.2831855F - angle;
  return std::clamp(round_double(angle / angleStep_), 0, angleBins_ - 1);
}

}  // namespace orva::voting
