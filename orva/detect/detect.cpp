#include "orva/detect/detect.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>

#include "orva/detect/overlap.h"
#include "orva/detect/search.h"
#include "orva/detect/weighted_median.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

constexpr double kObjectScore = 0.5;     // minimum of a candidate that is evidence
constexpr std::size_t kSampled = 600;    // seeds per polarity that the estimate samples
constexpr std::size_t kFewObjects = 10;  // in a sample, which then may have missed the others
constexpr double kLowestLogit = -1000;
// Estimated shares of the time up to the end of the scale levels and of the search.
constexpr double kLevelsShare = 0.25;
constexpr double kSearchShare = 0.8;  // of the rest
// The same within the search, up to the end of the seeds and of their sample.
constexpr double kSeedsShare = 0.15;
constexpr double kSampleShare = 0.3;

void require(bool holds, const char* what) {
  if (!holds) throw std::invalid_argument(std::string("orva::detect::FindSettings: ") + what);
}

std::size_t countOf(const std::vector<LevelSeeds>& seeds, Polarity p) {
  std::size_t n = 0;
  for (const LevelSeeds& level : seeds) n += level.of(p).size();
  return n;
}

// The evidence of a selection for its polarity: the objects' scores, larger objects counting more.
struct Evidence {
  double sum = 0;
  double meanScore = 0;
  std::size_t objects = 0;
  Settings settings;
};

Evidence evidenceOf(const Selection& s) {
  Evidence e;
  if (s.kept.empty()) return e;
  std::vector<std::pair<double, double>> radii;
  double all = 0;
  std::size_t n = 0;
  for (const std::size_t k : s.kept) {
    const double score = scoreOf(s.candidates[k].logit);
    if (score < kObjectScore) break;
    ++n;
    e.sum += score * s.candidates[k].radius;
    all += score;
    radii.emplace_back(s.candidates[k].radius, score);
  }
  if (n == 0) return e;
  e.objects = n;
  e.meanScore = all / static_cast<double>(n);
  e.settings.radius = static_cast<float>(weightedMedian(std::move(radii)));
  return e;
}

// The estimate of two polarities' evidence, of the given polarity if there is one. The confidence
// is that of the choice times how sure the objects are.
SettingsEstimate estimateOf(Evidence bright, Evidence dark, std::optional<Polarity> given) {
  const double all = bright.sum + dark.sum;
  for (Evidence* e : {&bright, &dark}) {
    if (all > 0) e->settings.confidence = static_cast<float>(e->sum / all * e->meanScore);
  }
  bright.settings.polarity = Polarity::Bright;
  dark.settings.polarity = Polarity::Dark;
  const bool isDark = given ? *given == Polarity::Dark : dark.sum > bright.sum;
  SettingsEstimate estimate;
  static_cast<Settings&>(estimate) = isDark ? dark.settings : bright.settings;
  estimate.runnerUp = isDark ? bright.settings : dark.settings;
  return estimate;
}

// The estimate over all images for one polarity.
Settings combinedOf(const std::vector<SettingsEstimate>& images, Polarity polarity) {
  Settings combined;
  combined.polarity = polarity;
  std::vector<std::pair<double, double>> radii;
  double sum = 0;
  std::size_t withObjects = 0;
  for (const SettingsEstimate& image : images) {
    if (image.radius > 0 || image.runnerUp.radius > 0) ++withObjects;
    const Settings& own = image.polarity == polarity ? image : image.runnerUp;
    if (!(own.radius > 0)) continue;
    radii.emplace_back(own.radius, own.confidence);
    sum += own.confidence;
  }
  if (radii.empty()) return combined;
  combined.radius = static_cast<float>(weightedMedian(std::move(radii)));
  combined.confidence = static_cast<float>(sum / static_cast<double>(withObjects));
  return combined;
}

// What is found in an image.
struct Search {
  SettingsEstimate estimate;
  Selection selection;  // of the polarity chosen
};

// Searches for either polarity in the same seeds.
class Searcher {
 public:
  Searcher(const std::vector<ScaleLevel>& levels, const FindSettings& settings)
      : levels_(levels),
        range_(rangeOf(settings)),
        radius_(settings.radius),
        lowest_(std::min<double>(settings.minScore, kObjectScore)) {
    const Step step("outlines", 0, kSeedsShare);
    seeds_ = seedsOf(levels, range_, settings.polarity);
  }

  bool hasMoreThanASample(Polarity p) const { return countOf(seeds_, p) > kSampled; }
  Selection sampled(Polarity p) const { return of(sampleOf(seeds_, p, kSampled), p); }
  Selection whole(Polarity p) const { return of(seeds_, p); }

 private:
  Selection of(const std::vector<LevelSeeds>& seeds, Polarity p) const {
    return selected(candidatesOf(levels_, seeds, p, range_), radius_, lowest_);
  }

  const std::vector<ScaleLevel>& levels_;
  RadiusRange range_;
  std::optional<float> radius_;
  double lowest_;
  std::vector<LevelSeeds> seeds_;
};

Search search(const std::vector<ScaleLevel>& levels, const FindSettings& settings) {
  Search s;
  const Step step("outlines", 0, kSearchShare);
  s.estimate = estimateOf({}, {}, settings.polarity);
  if (levels.empty()) return s;
  const Searcher searcher(levels, settings);
  std::array<Selection, 2> selections;
  std::array<Evidence, 2> evidence;
  std::array<bool, 2> isWhole{};
  const auto searchOne = [&](Polarity p, bool whole) {
    const auto i = static_cast<std::size_t>(p);
    const Step own("outlines", whole ? kSampleShare : kSeedsShare, whole ? 1 : kSampleShare);
    isWhole[i] = whole || !searcher.hasMoreThanASample(p);
    selections[i] = isWhole[i] ? searcher.whole(p) : searcher.sampled(p);
    evidence[i] = evidenceOf(selections[i]);
  };
  const auto searchBoth = [&](bool whole) {
    for (const Polarity p : {Polarity::Bright, Polarity::Dark}) {
      if (!isWhole[static_cast<std::size_t>(p)]) searchOne(p, whole);
    }
  };
  // A sample of the seeds tells the polarity, unless it holds hardly an object.
  if (!settings.polarity) {
    searchBoth(false);
    if (std::max(evidence[0].objects, evidence[1].objects) < kFewObjects) searchBoth(true);
    s.estimate = estimateOf(evidence[0], evidence[1], {});
  }
  const Polarity polarity = s.estimate.polarity;
  const auto chosen = static_cast<std::size_t>(polarity);
  if (!isWhole[chosen]) {
    searchOne(polarity, true);
    if (settings.polarity) s.estimate = estimateOf(evidence[0], evidence[1], settings.polarity);
  }
  s.selection = std::move(selections[chosen]);
  return s;
}

Object objectOf(const Candidate& c) {
  return {c.x, c.y, c.radius, static_cast<float>(scoreOf(c.logit)),
          static_cast<float>(c.measures[kCoverage])};
}

}  // namespace

float typicalRadius(const std::vector<Object>& objects) {
  std::vector<std::pair<double, double>> sure;
  std::vector<std::pair<double, double>> all;
  for (const Object& o : objects) {
    if (static_cast<double>(o.score) >= kObjectScore) sure.emplace_back(o.radius, o.score);
    all.emplace_back(o.radius, 1.0);
  }
  if (all.empty()) return 0.0F;
  return static_cast<float>(weightedMedian(sure.empty() ? std::move(all) : std::move(sure)));
}

SettingsEstimate combinedEstimate(const std::vector<SettingsEstimate>& images) {
  const Settings bright = combinedOf(images, Polarity::Bright);
  const Settings dark = combinedOf(images, Polarity::Dark);
  const bool isDark = dark.confidence > bright.confidence;
  SettingsEstimate estimate;
  static_cast<Settings&>(estimate) = isDark ? dark : bright;
  estimate.runnerUp = isDark ? bright : dark;
  return estimate;
}

void requireInRange(const FindSettings& s) {
  const auto isRadius = [](const std::optional<float>& r, float low) {
    return !r || (std::isfinite(*r) && *r >= low);
  };
  require(isRadius(s.radius, 0.0F) && s.radius.value_or(1.0F) > 0.0F,
          "radius is not a number above 0");
  require(isRadius(s.minRadius, 0.0F), "minRadius is not a number of at least 0");
  require(isRadius(s.maxRadius, s.minRadius.value_or(0.0F)),
          "maxRadius is not a number of at least minRadius");
  require(s.minScore >= 0.0F && s.minScore <= 1.0F, "minScore is not 0 to 1");
}

RadiusRange rangeOf(const FindSettings& s) {
  RadiusRange range;
  if (s.radius) {
    range.low = *s.radius / kRadiusRange;
    range.high = *s.radius * kRadiusRange;
  }
  range.low = s.minRadius.value_or(range.low);
  range.high = s.maxRadius.value_or(range.high);
  return range;
}

FindResult findObjects(const Image& img, const FindSettings& settings) {
  requireInRange(settings);
  std::vector<ScaleLevel> levels;
  {
    const Step step("scales", 0, kLevelsShare);
    levels = scaleLevels(img);
  }
  const Step step("outlines", kLevelsShare, 1);
  return objectsIn(levels, settings);
}

FindResult objectsIn(const std::vector<ScaleLevel>& levels, const FindSettings& settings) {
  const Search s = search(levels, settings);
  FindResult result;
  result.used = s.estimate;
  const RadiusRange range = rangeOf(settings);
  // Outlines that meet only when they are refined are one object, too.
  const Step step("refinement", kSearchShare, 1);
  std::vector<Candidate> refinements;
  for (const std::size_t k : s.selection.kept) {
    const Candidate& c = s.selection.candidates[k];
    if (scoreOf(c.logit) < settings.minScore) break;
    refinements.push_back(c);
  }
  parallelFor(refinements.size(),
              [&](std::size_t k) { refinements[k] = refined(levels, refinements[k]); });
  std::vector<Candidate> objects;
  std::copy_if(refinements.begin(), refinements.end(), std::back_inserter(objects),
               [&](const Candidate& c) { return range.contains(c.radius); });
  for (const std::size_t k : withoutOverlaps(objects, kLowestLogit)) {
    result.objects.push_back(objectOf(objects[k]));
  }
  result.used.radius = settings.radius.value_or(typicalRadius(result.objects));
  // Scores that differ as candidates may be equal in single precision.
  std::sort(result.objects.begin(), result.objects.end(), [](const Object& a, const Object& b) {
    return std::tuple(-a.score, a.y, a.x) < std::tuple(-b.score, b.y, b.x);
  });
  return result;
}

SettingsEstimate estimateSettings(const Image& img) { return findObjects(img, {}).used; }

}  // namespace orva::detect
