#include <algorithm>
#include <cmath>
#include <memory>

#include "orva/image_io/image_io.h"
#include "orva/util/global.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/negligible.h"

namespace orva::voting {
namespace {

// The length of a vector of whole numbers, rounded once.
float lengthOf(double x, double y) { return std::sqrt(static_cast<float>(x * x + y * y)); }

}  // namespace

void CircularVoting::vote() {
  acc_ = image<float>(nx_, ny_, 1, 1, 1);
  prevAcc_ = image<float>(nx_, ny_, 1, 1, 1);
  float* acc = acc_.pixels();
  float* prev = prevAcc_.pixels();
  const auto coneOf = [this](const VPoint2D& p) -> const Cone2D& {
    return cones_[static_cast<std::size_t>(p.angle)];
  };
  for (VPoint2D& p : points_) p.offset = p.x + p.y * acc_.nx();

  computeCones(minRadius, maxRadius, coneWidth);
  for (const VPoint2D& p : points_) coneOf(p).vote(acc + p.offset, p);

  int width = coneWidth;
  while (width >= 0) {
    if (saveHistory_) writeHistory(width);
    for (VPoint2D& p : points_) getMaxDirection(p);
    std::copy_n(acc, acc_.npix(), prev);
    std::fill_n(acc, acc_.npix(), 0.0F);
    for (const VPoint2D& p : points_) coneOf(p).vote(acc + p.offset, prev + p.offset, p);
    if (width == 0) return;
    width = nextConeRadius(maxRadius, width);
    computeCones(minRadius, maxRadius, width);
  }
  computeCones(minRadius, maxRadius, 0);
}

bool CircularVoting::hasCone(const VPoint2D& p) const {
  return p.angle >= 0 && static_cast<std::size_t>(p.angle) < cones_.size();
}

void CircularVoting::getMaxDirection(VPoint2D& p) {
  if (!hasCone(p)) return;
  const float* acc = acc_.pixels() + p.offset;
  const WPoint2D* best = nullptr;
  float most = 0.0F;
  for (const ConePlane2D& plane : cones_[static_cast<std::size_t>(p.angle)].planes) {
    for (const WPoint2D& c : plane.points) {
      if (acc[c.offset] > most) {
        most = acc[c.offset];
        best = &c;
      }
    }
  }
  if (best == nullptr || most < kNegligible) return;
  const float length = lengthOf(best->x, best->y);
  if (!(length > kNegligible)) return;
  p.cx = static_cast<std::int16_t>(p.x + best->x);
  p.cy = static_cast<std::int16_t>(p.y + best->y);
  p.angle = static_cast<std::int16_t>(computeAngleIndex(static_cast<float>(best->x) / length,
                                                        static_cast<float>(best->y) / length));
}

void CircularVoting::getMeanDirection(VPoint2D& p) {
  if (!hasCone(p)) return;
  const float* acc = acc_.pixels() + p.offset;
  float sumX = 0.0F;
  float sumY = 0.0F;
  int cells = 0;
  for (const ConePlane2D& plane : cones_[static_cast<std::size_t>(p.angle)].planes) {
    for (const WPoint2D& c : plane.points) {
      const float v = acc[c.offset];
      sumX += static_cast<float>(c.x) * v;
      sumY += static_cast<float>(c.y) * v;
      ++cells;
    }
  }
  if (cells < 1) return;
  const auto n = static_cast<float>(cells);
  const int x = round_double(sumX / n);
  const int y = round_double(sumY / n);
  const float length = lengthOf(x, y);
  if (!(length > kNegligible)) return;
  p.angle = static_cast<std::int16_t>(
      computeAngleIndex(static_cast<float>(x) / length, static_cast<float>(y) / length));
}

void CircularVoting::writeHistory(int width) const {
  const std::unique_ptr<Image> votes(
      Roi::getSubImage(acc_, margin_, margin_, nx_ - margin_ - 1, ny_ - margin_ - 1));
  if (!votes) return;
  const std::string label = std::string(width <= 9 ? "0" : "") + toString(width);
  image_io::writeICS(prefix_ + "vote_" + label, *votes);
}

}  // namespace orva::voting
