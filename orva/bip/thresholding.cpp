#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <limits>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/float_conversion.h"
#include "orva/image/uninitialized_image.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {
namespace {

constexpr std::ptrdiff_t kBlock = 2048;  // pixels per conversion to floats

// The mean of the values added, summed in single precision; 0 for none.
class Mean {
 public:
  void add(float v) {
    sum_ += v;
    ++count_;
  }
  float value() const { return count_ > 0 ? sum_ / static_cast<float>(count_) : 0.0F; }

 private:
  float sum_ = 0.0F;
  int count_ = 0;
};

// 255 where a value is at least `min`, else 0.
template <class T>
void markFrom(const T* from, std::ptrdiff_t count, T min, unsigned char* to) {
  parallelPixels(count, [=](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t i = begin; i < end; ++i) to[i] = from[i] >= min ? 255 : 0;
    });
  });
}

// For an integer type whose values all fit a float: v >= t where v >= ceil(t).
template <class T>
void thresholdWhole(const T* from, image<unsigned char>& mask, float t) {
  constexpr auto kMin = static_cast<float>(std::numeric_limits<T>::min());
  constexpr auto kMax = static_cast<float>(std::numeric_limits<T>::max());
  if (t <= kMax) {
    markFrom(from, mask.npix(), static_cast<T>(std::ceil(std::max(t, kMin))), mask.pixels());
  } else {
    std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(0));
  }
}

}  // namespace

image<unsigned char> threshold(const Image& img, float t) {
  if (img.isNull()) return image<unsigned char>(0, 1, 1, 1, 1);
  const Step step("threshold", 0, 1);
  image<unsigned char> mask = uninitializedImage<unsigned char>(img.nx(), img.ny(), img.nz(), 1, 1);
  if (const auto* bytes = ownImage<unsigned char>(img)) {
    thresholdWhole(bytes->pixels(), mask, t);
  } else if (const auto* shorts = ownImage<short>(img)) {
    thresholdWhole(shorts->pixels(), mask, t);
  } else {
    parallelPixels(mask.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      PixelFloats pixels(img);
      for (std::ptrdiff_t i = begin; i < end; i += kBlock) {
        const std::ptrdiff_t count = std::min(kBlock, end - i);
        markFrom(pixels.read(i, count), count, t, mask.pixels() + i);
      }
    });
  }
  return mask;
}

float computeThreshold(const Image& img, float scale) {
  if (img.isNull()) {
    std::cerr << "Warning: \n"
              << "In bip::computeThreshold, input image is empty!\n"
              << "0 returned\n";
    return 0.0F;
  }
  const Step step("threshold", 0, 1);
  const image<unsigned char> blobs = scalespace::features(img, scale, LAPLACIAN_NEGATIVE, 1.0F);
  Mean foreground;
  Mean background;
  PixelFloats pixels(img);
  for (std::ptrdiff_t i = 0; i < blobs.npix(); i += kBlock) {
    if (i % kPixelsPerTask == 0) checkpoint();
    const std::ptrdiff_t count = std::min(kBlock, blobs.npix() - i);
    const float* v = pixels.read(i, count);
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      (blobs.pixels()[i + k] == 255 ? foreground : background).add(v[k]);
    }
  }
  return (background.value() + foreground.value()) * 0.5F;
}

std::vector<int> histogram(const image<unsigned char>& img, int low, int high) {
  std::vector<int> counts(256);
  std::for_each(img.pixels(), img.pixels() + img.npix(), [&](unsigned char v) {
    if (low <= v && v <= high) ++counts[v];
  });
  return counts;
}

}  // namespace orva::bip
