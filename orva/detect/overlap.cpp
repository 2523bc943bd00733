#include "orva/detect/overlap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "orva/detect/octave_grids.h"
#include "orva/detect/star_shape.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

constexpr float kMaxOverlap = 0.3F;   // of the area of either
constexpr float kSameCenter = 0.15F;  // distance as a share of the radius
constexpr float kSameRadius = 0.1F;
constexpr float kReach = 1.1F;  // outlines whose centers are farther apart, in sums of their radii,
                                // are not compared
constexpr std::size_t kCandidatesPerCheckpoint = 1024;

bool contains(const Candidate& c, float x, float y) {
  const float dx = x - c.seedX;
  const float dy = y - c.seedY;
  const float radius = radiusTowards(c.radii, dx, dy);
  return dx * dx + dy * dy < radius * radius;
}

bool isBefore(const Candidate& a, const Candidate& b) {
  if (a.y != b.y) return a.y < b.y;
  if (a.x != b.x) return a.x < b.x;
  return a.radius < b.radius;
}

float squaredDistance(const Candidate& a, const Candidate& b) {
  return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

bool overlap(const Candidate& a, const Candidate& b) {
  const float reach = kReach * (a.radius + b.radius);
  if (squaredDistance(a, b) > reach * reach) return false;
  return overlapShare(a, b) > kMaxOverlap || overlapShare(b, a) > kMaxOverlap;
}

}  // namespace

float overlapShare(const Candidate& a, const Candidate& b) {
  constexpr std::array<float, 2> kShares{0.45F, 0.85F};
  float inside = 0;
  float all = 0;
  for (std::size_t t = 0; t < kRays; t += 2) {
    const float radius = a.radii[t];
    for (const float share : kShares) {
      const float r = share * radius;
      all += radius * radius;
      if (contains(b, a.seedX + r * kDirections[t].x, a.seedY + r * kDirections[t].y)) {
        inside += radius * radius;
      }
    }
  }
  return inside / all;
}

std::vector<Candidate> withoutDuplicates(const std::vector<Candidate>& candidates) {
  checkpoint();
  std::vector<std::size_t> order(candidates.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
    const Candidate& a = candidates[i];
    const Candidate& b = candidates[j];
    const double va = a.measures[kPathValue];
    const double vb = b.measures[kPathValue];
    return va != vb ? va > vb : isBefore(a, b);
  });
  checkpoint();
  std::vector<Candidate> kept;
  OctaveGrids grids;
  for (std::size_t n = 0; n < order.size(); ++n) {
    if (n % kCandidatesPerCheckpoint == 0) checkpoint();
    const Candidate& c = candidates[order[n]];
    const float reach = std::max(1.0F, kSameCenter * c.radius);
    const bool isKnown = grids.anyNear(c.x, c.y, reach, 0.0F, [&](std::size_t k) {
      const Candidate& other = kept[k];
      return other.polarity == c.polarity && squaredDistance(c, other) < reach * reach &&
             std::fabs(other.radius - c.radius) < kSameRadius * c.radius;
    });
    if (isKnown) continue;
    grids.add(c.x, c.y, c.radius, kept.size());
    kept.push_back(c);
  }
  return kept;
}

std::vector<std::size_t> withoutOverlaps(const std::vector<Candidate>& candidates,
                                         double minLogit) {
  std::vector<std::size_t> order(candidates.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
    const Candidate& a = candidates[i];
    const Candidate& b = candidates[j];
    return a.logit != b.logit ? a.logit > b.logit : isBefore(a, b);
  });
  checkpoint();
  std::vector<std::size_t> kept;
  OctaveGrids grids;
  for (std::size_t n = 0; n < order.size(); ++n) {
    if (n % kCandidatesPerCheckpoint == 0) checkpoint();
    const std::size_t i = order[n];
    const Candidate& c = candidates[i];
    if (!(c.logit >= minLogit)) break;
    const bool isTaken = grids.anyNear(c.x, c.y, kReach * c.radius, kReach,
                                       [&](std::size_t k) { return overlap(c, candidates[k]); });
    if (isTaken) continue;
    grids.add(c.x, c.y, c.radius, i);
    kept.push_back(i);
  }
  return kept;
}

}  // namespace orva::detect
