// The outline of a candidate as a star-shaped region: the radius in any direction.
#ifndef ORVA_DETECT_STAR_SHAPE_H
#define ORVA_DETECT_STAR_SHAPE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "orva/detect/rays.h"

namespace orva::detect {

// The direction of (x, y) as a position among the rays, 0 to kRays, to 0.3 degrees.
inline float rayPosition(float x, float y) {
  const float ax = std::fabs(x);
  const float ay = std::fabs(y);
  const float longer = std::max(ax, ay);
  if (!(longer > 0)) return 0.0F;
  const float q = std::min(ax, ay) / longer;
  constexpr float kRaysPerRadian = kRays / 6.28318531F;
  float position = q * (0.9724F - 0.1919F * q * q) * kRaysPerRadian;
  if (ay > ax) position = kRays / 4.0F - position;
  if (x < 0) position = kRays / 2.0F - position;
  if (y < 0) position = kRays - position;
  return std::max(position, 0.0F);
}

// The radius of an outline in the direction of (x, y), between two rays by linear interpolation.
inline float radiusTowards(const std::array<float, kRays>& radii, float x, float y) {
  const float position = rayPosition(x, y);
  const auto whole = static_cast<std::size_t>(position);
  const float part = position - static_cast<float>(whole);
  return radii[whole % kRays] * (1 - part) + radii[(whole + 1) % kRays] * part;
}

}  // namespace orva::detect

#endif
