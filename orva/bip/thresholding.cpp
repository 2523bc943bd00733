#include <cstddef>
#include <iostream>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/scalespace/scalespace.h"

namespace orva::bip {
namespace {

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
  image<unsigned char> mask(img.nx(), img.ny(), img.nz(), 1, 1);
  for (int i = 0; i < mask.npix(); ++i) mask.pixels()[i] = img.pixel(i) >= t ? 255 : 0;
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
  for (int i = 0; i < blobs.npix(); ++i) {
    (blobs.pixels()[i] == 255 ? foreground : background).add(img.pixel(i));
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
