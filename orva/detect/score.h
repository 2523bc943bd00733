// How surely a candidate is an object.
#ifndef ORVA_DETECT_SCORE_H
#define ORVA_DETECT_SCORE_H

#include <cstddef>
#include <optional>
#include <vector>

#include "orva/detect/candidate.h"

namespace orva::detect {

// What the objects of an image have in common.
struct Context {
  double logRadius;
  double logContrast;
  double logEdge;  // of the mean edge
  double inside;   // brightness, negated for dark objects
  double outside;
  bool isTold;  // whether the radius was given
};

// Sets the logit of each candidate from its own measures.
void scoreAlone(std::vector<Candidate>& candidates);

// The weighted medians over the candidates `kept`; none when there are none. A radius that is given
// stands in for the median.
std::optional<Context> contextOf(const std::vector<Candidate>& candidates,
                                 const std::vector<std::size_t>& kept, std::optional<float> radius);

// Sets the logit of each candidate anew, from its measures, the logit that it has and its
// differences to the context.
void scoreInContext(std::vector<Candidate>& candidates, const Context& context);

// What the two scores are made from, for fitting their weights.
inline constexpr std::size_t kContextTerms = 6;
std::array<double, kContextTerms> contextTerms(const Candidate& candidate, const Context& context);

// The score of a logit, 0 to 1.
double scoreOf(double logit);

}  // namespace orva::detect

#endif
