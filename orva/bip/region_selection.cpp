#include <iostream>
#include <vector>

#include "orva/bip/bip.h"

namespace orva::bip {
namespace {

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
  const int limit = maxSize < 0 ? mask.npix() : maxSize;
  int n = 0;
  const image<short> labels = labelObjects(mask, n);
  const std::vector<RegionFeature> features = regionFeatures(labels, n);
  // Intended: region 0 stays, whatever its size.
  eraseRegions(mask, labels, 1, features,
               [=](const RegionFeature& f) { return f.npix < minSize || f.npix > limit; });
}

}  // namespace orva::bip
