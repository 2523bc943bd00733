#include "orva/detect/search.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orva/detect/overlap.h"

namespace orva::detect {
namespace {

constexpr double CONTEXT_SCORE = 0.5;  // from which on a candidate belongs to the context
constexpr int REFINEMENTS = 2;
constexpr float MAX_SHIFT = 0.3F;       // of the center in a refinement, in radii
constexpr float MAX_GROWTH = 1.25F;     // of the radius
// The radii that a level finds, in its pixels.
constexpr float LEVEL_LOW = 4.5F;
constexpr float LEVEL_HIGH = 17.0F;

bool mayHold(const std::vector<ScaleLevel>& levels, std::size_t index, const RadiusRange& range) {
  const float factor = levels[index].factor;
  const bool isFirst = index == 0;
  const bool isLast = index + 1 == levels.size();
  return (isLast || range.low <= LEVEL_HIGH * factor) &&
         (isFirst || range.high >= LEVEL_LOW * factor);
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
      std::vector<Seed>& found = p == Polarity::Bright ? all[i].bright : all[i].dark;
      found = seeds(levels[i], edges, p, Band::Usual);
      if (i > 0) continue;
      const std::vector<Seed> small = seeds(levels[i], edges, p, Band::Small);
      found.insert(found.end(), small.begin(), small.end());
    }
  }
  return all;
}

std::vector<Candidate> candidatesOf(const std::vector<ScaleLevel>& levels,
                                    const std::vector<LevelSeeds>& seeds, Polarity polarity,
                                    const RadiusRange& range, std::size_t stride) {
  std::vector<Candidate> found;
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const std::vector<Seed>& places = seeds[i].of(polarity);
    for (std::size_t k = 0; k < places.size(); k += stride) {
      const Seed& s = places[k];
      const auto outline = bestOutline(levels[i], polarity, static_cast<float>(s.x),
                                       static_cast<float>(s.y), s.band);
      if (!outline) continue;
      const auto c = measured(levels, static_cast<int>(i), s.band, polarity, *outline);
      if (c && range.contains(c->radius)) found.push_back(*c);
    }
  }
  return withoutDuplicates(std::move(found));
}

Selection selected(std::vector<Candidate> candidates, std::optional<float> radius,
                   double minScore) {
  Selection s;
  s.candidates = std::move(candidates);
  scoreAlone(s.candidates);
  s.kept = withoutOverlaps(s.candidates, logitOf(CONTEXT_SCORE));
  s.context = contextOf(s.candidates, s.kept, radius);
  s.kept.clear();
  if (!s.context) return s;
  scoreInContext(s.candidates, *s.context);
  s.kept = withoutOverlaps(s.candidates, logitOf(minScore));
  return s;
}

Candidate refined(const std::vector<ScaleLevel>& levels, const Candidate& candidate) {
  const ScaleLevel& level = levels[static_cast<std::size_t>(candidate.level)];
  Candidate best = candidate;
  for (int i = 0; i < REFINEMENTS; ++i) {
    const float x = (best.x + 0.5F) / level.factor - 0.5F;
    const float y = (best.y + 0.5F) / level.factor - 0.5F;
    const auto outline = bestOutline(level, candidate.polarity, x, y, candidate.band);
    if (!outline) break;
    const auto next =
        measured(levels, candidate.level, candidate.band, candidate.polarity, *outline);
    if (!next) break;
    const float dx = next->x - candidate.x;
    const float dy = next->y - candidate.y;
    const float limit = MAX_SHIFT * candidate.radius;
    const bool isSame = dx * dx + dy * dy <= limit * limit &&
                        next->radius <= MAX_GROWTH * candidate.radius &&
                        candidate.radius <= MAX_GROWTH * next->radius;
    if (!isSame) break;
    const double logit = best.logit;
    best = *next;
    best.logit = logit;
  }
  return best;
}

}  // namespace orva::detect
