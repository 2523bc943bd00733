#include "tests/support/reference/outline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <vector>

namespace orva::test::reference {
namespace {

using detect::Gradient;
using detect::kRadii;
using detect::kRays;
using detect::ScaleLevel;

float clamped(float v, int n) { return std::min(std::max(v, 0.0F), static_cast<float>(n - 1)); }

float bilinear(float a, float b, float c, float d, float u, float v) {
  return (a * (1 - u) + b * u) * (1 - v) + (c * (1 - u) + d * u) * v;
}

Gradient gradientAt(const ScaleLevel& level, float x, float y) {
  const float cx = clamped(x, level.nx);
  const float cy = clamped(y, level.ny);
  const int i = std::min(static_cast<int>(cx), level.nx - 2);
  const int j = std::min(static_cast<int>(cy), level.ny - 2);
  const auto at = [&](int di, int dj) {
    return level.gradients[static_cast<std::size_t>(j + dj) * static_cast<std::size_t>(level.nx) +
                           static_cast<std::size_t>(i + di)];
  };
  const float u = cx - static_cast<float>(i);
  const float v = cy - static_cast<float>(j);
  return {bilinear(at(0, 0).x, at(1, 0).x, at(0, 1).x, at(1, 1).x, u, v),
          bilinear(at(0, 0).y, at(1, 0).y, at(0, 1).y, at(1, 1).y, u, v)};
}

bool isInside(const ScaleLevel& level, float x, float y) {
  return x >= -0.5F && x <= static_cast<float>(level.nx) - 0.5F && y >= -0.5F &&
         y <= static_cast<float>(level.ny) - 0.5F;
}

float costOf(int step) { return step == 0 ? 0.0F : std::abs(step) == 1 ? 0.04F : 0.12F; }

}  // namespace

std::optional<detect::Outline> bestOutline(const ScaleLevel& level, detect::Polarity polarity,
                                           float x, float y, detect::Band band) {
  const std::array<float, kRadii> radii = detect::radiiOf(band);
  const float sign = polarity == detect::Polarity::Bright ? 1.0F : -1.0F;
  std::vector<std::vector<float>> edges(kRays);  // per ray, the samples inside the image
  std::vector<float> strongest(kRays, 0.0F);
  std::vector<float> peaks;
  for (std::size_t t = 0; t < kRays; ++t) {
    const detect::Direction d = detect::kDirections[t];
    for (const float r : radii) {
      if (!isInside(level, x + r * d.x, y + r * d.y)) break;
      const Gradient g = gradientAt(level, x + r * d.x, y + r * d.y);
      edges[t].push_back(-sign * (g.x * d.x + g.y * d.y));
      strongest[t] = std::max(strongest[t], edges[t].back());
    }
    if (edges[t].size() > 3) peaks.push_back(strongest[t]);
  }
  if (peaks.size() < 10) return std::nullopt;
  std::sort(peaks.begin(), peaks.end());
  const float typical = peaks[peaks.size() / 2];
  if (!(typical > 0)) return std::nullopt;

  std::vector<std::vector<float>> ascents(kRays);
  std::vector<std::vector<float>> rewards(kRays);
  for (std::size_t t = 0; t < kRays; ++t) {
    float ascent = 0;
    for (std::size_t k = 0; k < kRadii; ++k) {
      const bool isVisible = k < edges[t].size();
      const float edge = isVisible ? edges[t][k] : 0.0F;
      if (edge < 0) ascent -= edge * (radii[k] - (k > 0 ? radii[k - 1] : 0.0F));
      ascents[t].push_back(ascent / (2.5F * typical));
      const float e = edge / typical;
      const float gain = e > 0 ? 1.5F * e / (e + 0.5F) : e;
      rewards[t].push_back((isVisible ? gain : 0.3F) - ascents[t].back());
    }
  }

  float bound = 0;
  for (const std::vector<float>& reward : rewards) {
    bound += *std::max_element(reward.begin(), reward.end());
  }
  if (bound / kRays < 0.4F) return std::nullopt;

  // Best sums over two turns; of equal predecessors the one of the smaller step, then the inner.
  const int last = kRadii - 1;
  std::vector<std::vector<float>> sums(2 * kRays, std::vector<float>(kRadii));
  std::vector<std::vector<int>> from(2 * kRays, std::vector<int>(kRadii, 0));
  sums[0] = rewards[0];
  for (std::size_t t = 1; t < 2 * kRays; ++t) {
    for (int k = 0; k <= last; ++k) {
      const auto to = static_cast<std::size_t>(k);
      bool isFirst = true;
      float best = 0;
      for (const int step : {0, -1, 1, -2, 2}) {
        if (k + step < 0 || k + step > last) continue;
        const float v = sums[t - 1][static_cast<std::size_t>(k + step)] - costOf(step);
        if (isFirst || v > best) {
          best = v;
          from[t][to] = step;
        }
        isFirst = false;
      }
      sums[t][to] = best + rewards[t % kRays][to];
    }
  }
  int k = 0;
  for (int i = 1; i <= last; ++i) {
    if (sums.back()[static_cast<std::size_t>(i)] > sums.back()[static_cast<std::size_t>(k)]) k = i;
  }
  std::vector<int> path(2 * kRays);
  for (std::size_t t = 2 * kRays; t-- > 0;) {
    path[t] = k;
    k += from[t][static_cast<std::size_t>(k)];
  }

  detect::Outline o{x, y, {}, 0.0F};
  for (std::size_t t = 0; t < kRays; ++t) {
    const int step = path[t < kRays / 2 ? t + kRays : t];
    const auto i = static_cast<std::size_t>(step);
    const bool isVisible = i < edges[t].size();
    // The strongest of the sample and its visible neighbours; of equal ones the sample, then the
    // inner.
    std::size_t peak = i;
    if (isVisible && i > 0 && edges[t][i - 1] > edges[t][peak]) peak = i - 1;
    if (i + 1 < edges[t].size() && edges[t][i + 1] > edges[t][peak]) peak = i + 1;
    float radius = radii[peak];
    if (peak > 0 && peak + 1 < edges[t].size()) {
      const float a = edges[t][peak - 1];
      const float b = edges[t][peak];
      const float c = edges[t][peak + 1];
      const float bend = (a - 2 * b) + c;
      if (bend < 0 && b >= a && b >= c) {
        const float offset = std::min(std::max(0.5F * (a - c) / bend, -0.5F), 0.5F);
        radius *= 1 + offset * (detect::kRadiusRatio - 1);
      }
    }
    o.rays[t] = {radius,       step,          isVisible, isVisible ? edges[t][i] : 0.0F,
                 strongest[t], ascents[t][i], 0.0F,      {0.0F, 0.0F}};
    o.value += rewards[t][i] / kRays;
  }
  return o;
}

}  // namespace orva::test::reference
