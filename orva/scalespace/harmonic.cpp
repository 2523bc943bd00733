#include <algorithm>
#include <cstddef>

#include "orva/image/float_conversion.h"
#include "orva/scalespace/line_buffer.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::scalespace {
namespace {

// One Jacobi step from `before` to the interior of `after`, whose border is set.
void relax(const float* before, const unsigned char* mask, std::ptrdiff_t nx, std::ptrdiff_t ny,
           float* after) {
  parallelParts(rowParts(nx, ny), [=](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=] {
      for (std::ptrdiff_t y = std::max<std::ptrdiff_t>(begin, 1); y < std::min(end, ny - 1); ++y) {
        for (std::ptrdiff_t i = y * nx + 1; i < y * nx + nx - 1; ++i) {
          const float mean =
              0.25F * (before[i - 1] + before[i + 1] + before[i - nx] + before[i + nx]);
          after[i] = mask[i] == 255 ? mean : before[i];
        }
      }
    });
  });
}

}  // namespace

void laplaceEquation(image<float>& f, const image<unsigned char>& mask) {
  if (f.isNull() || mask.isNull() || mask.nx() != f.nx() || mask.ny() != f.ny()) return;
  constexpr int kSteps = 50;
  const std::ptrdiff_t nx = f.nx();
  const std::ptrdiff_t ny = f.ny();
  // What may be stopped works on a copy.
  const image<float> work = isCancellable() ? f.duplicate() : f;
  float* to = work.pixels();
  const auto scratch = newLineBuffer(static_cast<std::size_t>(nx * ny));
  std::copy_n(to, nx * ny, scratch.get());
  static_assert(kSteps % 2 == 0);  // so that the last step writes to f
  for (int k = 0; k < kSteps; k += 2) {
    const Step step("relaxation", static_cast<double>(k) / kSteps,
                    static_cast<double>(k + 2) / kSteps);
    relax(to, mask.pixels(), nx, ny, scratch.get());
    relax(scratch.get(), mask.pixels(), nx, ny, to);
  }
  if (to != f.pixels()) std::copy_n(to, nx * ny, f.pixels());
}

image<float> harmonicCut(const Image& img, float sigma, bool bright, int iterations) {
  image<float> result(img.nx(), img.ny(), 1, 1, 1);
  if (img.isNull()) return result;
  parallelPixels(result.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    readPixels(img, begin, end - begin, result.pixels() + begin);
  });
  const FeatureType type = bright ? HESSIAN_MAXIMUM : HESSIAN_MINIMUM;
  for (int n = 0; n < iterations; ++n) {
    const Step step("relaxation", static_cast<double>(n) / iterations,
                    static_cast<double>(n + 1) / iterations);
    laplaceEquation(result, features(result, sigma, type, 1.0F));
  }
  return result;
}

image<unsigned char> hcut(const Image& img, float sigma1, float sigma2) {
  constexpr int kIterations = 10;
  const Step step("relaxation", 0, 1);
  const image<float> flattened = harmonicCut(img, sigma1, true, kIterations);
  return features(flattened, sigma2, LAPLACIAN_NEGATIVE, 1.0F);
}

}  // namespace orva::scalespace
