#include "orva/image/extremes.h"

#include <algorithm>

#include "orva/util/cpu_path.h"

namespace orva {
namespace {

constexpr std::ptrdiff_t kTogether = 32;

void widen(const float* values, float* least, float* most, int* nans) {
  ORVA_INDEPENDENT
  for (std::ptrdiff_t k = 0; k < kTogether; ++k) {
    const float v = values[k];
    least[k] = v < least[k] ? v : least[k];
    most[k] = most[k] < v ? v : most[k];
    nans[k] |= v != v ? 1 : 0;
  }
}

}  // namespace

Extremes extremesOf(const float* values, std::ptrdiff_t count) {
  Extremes result{values[0], values[0], false};
  Extremes* out = &result;
  onWidestPath([=] {
    float least[kTogether];
    float most[kTogether];
    int nans[kTogether] = {};
    std::fill_n(least, kTogether, values[0]);
    std::fill_n(most, kTogether, values[0]);
    std::ptrdiff_t i = 0;
    for (; i + kTogether <= count; i += kTogether) widen(values + i, least, most, nans);
    if (i < count) {
      float last[kTogether];
      std::fill_n(std::copy_n(values + i, count - i, last), kTogether - (count - i), values[0]);
      widen(last, least, most, nans);
    }
    for (std::ptrdiff_t k = 0; k < kTogether; ++k) {
      out->least = std::min(out->least, least[k]);
      out->most = std::max(out->most, most[k]);
      out->hasNan = out->hasNan || nans[k] != 0;
    }
  });
  return result;
}

}  // namespace orva
