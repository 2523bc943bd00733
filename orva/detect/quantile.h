// Order statistics.
#ifndef ORVA_DETECT_QUANTILE_H
#define ORVA_DETECT_QUANTILE_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace orva::detect {

// The value that lies `share` of the way through the values in ascending order, the lower of two:
// 0.5 is the lower median. At least one value; reorders them.
inline float quantile(std::vector<float>& values, double share) {
  const auto at = static_cast<std::ptrdiff_t>(static_cast<double>(values.size() - 1) * share);
  std::nth_element(values.begin(), values.begin() + at, values.end());
  return values[static_cast<std::size_t>(at)];
}

}  // namespace orva::detect

#endif
