#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <new>

#include "orva/image/bad_alloc.h"
#include "orva/scalespace/line_buffer.h"
#include "orva/scalespace/scalespace.h"

namespace orva::scalespace {
namespace {

std::vector<float> coefficients(int order, float sigma) {
  const auto count = static_cast<std::size_t>(order > 0 ? order : 0) + 1;
  const double s2 = sigma * sigma;
  std::vector<float> c(count, 0.0F);
  c[0] = static_cast<float>(std::sqrt(1.0 / (s2 * 6.2831854)));  // intended: not 2 pi in full
  std::vector<float> next(count);
  for (int n = 0; n < order; ++n) {
    for (std::size_t j = 0; j < count; ++j) {
      const double above = j + 1 < count ? c[j + 1] : 0.0;
      const double below = j > 0 ? c[j - 1] : 0.0;
      next[j] = static_cast<float>(static_cast<double>(j + 1) * above + below * (-1.0 / s2));
    }
    c = next;
  }
  return c;
}

}  // namespace

std::vector<float> dog(int order, float sigma) {
  return exitOnBadAlloc([=] { return coefficients(order, sigma); });
}

float polyval(const std::vector<float>& c, float x) {
  float sum = 0.0F;
  float power = 1.0F;
  for (const float coefficient : c) {
    sum += power * coefficient;
    power *= x;
  }
  return sum;
}

float* gaussianKernel(float sigma, int& radius, int order) {
  constexpr float kPastInt = 2147483648.0F;
  const float reach = sigma * 4.0F;
  radius = reach >= 3.0F && reach < kPastInt ? static_cast<int>(reach) : 2;
  const std::int64_t count = 2 * std::int64_t{radius} + 1;
  float* taps = count > std::numeric_limits<int>::max()
                    ? nullptr
                    : new (std::nothrow) float[static_cast<std::size_t>(count)];
  if (taps == nullptr) exitOutOfBufferMemory();

  const std::vector<float> c = dog(order, sigma);
  const double s = sigma;
  const double d = s * (s + s);
  for (int i = -radius; i <= radius; ++i) {
    const auto square = static_cast<float>(std::int64_t{i} * i);
    const double bell = std::exp(static_cast<double>(-square) / d);
    taps[i + radius] = static_cast<float>(polyval(c, static_cast<float>(i)) * bell);
  }
  return taps;
}

}  // namespace orva::scalespace
