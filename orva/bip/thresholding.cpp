#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <limits>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/float_conversion.h"
#include "orva/image/unset_image.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"

namespace orva::bip {
namespace {

constexpr std::ptrdiff_t kTogether = 2048;  // pixels that are read at once

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

// 255 where a value is at least `least`, else 0.
template <class T>
void markFrom(const T* from, std::ptrdiff_t count, T least, unsigned char* to) {
  onWidestPath([=] {
    ORVA_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) to[i] = from[i] >= least ? 255 : 0;
  });
}

// Of whole numbers that a float holds: those are at least t that are at least t rounded up.
template <class T>
void thresholdWhole(const T* from, image<unsigned char>& mask, float t) {
  constexpr auto kLeast = static_cast<float>(std::numeric_limits<T>::min());
  constexpr auto kMost = static_cast<float>(std::numeric_limits<T>::max());
  if (t <= kMost) {
    markFrom(from, mask.npix(), static_cast<T>(std::ceil(std::max(t, kLeast))), mask.pixels());
  } else {
    std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(0));
  }
}

image<short> labelObjects(const image<unsigned char>& mask, int& n) {
  return regions(mask, n, 255, 1, NEIGHBORHOOD_4);
}

// Sets to 0 the mask pixels whose label is at least `first` and whose region is unwanted.
template <class IsUnwanted>
void eraseRegions(image<unsigned char>& mask, const image<short>& labels, short first,
                  const std::vector<RegionFeature>& features, IsUnwanted isUnwanted) {
  for (int i = 0; i < labels.npix(); ++i) {
    const short k = labels.pixels()[i];
    if (k >= first && isUnwanted(features[static_cast<std::size_t>(k)])) mask.pixels()[i] = 0;
  }
}

}  // namespace

image<unsigned char> threshold(const Image& img, float t) {
  if (img.isNull()) return image<unsigned char>(0, 1, 1, 1, 1);
  image<unsigned char> mask = unsetImage<unsigned char>(img.nx(), img.ny(), img.nz(), 1, 1);
  if (const auto* bytes = ownImage<unsigned char>(img)) {
    thresholdWhole(bytes->pixels(), mask, t);
  } else if (const auto* shorts = ownImage<short>(img)) {
    thresholdWhole(shorts->pixels(), mask, t);
  } else {
    PixelFloats pixels(img);
    for (std::ptrdiff_t i = 0; i < mask.npix(); i += kTogether) {
      const std::ptrdiff_t count = std::min(kTogether, mask.npix() - i);
      markFrom(pixels.read(i, count), count, t, mask.pixels() + i);
    }
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
  const image<unsigned char> blobs = scalespace::features(img, scale, LAPLACIAN_NEGATIVE, 1.0F);
  Mean foreground;
  Mean background;
  PixelFloats pixels(img);
  for (std::ptrdiff_t i = 0; i < blobs.npix(); i += kTogether) {
    const std::ptrdiff_t count = std::min(kTogether, blobs.npix() - i);
    const float* v = pixels.read(i, count);
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      (blobs.pixels()[i + k] == 255 ? foreground : background).add(v[k]);
    }
  }
  return (background.value() + foreground.value()) * 0.5F;
}

void selectRegions(image<unsigned char>& mask, const Image& brightness, float minMean,
                   int minSize) {
  if (mask.isNull()) return;
  int n = 0;
  const image<short> labels = labelObjects(mask, n);
  const std::vector<RegionFeature> features = regionFeatures(labels, n, brightness);
  if (features.empty()) {
    std::cerr << "bip::regionFeatures failed.\n";
    return;
  }
  eraseRegions(mask, labels, 0, features,
               [=](const RegionFeature& f) { return f.npix < minSize || minMean > f.mean; });
}

void selectRegionsBySize(image<unsigned char>& mask, int minSize, int maxSize) {
  if (mask.isNull() || minSize < 1) return;
  const int most = maxSize < 0 ? mask.npix() : maxSize;  // no region has more pixels
  int n = 0;
  const image<short> labels = labelObjects(mask, n);
  const std::vector<RegionFeature> features = regionFeatures(labels, n);
  // Intended: region 0 stays, whatever its size.
  eraseRegions(mask, labels, 1, features,
               [=](const RegionFeature& f) { return f.npix < minSize || f.npix > most; });
}

}  // namespace orva::bip
