#include "orva/detect/search.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <span>
#include <utility>

#include "orva/detect/octave_grids.h"
#include "orva/detect/overlap.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

constexpr std::ptrdiff_t kSeedsPerTask = 4;
constexpr std::ptrdiff_t kObjectsPerTask = 8;
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

// Whether a place in the image is in the core of an object.
bool isInCore(const Candidate& c, float x, float y) {
  const float dx = x - c.x;
  const float dy = y - c.y;
  const float core = kCore * c.radius;
  return dx * dx + dy * dy < core * core;
}

// Candidates around the seeds of one level after the other.
class CandidateSearch {
 public:
  // `seeds` is the number of all.
  CandidateSearch(const std::vector<ScaleLevel>& levels, Polarity polarity,
                  const RadiusRange& range, std::size_t seeds)
      : levels_(levels), polarity_(polarity), range_(range), seeds_(static_cast<double>(seeds)) {}

  // Searches around the seeds of a level, in their order, but for those in the core of a clear
  // candidate found before.
  void addFrom(std::size_t level, const std::vector<Seed>& seeds) {
    constexpr std::size_t kSeedsPerBatch = 256;
    for (std::size_t first = 0; first < seeds.size(); first += kSeedsPerBatch) {
      const auto batch =
          std::span(seeds).subspan(first, std::min(kSeedsPerBatch, seeds.size() - first));
      const double begin = done_ / seeds_;
      done_ += static_cast<double>(batch.size());
      const Step step("outlines", begin, done_ / seeds_);
      std::vector<Attempt> attempts(batch.size());
      if (hasRunner()) tryAhead(level, batch, attempts);
      for (std::size_t k = 0; k < batch.size(); ++k) {
        checkpoint(static_cast<std::ptrdiff_t>(k), static_cast<std::ptrdiff_t>(batch.size()));
        if (isCovered(level, batch[k])) continue;
        if (!attempts[k].isMade) attempts[k] = attempt(level, batch[k]);
        if (const auto& c = attempts[k].candidate) add(*c);
      }
    }
  }

  const std::vector<Candidate>& found() const { return found_; }

 private:
  // A search around a seed, and what it found.
  struct Attempt {
    bool isMade = false;
    std::optional<Candidate> candidate;
  };

  Attempt attempt(std::size_t level, const Seed& s) const {
    checkpoint();
    Attempt made{true, std::nullopt};
    const auto outline = bestOutline(levels_[level], polarity_, static_cast<float>(s.x),
                                     static_cast<float>(s.y), s.band);
    if (!outline) return made;
    made.candidate = measured(levels_, static_cast<int>(level), s.band, polarity_, *outline);
    if (made.candidate && !range_.contains(made.candidate->radius)) made.candidate.reset();
    return made;
  }

  // Makes attempts in parallel, most of which will be asked for: first around seeds without
  // another close before them in the batch, then around those that the candidates of these leave.
  void tryAhead(std::size_t level, std::span<const Seed> seeds,
                std::vector<Attempt>& attempts) const {
    constexpr int kClose = 10;  // pixels of the level: hardly the distance of two objects
    std::vector<std::size_t> chosen;
    for (std::size_t k = 0; k < seeds.size(); ++k) {
      const auto before = seeds.first(k);
      const bool isFollower = std::any_of(before.begin(), before.end(), [&](const Seed& other) {
        return std::max(std::abs(other.x - seeds[k].x), std::abs(other.y - seeds[k].y)) < kClose;
      });
      if (!isFollower && !isCovered(level, seeds[k])) chosen.push_back(k);
    }
    attemptAll(level, seeds, chosen, attempts);
    std::vector<Candidate> clear;
    for (const std::size_t k : chosen) {
      const auto& c = attempts[k].candidate;
      if (c && isClear(*c)) clear.push_back(*c);
    }
    chosen.clear();
    for (std::size_t k = 0; k < seeds.size(); ++k) {
      if (attempts[k].isMade || isCovered(level, seeds[k])) continue;
      const auto [x, y] = placeOf(level, seeds[k]);
      const bool isLeft =
          std::none_of(clear.begin(), clear.end(),
                       [x = x, y = y](const Candidate& c) { return isInCore(c, x, y); });
      if (isLeft) chosen.push_back(k);
    }
    attemptAll(level, seeds, chosen, attempts);
  }

  void attemptAll(std::size_t level, std::span<const Seed> seeds,
                  const std::vector<std::size_t>& chosen, std::vector<Attempt>& attempts) const {
    const auto count = static_cast<std::ptrdiff_t>(chosen.size());
    parallelParts(Parts(count, kSeedsPerTask), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      for (std::ptrdiff_t k = begin; k < end; ++k) {
        const std::size_t at = chosen[static_cast<std::size_t>(k)];
        attempts[at] = attempt(level, seeds[at]);
      }
    });
  }

  bool isCovered(std::size_t level, const Seed& s) const {
    const auto [x, y] = placeOf(level, s);
    return clear_.anyNear(x, y, 0.0F, kCore,
                          [&, x = x, y = y](std::size_t n) { return isInCore(found_[n], x, y); });
  }

  std::pair<float, float> placeOf(std::size_t level, const Seed& s) const {
    return {levels_[level].toImage(static_cast<float>(s.x)),
            levels_[level].toImage(static_cast<float>(s.y))};
  }

  void add(const Candidate& c) {
    if (isClear(c)) clear_.add(c.x, c.y, c.radius, found_.size());
    found_.push_back(c);
  }

  const std::vector<ScaleLevel>& levels_;
  Polarity polarity_;
  RadiusRange range_;
  double seeds_;
  double done_ = 0;  // of them
  std::vector<Candidate> found_;
  OctaveGrids clear_;
};

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
  struct Search {
    std::size_t level;
    Polarity polarity;
    Band band;
    std::vector<Seed> found;
  };
  std::vector<Search> searches;
  std::vector<std::vector<EdgePixel>> edges(levels.size());
  for (std::size_t i = 0; i < levels.size(); ++i) {
    if (!mayHold(levels, i, range)) continue;
    checkpoint();
    edges[i] = edgePixels(levels[i]);
    if (edges[i].empty()) continue;
    for (const Polarity p : {Polarity::Bright, Polarity::Dark}) {
      if (polarity && *polarity != p) continue;
      searches.push_back({i, p, Band::Usual, {}});
      if (i == 0) searches.push_back({i, p, Band::Small, {}});
    }
  }
  parallelFor(searches.size(), [&](std::size_t k) {
    Search& s = searches[k];
    s.found = seeds(levels[s.level], edges[s.level], s.polarity, s.band);
  });
  std::vector<LevelSeeds> all(levels.size());
  for (const Search& s : searches) {
    std::vector<Seed>& found = all[s.level].of(s.polarity);
    found.insert(found.end(), s.found.begin(), s.found.end());
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
  std::size_t all = 0;
  for (const LevelSeeds& level : seeds) all += level.of(polarity).size();
  CandidateSearch search(levels, polarity, range, all);
  {
    const Step step("outlines", 0, 0.9);
    // Large objects first: most seeds inside a clear one need no search of their own.
    for (std::size_t i = levels.size(); i-- > 0;) search.addFrom(i, seeds[i].of(polarity));
  }
  const Step step("outlines", 0.9, 1);
  std::vector<Candidate> found = withoutDuplicates(search.found());
  const auto count = static_cast<std::ptrdiff_t>(found.size());
  parallelParts(Parts(count, kObjectsPerTask), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t k = begin; k < end; ++k) {
      checkpoint();
      Candidate& c = found[static_cast<std::size_t>(k)];
      if (c.measures[kOffCenter] < kOffCenterSeed) continue;
      const auto next = recentered(levels, c, c.level);
      if (next && isSame(*next, c) && range.contains(next->radius)) c = *next;
    }
  });
  return withoutDuplicates(found);
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
