#include "orva/detect/overlap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numeric>
#include <utility>

namespace orva::detect {
namespace {

constexpr float MAX_OVERLAP = 0.3F;   // of the area of either
constexpr float SAME_CENTER = 0.15F;  // distance as a share of the radius
constexpr float SAME_RADIUS = 0.1F;
constexpr float REACH = 1.1F;  // outlines whose centers are farther apart, in sums of their radii,
                               // are not compared

// A position on the turn of the rays, 0 to RAYS: the angle of (x, y), to 0.3 degrees.
float rayPosition(float x, float y) {
  const float ax = std::fabs(x);
  const float ay = std::fabs(y);
  const float longer = std::max(ax, ay);
  if (!(longer > 0)) return 0.0F;
  const float q = std::min(ax, ay) / longer;
  constexpr float RAYS_PER_RADIAN = RAYS / 6.28318531F;
  float position = q * (0.9724F - 0.1919F * q * q) * RAYS_PER_RADIAN;
  if (ay > ax) position = RAYS / 4 - position;
  if (x < 0) position = RAYS / 2 - position;
  if (y < 0) position = RAYS - position;
  return std::max(position, 0.0F);
}

bool contains(const Candidate& c, float x, float y) {
  const float dx = x - c.seedX;
  const float dy = y - c.seedY;
  const float position = rayPosition(dx, dy);
  const auto whole = static_cast<std::size_t>(position);
  const float part = position - static_cast<float>(whole);
  const float radius = c.radii[whole % RAYS] * (1 - part) + c.radii[(whole + 1) % RAYS] * part;
  return dx * dx + dy * dy < radius * radius;
}

// Candidates by the square of the plane that their center lies in. There is a grid for each range
// of radii from one power of two to the next, whose squares are as wide as these radii.
class Grids {
 public:
  void add(const Candidate& c, std::size_t index) {
    const int octave = octaveOf(c.radius);
    grids_[octave][square(c.x, c.y, octave)].push_back(index);
  }

  // Calls `use` with the index of each candidate whose center may lie within
  // `a` + `b` * its radius of (x, y), until it returns true. Returns whether it did.
  template <class Use>
  bool anyNear(float x, float y, float a, float b, Use&& use) const {
    for (const auto& [octave, squares] : grids_) {
      const float reach = a + b * std::ldexp(1.0F, octave);
      const auto [x0, y0] = square(x - reach, y - reach, octave);
      const auto [x1, y1] = square(x + reach, y + reach, octave);
      for (int j = y0; j <= y1; ++j) {
        for (int i = x0; i <= x1; ++i) {
          const auto found = squares.find({i, j});
          if (found == squares.end()) continue;
          for (const std::size_t k : found->second) {
            if (use(k)) return true;
          }
        }
      }
    }
    return false;
  }

 private:
  using Square = std::pair<int, int>;
  static int octaveOf(float radius) {
    int exponent = 0;
    std::frexp(radius, &exponent);  // radius < 2^exponent
    return exponent;
  }
  static Square square(float x, float y, int octave) {
    const float side = std::ldexp(1.0F, octave);
    return {static_cast<int>(std::floor(x / side)), static_cast<int>(std::floor(y / side))};
  }
  std::map<int, std::map<Square, std::vector<std::size_t>>> grids_;
};

bool isBefore(const Candidate& a, const Candidate& b) {
  if (a.y != b.y) return a.y < b.y;
  if (a.x != b.x) return a.x < b.x;
  return a.radius < b.radius;
}

float squaredDistance(const Candidate& a, const Candidate& b) {
  return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

bool overlap(const Candidate& a, const Candidate& b) {
  const float reach = REACH * (a.radius + b.radius);
  if (squaredDistance(a, b) > reach * reach) return false;
  return overlapShare(a, b) > MAX_OVERLAP || overlapShare(b, a) > MAX_OVERLAP;
}

}  // namespace

float overlapShare(const Candidate& a, const Candidate& b) {
  constexpr std::array<float, 2> SHARES{0.45F, 0.85F};
  float inside = 0;
  float all = 0;
  for (std::size_t t = 0; t < RAYS; t += 2) {
    const float radius = a.radii[t];
    for (const float share : SHARES) {
      const float r = share * radius;
      all += radius * radius;
      if (contains(b, a.seedX + r * DIRECTIONS[t].x, a.seedY + r * DIRECTIONS[t].y)) {
        inside += radius * radius;
      }
    }
  }
  return inside / all;
}

std::vector<Candidate> withoutDuplicates(std::vector<Candidate> candidates) {
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) {
                     const double va = a.measures[PATH_VALUE];
                     const double vb = b.measures[PATH_VALUE];
                     return va != vb ? va > vb : isBefore(a, b);
                   });
  std::vector<Candidate> kept;
  Grids grids;
  for (const Candidate& c : candidates) {
    const float reach = std::max(1.0F, SAME_CENTER * c.radius);
    const bool isKnown = grids.anyNear(c.x, c.y, reach, 0.0F, [&](std::size_t k) {
      const Candidate& other = kept[k];
      return other.polarity == c.polarity && squaredDistance(c, other) < reach * reach &&
             std::fabs(other.radius - c.radius) < SAME_RADIUS * c.radius;
    });
    if (isKnown) continue;
    grids.add(c, kept.size());
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
  std::vector<std::size_t> kept;
  Grids grids;
  for (const std::size_t i : order) {
    const Candidate& c = candidates[i];
    if (!(c.logit >= minLogit)) break;
    const bool isTaken = grids.anyNear(c.x, c.y, REACH * c.radius, REACH,
                                       [&](std::size_t k) { return overlap(c, candidates[k]); });
    if (isTaken) continue;
    grids.add(c, i);
    kept.push_back(i);
  }
  return kept;
}

}  // namespace orva::detect
