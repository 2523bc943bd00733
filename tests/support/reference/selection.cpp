#include "tests/support/reference/selection.h"

#include <cstddef>
#include <vector>

#include "tests/support/reference/bip.h"
#include "tests/support/reference/scalespace.h"

namespace orva::reference {

image<unsigned char> threshold(const Image& img, float t) {
  if (img.isNull()) return {0, 1, 1, 1, 1};
  image<unsigned char> mask(img.nx(), img.ny(), img.nz(), 1, 1);
  for (int i = 0; i < mask.npix(); ++i) {
    mask.pixels()[i] = static_cast<unsigned char>(img.pixel(i) >= t ? 255 : 0);
  }
  return mask;
}

float computeThreshold(const Image& img, float scale) {
  const image<unsigned char> f = reference::features(img, scale, 1, 1.0F);
  const auto meanOf = [&](bool inside) {
    float sum = 0.0F;
    int count = 0;
    for (int i = 0; i < f.npix(); ++i) {
      if ((f.pixels()[i] == 255) != inside) continue;
      sum += img.pixel(i);
      ++count;
    }
    return count > 0 ? sum / static_cast<float>(count) : 0.0F;
  };
  const float sum = meanOf(false) + meanOf(true);
  return sum * 0.5F;
}

void selectRegions(image<unsigned char>& mask, const Image& brightness, float minMean,
                   int minSize) {
  if (mask.isNull()) return;
  int n = 0;
  const image<short> labels = reference::regions(mask, n, 255, 1, 4);
  const std::vector<RegionFeature> features = reference::regionFeatures(labels, n, &brightness);
  for (int i = 0; i < labels.npix(); ++i) {
    const short k = labels.pixels()[i];
    if (k < 0) continue;
    const RegionFeature& f = features[static_cast<std::size_t>(k)];
    if (f.npix < minSize || minMean > f.mean) mask.pixels()[i] = 0;
  }
}

void selectRegionsBySize(image<unsigned char>& mask, int minSize, int maxSize) {
  if (mask.isNull() || minSize < 1) return;
  int n = 0;
  const image<short> labels = reference::regions(mask, n, 255, 1, 4);
  const std::vector<RegionFeature> features = reference::regionFeatures(labels, n, nullptr);
  for (int i = 0; i < labels.npix(); ++i) {
    const short k = labels.pixels()[i];
    // The first region stays, whatever its size.
    if (k <= 0) continue;
    const int size = features[static_cast<std::size_t>(k)].npix;
    if (size < minSize || (maxSize >= 0 && size > maxSize)) mask.pixels()[i] = 0;
  }
}

}  // namespace orva::reference
