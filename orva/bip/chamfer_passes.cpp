#include "orva/bip/chamfer_passes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "orva/image/bad_alloc.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"
#include "orva/util/simd.h"

namespace orva::bip {
namespace {

// A step to a neighbour: the difference of the indices and the Euclidean length.
struct NeighbourStep {
  std::ptrdiff_t offset;
  float length;
};

// The steps of one pass that leave the row, in order. The step within the row, to the pixel
// processed last, comes after the first `beforeRow` of them.
template <std::size_t N>
struct Steps {
  std::array<NeighbourStep, N> leaving;
  std::size_t beforeRow;
};

template <std::size_t N>
Steps<N> stepsOf(const Image& img, Pass pass) {
  const int depth = img.nz() > 1 ? 1 : 0;
  const std::ptrdiff_t row = img.nx();
  const std::ptrdiff_t plane = row * img.ny();
  Steps<N> steps{};
  std::size_t n = 0;
  for (int dz = -depth; dz <= depth; ++dz) {
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        const int sum = dx + dy + dz;
        const int squares = dx * dx + dy * dy + dz * dz;
        if (squares == 0 || (pass == Pass::kForward ? sum > 0 : sum < 0)) continue;
        if (dy == 0 && dz == 0) {
          steps.beforeRow = n;
        } else {
          steps.leaving[n++] = {dx + dy * row + dz * plane, std::sqrt(static_cast<float>(squares))};
        }
      }
    }
  }
  return steps;
}

constexpr std::size_t kPlaneSteps = 4;
constexpr std::size_t kVolumeSteps = 15;

// Lets the distances t[1] .. t[nx - 2] of a row grow by 1 from each to the next, from `carry`
// before the first on: t[x] = min(t[x], t[x - 1] + 1), or from the last backward. Up to kLanes
// values on either side of the row are overwritten.
//
// The loop-carried dependence is replaced by a prefix minimum over eight-lane vectors, which adds k
// at once instead of 1 k times. For k up to 8 and the distances that occur both round to the same
// float: a sum is rounded only where it passes a power of two. From 2 on, eight ones pass at most
// two powers, and the two roundings to even do not interact. Below 2 the only distances are 0, 1,
// sqrt(2) and sqrt(3), whose sums tests/bip/chamfer_rows_test.cpp checks exhaustively.
template <Pass kPass>
void growAlongRow(float* t, std::ptrdiff_t nx, float carry) {
  constexpr bool kForward = kPass == Pass::kForward;
  const FloatVector far = FloatVector{} + kUnknownDistance;
  const FloatVector ones =
      kForward ? FloatVector{1, 2, 3, 4, 5, 6, 7, 8} : FloatVector{8, 7, 6, 5, 4, 3, 2, 1};
  FloatVector before = FloatVector{} + carry;
  const auto lower = [](FloatVector& v, const FloatVector& other) { v = other < v ? other : v; };
  for (std::ptrdiff_t k = 1; k < nx - 1; k += kLanes) {
    float* at = kForward ? t + k : t + (nx - 1 - k) - (kLanes - 1);
    FloatVector v;
    load(at, v);
    FloatVector last;
    if constexpr (kForward) {
      lower(v, __builtin_shufflevector(v, far, 8, 0, 1, 2, 3, 4, 5, 6) + 1.0F);
      lower(v, __builtin_shufflevector(v, far, 8, 8, 0, 1, 2, 3, 4, 5) + 2.0F);
      lower(v, __builtin_shufflevector(v, far, 8, 8, 8, 8, 0, 1, 2, 3) + 4.0F);
      last = __builtin_shufflevector(v, v, 7, 7, 7, 7, 7, 7, 7, 7);
    } else {
      lower(v, __builtin_shufflevector(v, far, 1, 2, 3, 4, 5, 6, 7, 8) + 1.0F);
      lower(v, __builtin_shufflevector(v, far, 2, 3, 4, 5, 6, 7, 8, 8) + 2.0F);
      lower(v, __builtin_shufflevector(v, far, 4, 5, 6, 7, 8, 8, 8, 8) + 4.0F);
      last = __builtin_shufflevector(v, v, 0, 0, 0, 0, 0, 0, 0, 0);
    }
    lower(v, before + ones);
    store(v, at);
    before += 8.0F;
    lower(before, last);
  }
}

// Calls lower(i) for the first pixel i of every row off the border, in the order of the pass.
template <class Lower>
void forEachInnerRow(const Image& img, Pass pass, Lower lower) {
  const auto at = [pass](int k, int n) { return pass == Pass::kForward ? k : n - 1 - k; };
  const bool isVolume = img.nz() > 1;
  if (img.nx() < 3) return;
  constexpr int kRowsPerCheckpoint = 32;
  const std::ptrdiff_t rows = std::ptrdiff_t{img.ny()} * img.nz();
  for (int kz = isVolume ? 1 : 0; kz < (isVolume ? img.nz() - 1 : 1); ++kz) {
    for (int ky = 1; ky < img.ny() - 1; ++ky) {
      if (ky % kRowsPerCheckpoint == 0) checkpoint(std::ptrdiff_t{kz} * img.ny() + ky, rows);
      lower((std::ptrdiff_t{at(kz, img.nz())} * img.ny() + at(ky, img.ny())) * img.nx());
    }
  }
}

// A row with room for a vector on either side.
template <class T>
class RowBuffer {
 public:
  explicit RowBuffer(int nx)
      : values_(exitOnBadAlloc(
            [nx] { return std::vector<T>(static_cast<std::size_t>(nx) + 2 * kLanes); })) {}
  T* row() { return values_.data() + kLanes; }

 private:
  std::vector<T> values_;
};

template <Pass kPass, std::size_t N>
void passOverDistances(image<float>& distance) {
  const Steps<N> steps = stepsOf<N>(distance, kPass);
  const std::ptrdiff_t nx = distance.nx();
  RowBuffer<float> buffer(distance.nx());
  float* t = buffer.row();
  forEachInnerRow(distance, kPass, [&](std::ptrdiff_t first) {
    float* d = distance.pixels() + first;
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 1; x < nx - 1; ++x) {
        float min = d[x];
#pragma GCC unroll 16
        for (std::size_t k = 0; k < N; ++k) {
          const float sum = d[x + steps.leaving[k].offset] + steps.leaving[k].length;
          min = sum < min ? sum : min;
        }
        t[x] = min;
      }
      growAlongRow<kPass>(t, nx, kPass == Pass::kForward ? d[0] : d[nx - 1]);
      std::copy_n(t + 1, nx - 2, d + 1);
    });
  });
}

// The next float above a positive one.
float above(float v) { return std::bit_cast<float>(std::bit_cast<std::int32_t>(v) + 1); }

template <Pass kPass, std::size_t N>
void passOverLabels(image<float>& distance, short* labels) {
  const Steps<N> steps = stepsOf<N>(distance, kPass);
  const std::ptrdiff_t nx = distance.nx();
  RowBuffer<float> minBuffer(distance.nx());
  RowBuffer<float> limitBuffer(distance.nx());
  RowBuffer<std::int32_t> choiceBuffer(distance.nx());
  RowBuffer<std::int32_t> alongBuffer(distance.nx());
  float* t = minBuffer.row();
  float* limits = limitBuffer.row();
  std::int32_t* choices = choiceBuffer.row();
  std::int32_t* alongRow = alongBuffer.row();  // a mask: whether the step within the row is best
  constexpr std::ptrdiff_t kBack = kPass == Pass::kForward ? -1 : 1;
  std::array<std::ptrdiff_t, N + 1> offsets{};  // choice 0 is the pixel itself
  for (std::size_t k = 0; k < N; ++k) offsets[k + 1] = steps.leaving[k].offset;

  forEachInnerRow(distance, kPass, [&](std::ptrdiff_t first) {
    float* d = distance.pixels() + first;
    short* label = labels + first;
    // Over the steps that leave the row: the smallest sum, the first step that reaches it, and the
    // sum below which the step within the row is better.
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 1; x < nx - 1; ++x) {
        float min = d[x];
        std::int32_t choice = 0;
        float limit = min;
#pragma GCC unroll 16
        for (std::size_t k = 0; k < N; ++k) {
          const float sum = d[x + steps.leaving[k].offset] + steps.leaving[k].length;
          const bool isLess = sum < min;
          // The step within the row comes before the later ones of equal sum.
          const float next = k < steps.beforeRow ? sum : above(sum);
          min = isLess ? sum : min;
          limit = isLess ? next : limit;
          choice = isLess ? static_cast<std::int32_t>(k) + 1 : choice;
        }
        t[x] = min;
        limits[x] = limit;
        choices[x] = choice;
      }
      growAlongRow<kPass>(t, nx, kPass == Pass::kForward ? d[0] : d[nx - 1]);
      std::copy_n(t + 1, nx - 2, d + 1);
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 1; x < nx - 1; ++x) {
        alongRow[x] = d[x + kBack] + 1.0F < limits[x] ? -1 : 0;
      }
    });
    std::ptrdiff_t x = kPass == Pass::kForward ? 1 : nx - 2;
    short last = label[x + kBack];
    for (std::ptrdiff_t k = 1; k < nx - 1; ++k, x -= kBack) {
      const short other = label[x + offsets[static_cast<std::size_t>(choices[x])]];
      last = static_cast<short>((last & alongRow[x]) | (other & ~alongRow[x]));  // no branch
      label[x] = last;
    }
  });
}

}  // namespace

void chamferPass(image<float>& distance, Pass pass) {
  if (distance.isNull()) return;  // sizes below zero whose product is positive
  const bool isVolume = distance.nz() > 1;
  if (pass == Pass::kForward) {
    isVolume ? passOverDistances<Pass::kForward, kVolumeSteps>(distance)
             : passOverDistances<Pass::kForward, kPlaneSteps>(distance);
  } else {
    isVolume ? passOverDistances<Pass::kBackward, kVolumeSteps>(distance)
             : passOverDistances<Pass::kBackward, kPlaneSteps>(distance);
  }
}

void chamferPass(image<float>& distance, short* labels, Pass pass) {
  if (distance.isNull()) return;
  const bool isVolume = distance.nz() > 1;
  if (pass == Pass::kForward) {
    isVolume ? passOverLabels<Pass::kForward, kVolumeSteps>(distance, labels)
             : passOverLabels<Pass::kForward, kPlaneSteps>(distance, labels);
  } else {
    isVolume ? passOverLabels<Pass::kBackward, kVolumeSteps>(distance, labels)
             : passOverLabels<Pass::kBackward, kPlaneSteps>(distance, labels);
  }
}

}  // namespace orva::bip
