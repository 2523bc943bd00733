#include "orva/scalespace/convolution.h"

#include <algorithm>
#include <cstdint>

#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"
#include "orva/util/simd.h"

namespace orva::scalespace {
namespace {

// Tile sizes: as many accumulators as the registers hold.
constexpr int kRowVectors = 6;                   // accumulators of filterRow()
constexpr int kRowBlock = kRowVectors * kLanes;  // outputs that they hold
constexpr int kStripVectors = 2;                 // accumulators per row of filterColumns()
constexpr int kStrip = kStripVectors * kLanes;   // columns that they hold
constexpr int kStripRows = 3;                    // output rows per pass over the input rows

void filterBlock(const float* in, const float* taps, int radius, float* out) {
  FloatVector sum[kRowVectors] = {};
  const float* at = in + radius;
  for (std::ptrdiff_t k = 0; k <= 2 * std::ptrdiff_t{radius}; ++k, --at) {
    const float tap = taps[k];
#pragma GCC unroll 8
    for (int i = 0; i < kRowVectors; ++i) {
      FloatVector v;
      load(at + i * kLanes, v);
      sum[i] += tap * v;
    }
  }
#pragma GCC unroll 8
  for (int i = 0; i < kRowVectors; ++i) store(sum[i], out + i * kLanes);
}

// The outputs of rows y .. y + M - 1 in the strip of columns that begins at x. Each input row is
// loaded once for all of them.
template <int M>
void filterStrip(const Rows& rows, std::ptrdiff_t x, std::int64_t y, const Kernel& kernel,
                 Border border, float* out, std::ptrdiff_t outStride) {
  static_assert(M == 1 || M == 3);
  const std::int64_t radius = kernel.radius();
  const std::int64_t last = rows.count - 1;
  std::int64_t j = y + M - 1 + radius;
  std::int64_t end = y - radius;
  if (border == Border::Rescale) {
    j = std::min(j, last);
    end = std::max(end, std::int64_t{0});
  }
  const float* at = rows.at + (std::clamp(j, std::int64_t{0}, last) - rows.low) * rows.stride + x;
  FloatVector sum[M][kStripVectors] = {};

  // Adds input row j to the outputs y + First .. y + Last, and moves to the row above.
  const auto add = [&]<int First, int Last>() {
    FloatVector v[kStripVectors];
#pragma GCC unroll 8
    for (int i = 0; i < kStripVectors; ++i) load(at + i * kLanes, v[i]);
    const std::ptrdiff_t tap = radius + y - j;
#pragma GCC unroll 8
    for (int m = First; m <= Last; ++m) {
#pragma GCC unroll 8
      for (int i = 0; i < kStripVectors; ++i) sum[m][i] += kernel.taps()[tap + m] * v[i];
    }
    if (j <= last && j > 0) at -= rows.stride;
  };
  if constexpr (M == 3) {
    if (j == y + 2 + radius) {
      add.template operator()<2, 2>();
      --j;
    }
    if (j == y + 1 + radius) {
      add.template operator()<1, 2>();
      --j;
    }
  }
  const std::int64_t stop = std::max(y + M - 1 - radius, end);
  for (; j >= stop; --j) add.template operator()<0, M - 1>();
  if constexpr (M == 3) {
    if (j >= end) {
      add.template operator()<0, 1>();
      --j;
    }
    if (j >= end) add.template operator()<0, 0>();
  }

#pragma GCC unroll 8
  for (int m = 0; m < M; ++m) {
#pragma GCC unroll 8
    for (int i = 0; i < kStripVectors; ++i) store(sum[m][i], out + m * outStride + i * kLanes);
  }
}

// The same for a strip of which only `width` columns are written.
template <int M>
void filterPartOfStrip(const Rows& rows, std::ptrdiff_t x, std::int64_t y, const Kernel& kernel,
                       Border border, std::ptrdiff_t width, float* out, std::ptrdiff_t outStride) {
  float sums[M * kStrip];
  filterStrip<M>(rows, x, y, kernel, border, sums, kStrip);
  for (int m = 0; m < M; ++m) std::copy_n(sums + m * kStrip, width, out + m * outStride);
}

template <int M>
void filterRowsOfStrips(const Rows& rows, std::int64_t y, std::ptrdiff_t width,
                        const Kernel& kernel, Border border, float* out, std::ptrdiff_t outStride) {
  std::ptrdiff_t x = 0;
  for (; x + kStrip <= width; x += kStrip) {
    filterStrip<M>(rows, x, y, kernel, border, out + x, outStride);
  }
  if (x < width) {
    filterPartOfStrip<M>(rows, x, y, kernel, border, width - x, out + x, outStride);
  }
}

std::ptrdiff_t wholeBlocks(std::ptrdiff_t n, std::ptrdiff_t block) {
  return (n + block - 1) / block * block;
}

}  // namespace

Kernel::Kernel(float sigma, int order) { taps_.reset(gaussianKernel(sigma, radius_, order)); }

float Kernel::inside(int i, int n) const {
  float lost = 0.0F;
  for (std::int64_t k = -std::int64_t{radius_}; k <= radius_; ++k) {
    if (k > i || k <= std::int64_t{i} - n) lost += taps_[static_cast<std::size_t>(k + radius_)];
  }
  return 1.0F - lost;
}

std::ptrdiff_t rowBlocks(std::ptrdiff_t n) { return wholeBlocks(n, kRowBlock); }

void filterRow(const float* in, std::ptrdiff_t n, const Kernel& kernel, float* out) {
  onWidestPath([&] {
    for (std::ptrdiff_t i = 0; i < n; i += kRowBlock) {
      filterBlock(in + i, kernel.taps(), kernel.radius(), out + i);
    }
  });
}

std::ptrdiff_t columnStrips(std::ptrdiff_t width) { return wholeBlocks(width, kStrip); }

void filterColumns(const Rows& rows, int first, int last, std::ptrdiff_t width,
                   const Kernel& kernel, Border border, float* out, std::ptrdiff_t outStride) {
  onWidestPath([&] {
    int y = first;
    for (; y + kStripRows <= last; y += kStripRows) {
      filterRowsOfStrips<kStripRows>(rows, y, width, kernel, border, out + (y - first) * outStride,
                                     outStride);
    }
    for (; y < last; ++y) {
      filterRowsOfStrips<1>(rows, y, width, kernel, border, out + (y - first) * outStride,
                            outStride);
    }
  });
  if (border == Border::Repeat) return;
  for (int y = first; y < last; ++y) {
    if (y >= kernel.radius() && y < rows.count - kernel.radius()) continue;  // all taps inside
    const float inside = kernel.inside(y, rows.count);
    float* row = out + (y - first) * outStride;
    for (std::ptrdiff_t x = 0; x < width; ++x) row[x] /= inside;
  }
}

}  // namespace orva::scalespace
