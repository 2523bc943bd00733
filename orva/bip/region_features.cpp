#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/run_length_encoding.h"
#include "orva/image/float_conversion.h"
#include "orva/image/with_memory.h"

namespace orva::bip {
namespace {

template <class T>
std::vector<T> column(const std::vector<RegionFeature>& features, T RegionFeature::*field) {
  std::vector<T> values(features.size());
  std::transform(features.begin(), features.end(), values.begin(),
                 [field](const RegionFeature& f) { return f.*field; });
  return values;
}

// A run of pixels of one label in 0 .. n - 1.
struct LabelRun {
  std::size_t label;
  std::ptrdiff_t row;  // of all rows of the image
  std::ptrdiff_t first;
  std::ptrdiff_t end;  // past the last column
};

// Calls beginRow(i) for the index i of every row's first pixel, and visit(run) for every run of it,
// all in linear order.
template <class BeginRow, class Visit>
void forEachRun(const image<short>& labels, std::size_t n, BeginRow beginRow, Visit visit) {
  RunLengthEncoder<short> encoder;
  // Of sizes below zero whose product is positive the pixels are one row.
  const int nx = labels.nx() > 0 ? labels.nx() : labels.npix();
  const std::ptrdiff_t rows = labels.npix() / nx;
  for (std::ptrdiff_t y = 0; y < rows; ++y) {
    const short* row = labels.pixels() + y * nx;
    beginRow(y * nx);
    const int count = encoder.encodeEqual(row, nx);
    for (const Run *run = encoder.runs(), *last = run + count; run != last; ++run) {
      const short k = row[run->begin];
      if (k < 0 || static_cast<std::size_t>(k) >= n) continue;
      visit(LabelRun{static_cast<std::size_t>(k), y, run->begin, run->end});
    }
  }
}

struct CoordinateSums {
  std::int64_t x = 0;
  std::int64_t y = 0;
  std::int64_t z = 0;
};

void widen(RegionFeature& f, int x0, int x1, int y, int z) {
  if (f.npix == 0) {
    f.xmin = x0;
    f.xmax = x1;
    f.ymin = f.ymax = y;
    f.zmin = f.zmax = z;
    return;
  }
  // Branches, as most change nothing.
  if (x0 < f.xmin) f.xmin = x0;
  if (x1 > f.xmax) f.xmax = x1;
  if (y < f.ymin) f.ymin = y;
  if (y > f.ymax) f.ymax = y;
  f.zmax = z;  // rows come plane by plane
}

// Intended: the two constants are part of the contract; pi in full would round some radii
// differently.
int equivalentRadius(int npix, bool isPlane) {
  const double r = isPlane ? std::sqrt(npix / 3.14159) : std::pow(npix * 3.0 / 12.56636, 1.0 / 3.0);
  return std::max(static_cast<int>(static_cast<float>(r)), 1);
}

// The pixels of the first volume, run by run.
class Geometry {
 public:
  Geometry(const image<short>& labels, std::vector<RegionFeature>& features)
      : ny_(labels.ny()),
        rows_(labels.nx() > 0 ? std::ptrdiff_t{labels.ny()} * labels.nz() : 0),
        isPlane_(labels.nz() == 1),
        features_(features),
        sums_(features.size()) {}

  void beginRow(std::ptrdiff_t row) {
    addPart();
    isCounted_ = row < rows_;
    if (!isCounted_) return;
    z_ = static_cast<int>(row / ny_);
    y_ = static_cast<int>(row % ny_);
  }

  void add(const LabelRun& run) {
    if (!isCounted_) return;
    const int first = static_cast<int>(run.first);
    const int end = static_cast<int>(run.end);
    const int n = end - first;
    const std::int64_t x = (std::int64_t{first} + end - 1) * n / 2;
    if (part_.n == 0 || part_.label != run.label) {
      addPart();
      part_ = {run.label, first, end, n, x};
    } else {
      part_.end = end;
      part_.n += n;
      part_.x += x;
    }
  }

  void finish() {
    addPart();
    for (std::size_t k = 0; k < features_.size(); ++k) {
      RegionFeature& f = features_[k];
      if (f.npix == 0) continue;
      f.cx = static_cast<int>(sums_[k].x / f.npix);
      f.cy = static_cast<int>(sums_[k].y / f.npix);
      f.cz = static_cast<int>(sums_[k].z / f.npix);
      f.radius = equivalentRadius(f.npix, isPlane_);
    }
  }

 private:
  // Runs of one label that follow each other in a row.
  struct Part {
    std::size_t label = 0;
    int first = 0;
    int end = 0;
    int n = 0;           // pixels
    std::int64_t x = 0;  // the sum of their columns
  };

  // Adds the latest runs to their region.
  void addPart() {
    if (part_.n == 0) return;
    RegionFeature& f = features_[part_.label];
    widen(f, part_.first, part_.end - 1, y_, z_);
    f.npix += part_.n;
    CoordinateSums& sums = sums_[part_.label];
    sums.x += part_.x;
    sums.y += std::int64_t{y_} * part_.n;
    sums.z += std::int64_t{z_} * part_.n;
    part_.n = 0;
  }

  int ny_;
  std::ptrdiff_t rows_;  // of the first volume
  bool isPlane_;
  bool isCounted_ = false;  // whether the row lies in it
  Part part_;
  int y_ = 0;
  int z_ = 0;
  std::vector<RegionFeature>& features_;
  std::vector<CoordinateSums> sums_;
};

// Single-precision sums, one a label, of which that of the latest stays at hand.
class Sums {
 public:
  explicit Sums(std::size_t n) : sums_(n) {}

  // The sum of a label, to be added to until the next call.
  float& of(std::size_t label) {
    if (label != label_) {
      if (label_ < sums_.size()) sums_[label_] = sum_;
      label_ = label;
      sum_ = sums_[label];
    }
    return sum_;
  }

  // All sums; no more are added.
  const std::vector<float>& all() {
    if (label_ < sums_.size()) sums_[label_] = sum_;
    return sums_;
  }

 private:
  std::vector<float> sums_;
  std::size_t label_ = std::numeric_limits<std::size_t>::max();
  float sum_ = 0.0F;
};

// Ascending, with every NaN at the end.
bool precedes(float a, float b) { return a < b || (!std::isnan(a) && std::isnan(b)); }

// Sorts whole numbers from 0 to 255.
void sortBytes(std::vector<float>& list) {
  constexpr std::size_t kFew = 64;  // below that, counting takes longer
  if (list.size() < kFew) return std::sort(list.begin(), list.end());
  std::array<std::size_t, 256> counts{};
  for (const float v : list) ++counts[static_cast<unsigned char>(v)];
  auto to = list.begin();
  for (std::size_t v = 0; v < counts.size(); ++v) {
    to = std::fill_n(to, counts[v], static_cast<float>(v));
  }
}

void sortValues(std::vector<float>& list) {
  if (std::any_of(list.begin(), list.end(), [](float v) { return std::isnan(v); })) {
    std::sort(list.begin(), list.end(), precedes);
  } else {
    std::sort(list.begin(), list.end());  // which takes less time
  }
}

// Measures all but the brightness.
void measureGeometry(const image<short>& labels, std::vector<RegionFeature>& features) {
  Geometry geometry(labels, features);
  std::ptrdiff_t row = 0;
  forEachRun(
      labels, features.size(), [&](std::ptrdiff_t) { geometry.beginRow(row++); },
      [&](const LabelRun& run) { geometry.add(run); });
  geometry.finish();
}

// Measures all, with one walk for the geometry and the means and one for the variances.
void measureAll(const image<short>& labels, const Image& brightness,
                std::vector<RegionFeature>& features) {
  const std::size_t n = features.size();
  const int nx = labels.nx() > 0 ? labels.nx() : labels.npix();
  PixelFloats pixels(brightness);
  const float* row = nullptr;
  Geometry geometry(labels, features);
  Sums sums(n);
  forEachRun(
      labels, n,
      [&](std::ptrdiff_t first) {
        geometry.beginRow(first / nx);
        row = pixels.read(first, nx);
      },
      [&](const LabelRun& run) {
        geometry.add(run);
        float& total = sums.of(run.label);
        float sum = total;
        for (std::ptrdiff_t x = run.first; x < run.end; ++x) sum += row[x];
        total = sum;
      });
  geometry.finish();
  for (std::size_t k = 0; k < n; ++k) {
    RegionFeature& f = features[k];
    f.mean = sums.all()[k];
    if (f.npix > 0) f.mean /= static_cast<float>(f.npix);
  }

  Sums squares(n);
  forEachRun(
      labels, n, [&](std::ptrdiff_t first) { row = pixels.read(first, nx); },
      [&](const LabelRun& run) {
        float& total = squares.of(run.label);
        float sum = total;
        const float mean = features[run.label].mean;
        for (std::ptrdiff_t x = run.first; x < run.end; ++x) {
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

std::vector<std::vector<float>> listed(const image<short>& labels, int n, const Image& brightness,
                                       bool sorted) {
  const auto count = static_cast<std::size_t>(std::max(n, 0));
  std::vector<std::ptrdiff_t> sizes(count);
  forEachRun(
      labels, count, [](std::ptrdiff_t) {},
      [&](const LabelRun& run) { sizes[run.label] += run.end - run.first; });
  std::vector<std::vector<float>> lists(count);
  for (std::size_t k = 0; k < count; ++k) lists[k].reserve(static_cast<std::size_t>(sizes[k]));
  PixelFloats pixels(brightness);
  const int nx = labels.nx() > 0 ? labels.nx() : labels.npix();
  const float* row = nullptr;
  forEachRun(
      labels, count, [&](std::ptrdiff_t first) { row = pixels.read(first, nx); },
      [&](const LabelRun& run) {
        std::vector<float>& list = lists[run.label];
        list.insert(list.end(), row + run.first, row + run.end);
      });
  if (sorted) {
    const bool areBytes = ownImage<unsigned char>(brightness) != nullptr;
    std::for_each(lists.begin(), lists.end(), areBytes ? sortBytes : sortValues);
  }
  return lists;
}

}  // namespace

std::vector<RegionFeature> regionFeatures(const image<short>& labels, int n,
                                          const Image& brightness) {
  if (labels.isNull()) return {};
  return withMemory([&] { return measured(labels, n, brightness); });
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
  return withMemory([&] { return listed(labels, n, brightness, sorted); });
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
