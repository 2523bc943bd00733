#include "orva/detect/score.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orva/detect/elementary.h"
#include "orva/detect/score_weights.h"

namespace orva::detect {
namespace {

constexpr double MAX_DEVIATION = 3.5;  // of a term from its mean, in standard deviations
constexpr double MAX_LOGIT = 9.0;      // of the first score as a term of the second

// The term's share of a logit.
double weighed(const TermWeight& w, double term) {
  return w.weight * std::clamp((term - w.mean) / w.deviation, -MAX_DEVIATION, MAX_DEVIATION);
}

// The middle of `values` by the sum of their weights.
double weightedMedian(std::vector<std::pair<double, double>> values) {
  std::sort(values.begin(), values.end());
  double all = 0;
  for (const auto& v : values) all += v.second;
  double sum = 0;
  for (const auto& v : values) {
    sum += v.second;
    if (sum >= all / 2) return v.first;
  }
  return values.back().first;
}

double logContrast(const Candidate& c) { return naturalLog(std::max<double>(c.contrast, 0.01)); }
double logEdge(const Candidate& c) { return naturalLog(std::max<double>(c.edge, 0.001)); }

}  // namespace

void scoreAlone(std::vector<Candidate>& candidates) {
  for (Candidate& c : candidates) {
    c.logit = ALONE_BIAS;
    for (std::size_t k = 0; k < MEASURES; ++k) c.logit += weighed(ALONE_WEIGHTS[k], c.measures[k]);
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
  context.logRadius = naturalLog(
      radius ? *radius : median([](const Candidate& c) { return static_cast<double>(c.radius); }));
  context.logContrast = median(logContrast);
  context.logEdge = median(logEdge);
  context.inside = median([](const Candidate& c) { return static_cast<double>(c.inside); });
  context.outside = median([](const Candidate& c) { return static_cast<double>(c.outside); });
  return context;
}

std::array<double, CONTEXT_TERMS> contextTerms(const Candidate& c, const Context& context) {
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
  for (Candidate& c : candidates) {
    double logit = IN_CONTEXT_BIAS;
    for (std::size_t k = 0; k < MEASURES; ++k) {
      logit += weighed(IN_CONTEXT_WEIGHTS[k], c.measures[k]);
    }
    logit += weighed(IN_CONTEXT_WEIGHTS[MEASURES], std::clamp(c.logit, -MAX_LOGIT, MAX_LOGIT));
    const std::array<double, CONTEXT_TERMS> terms = contextTerms(c, context);
    for (std::size_t k = 0; k < CONTEXT_TERMS; ++k) {
      logit += weighed(IN_CONTEXT_WEIGHTS[MEASURES + 1 + k], terms[k]);
    }
    c.logit = logit;
  }
}

double scoreOf(double logit) { return logistic(logit); }

}  // namespace orva::detect
