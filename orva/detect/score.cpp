#include "orva/detect/score.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orva/detect/elementary.h"
#include "orva/detect/score_weights.h"
#include "orva/detect/weighted_median.h"

namespace orva::detect {
namespace {

constexpr double kMaxDeviation = 3.5;  // of a term from its mean, in standard deviations
constexpr double kMaxLogit = 9.0;      // of the first score as a term of the second

// The term's share of a logit.
double weighed(const TermWeight& w, double term) {
  return w.weight * std::clamp((term - w.mean) / w.deviation, -kMaxDeviation, kMaxDeviation);
}

double logContrast(const Candidate& c) { return naturalLog(std::max<double>(c.contrast, 0.01)); }
double logEdge(const Candidate& c) { return naturalLog(std::max<double>(c.edge, 0.001)); }

}  // namespace

void scoreAlone(std::vector<Candidate>& candidates) {
  for (Candidate& c : candidates) {
    c.logit = kAloneBias;
    for (std::size_t k = 0; k < kMeasures; ++k) c.logit += weighed(kAloneWeights[k], c.measures[k]);
  }
}

std::optional<Context> contextOf(const std::vector<Candidate>& candidates,
                                 const std::vector<std::size_t>& kept,
                                 std::optional<float> radius) {
  if (kept.empty()) return std::nullopt;
  const auto median = [&](auto&& value) {
    std::vector<std::pair<double, double>> values;
    values.reserve(kept.size());
    for (const std::size_t k : kept) {
      const double s = scoreOf(candidates[k].logit);
      values.emplace_back(value(candidates[k]), s * s);
    }
    return weightedMedian(std::move(values));
  };
  Context context{};
  context.isTold = radius.has_value();
  context.logRadius = naturalLog(
      radius ? *radius : median([](const Candidate& c) { return static_cast<double>(c.radius); }));
  context.logContrast = median(logContrast);
  context.logEdge = median(logEdge);
  context.inside = median([](const Candidate& c) { return static_cast<double>(c.inside); });
  context.outside = median([](const Candidate& c) { return static_cast<double>(c.outside); });
  return context;
}

std::array<double, kContextTerms> contextTerms(const Candidate& c, const Context& context) {
  const double size = naturalLog(c.radius) - context.logRadius;
  const double contrast = std::max(1.0, std::fabs(context.inside - context.outside));
  return {size,
          std::fabs(size),
          logContrast(c) - context.logContrast,
          logEdge(c) - context.logEdge,
          (c.inside - context.inside) / contrast,
          (c.outside - context.outside) / contrast};
}

void scoreInContext(std::vector<Candidate>& candidates, const Context& context) {
  const auto& weights = context.isTold ? kToldWeights : kInContextWeights;
  for (Candidate& c : candidates) {
    double logit = context.isTold ? kToldBias : kInContextBias;
    for (std::size_t k = 0; k < kMeasures; ++k) logit += weighed(weights[k], c.measures[k]);
    logit += weighed(weights[kMeasures], std::clamp(c.logit, -kMaxLogit, kMaxLogit));
    const std::array<double, kContextTerms> terms = contextTerms(c, context);
    for (std::size_t k = 0; k < kContextTerms; ++k) {
      logit += weighed(weights[kMeasures + 1 + k], terms[k]);
    }
    c.logit = logit;
  }
}

double scoreOf(double logit) { return logistic(logit); }

}  // namespace orva::detect
