#include "orva/detect/polygon.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "orva/detect/elementary.h"

namespace orva::detect {
namespace {

// Area of the polygon whose 32 corners lie on the unit circle: 16 sin(360 / 32 degrees).
constexpr double kUnitPolygonArea = 16 * 0.195090322016128268;
constexpr double kMinArea = 0.5;

struct Corner {
  double x;
  double y;
};

using Corners = std::array<Corner, kRays>;

Corners cornersOf(const ScaleLevel& level, const Outline& o) {
  const float right = static_cast<float>(level.nx) - 0.5F;
  const float bottom = static_cast<float>(level.ny) - 0.5F;
  Corners corners{};
  for (std::size_t t = 0; t < kRays; ++t) {
    const float x = o.x + o.rays[t].radius * kDirections[t].x;
    const float y = o.y + o.rays[t].radius * kDirections[t].y;
    corners[t] = {double{std::clamp(x, -0.5F, right)} - o.x,
                  double{std::clamp(y, -0.5F, bottom)} - o.y};
  }
  return corners;
}

double cross(const Corner& a, const Corner& b) { return a.x * b.y - b.x * a.y; }

double cross(const Corner& origin, const Corner& a, const Corner& b) {
  return (a.x - origin.x) * (b.y - origin.y) - (a.y - origin.y) * (b.x - origin.x);
}

// Area of the convex hull, by the monotone chain.
double hullArea(Corners corners) {
  std::sort(corners.begin(), corners.end(),
            [](const Corner& a, const Corner& b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
  std::array<Corner, 2 * kRays> hull{};
  std::size_t n = 0;
  const auto add = [&](const Corner& c, std::size_t start) {
    while (n >= start + 2 && cross(hull[n - 2], hull[n - 1], c) <= 0) --n;
    hull[n++] = c;
  };
  for (std::size_t i = 0; i < kRays; ++i) add(corners[i], 0);
  const std::size_t upper = n - 1;
  for (std::size_t i = kRays - 1; i-- > 0;) add(corners[i], upper);
  double sum = 0;
  for (std::size_t i = 0; i + 1 < n; ++i) sum += cross(hull[i], hull[i + 1]);
  return sum / 2;
}

// Minor to major axis, from the second moments about the centroid.
double axisRatioOf(const Corners& corners, const PolygonShape& s) {
  double xx = 0;
  double yy = 0;
  double xy = 0;
  for (std::size_t t = 0; t < kRays; ++t) {
    const Corner a{corners[t].x - s.x, corners[t].y - s.y};
    const Corner b{corners[(t + 1) % kRays].x - s.x, corners[(t + 1) % kRays].y - s.y};
    const double c = cross(a, b);
    xx += c * (a.x * a.x + a.x * b.x + b.x * b.x);
    yy += c * (a.y * a.y + a.y * b.y + b.y * b.y);
    xy += c * (2 * a.x * a.y + a.x * b.y + b.x * a.y + 2 * b.x * b.y) / 2;
  }
  const double sum = xx + yy;
  const double difference = std::sqrt((xx - yy) * (xx - yy) + 4 * xy * xy);
  if (!(sum + difference > 0)) return 0;
  return std::sqrt(std::max(1e-6, (sum - difference) / (sum + difference)));
}

}  // namespace

PolygonShape shapeOf(const ScaleLevel& level, const Outline& outline) {
  const Corners corners = cornersOf(level, outline);
  PolygonShape s{};
  double doubleArea = 0;
  double perimeter = 0;
  for (std::size_t t = 0; t < kRays; ++t) {
    const Corner& a = corners[t];
    const Corner& b = corners[(t + 1) % kRays];
    const double c = cross(a, b);
    doubleArea += c;
    s.x += (a.x + b.x) * c;
    s.y += (a.y + b.y) * c;
    perimeter += std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
  }
  if (!(doubleArea > 2 * kMinArea)) return PolygonShape{};
  s.area = doubleArea / 2;
  s.x /= 3 * doubleArea;
  s.y /= 3 * doubleArea;
  s.radius = std::sqrt(s.area / kUnitPolygonArea);
  s.axisRatio = axisRatioOf(corners, s);
  s.solidity = s.area / std::max(hullArea(corners), 1e-6);
  s.roundness = 4 * kPi * s.area / (perimeter * perimeter);
  return s;
}

}  // namespace orva::detect
