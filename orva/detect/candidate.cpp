#include "orva/detect/candidate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "orva/detect/elementary.h"
#include "orva/detect/polygon.h"
#include "orva/detect/sampling.h"

namespace orva::detect {
namespace {

constexpr int kMinVisible = 10;  // rays
constexpr float kMinCoverage = 0.6F;
constexpr double kMinDirectionSpread = 0.2;
constexpr float kEdgeOfMedian = 0.35F;  // a ray has an edge from this share of the median on
constexpr double kMinSolidity = 0.75;
constexpr double kMinContrastToSpread = 0.15;
constexpr float kMinRadius = 1.8F;  // in pixels of the level
constexpr float kMaxRadius = 17.0F;
// Larger levels find smaller objects better and smaller ones larger objects.
constexpr float kMaxRadiusBelowTop = 14.0F;
constexpr float kMinRadiusReduced = 4.5F;
constexpr float kMinOuter = 0.6F;  // distance of the samples outside, in pixels

double safeLog(double v, double low) { return naturalLog(std::max(v, low)); }

// Edges along the outline.
struct EdgeSummary {
  int visible = 0;
  double mean = 0;
  double strongest = 0;
  double median = 0;
  double quartile = 0;
  double tenth = 0;
};

EdgeSummary summarize(const Outline& o) {
  EdgeSummary s;
  std::array<float, kRays> edges{};
  for (const RayEdge& ray : o.rays) {
    if (!ray.isVisible) continue;
    edges[static_cast<std::size_t>(s.visible++)] = ray.edge;
    s.mean += ray.edge;
    s.strongest += ray.strongest;
  }
  if (s.visible == 0) return s;
  std::sort(edges.begin(), edges.begin() + s.visible);
  const auto at = [&](int divisor) { return edges[static_cast<std::size_t>(s.visible / divisor)]; };
  s.mean /= s.visible;
  s.strongest /= s.visible;
  s.median = at(2);
  s.quartile = at(4);
  s.tenth = at(10);
  return s;
}

// Brightness on both sides of the outline, negated for dark objects.
struct Brightness {
  int insideSamples = 0;
  int outsideRays = 0;
  double inside = 0;
  double outside = 0;
  double spread = 0;                  // standard deviation inside
  std::array<double, kRays> outer{};  // means of the rays outside, in ascending order
};

Brightness brightnessOf(const ScaleLevel& level, double sign, const Outline& o) {
  constexpr std::array<float, 4> kInner{0.2F, 0.45F, 0.65F, 0.8F};
  constexpr std::array<float, 2> kOuter{0.25F, 0.45F};
  const auto right = static_cast<float>(level.nx - 1);
  const auto bottom = static_cast<float>(level.ny - 1);
  const auto read = [&](std::size_t t, float r, auto&& use) {
    const float x = o.x + r * kDirections[t].x;
    const float y = o.y + r * kDirections[t].y;
    if (x >= 0 && y >= 0 && x <= right && y <= bottom) use(sign * pixelAt(level, x, y));
  };
  Brightness b;
  double squares = 0;
  for (std::size_t t = 0; t < kRays; ++t) {
    const float radius = o.rays[t].radius;
    for (const float q : kInner) {
      read(t, q * radius, [&](double v) {
        b.inside += v;
        squares += v * v;
        ++b.insideSamples;
      });
    }
    double sum = 0;
    int n = 0;
    for (const float q : kOuter) {
      read(t, radius + std::max(q * radius, kMinOuter), [&](double v) {
        sum += v;
        ++n;
      });
    }
    if (n == 0) continue;
    b.outer[static_cast<std::size_t>(b.outsideRays++)] = sum / n;
    b.outside += sum / n;
  }
  if (b.insideSamples == 0 || b.outsideRays == 0) return b;
  b.inside /= b.insideSamples;
  b.outside /= b.outsideRays;
  b.spread = std::sqrt(std::max(0.0, squares / b.insideSamples - b.inside * b.inside));
  std::sort(b.outer.begin(), b.outer.begin() + b.outsideRays);
  return b;
}

// The measures of single rays, averaged.
void addRayMeasures(const Outline& o, const EdgeSummary& e, std::array<double, kMeasures>& m) {
  for (std::size_t t = 0; t < kRays; ++t) {
    const RayEdge& ray = o.rays[t];
    const int before = o.rays[(t + kRays - 1) % kRays].step;
    const int after = o.rays[(t + 1) % kRays].step;
    m[kSlope] += std::abs(ray.step - after);
    m[kRoughness] += std::abs(before - 2 * ray.step + after);
    if (!ray.isVisible) continue;
    m[kCoverage] += static_cast<double>(ray.edge) > kEdgeOfMedian * e.median ? 1 : 0;
    m[kAscent] += ray.ascent;
    m[kAlignment] += ray.alignment;
    m[kStrongerElsewhere] += ray.edge < 0.5F * ray.strongest ? 1 : 0;
  }
  m[kSlope] /= kRays;
  m[kRoughness] /= kRays;
  for (const Measure k : {kCoverage, kAscent, kAlignment, kStrongerElsewhere}) {
    m[static_cast<std::size_t>(k)] /= e.visible;
  }
}

// The longest run of visible rays without an edge, round the turn, as a share of all rays.
double longestGap(const Outline& o, double median) {
  int longest = 0;
  int run = 0;
  for (std::size_t t = 0; t < 2 * kRays; ++t) {
    const RayEdge& ray = o.rays[t % kRays];
    const bool hasEdge = !ray.isVisible || static_cast<double>(ray.edge) > kEdgeOfMedian * median;
    run = hasEdge ? 0 : run + 1;
    longest = std::max(longest, run);
  }
  return static_cast<double>(std::min(longest, kRays)) / kRays;
}

// 1 less the length of the mean of the gradients' unit vectors at twice their angle. A gradient
// below the typical one counts less, so that rays without an edge do not add directions of their
// own.
double directionSpread(const Outline& o, double typical) {
  double cosines = 0;
  double sines = 0;
  double weights = 0;
  for (const RayEdge& ray : o.rays) {
    const double x = ray.gradient.x;
    const double y = ray.gradient.y;
    const double scale = std::max(x * x + y * y, typical * typical);
    cosines += (x * x - y * y) / scale;
    sines += 2 * x * y / scale;
    weights += (x * x + y * y) / scale;
  }
  return weights > 0 ? 1 - std::sqrt(cosines * cosines + sines * sines) / weights : 0;
}

bool isOfLevel(double radius, int level, std::size_t levels) {
  const bool isTop = static_cast<std::size_t>(level) + 1 == levels;
  return radius >= (level == 0 ? kMinRadius : kMinRadiusReduced) &&
         radius <= (isTop ? kMaxRadius : kMaxRadiusBelowTop);
}

}  // namespace

std::optional<Candidate> measured(const std::vector<ScaleLevel>& levels, int index, Band band,
                                  Polarity polarity, const Outline& o, LevelCheck check) {
  const ScaleLevel& level = levels[static_cast<std::size_t>(index)];
  const EdgeSummary e = summarize(o);
  if (e.visible < kMinVisible || !(e.median > 0)) return std::nullopt;
  Candidate c;
  std::array<double, kMeasures>& m = c.measures;
  addRayMeasures(o, e, m);
  m[kDirectionSpread] = directionSpread(o, e.median);
  if (m[kCoverage] < kMinCoverage || m[kDirectionSpread] < kMinDirectionSpread) {
    return std::nullopt;
  }
  const PolygonShape shape = shapeOf(level, o);
  if (shape.area <= 0 || shape.solidity <= kMinSolidity) return std::nullopt;
  if (check == LevelCheck::On && !isOfLevel(shape.radius, index, levels.size())) {
    return std::nullopt;
  }
  const Brightness b = brightnessOf(level, polarity == Polarity::Bright ? 1.0 : -1.0, o);
  if (b.insideSamples < 8 || b.outsideRays < 6) return std::nullopt;
  const double contrast = b.inside - b.outside;
  m[kContrastToSpread] = contrast / (contrast + 2 * b.spread + 1e-6);
  if (!(contrast > 0) || m[kContrastToSpread] <= kMinContrastToSpread) return std::nullopt;

  m[kEdgeToNoise] = safeLog(e.mean / level.gradientNoise, 0.01);
  m[kEdgeShare] = e.mean / e.strongest;
  m[kEvenness] = e.quartile / e.median;
  m[kWeakEdges] = e.tenth / e.median;
  m[kAxisRatio] = shape.axisRatio;
  m[kSolidity] = shape.solidity;
  m[kRoundness] = shape.roundness;
  m[kLogLevelRadius] = naturalLog(shape.radius);
  m[kVisible] = static_cast<double>(e.visible) / kRays;
  m[kContrastToNoise] = safeLog(contrast / level.noise, 0.01);
  const auto outer = [&](int i) { return b.outer[static_cast<std::size_t>(i)]; };
  const double quartile = outer(b.outsideRays * 3 / 4);
  m[kOuterQuartile] = (b.inside - quartile) / (contrast + b.spread + 1e-6);
  const auto last = b.outer.begin() + b.outsideRays;
  m[kSeparateRays] =
      static_cast<double>(std::lower_bound(b.outer.begin(), last, b.inside - 0.5 * contrast) -
                          b.outer.begin()) /
      b.outsideRays;
  m[kSharpness] = contrast / (2.5 * std::max(e.mean, 1e-9));
  m[kEdgeToMean] = safeLog(e.mean / std::max<double>(level.meanGradient, 1e-9), 1e-6);
  m[kOffCenter] = std::sqrt(shape.x * shape.x + shape.y * shape.y) / shape.radius;
  m[kOuterSpread] = (quartile - outer(b.outsideRays / 4)) / (contrast + 1e-6);
  m[kPathValue] = o.value;
  m[kLongestGap] = longestGap(o, e.median);

  c.level = index;
  c.band = band;
  c.polarity = polarity;
  c.seedX = level.toImage(o.x);
  c.seedY = level.toImage(o.y);
  for (std::size_t t = 0; t < kRays; ++t) c.radii[t] = o.rays[t].radius * level.factor;
  c.x = level.toImage(o.x + static_cast<float>(shape.x));
  c.y = level.toImage(o.y + static_cast<float>(shape.y));
  c.radius = static_cast<float>(shape.radius) * level.factor;
  c.inside = static_cast<float>(b.inside);
  c.outside = static_cast<float>(b.outside);
  c.contrast = static_cast<float>(contrast);
  c.edge = static_cast<float>(e.mean);
  return c;
}

}  // namespace orva::detect
