#include "orva/detect/detect.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

#include "orva/detect/overlap.h"
#include "orva/detect/search.h"
#include "orva/detect/weighted_median.h"

namespace orva::detect {
namespace {

constexpr double kObjectScore = 0.5;   // from which on a candidate is evidence
constexpr std::size_t kSampled = 600;  // seeds per polarity that the estimate looks at
constexpr double kLowestLogit = -1000;
constexpr float kToldRange = 2.5F;  // radii around a given one, as a factor

void require(bool holds, const char* what) {
  if (!holds) throw std::invalid_argument(std::string("orva::detect::FindSettings: ") + what);
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
    range.low = *s.radius / kToldRange;
    range.high = *s.radius * kToldRange;
  }
  range.low = s.minRadius.value_or(range.low);
  range.high = s.maxRadius.value_or(range.high);
  return range;
}

std::size_t countOf(const std::vector<LevelSeeds>& seeds, Polarity p) {
  std::size_t n = 0;
  for (const LevelSeeds& level : seeds) n += level.of(p).size();
  return n;
}

// What a selection says of its polarity: the objects' scores, larger objects counting more.
struct Evidence {
  double sum = 0;
  double meanScore = 0;
  Settings settings;
};

Evidence evidenceOf(const Selection& s, Polarity polarity) {
  Evidence e;
  e.settings.polarity = polarity;
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
    radii.emplace_back(s.candidates[k].radius, score * s.candidates[k].radius);
  }
  if (n == 0) return e;
  e.meanScore = all / static_cast<double>(n);
  e.settings.radius = static_cast<float>(weightedMedian(std::move(radii)));
  return e;
}

// The estimate of two polarities' evidence; the confidence is that of the choice times how sure the
// objects are.
SettingsEstimate estimateOf(Evidence bright, Evidence dark) {
  const double all = bright.sum + dark.sum;
  for (Evidence* e : {&bright, &dark}) {
    if (all > 0) e->settings.confidence = static_cast<float>(e->sum / all * e->meanScore);
  }
  const bool isDark = dark.sum > bright.sum;
  SettingsEstimate estimate;
  static_cast<Settings&>(estimate) = isDark ? dark.settings : bright.settings;
  estimate.runnerUp = isDark ? bright.settings : dark.settings;
  return estimate;
}

// What the images say of one polarity.
Settings combinedOf(const std::vector<SettingsEstimate>& images, Polarity polarity) {
  Settings combined;
  combined.polarity = polarity;
  std::vector<std::pair<double, double>> radii;
  double sum = 0;
  std::size_t withObjects = 0;
  for (const SettingsEstimate& image : images) {
    if (image.radius > 0) ++withObjects;
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
  std::vector<ScaleLevel> levels;
  SettingsEstimate estimate;
  Selection selection;  // of the polarity chosen
};

Search search(const Image& img, const FindSettings& settings) {
  Search s;
  s.levels = scaleLevels(img);
  if (s.levels.empty()) return s;
  const RadiusRange range = rangeOf(settings);
  const double lowest = std::min<double>(settings.minScore, kObjectScore);
  const std::vector<LevelSeeds> seeds = seedsOf(s.levels, range, settings.polarity);
  std::array<Evidence, 2> evidence;
  std::array<bool, 2> isWhole{};
  std::array<Selection, 2> selections;
  for (const Polarity p : {Polarity::Bright, Polarity::Dark}) {
    const auto i = static_cast<std::size_t>(p);
    evidence[i].settings.polarity = p;
    const std::size_t n = countOf(seeds, p);
    // A known polarity needs no sample.
    const std::size_t stride = settings.polarity ? 1 : std::max<std::size_t>(1, n / kSampled);
    if (n == 0) continue;
    selections[i] =
        selected(candidatesOf(s.levels, seeds, p, range, stride), settings.radius, lowest);
    isWhole[i] = stride == 1;
    evidence[i] = evidenceOf(selections[i], p);
  }
  s.estimate = estimateOf(evidence[0], evidence[1]);
  const Polarity polarity = settings.polarity.value_or(s.estimate.polarity);
  const auto chosen = static_cast<std::size_t>(polarity);
  s.selection = std::move(selections[chosen]);
  if (!isWhole[chosen]) {
    s.selection =
        selected(candidatesOf(s.levels, seeds, polarity, range, 1), settings.radius, lowest);
  }
  if (settings.polarity) s.estimate.polarity = *settings.polarity;
  return s;
}

Object objectOf(const Candidate& c) {
  return {c.x, c.y, c.radius, static_cast<float>(scoreOf(c.logit)),
          static_cast<float>(c.measures[kCoverage])};
}

}  // namespace

SettingsEstimate estimateSettings(const Image& img) { return search(img, FindSettings{}).estimate; }

SettingsEstimate combinedEstimate(const std::vector<SettingsEstimate>& images) {
  const Settings bright = combinedOf(images, Polarity::Bright);
  const Settings dark = combinedOf(images, Polarity::Dark);
  const bool isDark = dark.confidence > bright.confidence;
  SettingsEstimate estimate;
  static_cast<Settings&>(estimate) = isDark ? dark : bright;
  estimate.runnerUp = isDark ? bright : dark;
  return estimate;
}

FindResult findObjects(const Image& img, const FindSettings& settings) {
  requireInRange(settings);
  const Search s = search(img, settings);
  FindResult result;
  result.used = s.estimate;
  if (settings.radius) result.used.radius = *settings.radius;
  const RadiusRange range = rangeOf(settings);
  // Outlines that meet only when they are refined are one object, too.
  std::vector<Candidate> objects;
  for (const std::size_t k : s.selection.kept) {
    const Candidate& c = s.selection.candidates[k];
    if (scoreOf(c.logit) < settings.minScore) break;
    const Candidate object = refined(s.levels, c);
    if (range.contains(object.radius)) objects.push_back(object);
  }
  for (const std::size_t k : withoutOverlaps(objects, kLowestLogit)) {
    result.objects.push_back(objectOf(objects[k]));
  }
  return result;
}

}  // namespace orva::detect
