#include "orva/detect/outline.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "orva/detect/sampling.h"
#include "orva/util/cpu_path.h"

namespace orva::detect {
namespace {

constexpr float kOutsideReward = 0.3F;  // of a crossing outside the image
constexpr float kStepCost1 = 0.04F;     // of a radius one sample up or down from ray to ray
constexpr float kStepCost2 = 0.12F;     // of two
constexpr float kEdgeWidth = 2.5F;      // grey step of an edge per peak of its gradient
constexpr float kMinValue = 0.4F;       // of an outline worth a search
constexpr int kMinRays = 10;
constexpr float kMinTypical = 1e-6F;  // edge, far below the noise of any level
constexpr float kNever = -1e30F;

using Samples = std::array<float, kRadii>;

// What the rays around a place show.
struct Profiles {
  std::array<Samples, kRays> edge;
  std::array<Samples, kRays> ascent;
  std::array<Samples, kRays> reward;
  std::array<int, kRays> visible;  // samples from the start that lie in the image
  std::array<float, kRays> strongest;
};

// Samples the gradients along one ray up to the border.
void sampleRay(const ScaleLevel& level, float sign, float x, float y, const Direction& d,
               const Samples& radii, Samples& edges, int& visible) {
  for (std::size_t k = 0; k < kRadii; ++k) {
    const float px = x + radii[k] * d.x;
    const float py = y + radii[k] * d.y;
    if (!isInside(level, px, py)) break;
    ++visible;
    const Gradient g = gradientAt(level, px, py);
    edges[k] = -sign * (g.x * d.x + g.y * d.y);
  }
}

// The same far from the border.
void sampleWholeRay(const ScaleLevel& level, float sign, float x, float y, const Direction& d,
                    const Samples& radii, Samples& edges, int& visible) {
  for (std::size_t k = 0; k < kRadii; ++k) {
    const Gradient g =
        gradientIn(level, BilinearCell::between(level, x + radii[k] * d.x, y + radii[k] * d.y));
    edges[k] = -sign * (g.x * d.x + g.y * d.y);
  }
  visible = kRadii;
}

// Samples the gradients. False where an outline is impossible.
bool sample(const ScaleLevel& level, float sign, float x, float y, const Samples& radii,
            Profiles& p) {
  const bool isWhole = isFarFromBorder(level, x, y, radii.back() + 0.001F);
  std::array<float, kRays> peaks{};
  int n = 0;
  for (std::size_t t = 0; t < kRays; ++t) {
    const Direction& d = kDirections[t];
    p.strongest[t] = 0;
    p.visible[t] = 0;
    p.edge[t].fill(0.0F);
    if (isWhole) {
      sampleWholeRay(level, sign, x, y, d, radii, p.edge[t], p.visible[t]);
    } else {
      sampleRay(level, sign, x, y, d, radii, p.edge[t], p.visible[t]);
    }
    for (const float edge : p.edge[t]) p.strongest[t] = std::max(p.strongest[t], edge);
    if (p.visible[t] > 3) peaks[static_cast<std::size_t>(n++)] = p.strongest[t];
  }
  if (n < kMinRays) return false;
  std::nth_element(peaks.begin(), peaks.begin() + n / 2, peaks.begin() + n);
  const float typical = peaks[static_cast<std::size_t>(n / 2)];
  if (!(typical > kMinTypical)) return false;
  for (std::size_t t = 0; t < kRays; ++t) {
    float ascent = 0;
    float before = 0;
    for (std::size_t k = 0; k < kRadii; ++k) {
      const float edge = p.edge[t][k];
      if (edge < 0) ascent -= edge * (radii[k] - before);
      before = radii[k];
      p.ascent[t][k] = ascent / (kEdgeWidth * typical);
      const float e = edge / typical;
      const float gain = e > 0 ? 1.5F * e / (e + 0.5F) : e;
      const bool isVisible = static_cast<int>(k) < p.visible[t];
      p.reward[t][k] = (isVisible ? gain : kOutsideReward) - p.ascent[t][k];
    }
  }
  return true;
}

// What no path can exceed: the mean over the rays of the best sample.
float bound(const Profiles& p) {
  float sum = 0;
  for (const Samples& reward : p.reward) sum += *std::max_element(reward.begin(), reward.end());
  return sum / kRays;
}

// The samples of the best closed path, one a ray. The inner loop has no branches and one width of
// numbers, so that the compiler makes it a loop over vectors.
std::array<int, kRays> bestPath(const std::array<Samples, kRays>& reward) {
  constexpr std::size_t kTurns = 2 * kRays;
  constexpr std::size_t kPad = 2;
  std::array<std::array<std::int32_t, kRadii>, kTurns> from;
  std::array<float, kRadii + 2 * kPad> sums{};
  sums.fill(kNever);
  std::copy(reward[0].begin(), reward[0].end(), sums.begin() + kPad);
  Samples next{};
  for (std::size_t t = 1; t < kTurns; ++t) {
    const float* gain = reward[t % kRays].data();
    std::int32_t* moves = from[t].data();
    for (std::size_t k = 0; k < kRadii; ++k) {
      const float* at = sums.data() + k + kPad;
      float best = at[0];
      std::int32_t move = 0;
      const auto consider = [&](float v, std::int32_t step) {
        move = v > best ? step : move;
        best = v > best ? v : best;
      };
      consider(at[-1] - kStepCost1, -1);
      consider(at[1] - kStepCost1, 1);
      consider(at[-2] - kStepCost2, -2);
      consider(at[2] - kStepCost2, 2);
      next[k] = best + gain[k];
      moves[k] = move;
    }
    std::copy(next.begin(), next.end(), sums.begin() + kPad);
  }
  int k = static_cast<int>(std::max_element(next.begin(), next.end()) - next.begin());
  std::array<int, kRays> path{};
  for (std::size_t t = kTurns - 1; t >= kRays / 2; --t) {
    if (t < kRays + kRays / 2) path[t % kRays] = k;
    k += from[t][static_cast<std::size_t>(k)];
  }
  return path;
}

// The radius of the strongest edge within a sample of `k`: the vertex of the parabola through three
// samples.
float betweenSamples(const Samples& edges, int k, int visible, const Samples& radii) {
  const auto edge = [&](int i) { return edges[static_cast<std::size_t>(i)]; };
  const int path = k;
  if (path > 0 && path < visible && edge(path - 1) > edge(k)) k = path - 1;
  if (path + 1 < visible && edge(path + 1) > edge(k)) k = path + 1;
  const float radius = radii[static_cast<std::size_t>(k)];
  if (k < 1 || k + 1 >= visible) return radius;
  const float bend = (edge(k - 1) - 2 * edge(k)) + edge(k + 1);
  if (!(bend < 0) || edge(k) < edge(k - 1) || edge(k) < edge(k + 1)) return radius;
  const float offset = std::clamp(0.5F * (edge(k - 1) - edge(k + 1)) / bend, -0.5F, 0.5F);
  return radius * (1 + offset * (kRadiusRatio - 1));
}

std::optional<Outline> outlineAround(const ScaleLevel& level, Polarity polarity, float x, float y,
                                     Band band) {
  const Samples radii = radiiOf(band);
  Profiles p;
  const float sign = polarity == Polarity::Bright ? 1.0F : -1.0F;
  if (!sample(level, sign, x, y, radii, p)) return std::nullopt;
  if (!(bound(p) >= kMinValue)) return std::nullopt;
  const std::array<int, kRays> path = bestPath(p.reward);
  Outline o{x, y, {}, 0.0F};
  for (std::size_t t = 0; t < kRays; ++t) {
    const int step = path[t];
    const auto k = static_cast<std::size_t>(step);
    RayEdge& ray = o.rays[t];
    ray.radius = betweenSamples(p.edge[t], step, p.visible[t], radii);
    ray.step = step;
    ray.isVisible = step < p.visible[t];
    ray.edge = p.edge[t][k];
    ray.strongest = p.strongest[t];
    ray.ascent = p.ascent[t][k];
    ray.alignment = 0.0F;
    ray.gradient = {0.0F, 0.0F};
    if (ray.isVisible) {
      const Gradient g =
          gradientAt(level, x + ray.radius * kDirections[t].x, y + ray.radius * kDirections[t].y);
      ray.gradient = g;
      ray.alignment = ray.edge / std::max(1e-9F, std::sqrt(g.x * g.x + g.y * g.y));
    }
    o.value += p.reward[t][k] / kRays;
  }
  return o;
}

}  // namespace

std::optional<Outline> bestOutline(const ScaleLevel& level, Polarity polarity, float x, float y,
                                   Band band) {
  std::optional<Outline> outline;
  onWidestPath([&] { outline = outlineAround(level, polarity, x, y, band); });
  return outline;
}

}  // namespace orva::detect
