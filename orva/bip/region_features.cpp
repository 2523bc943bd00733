#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>

#include "orva/bip/bip.h"

namespace orva::bip {
namespace {

template <class T>
std::vector<T> column(const std::vector<RegionFeature>& features, T RegionFeature::*field) {
  std::vector<T> values(features.size());
  std::transform(features.begin(), features.end(), values.begin(),
                 [field](const RegionFeature& f) { return f.*field; });
  return values;
}

struct CoordinateSums {
  std::int64_t x = 0;
  std::int64_t y = 0;
  std::int64_t z = 0;
};

void widen(RegionFeature& f, int x, int y, int z) {
  if (f.npix == 0) {
    f.xmin = f.xmax = x;
    f.ymin = f.ymax = y;
    f.zmin = f.zmax = z;
    return;
  }
  f.xmin = std::min(f.xmin, x);
  f.xmax = std::max(f.xmax, x);
  f.ymin = std::min(f.ymin, y);
  f.ymax = std::max(f.ymax, y);
  f.zmin = std::min(f.zmin, z);
  f.zmax = std::max(f.zmax, z);
}

// Intended: the two constants are part of the contract; pi in full would round some radii
// differently.
int equivalentRadius(int npix, bool isPlane) {
  const double r = isPlane ? std::sqrt(npix / 3.14159) : std::pow(npix * 3.0 / 12.56636, 1.0 / 3.0);
  return std::max(static_cast<int>(static_cast<float>(r)), 1);
}

void measureGeometry(const image<short>& labels, std::vector<RegionFeature>& features) {
  std::vector<CoordinateSums> sums(features.size());
  const short* label = labels.pixels();
  for (int z = 0; z < labels.nz(); ++z) {
    for (int y = 0; y < labels.ny(); ++y) {
      for (int x = 0; x < labels.nx(); ++x, ++label) {
        if (*label < 0 || static_cast<std::size_t>(*label) >= features.size()) continue;
        const auto k = static_cast<std::size_t>(*label);
        widen(features[k], x, y, z);
        sums[k].x += x;
        sums[k].y += y;
        sums[k].z += z;
        ++features[k].npix;
      }
    }
  }
  for (std::size_t k = 0; k < features.size(); ++k) {
    RegionFeature& f = features[k];
    if (f.npix == 0) continue;
    f.cx = static_cast<int>(sums[k].x / f.npix);
    f.cy = static_cast<int>(sums[k].y / f.npix);
    f.cz = static_cast<int>(sums[k].z / f.npix);
    f.radius = equivalentRadius(f.npix, labels.nz() == 1);
  }
}

// Ascending, with every NaN at the end.
bool precedes(float a, float b) { return a < b || (!std::isnan(a) && std::isnan(b)); }

// Calls visit(k, i) for every pixel i, in linear order, whose label k lies in 0 .. n - 1.
template <class Visit>
void forEachLabelled(const image<short>& labels, std::size_t n, Visit visit) {
  for (int i = 0; i < labels.npix(); ++i) {
    const short k = labels.pixels()[i];
    if (k >= 0 && static_cast<std::size_t>(k) < n) visit(static_cast<std::size_t>(k), i);
  }
}

void measureBrightness(const image<short>& labels, const Image& brightness,
                       std::vector<RegionFeature>& features) {
  forEachLabelled(labels, features.size(),
                  [&](std::size_t k, int i) { features[k].mean += brightness.pixel(i); });
  for (RegionFeature& f : features) {
    if (f.npix > 0) f.mean /= static_cast<float>(f.npix);
  }
  forEachLabelled(labels, features.size(), [&](std::size_t k, int i) {
    const float d = brightness.pixel(i) - features[k].mean;
    features[k].var += d * d;
  });
  for (RegionFeature& f : features) {
    f.var = f.npix > 1 ? f.var / static_cast<float>(f.npix - 1) : 0.0F;
  }
}

}  // namespace

std::vector<RegionFeature> regionFeatures(const image<short>& labels, int n,
                                          const Image& brightness) {
  if (labels.isNull()) return {};
  std::vector<RegionFeature> features(static_cast<std::size_t>(std::max(n, 0)));
  measureGeometry(labels, features);
  if (brightness.isNull()) return features;
  if (!brightness.equalSize(labels)) {
    std::cerr << "In bip::regionFeatures\n"
              << "   Warning: label and brightness must have the same size\n"
              << "   Brightness image ignored\n";
    return features;
  }
  measureBrightness(labels, brightness, features);
  return features;
}

std::vector<RegionFeature> regionFeatures(const image<short>& labels, const Image& brightness) {
  return regionFeatures(labels, regionNumber(labels), brightness);
}

std::vector<RegionFeature> regionFeatures(const image<short>& labels, int n) {
  return regionFeatures(labels, n, image<unsigned char>(0, 1, 1, 1, 1));
}

std::vector<RegionFeature> regionFeatures(const image<short>& labels) {
  return regionFeatures(labels, regionNumber(labels));
}

std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels, int n,
                                                      const Image& brightness, bool sorted) {
  if (labels.isNull() || brightness.isNull() || !brightness.equalSize(labels)) return {};
  const auto count = static_cast<std::size_t>(std::max(n, 0));
  std::vector<std::size_t> sizes(count);
  forEachLabelled(labels, count, [&](std::size_t k, int) { ++sizes[k]; });
  std::vector<std::vector<float>> lists(count);
  for (std::size_t k = 0; k < count; ++k) lists[k].reserve(sizes[k]);
  forEachLabelled(labels, count,
                  [&](std::size_t k, int i) { lists[k].push_back(brightness.pixel(i)); });
  if (sorted) {
    for (std::vector<float>& list : lists) std::sort(list.begin(), list.end(), precedes);
  }
  return lists;
}

std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels,
                                                      const Image& brightness, bool sorted) {
  return regionIntensityArrays(labels, regionNumber(labels), brightness, sorted);
}

std::vector<int> histogram(const image<unsigned char>& img, int low, int high) {
  std::vector<int> counts(256);
  std::for_each(img.pixels(), img.pixels() + img.npix(), [&](unsigned char v) {
    if (low <= v && v <= high) ++counts[v];
  });
  return counts;
}

}  // namespace orva::bip

namespace orva {

std::vector<int> RegionFeature::npixArray(const std::vector<RegionFeature>& features) {
  return bip::column(features, &RegionFeature::npix);
}

std::vector<float> RegionFeature::meanArray(const std::vector<RegionFeature>& features) {
  return bip::column(features, &RegionFeature::mean);
}

std::vector<float> RegionFeature::varArray(const std::vector<RegionFeature>& features) {
  return bip::column(features, &RegionFeature::var);
}

}  // namespace orva
