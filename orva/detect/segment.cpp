#include "orva/detect/segment.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "orva/detect/elementary.h"
#include "orva/detect/flooding.h"
#include "orva/detect/quantile.h"
#include "orva/detect/search.h"
#include "orva/detect/star_shape.h"
#include "orva/detect/unclaimed.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

constexpr float kSmoothing = 1.0F;   // sigma, in pixels
constexpr float kThreshold = 0.42F;  // between the brightness outside and inside
constexpr float kInside = 0.8F;      // share of the outline's radius up to which pixels are inside
constexpr std::array<float, 2> kAround{1.2F, 1.5F};  // shares from and up to which they are around,
constexpr std::array<float, 2> kAroundPixels{1.0F, 2.0F};  // and pixels beyond these
constexpr float kMinContrastToNoise = 0.25F;
constexpr double kMinFilled = 0.3;    // share of the outline's area
constexpr int kSamplesAcross = 64;    // of the pixels inside and around along an axis, at least
constexpr std::size_t kPolled = 200;  // objects that decide on the polarity, at least, if there are
// Estimated shares of the time up to the end of the scale levels, and of finding where that is
// done.
constexpr double kLevelsShare = 0.35;
constexpr double kLevelsOfAllShare = 0.15;
constexpr double kFindingShare = 0.7;
constexpr double kOutlinesShare = 0.6;  // of labelling

void requireInRange(const SegmentSettings& s) {
  const std::string prefix = "orva::detect::SegmentSettings: ";
  if (!(s.minArea >= 0.0F && std::isfinite(s.minArea))) {
    throw std::invalid_argument(prefix + "minArea is not a number of at least 0");
  }
  if (!(s.maxArea >= s.minArea)) {
    throw std::invalid_argument(prefix + "maxArea is not a number of at least minArea");
  }
}

// Center on a pixel and a radius that an image of this size can hold.
bool fits(const Image& img, const Object& o) {
  const auto isOn = [](float v, int n) { return v >= -0.5F && v <= static_cast<float>(n) - 0.5F; };
  return isOn(o.x, img.nx()) && isOn(o.y, img.ny()) && o.radius > 0 &&
         o.radius <= static_cast<float>(std::max(img.nx(), img.ny()));
}

Polarity polarityOf(const std::vector<ScaleLevel>& levels, const Image& img,
                    const std::vector<Object>& objects) {
  std::array<std::atomic<int>, 2> outlines{};
  const std::size_t stride = std::max<std::size_t>(1, objects.size() / kPolled);
  const std::size_t polled = (objects.size() + stride - 1) / stride;
  parallelFor(2 * polled, [&](std::size_t k) {
    const auto p = static_cast<Polarity>(k / polled);
    const Object& o = objects[k % polled * stride];
    if (!fits(img, o)) return;
    if (outlinedAgain(levels, p, o.x, o.y, o.radius)) ++outlines[static_cast<std::size_t>(p)];
  });
  return outlines[1] > outlines[0] ? Polarity::Dark : Polarity::Bright;
}

// Plane 0 at full size, smoothed, negated for dark objects.
image<float> smoothed(const ScaleLevel& level, Polarity polarity) {
  image<float> plane(level.nx, level.ny, 1, 1, 1);
  const float sign = polarity == Polarity::Bright ? 1.0F : -1.0F;
  parallelPixels(plane.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    std::transform(level.pixels.begin() + begin, level.pixels.begin() + end, plane.pixels() + begin,
                   [sign](float v) { return sign * v; });
  });
  return scalespace::gaussian(plane, kSmoothing, 0, 0, 0);
}

// The object's outline as it is found again, or its circle.
struct Shape {
  Basin basin;  // without a threshold
  double area;  // inside the image
};

// The pixels of the object's circle that are in an image of this size.
double circleArea(const Object& o, int nx, int ny) {
  const auto rowsFrom = static_cast<int>(std::max(0.0F, std::ceil(o.y - o.radius)));
  double area = 0;
  for (int y = rowsFrom; y < ny && static_cast<float>(y) <= o.y + o.radius; ++y) {
    const float dy = static_cast<float>(y) - o.y;
    const float half = std::sqrt(std::max(0.0F, o.radius * o.radius - dy * dy));
    const float first = std::max(0.0F, std::ceil(o.x - half));
    const float last = std::min(std::floor(o.x + half), static_cast<float>(nx - 1));
    area += std::max(0.0F, last - first + 1);
  }
  return area;
}

Shape outlinedShape(const std::vector<ScaleLevel>& levels, Polarity polarity, const Object& o) {
  Shape s{{o.x, o.y, {}, 0.0F}, 0.0};
  const auto c = outlinedAgain(levels, polarity, o.x, o.y, o.radius);
  s.area = c ? kPi * static_cast<double>(c->radius) * static_cast<double>(c->radius)
             : circleArea(o, levels.front().nx, levels.front().ny);
  s.basin.radii.fill(o.radius);
  if (c) {
    s.basin.x = c->seedX;
    s.basin.y = c->seedY;
    s.basin.radii = c->radii;
  }
  return s;
}

// Pixel values inside and around a shape: all, or fewer than twice kSamplesAcross along an axis.
struct Sides {
  std::vector<float> inside;
  std::vector<float> around;
};

Sides sidesOf(const image<float>& plane, const Basin& b) {
  Sides s;
  const float reach =
      kAround[1] * *std::max_element(b.radii.begin(), b.radii.end()) + kAroundPixels[1];
  const auto first = [&](float v) { return std::max(0, static_cast<int>(std::floor(v - reach))); };
  const auto last = [&](float v, int n) {
    return std::min(static_cast<int>(std::floor(v + reach)), n - 1);
  };
  const int step = std::max(1, static_cast<int>(2 * reach / kSamplesAcross));
  for (int y = first(b.y); y <= last(b.y, plane.ny()); y += step) {
    const float* row = plane.pixels() + std::ptrdiff_t{y} * plane.nx();
    for (int x = first(b.x); x <= last(b.x, plane.nx()); x += step) {
      const float dx = static_cast<float>(x) - b.x;
      const float dy = static_cast<float>(y) - b.y;
      const float distance = std::sqrt(dx * dx + dy * dy);
      const float radius = radiusTowards(b.radii, dx, dy);
      if (distance <= kInside * radius) {
        s.inside.push_back(row[x]);
      } else if (distance > kAround[0] * radius + kAroundPixels[0] &&
                 distance <= kAround[1] * radius + kAroundPixels[1]) {
        s.around.push_back(row[x]);
      }
    }
  }
  return s;
}

// Sets the threshold; false where the object does not stand out.
bool setThreshold(const image<float>& plane, float noise, Basin& b) {
  Sides s = sidesOf(plane, b);
  if (s.inside.empty() || s.around.empty()) return false;
  const float inside = quantile(s.inside, 0.5);
  const float around = quantile(s.around, 0.5);
  if (!(inside - around >= kMinContrastToNoise * noise)) return false;
  const float background = quantile(s.around, 0.25);
  b.threshold = background + kThreshold * (inside - background);
  return true;
}

// Areas of the labels 0 .. n, and whether they touch the border.
struct Extents {
  std::vector<int> areas;
  std::vector<bool> areAtBorder;
};

Extents extentsOf(const image<int>& labels, std::size_t n) {
  Extents e{std::vector<int>(n + 1), std::vector<bool>(n + 1)};
  const int* p = labels.pixels();
  constexpr int kRowsPerCheckpoint = 64;
  for (int y = 0; y < labels.ny(); ++y) {
    if (y % kRowsPerCheckpoint == 0) checkpoint();
    for (int x = 0; x < labels.nx(); ++x, ++p) {
      const auto label = static_cast<std::size_t>(*p);
      ++e.areas[label];
      if (x == 0 || y == 0 || x + 1 == labels.nx() || y + 1 == labels.ny()) {
        e.areAtBorder[label] = true;
      }
    }
  }
  return e;
}

// Keeps the labels k + 1 of 1 .. n for which keeps(k), numbered anew; returns these k.
template <class Keeps>
std::vector<std::size_t> keepLabels(image<int>& labels, std::size_t n, Keeps keeps) {
  std::vector<std::size_t> kept;
  std::vector<int> renumbered(n + 1);
  for (std::size_t k = 0; k < n; ++k) {
    if (!keeps(k)) continue;
    kept.push_back(k);
    renumbered[k + 1] = static_cast<int>(kept.size());
  }
  if (kept.size() < n) {
    parallelPixels(labels.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      std::transform(labels.pixels() + begin, labels.pixels() + end, labels.pixels() + begin,
                     [&](int label) { return renumbered[static_cast<std::size_t>(label)]; });
    });
  }
  return kept;
}

// Keeps values[k] for each k of `kept`, which ascend.
template <class T>
void keepOnly(std::vector<T>& values, const std::vector<std::size_t>& kept) {
  for (std::size_t i = 0; i < kept.size(); ++i) values[i] = values[kept[i]];
  values.resize(kept.size());
}

// Labels the regions of the objects in the plane at full size. Returns the objects' indices.
std::vector<std::size_t> labelObjects(const std::vector<ScaleLevel>& levels,
                                      const image<float>& plane, const Image& img,
                                      const std::vector<Object>& objects, Polarity polarity,
                                      image<int>& labels) {
  std::vector<std::optional<Shape>> shapes(objects.size());
  {
    const Step step("outlines", 0, kOutlinesShare);
    parallelFor(objects.size(), [&](std::size_t i) {
      if (!fits(img, objects[i])) return;
      Shape shape = outlinedShape(levels, polarity, objects[i]);
      if (setThreshold(plane, levels.front().noise, shape.basin)) shapes[i] = shape;
    });
  }
  const Step step("regions", kOutlinesShare, 1);
  std::vector<std::size_t> indices;
  std::vector<double> areas;
  std::vector<Basin> basins;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    if (!shapes[i]) continue;
    indices.push_back(i);
    areas.push_back(shapes[i]->area);
    basins.push_back(shapes[i]->basin);
  }
  labels = flooded(plane, basins);
  const Extents flooding = extentsOf(labels, areas.size());
  keepOnly(indices, keepLabels(labels, areas.size(), [&](std::size_t k) {
             return flooding.areas[k + 1] >= kMinFilled * areas[k];
           }));
  fillHoles(labels);
  return indices;
}

// Leaves out regions as the settings say. Returns the k of the labels k + 1 that are kept.
std::vector<std::size_t> applySettings(const SegmentSettings& settings, std::size_t n,
                                       image<int>& labels) {
  std::vector<std::size_t> kept(n);
  std::iota(kept.begin(), kept.end(), std::size_t{0});
  while (true) {
    const Extents extents = extentsOf(labels, kept.size());
    const auto still = keepLabels(labels, kept.size(), [&](std::size_t k) {
      const auto area = static_cast<float>(extents.areas[k + 1]);
      return area >= settings.minArea && area <= settings.maxArea &&
             !(settings.excludeBorder && extents.areAtBorder[k + 1]);
    });
    if (still.size() == kept.size()) return kept;
    keepOnly(kept, still);
    // A region that is left out may have been a hole in another, which then grows.
    fillHoles(labels);
  }
}

image<int> emptyLabels(const Image& img) { return {img.nx(), img.ny(), 1, 1, 1}; }

}  // namespace

Segmentation segmentObjects(const Image& img, const std::vector<Object>& objects,
                            const SegmentSettings& settings) {
  requireInRange(settings);
  Segmentation s{emptyLabels(img), {}};
  if (objects.empty()) return s;
  std::vector<ScaleLevel> levels;
  {
    const Step step("scales", 0, kLevelsShare);
    levels = scaleLevels(img);
  }
  if (levels.empty()) return s;
  const Step step("regions", kLevelsShare, 1);
  const Polarity polarity =
      settings.polarity ? *settings.polarity : polarityOf(levels, img, objects);
  const image<float> plane = smoothed(levels.front(), polarity);
  s.kept = labelObjects(levels, plane, img, objects, polarity, s.labels);
  keepOnly(s.kept, applySettings(settings, s.kept.size(), s.labels));
  return s;
}

SegmentedImage segmentImage(const Image& img, const FindSettings& sought,
                            const SegmentSettings& settings) {
  requireInRange(sought);
  requireInRange(settings);
  std::vector<ScaleLevel> levels;
  {
    const Step step("scales", 0, kLevelsOfAllShare);
    levels = scaleLevels(img);
  }
  SegmentedImage s{{}, emptyLabels(img), 0};
  {
    const Step step("outlines", kLevelsOfAllShare, kFindingShare);
    static_cast<FindResult&>(s) = objectsIn(levels, sought);
  }
  if (s.objects.empty()) return s;
  const Step step("regions", kFindingShare, 1);
  const image<float> plane = smoothed(levels.front(), s.used.polarity);
  const std::vector<std::size_t> labelled =
      labelObjects(levels, plane, img, s.objects, s.used.polarity, s.labels);
  s.leftOut = s.objects.size() - labelled.size();
  keepOnly(s.objects, labelled);
  if (sought.minScore <= kUnclaimedScore) {
    const RadiusRange range = rangeOf(sought);
    const std::size_t n = s.objects.size();
    const std::vector<Object> unclaimed = labelUnclaimed(plane, s.labels);
    s.objects.insert(s.objects.end(), unclaimed.begin(), unclaimed.end());
    keepOnly(s.objects, keepLabels(s.labels, s.objects.size(), [&](std::size_t k) {
               return k < n || range.contains(s.objects[k].radius);
             }));
    fillHoles(s.labels);
  }
  const std::size_t all = s.objects.size();
  keepOnly(s.objects, applySettings(settings, all, s.labels));
  s.leftOut += all - s.objects.size();
  return s;
}

}  // namespace orva::detect
