// The median of weighted values.
#ifndef ORVA_DETECT_WEIGHTED_MEDIAN_H
#define ORVA_DETECT_WEIGHTED_MEDIAN_H

#include <algorithm>
#include <utility>
#include <vector>

namespace orva::detect {

// The smallest value up to which the values have half of all weight. Pairs of a value and its
// weight; at least one.
inline double weightedMedian(std::vector<std::pair<double, double>> values) {
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

}  // namespace orva::detect

#endif
