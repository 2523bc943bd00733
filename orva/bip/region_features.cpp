#include <algorithm>
#include <cstddef>
#include <iostream>
#include <limits>
#include <optional>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/label_runs.h"
#include "orva/bip/region_geometry.h"
#include "orva/image/bad_alloc.h"
#include "orva/image/float_conversion.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {
namespace {

template <class T>
std::vector<T> column(const std::vector<RegionFeature>& features, T RegionFeature::*field) {
  std::vector<T> values(features.size());
  std::transform(features.begin(), features.end(), values.begin(),
                 [field](const RegionFeature& f) { return f.*field; });
  return values;
}

// A single-precision sum per label. That of the latest label is cached, as runs of one label often
// follow each other.
class LabelSums {
 public:
  explicit LabelSums(std::size_t n) : sums_(n) {}

  // The sum of a label, to add to until the next call.
  float& of(std::size_t label) {
    if (label != label_) {
      if (label_ < sums_.size()) sums_[label_] = sum_;
      label_ = label;
      sum_ = sums_[label];
    }
    return sum_;
  }

  // All sums, after the last addition.
  const std::vector<float>& all() {
    if (label_ < sums_.size()) sums_[label_] = sum_;
    return sums_;
  }

 private:
  std::vector<float> sums_;
  std::size_t label_ = std::numeric_limits<std::size_t>::max();
  float sum_ = 0.0F;
};

std::ptrdiff_t rowCount(const image<short>& labels) { return labels.npix() / rowWidth(labels); }

void addRows(const image<short>& labels, std::size_t n, std::ptrdiff_t first, std::ptrdiff_t end,
             RegionGeometry& geometry) {
  std::ptrdiff_t row = first;
  forEachLabelRun(
      labels, first, end, n, [&](std::ptrdiff_t) { geometry.beginRow(row++); },
      [&](const LabelRun& run) { geometry.add(run); });
}

// The rows of each task. Every task has records of all regions, which must not be most of the work.
Parts measuredParts(const image<short>& labels, std::size_t n) {
  constexpr std::ptrdiff_t kPixels = std::ptrdiff_t{1} << 19U;
  constexpr std::ptrdiff_t kPixelsPerRegion = 64;
  const std::ptrdiff_t pixels =
      std::max(kPixels, kPixelsPerRegion * static_cast<std::ptrdiff_t>(n));
  return {rowCount(labels), pixels / rowWidth(labels) + 1};
}

void measureGeometry(const image<short>& labels, std::vector<RegionFeature>& features) {
  const std::size_t n = features.size();
  RegionGeometry geometry(labels, features);
  const Parts parts = measuredParts(labels, n);
  if (!hasRunner() || parts.count() < 2) {
    addRows(labels, n, 0, rowCount(labels), geometry);
  } else {
    std::vector<std::vector<RegionFeature>> records(parts.count());
    std::vector<std::optional<RegionGeometry>> geometries(parts.count());
    parallelFor(parts.count(), [&](std::size_t k) {
      records[k].resize(n);
      geometries[k].emplace(labels, records[k]);
      addRows(labels, n, parts.begin(k), parts.end(k), *geometries[k]);
    });
    for (std::optional<RegionGeometry>& part : geometries) geometry.append(*part);
  }
  geometry.finish();
}

// Two passes: geometry and mean, then variance. Serial, as the sums of a region are in the order of
// its pixels; tasks for the regions within bands of rows took longer.
void measureAll(const image<short>& labels, const Image& brightness,
                std::vector<RegionFeature>& features) {
  const std::size_t n = features.size();
  const int nx = rowWidth(labels);
  PixelFloats pixels(brightness);
  const float* row = nullptr;
  RegionGeometry geometry(labels, features);
  LabelSums sums(n);
  forEachLabelRun(
      labels, n,
      [&](std::ptrdiff_t first) {
        geometry.beginRow(first / nx);
        row = pixels.read(first, nx);
      },
      [&](const LabelRun& run) {
        geometry.add(run);
        float& total = sums.of(run.label);
        float sum = total;
        for (std::ptrdiff_t x = run.begin; x < run.end; ++x) sum += row[x];
        total = sum;
      });
  geometry.finish();
  for (std::size_t k = 0; k < n; ++k) {
    RegionFeature& f = features[k];
    f.mean = sums.all()[k];
    if (f.npix > 0) f.mean /= static_cast<float>(f.npix);
  }

  LabelSums squares(n);
  forEachLabelRun(
      labels, n, [&](std::ptrdiff_t first) { row = pixels.read(first, nx); },
      [&](const LabelRun& run) {
        float& total = squares.of(run.label);
        float sum = total;
        const float mean = features[run.label].mean;
        for (std::ptrdiff_t x = run.begin; x < run.end; ++x) {
          const float d = row[x] - mean;
          sum += d * d;
        }
        total = sum;
      });
  for (std::size_t k = 0; k < n; ++k) {
    RegionFeature& f = features[k];
    f.var = f.npix > 1 ? squares.all()[k] / static_cast<float>(f.npix - 1) : 0.0F;
  }
}

std::vector<RegionFeature> measured(const image<short>& labels, int n, const Image& brightness) {
  std::vector<RegionFeature> features(static_cast<std::size_t>(std::max(n, 0)));
  const Step step("region features", 0, 1);
  if (!brightness.isNull() && brightness.equalSize(labels)) {
    measureAll(labels, brightness, features);
    return features;
  }
  measureGeometry(labels, features);
  if (!brightness.isNull()) {
    std::cerr << "In bip::regionFeatures\n"
              << "   Warning: label and brightness must have the same size\n"
              << "   Brightness image ignored\n";
  }
  return features;
}

}  // namespace

std::vector<RegionFeature> regionFeatures(const image<short>& labels, int n,
                                          const Image& brightness) {
  if (labels.isNull()) return {};
  return exitOnBadAlloc([&] { return measured(labels, n, brightness); });
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
