#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>

#include "orva/image/pixel_traits.h"
#include "orva/voting/circularvoting.h"

namespace orva::voting {
namespace {

constexpr float kPi = 3.14159265F;

// Appends the planes of a fan that opens along +x, or along -x for a sign of -1: first the axis,
// then for every column the cells off the axis, each in the plane of its rounded distance.
void appendFan(std::vector<ConePlane2D>& planes, int minRadius, int maxRadius, int width,
               int sign) {
  const auto first = static_cast<std::ptrdiff_t>(planes.size());
  for (int d = minRadius; d <= maxRadius; ++d) {
    planes.emplace_back(1, WPoint2D(sign * d, 0, 0, 1.0F));
  }
  const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(planes.size()) - first;
  for (int r = minRadius; r <= maxRadius && maxRadius != 0; ++r) {
    const std::int64_t height = std::int64_t{r} * width / maxRadius;
    // Cells farther than maxRadius are dropped, so none past that row needs a look.
    const int h =
        static_cast<int>(std::max(std::int64_t{-1}, std::min(height, std::int64_t{maxRadius} + 1)));
    for (int dy = -h; dy <= h; ++dy) {
      if (dy == 0) continue;
      const double square = static_cast<double>(dy) * dy + static_cast<double>(r) * r;
      const int d = round_double(static_cast<float>(std::sqrt(square)));
      const std::ptrdiff_t plane = std::ptrdiff_t{d} - minRadius;
      if (plane < 0 || plane >= count) continue;
      planes[static_cast<std::size_t>(first + plane)].points.emplace_back(sign * r, dy, 0, 1.0F);
    }
  }
}

Cone2D rotated(const Cone2D& prototype, float c, float s) {
  Cone2D cone = prototype;
  for (ConePlane2D& plane : cone.planes) {
    for (WPoint2D& cell : plane.points) {
      const auto x = static_cast<float>(cell.x);
      const auto y = static_cast<float>(cell.y);
      cell.x = round_double(c * x - s * y);
      cell.y = round_double(s * x + c * y);
    }
  }
  cone.setDirection(c, s);
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
  constexpr float kLeastShare = 0.05F;
  absoluteValues = absolute;
  regionType = type;
  minRadius = nearest > 0 ? nearest : 1;
  maxRadius = std::max(farthest, minRadius);
  coneWidth = std::max(width, 0);
  gradThreshold = gradient;
  centerThreshold = threshold;
  if (!absolute) centerThreshold = std::max(threshold <= 1.0F ? threshold : 1.0F, kLeastShare);
  sigma = scale > 0.0F ? scale : 0.0F;
  weighting = method;
  weightParam = param;
  useEdges = edges;
}

void CircularVoting::computeCones(int nearest, int farthest, int width) {
  constexpr int kFarthest = std::numeric_limits<std::int16_t>::max();
  nearest = std::clamp(nearest, -kFarthest, kFarthest);
  farthest = std::clamp(farthest, -kFarthest, kFarthest);
  Cone2D prototype;
  appendFan(prototype.planes, nearest, farthest, width, 1);
  if (regionType == Both) appendFan(prototype.planes, nearest, farthest, width, -1);

  cones_.assign(static_cast<std::size_t>(angleBins_), Cone2D());
  for (std::size_t bin = 0; bin < cones_.size(); ++bin) {
    const float theta = static_cast<float>(bin) * angleStep_;
    cones_[bin] = rotated(prototype, std::cos(theta), std::sin(theta));
  }
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
