#include <algorithm>

#include "orva/image/bad_alloc.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/cone_table.h"
#include "orva/voting/negligible.h"

namespace orva::voting {

constinit thread_local int WPoint2D::nx = 0;
constinit thread_local int WPoint2D::ny = 0;
constinit thread_local int ConePlane2D::nx = 0;
constinit thread_local int ConePlane2D::ny = 0;
constinit thread_local int Cone2D::nx = 0;
constinit thread_local int Cone2D::ny = 0;

ConePlane2D::ConePlane2D(int n, const WPoint2D& p)
    : points(exitOnBadAlloc(
          [&] { return std::vector<WPoint2D>(static_cast<std::size_t>(std::max(n, 0)), p); })) {}

void ConePlane2D::setPos() {
  for (WPoint2D& c : points) c.offset = offsetOf(c.x, c.y, WPoint2D::nx);
}

void Cone2D::setDirection(float x, float y) {
  dx = x;
  dy = y;
}

void Cone2D::init() {
  for (ConePlane2D& plane : planes) plane.setPos();
}

void Cone2D::vote(float* acc, const VPoint2D& p) const {
  for (const ConePlane2D& plane : planes) {
    for (const WPoint2D& c : plane.points) acc[c.offset] += p.weight * c.weight;
  }
}

void Cone2D::vote(float* acc, float* prev, const VPoint2D& p) const {
  float sum = 0.0F;
  for (const ConePlane2D& plane : planes) {
    for (const WPoint2D& c : plane.points) sum += prev[c.offset];
  }
  if (sum < kNegligible) return;
  // Intended: the cells' own weights play no part.
  const float share = p.weight / sum;
  for (const ConePlane2D& plane : planes) {
    for (const WPoint2D& c : plane.points) acc[c.offset] += share * prev[c.offset];
  }
}

}  // namespace orva::voting
