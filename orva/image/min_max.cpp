#include "orva/image/min_max.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva {
namespace {

constexpr std::ptrdiff_t kAccumulators = 32;  // of each kind: four eight-lane vectors

void widen(const float* values, float* min, float* max, int* nans) {
  ORVA_INDEPENDENT
  for (std::ptrdiff_t k = 0; k < kAccumulators; ++k) {
    const float v = values[k];
    min[k] = v < min[k] ? v : min[k];
    max[k] = max[k] < v ? v : max[k];
    nans[k] |= v != v ? 1 : 0;
  }
}

MinMax minMaxOf(const float* values, std::ptrdiff_t count) {
  MinMax result{values[0], values[0], false};
  MinMax* out = &result;
  onWidestPath([=] {
    float min[kAccumulators];
    float max[kAccumulators];
    int nans[kAccumulators] = {};
    std::fill_n(min, kAccumulators, values[0]);
    std::fill_n(max, kAccumulators, values[0]);
    std::ptrdiff_t i = 0;
    for (; i + kAccumulators <= count; i += kAccumulators) widen(values + i, min, max, nans);
    if (i < count) {
      float last[kAccumulators];
      std::fill_n(std::copy_n(values + i, count - i, last), kAccumulators - (count - i), values[0]);
      widen(last, min, max, nans);
    }
    for (std::ptrdiff_t k = 0; k < kAccumulators; ++k) {
      out->min = std::min(out->min, min[k]);
      out->max = std::max(out->max, max[k]);
      out->hasNan = out->hasNan || nans[k] != 0;
    }
  });
  return result;
}

}  // namespace

MinMax united(const MinMax& a, const MinMax& b) {
  return {std::min(a.min, b.min), std::max(a.max, b.max), a.hasNan || b.hasNan};
}

MinMax findMinMax(const float* values, std::ptrdiff_t count) {
  const Parts parts(count, kPixelsPerTask, 64);
  if (!isCancellable() || parts.count() < 2) return minMaxOf(values, count);
  std::vector<MinMax> found(parts.count());
  parallelFor(parts.count(), [&](std::size_t i) {
    found[i] = minMaxOf(values + parts.begin(i), parts.end(i) - parts.begin(i));
  });
  return std::accumulate(found.begin() + 1, found.end(), found.front(), united);
}

}  // namespace orva
