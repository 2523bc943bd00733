// The weights of the scores, made by scripts/detect_weights.
#ifndef ORVA_DETECT_SCORE_WEIGHTS_H
#define ORVA_DETECT_SCORE_WEIGHTS_H

#include <array>

namespace orva::detect {

struct TermWeight {
  double mean;
  double deviation;
  double weight;
};
inline constexpr double ALONE_BIAS = 0;
inline constexpr std::array<TermWeight, 25> ALONE_WEIGHTS{};
inline constexpr double IN_CONTEXT_BIAS = 0;
inline constexpr std::array<TermWeight, 32> IN_CONTEXT_WEIGHTS{};

}  // namespace orva::detect

#endif
