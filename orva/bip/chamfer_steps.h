// The local steps of chamfer distances and the passes that apply them, for the distance transform
// and for propagation. For the library's own sources; not installed.
//
// G. Borgefors, Distance transformations in digital images, Computer Vision, Graphics, and Image
// Processing 34, 1986.
#ifndef ORVA_BIP_CHAMFER_STEPS_H
#define ORVA_BIP_CHAMFER_STEPS_H

#include <cmath>
#include <cstddef>
#include <vector>

#include "orva/image/image.h"

namespace orva::bip {

constexpr float kUnknownDistance = 10000.0F;

enum class Pass { kForward, kBackward };

// To a neighbour: its index less the pixel's own, and the Euclidean length.
struct ChamferStep {
  std::ptrdiff_t offset;
  float weight;
};

// The steps of one pass in order of dz, dy, dx. Those whose coordinate sum is 0 belong to both
// passes; this is intended.
inline std::vector<ChamferStep> chamferSteps(const Image& img, Pass pass) {
  const int depth = img.nz() > 1 ? 1 : 0;
  const std::ptrdiff_t row = img.nx();
  const std::ptrdiff_t plane = row * img.ny();
  std::vector<ChamferStep> steps;
  steps.reserve(depth == 0 ? 8 : 27);
  for (int dz = -depth; dz <= depth; ++dz) {
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        const int sum = dx + dy + dz;
        const int squares = dx * dx + dy * dy + dz * dz;
        if (squares == 0 || (pass == Pass::kForward ? sum > 0 : sum < 0)) continue;
        steps.push_back({dx + dy * row + dz * plane, std::sqrt(static_cast<float>(squares))});
      }
    }
  }
  return steps;
}

// One pass over the pixels off the border of `distance`, in place: a pixel above `threshold` takes
// the smallest sum of a neighbour's distance and the step to it, the first of equals, if that is
// smaller than its own. taken(i, j) is called for a pixel i that took from pixel j.
template <class Taken>
void chamferPass(image<float>& distance, Pass pass, float threshold, Taken taken) {
  const std::vector<ChamferStep> steps = chamferSteps(distance, pass);
  const bool isVolume = distance.nz() > 1;
  const std::ptrdiff_t row = distance.nx();
  const std::ptrdiff_t plane = row * distance.ny();
  float* d = distance.pixels();

  const auto lower = [&](std::ptrdiff_t i) {
    if (!(d[i] > threshold)) return;
    float least = kUnknownDistance;
    std::ptrdiff_t from = i;
    for (const ChamferStep& step : steps) {
      const float candidate = d[i + step.offset] + step.weight;
      if (candidate < least) {
        least = candidate;
        from = i + step.offset;
      }
    }
    if (from == i || !(d[i] > least)) return;
    d[i] = least;
    taken(i, from);
  };

  // Coordinate number k of the pass: from 1 to n - 2 or back.
  const auto at = [pass](int k, int n) { return pass == Pass::kForward ? k : n - 1 - k; };
  const int planes = isVolume ? distance.nz() - 1 : distance.nz();  // none of a depth of 0
  for (int kz = isVolume ? 1 : 0; kz < planes; ++kz) {
    for (int ky = 1; ky < distance.ny() - 1; ++ky) {
      const std::ptrdiff_t start = at(kz, distance.nz()) * plane + at(ky, distance.ny()) * row;
      for (int kx = 1; kx < distance.nx() - 1; ++kx) lower(start + at(kx, distance.nx()));
    }
  }
}

}  // namespace orva::bip

#endif
