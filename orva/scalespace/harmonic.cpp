#include <algorithm>
#include <cstddef>
#include <memory>

#include "orva/scalespace/line_memory.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"

namespace orva::scalespace {
namespace {

// One step: the interior of `after` from `before`, whose border it has already.
void relax(const float* before, const unsigned char* mask, std::ptrdiff_t nx, std::ptrdiff_t ny,
           float* after) {
  onWidestPath([=] {
    for (std::ptrdiff_t y = 1; y < ny - 1; ++y) {
      for (std::ptrdiff_t i = y * nx + 1; i < y * nx + nx - 1; ++i) {
        const float mean =
            0.25F * (before[i - 1] + before[i + 1] + before[i - nx] + before[i + nx]);
        after[i] = mask[i] == 255 ? mean : before[i];
      }
    }
  });
}

}  // namespace

void laplaceEquation(image<float>& f, const image<unsigned char>& mask) {
  if (f.isNull() || mask.isNull() || mask.nx() != f.nx() || mask.ny() != f.ny()) return;
  constexpr int kSteps = 50;
  const std::ptrdiff_t nx = f.nx();
  const std::ptrdiff_t ny = f.ny();
  float* to = f.pixels();
  const auto scratch = newLine(static_cast<std::size_t>(nx * ny));
  std::copy_n(to, nx * ny, scratch.get());
  static_assert(kSteps % 2 == 0);  // there and back
  for (int step = 0; step < kSteps; step += 2) {
    relax(to, mask.pixels(), nx, ny, scratch.get());
    relax(scratch.get(), mask.pixels(), nx, ny, to);
  }
}

image<float> harmonicCut(const Image& img, float sigma, bool bright, int iterations) {
  image<float> result(img.nx(), img.ny(), 1, 1, 1);
  if (img.isNull()) return result;
  for (int i = 0; i < result.npix(); ++i) result.pixels()[i] = img.pixel(i);
  const FeatureType type = bright ? HESSIAN_MAXIMUM : HESSIAN_MINIMUM;
  for (int n = 0; n < iterations; ++n) laplaceEquation(result, features(result, sigma, type, 1.0F));
  return result;
}

image<unsigned char> hcut(const Image& img, float sigma1, float sigma2) {
  constexpr int kIterations = 10;
  const image<float> flattened = harmonicCut(img, sigma1, true, kIterations);
  return features(flattened, sigma2, LAPLACIAN_NEGATIVE, 1.0F);
}

Image* reduce(const Image& img, float factor, float sigma) {
  if (img.isNull() || factor <= 0.0F) return nullptr;
  const image<float> smoothed = smooth(img, sigma, 1.0F);
  const std::unique_ptr<Image> stored(img.clone());
  if (!stored || stored->npix() != smoothed.npix()) return nullptr;  // no clone, no float form
  for (int i = 0; i < smoothed.npix(); ++i) stored->setPixel(i, smoothed.pixels()[i]);
  const auto reduced = [factor](int size) {
    const int n = truncateTo<int>(static_cast<float>(size) * factor);
    return n < 2 ? 1 : n;
  };
  return stored->scale(reduced(img.nx()), reduced(img.ny()), reduced(img.nframes()));
}

}  // namespace orva::scalespace
