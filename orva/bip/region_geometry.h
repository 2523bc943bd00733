// Bounding boxes, centroids and sizes of labelled regions. For the library's own sources; not
// installed.
#ifndef ORVA_BIP_REGION_GEOMETRY_H
#define ORVA_BIP_REGION_GEOMETRY_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/label_runs.h"

namespace orva::bip {

struct CoordinateSums {
  std::int64_t x = 0;
  std::int64_t y = 0;
  std::int64_t z = 0;
};

inline void widen(RegionFeature& f, int x0, int x1, int y, int z) {
  if (f.npix == 0) {
    f.xmin = x0;
    f.xmax = x1;
    f.ymin = f.ymax = y;
    f.zmin = f.zmax = z;
    return;
  }
  // Branches predict well here: few runs widen the box.
  if (x0 < f.xmin) f.xmin = x0;
  if (x1 > f.xmax) f.xmax = x1;
  if (y < f.ymin) f.ymin = y;
  if (y > f.ymax) f.ymax = y;
  f.zmax = z;  // rows come plane by plane
}

// Intended: the two constants are part of the contract; pi in full would round some radii
// differently.
inline int equivalentRadius(int npix, bool isPlane) {
  const double r = isPlane ? std::sqrt(npix / 3.14159) : std::pow(npix * 3.0 / 12.56636, 1.0 / 3.0);
  return std::max(static_cast<int>(static_cast<float>(r)), 1);
}

// Accumulates the geometry of the regions of a label image from its runs, in linear order. Pixels
// behind the first volume are ignored.
class RegionGeometry {
 public:
  RegionGeometry(const image<short>& labels, std::vector<RegionFeature>& features)
      : ny_(labels.ny()),
        rows_(labels.nx() > 0 ? std::ptrdiff_t{labels.ny()} * labels.nz() : 0),
        isPlane_(labels.nz() == 1),
        features_(features),
        sums_(features.size()) {}

  // Begins row `row`, counted over the whole image.
  void beginRow(std::ptrdiff_t row) {
    addPart();
    isCounted_ = row < rows_;
    if (!isCounted_) return;
    z_ = static_cast<int>(row / ny_);
    y_ = static_cast<int>(row % ny_);
  }

  void add(const LabelRun& run) {
    if (!isCounted_) return;
    const int first = static_cast<int>(run.begin);
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

  // Adds what was accumulated from rows behind those of this object.
  void append(RegionGeometry& later) {
    addPart();
    later.addPart();
    for (std::size_t k = 0; k < features_.size(); ++k) {
      const RegionFeature& other = later.features_[k];
      if (other.npix == 0) continue;
      RegionFeature& f = features_[k];
      if (f.npix == 0) {
        f = other;
      } else {
        f.xmin = std::min(f.xmin, other.xmin);
        f.xmax = std::max(f.xmax, other.xmax);
        f.ymin = std::min(f.ymin, other.ymin);
        f.ymax = std::max(f.ymax, other.ymax);
        f.zmax = other.zmax;
        f.npix += other.npix;
      }
      sums_[k].x += later.sums_[k].x;
      sums_[k].y += later.sums_[k].y;
      sums_[k].z += later.sums_[k].z;
    }
  }

  // Completes all records but for their brightness.
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
  // Runs of one label that follow each other in a row: a region often has several, which are added
  // to its record at once.
  struct Part {
    std::size_t label = 0;
    int first = 0;
    int end = 0;
    int n = 0;           // number of pixels
    std::int64_t x = 0;  // sum of their columns
  };

  // Adds the latest part to its region.
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
  std::ptrdiff_t rows_;  // number of rows in the first volume
  bool isPlane_;
  bool isCounted_ = false;  // whether the row lies in the first volume
  Part part_;
  int y_ = 0;
  int z_ = 0;
  std::vector<RegionFeature>& features_;
  std::vector<CoordinateSums> sums_;
};

}  // namespace orva::bip

#endif
