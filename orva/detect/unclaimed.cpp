#include "orva/detect/unclaimed.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "orva/detect/elementary.h"
#include "orva/detect/measure.h"
#include "orva/detect/quantile.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

constexpr int kBeyond = kFarPixels + 1;  // steps that stand for all greater distances
constexpr double kMadToDeviation = 1.4826;

// The steps along the axes from each pixel to the nearest one with a label, kBeyond at most.
image<unsigned char> stepsToLabels(const image<int>& labels) {
  const int nx = labels.nx();
  const int ny = labels.ny();
  image<unsigned char> steps(nx, ny, 1, 1, 1);
  const auto row = [&](int y) { return steps.pixels() + std::ptrdiff_t{y} * nx; };
  const auto lower = [](unsigned char& step, unsigned char neighbour) {
    step = std::min(step, static_cast<unsigned char>(neighbour + 1));
  };
  // Along the rows, then along the columns.
  parallelParts(rowParts(nx, ny), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (int y = static_cast<int>(begin); y < end; ++y) {
      unsigned char* const p = row(y);
      const int* const label = labels.pixels() + std::ptrdiff_t{y} * nx;
      std::transform(label, label + nx, p,
                     [](int k) { return static_cast<unsigned char>(k > 0 ? 0 : kBeyond); });
      for (int x = 1; x < nx; ++x) lower(p[x], p[x - 1]);
      for (int x = nx - 1; x > 0; --x) lower(p[x - 1], p[x]);
    }
  });
  parallelParts(rowParts(ny, nx), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (int y = 1; y < ny; ++y) {
      for (std::ptrdiff_t x = begin; x < end; ++x) lower(row(y)[x], row(y - 1)[x]);
    }
    for (int y = ny - 1; y > 0; --y) {
      for (std::ptrdiff_t x = begin; x < end; ++x) lower(row(y - 1)[x], row(y)[x]);
    }
  });
  return steps;
}

// What unlabelled components are compared with.
struct Standard {
  double medianArea = 0;
  float background = 0;
  float threshold = 0;
};

// False where there is nothing to compare with.
bool setStandard(const image<float>& plane, const image<int>& labels,
                 const image<unsigned char>& steps, Standard& r) {
  const int* const label = labels.pixels();
  const int n = labels.npix() > 0 ? *std::max_element(label, label + labels.npix()) : 0;
  if (n < kMinClaimed) return false;
  std::vector<std::vector<float>> regions(static_cast<std::size_t>(n));
  std::vector<float> background;
  const int stride = std::max(1, labels.npix() / kSampledBackground);
  for (int i = 0; i < labels.npix(); ++i) {
    if (i % kPixelsPerTask == 0) checkpoint();
    if (label[i] > 0) {
      regions[static_cast<std::size_t>(label[i] - 1)].push_back(plane.pixels()[i]);
    } else if (i % stride == 0 && steps.pixels()[i] == kBeyond) {
      background.push_back(plane.pixels()[i]);
    }
  }
  if (background.empty()) return false;
  std::vector<float> regionMedians(regions.size());
  parallelFor(regions.size(), [&](std::size_t k) {
    if (!regions[k].empty()) regionMedians[k] = quantile(regions[k], 0.5);
  });
  std::vector<float> areas;
  std::vector<float> medians;
  for (std::size_t k = 0; k < regions.size(); ++k) {
    if (regions[k].empty()) continue;
    areas.push_back(static_cast<float>(regions[k].size()));
    medians.push_back(regionMedians[k]);
  }
  r.medianArea = static_cast<double>(quantile(areas, 0.5));
  r.background = quantile(background, 0.5);
  for (float& v : background) v = std::fabs(v - r.background);
  const auto noise =
      static_cast<float>(kMadToDeviation * static_cast<double>(quantile(background, 0.5)));
  const float contrast = quantile(medians, kFaintShare) - r.background;
  if (!(contrast > 0)) return false;
  r.threshold = r.background + std::max(kUnclaimedLevel * contrast, kUnclaimedToNoise * noise);
  return true;
}

// The components of the pixels above a threshold that are more than one step from any label, of
// which those count that are farther away from them and have an area in a range, as labels 1, 2 and
// so on in raster order of their first pixels.
class Components {
 public:
  Components(const image<float>& plane, const image<unsigned char>& steps, const Standard& r)
      : labels_(plane.nx(), plane.ny(), 1, 1, 1) {
    parallelPixels(plane.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      for (std::ptrdiff_t i = begin; i < end; ++i) {
        if (steps.pixels()[i] > 1 && plane.pixels()[i] > r.threshold) labels_.pixels()[i] = kOpen;
      }
    });
    int n = 0;
    for (int i = 0; i < labels_.npix(); ++i) {
      if (i % kPixelsPerTask == 0) checkpoint();
      if (labels_.pixels()[i] != kOpen) continue;
      gather(i);
      const auto area = static_cast<double>(pixels_.size());
      // One that is cut off a region is most often the rest of the same object.
      const bool isCutOff = std::any_of(pixels_.begin(), pixels_.end(),
                                        [&](int pixel) { return steps.pixels()[pixel] == 2; });
      const bool counts =
          !isCutOff && area >= kMinAreaShare * r.medianArea && area <= kMaxAreaShare * r.medianArea;
      if (counts) ++n;
      for (const int pixel : pixels_) labels_.pixels()[pixel] = counts ? n : 0;
    }
  }

  const image<int>& labels() const { return labels_; }

 private:
  static constexpr int kOpen = -1;
  static constexpr int kGathered = -2;

  // Sets `pixels_` to the component of a pixel.
  void gather(int first) {
    const int nx = labels_.nx();
    pixels_.clear();
    visit(first);
    for (std::size_t done = 0; done < pixels_.size();) {
      const int i = pixels_[done++];
      if (i % nx > 0) visit(i - 1);
      if (i % nx < nx - 1) visit(i + 1);
      if (i >= nx) visit(i - nx);
      if (i < labels_.npix() - nx) visit(i + nx);
    }
  }

  void visit(int i) {
    if (labels_.pixels()[i] != kOpen) return;
    labels_.pixels()[i] = kGathered;
    pixels_.push_back(i);
  }

  image<int> labels_;
  std::vector<int> pixels_;
};

// Whether a component stands out of its own surroundings as well as of the background.
bool hasOwnContrast(const image<float>& plane, const image<int>& labels,
                    const image<int>& components, const ObjectMeasures& m, float background) {
  const int left = std::max(0, m.minColumn - kFarPixels);
  const int top = std::max(0, m.minRow - kFarPixels);
  const int right = std::min(plane.nx(), m.endColumn + kFarPixels);
  const int bottom = std::min(plane.ny(), m.endRow + kFarPixels);
  image<int> own(right - left, bottom - top, 1, 1, 1);
  const auto forEachPixel = [&](auto act) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) act(y * plane.nx() + x, (y - top) * own.nx() + x - left);
    }
  };
  std::vector<float> inside;
  forEachPixel([&](int i, int k) {
    if (components.pixels()[i] != m.label) return;
    own.pixels()[k] = 1;
    inside.push_back(plane.pixels()[i]);
  });
  const image<unsigned char> steps = stepsToLabels(own);
  std::vector<float> around;
  forEachPixel([&](int i, int k) {
    const bool isAround = steps.pixels()[k] > 1 && steps.pixels()[k] <= kFarPixels;
    if (isAround && labels.pixels()[i] == 0 && components.pixels()[i] == 0) {
      around.push_back(plane.pixels()[i]);
    }
  });
  if (around.empty()) return true;
  const float brightness = quantile(inside, 0.5);
  return brightness - quantile(around, 0.5) >= kMinOwnContrast * (brightness - background);
}

}  // namespace

std::vector<Object> labelUnclaimed(const image<float>& plane, image<int>& labels) {
  std::vector<Object> objects;
  const image<unsigned char> steps = stepsToLabels(labels);
  Standard r;
  if (!setStandard(plane, labels, steps, r)) return objects;
  const Components found(plane, steps, r);
  const image<int>& components = found.labels();
  const std::vector<ObjectMeasures> measures = measureObjects(components, plane);
  std::vector<int> renumbered(measures.size() + 1);
  int n = *std::max_element(labels.pixels(), labels.pixels() + labels.npix());
  std::vector<char> standsOut(measures.size());
  parallelFor(measures.size(), [&](std::size_t k) {
    const bool does = measures[k].solidity >= kMinUnclaimedSolidity &&
                      hasOwnContrast(plane, labels, components, measures[k], r.background);
    standsOut[k] = does ? 1 : 0;
  });
  for (std::size_t k = 0; k < measures.size(); ++k) {
    if (standsOut[k] == 0) continue;
    const ObjectMeasures& m = measures[k];
    renumbered[static_cast<std::size_t>(m.label)] = ++n;
    objects.push_back({static_cast<float>(m.centroidColumn), static_cast<float>(m.centroidRow),
                       static_cast<float>(std::sqrt(m.area / kPi)), kUnclaimedScore, 0.0F});
  }
  parallelPixels(labels.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      const int label = renumbered[static_cast<std::size_t>(components.pixels()[i])];
      if (label > 0) labels.pixels()[i] = label;
    }
  });
  return objects;
}

}  // namespace orva::detect
