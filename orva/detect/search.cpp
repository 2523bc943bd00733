#include "orva/detect/search.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <utility>

#include "orva/detect/octave_grids.h"
#include "orva/detect/overlap.h"

namespace orva::detect {
namespace {

constexpr double kContextScore = 0.5;  // minimum of a candidate of the context
constexpr float kCore = 0.8F;  // share of the radius of a clear object without further seeds
constexpr float kRangeMargin = 1.25F;  // by which refinement may change a radius
constexpr int kRefinements = 8;
constexpr float kConverged = 0.1F;       // shift of the center, in pixels, that ends them
constexpr float kMaxShift = 0.6F;        // of the center in all of them, in radii
constexpr float kMaxGrowth = 1.4F;       // of the radius
constexpr float kRefinedRadius = 16.0F;  // in pixels of the level
constexpr float kSmall = 5.0F;           // radius of Band::Small, the same
constexpr double kOffCenterSeed = 0.15;  // minimum at which an outline is searched again
// The radii that a level finds, in its pixels.
constexpr float kLevelLow = 4.5F;
constexpr float kLevelHigh = 17.0F;

// The candidate's outline searched from its centroid at the size `level`.
std::optional<Candidate> recentered(const std::vector<ScaleLevel>& levels, const Candidate& c,
                                    int level) {
  const ScaleLevel& at = levels[static_cast<std::size_t>(level)];
  const float x = at.fromImage(c.x);
  const float y = at.fromImage(c.y);
  const Band band = c.radius < kSmall * at.factor ? Band::Small : Band::Usual;
  const auto outline = bestOutline(at, c.polarity, x, y, band);
  if (!outline) return std::nullopt;
  return measured(levels, level, band, c.polarity, *outline, LevelCheck::Off);
}

// The finest level at which an object of this radius has kRefinedRadius pixels at most: a matter of
// the object alone, so that turned images give turned results.
int refinementLevel(const std::vector<ScaleLevel>& levels, float radius) {
  int level = 0;
  while (static_cast<std::size_t>(level) + 1 < levels.size() &&
         radius > kRefinedRadius * levels[static_cast<std::size_t>(level)].factor) {
    ++level;
  }
  return level;
}

bool isSame(const Candidate& next, const Candidate& candidate) {
  const float dx = next.x - candidate.x;
  const float dy = next.y - candidate.y;
  const float limit = kMaxShift * candidate.radius;
  return dx * dx + dy * dy <= limit * limit && next.radius <= kMaxGrowth * candidate.radius &&
         candidate.radius <= kMaxGrowth * next.radius;
}

// Whether an outline leaves no doubt: an edge all round, nothing but the object inside, and found
// from near its center.
bool isClear(const Candidate& c) {
  const auto& m = c.measures;
  return m[kCoverage] >= 0.9 && m[kPathValue] >= 0.9 && m[kAscent] <= 0.15 &&
         m[kSolidity] >= 0.97 && m[kOffCenter] <= 0.15 && m[kVisible] == 1;
}

bool mayHold(const std::vector<ScaleLevel>& levels, std::size_t index, const RadiusRange& range) {
  const float factor = levels[index].factor;
  const bool isFirst = index == 0;
  const bool isLast = index + 1 == levels.size();
  return (isLast || range.low <= kLevelHigh * factor) &&
         (isFirst || range.high >= kLevelLow * factor);
}

double logitOf(double score) {
  // The logistic function is monotone: its inverse by bisection, without a logarithm of 0.
  double low = -60;
  double high = 60;
  for (int i = 0; i < 60; ++i) {
    const double middle = (low + high) / 2;
    (scoreOf(middle) < score ? low : high) = middle;
  }
  return high;
}

}  // namespace

std::vector<LevelSeeds> seedsOf(const std::vector<ScaleLevel>& levels, const RadiusRange& range,
                                std::optional<Polarity> polarity) {
  std::vector<LevelSeeds> all(levels.size());
  for (std::size_t i = 0; i < levels.size(); ++i) {
    if (!mayHold(levels, i, range)) continue;
    const std::vector<EdgePixel> edges = edgePixels(levels[i]);
    if (edges.empty()) continue;
    for (const Polarity p : {Polarity::Bright, Polarity::Dark}) {
      if (polarity && *polarity != p) continue;
      std::vector<Seed>& found = all[i].of(p);
      found = seeds(levels[i], edges, p, Band::Usual);
      if (i > 0) continue;
      const std::vector<Seed> small = seeds(levels[i], edges, p, Band::Small);
      found.insert(found.end(), small.begin(), small.end());
    }
  }
  return all;
}

std::vector<LevelSeeds> sampleOf(const std::vector<LevelSeeds>& seeds, Polarity polarity,
                                 std::size_t count) {
  std::vector<float> votes;
  for (const LevelSeeds& level : seeds) {
    for (const Seed& s : level.of(polarity)) votes.push_back(s.votes);
  }
  if (votes.size() <= count) return seeds;
  const std::size_t stride = 2 * votes.size() / count;
  const auto bar = votes.begin() + static_cast<std::ptrdiff_t>(count / 2);
  std::nth_element(votes.begin(), bar, votes.end(), std::greater<>());
  std::vector<LevelSeeds> sample(seeds.size());
  std::size_t n = 0;
  for (std::size_t i = 0; i < seeds.size(); ++i) {
    for (const Seed& s : seeds[i].of(polarity)) {
      if (s.votes > *bar || n++ % stride == 0) sample[i].of(polarity).push_back(s);
    }
  }
  return sample;
}

std::vector<Candidate> candidatesOf(const std::vector<ScaleLevel>& levels,
                                    const std::vector<LevelSeeds>& seeds, Polarity polarity,
                                    const RadiusRange& exactRange) {
  const RadiusRange range = exactRange.widened(kRangeMargin);
  std::vector<Candidate> found;
  OctaveGrids clear;
  // Large objects first: most seeds inside a clear one need no search of their own.
  for (std::size_t i = levels.size(); i-- > 0;) {
    for (const Seed& s : seeds[i].of(polarity)) {
      const auto x = static_cast<float>(s.x);
      const auto y = static_cast<float>(s.y);
      const float px = levels[i].toImage(x);
      const float py = levels[i].toImage(y);
      const bool isCovered = clear.anyNear(px, py, 0.0F, kCore, [&](std::size_t n) {
        const float dx = px - found[n].x;
        const float dy = py - found[n].y;
        const float core = kCore * found[n].radius;
        return dx * dx + dy * dy < core * core;
      });
      if (isCovered) continue;
      const auto outline = bestOutline(levels[i], polarity, x, y, s.band);
      if (!outline) continue;
      const auto c = measured(levels, static_cast<int>(i), s.band, polarity, *outline);
      if (!c || !range.contains(c->radius)) continue;
      if (isClear(*c)) clear.add(c->x, c->y, c->radius, found.size());
      found.push_back(*c);
    }
  }
  found = withoutDuplicates(std::move(found));
  for (Candidate& c : found) {
    if (c.measures[kOffCenter] < kOffCenterSeed) continue;
    const auto next = recentered(levels, c, c.level);
    if (next && isSame(*next, c) && range.contains(next->radius)) c = *next;
  }
  return withoutDuplicates(std::move(found));
}

Selection selected(std::vector<Candidate> candidates, std::optional<float> radius,
                   double minScore) {
  Selection s;
  s.candidates = std::move(candidates);
  scoreAlone(s.candidates);
  s.kept = withoutOverlaps(s.candidates, logitOf(kContextScore));
  s.context = contextOf(s.candidates, s.kept, radius);
  if (!s.context) {  // no object that is sure; low scores are asked for
    s.kept = withoutOverlaps(s.candidates, logitOf(minScore));
    return s;
  }
  scoreInContext(s.candidates, *s.context);
  s.kept = withoutOverlaps(s.candidates, logitOf(minScore));
  return s;
}

Candidate refined(const std::vector<ScaleLevel>& levels, const Candidate& candidate) {
  Candidate best = candidate;
  for (int i = 0; i < kRefinements; ++i) {
    const auto next = recentered(levels, best, refinementLevel(levels, best.radius));
    if (!next || !isSame(*next, candidate)) break;
    const float dx = next->x - best.x;
    const float dy = next->y - best.y;
    best = *next;
    best.logit = candidate.logit;
    if (dx * dx + dy * dy < kConverged * kConverged) break;
  }
  return best;
}

std::optional<Candidate> outlinedAgain(const std::vector<ScaleLevel>& levels, Polarity polarity,
                                       float x, float y, float radius) {
  Candidate known;
  known.polarity = polarity;
  known.x = x;
  known.y = y;
  known.radius = radius;
  const int usual = refinementLevel(levels, radius);
  const int last = static_cast<int>(levels.size()) - 1;
  for (const int level : {usual, std::max(usual - 1, 0), std::min(usual + 1, last)}) {
    const auto found = recentered(levels, known, level);
    if (found && isSame(*found, known)) return found;
  }
  return std::nullopt;
}

}  // namespace orva::detect
