#include "orva/detect/segment.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "orva/detect/elementary.h"
#include "orva/detect/flooding.h"
#include "orva/detect/search.h"
#include "orva/detect/star_shape.h"
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
  std::transform(level.pixels.begin(), level.pixels.end(), plane.pixels(),
                 [sign](float v) { return sign * v; });
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

// The value that so many quarters of the values do not exceed.
float quartile(std::vector<float>& values, std::size_t quarters) {
  const auto at = values.begin() + static_cast<std::ptrdiff_t>((values.size() - 1) * quarters / 4);
  std::nth_element(values.begin(), at, values.end());
  return *at;
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
  const float inside = quartile(s.inside, 2);
  const float around = quartile(s.around, 2);
  if (!(inside - around >= kMinContrastToNoise * noise)) return false;
  const float background = quartile(s.around, 1);
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
  for (int y = 0; y < labels.ny(); ++y) {
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

// Keeps the labels k + 1 for which keeps(k), numbered anew, and their entries in `shapes` and
// `s.kept`. Returns whether that leaves any out.
template <class Keeps>
bool keepLabels(Segmentation& s, std::vector<Shape>& shapes, Keeps keeps) {
  std::vector<int> renumbered(shapes.size() + 1);
  std::size_t n = 0;
  for (std::size_t k = 0; k < shapes.size(); ++k) {
    if (!keeps(k)) continue;
    shapes[n] = shapes[k];
    s.kept[n] = s.kept[k];
    renumbered[k + 1] = static_cast<int>(++n);
  }
  if (n == shapes.size()) return false;
  shapes.resize(n);
  s.kept.resize(n);
  std::transform(s.labels.pixels(), s.labels.pixels() + s.labels.npix(), s.labels.pixels(),
                 [&](int label) { return renumbered[static_cast<std::size_t>(label)]; });
  return true;
}

}  // namespace

Segmentation segmentObjects(const Image& img, const std::vector<Object>& objects,
                            const SegmentSettings& settings) {
  requireInRange(settings);
  Segmentation s{image<int>(img.nx(), img.ny(), 1, 1, 1), {}};
  if (objects.empty()) return s;
  const std::vector<ScaleLevel> levels = scaleLevels(img);
  if (levels.empty()) return s;
  const Polarity polarity =
      settings.polarity ? *settings.polarity : polarityOf(levels, img, objects);
  const image<float> plane = smoothed(levels.front(), polarity);
  std::vector<Shape> shapes;
  std::vector<Basin> basins;
  std::vector<std::optional<Shape>> found(objects.size());
  parallelFor(objects.size(), [&](std::size_t i) {
    if (!fits(img, objects[i])) return;
    Shape shape = outlinedShape(levels, polarity, objects[i]);
    if (setThreshold(plane, levels.front().noise, shape.basin)) found[i] = shape;
  });
  for (std::size_t i = 0; i < objects.size(); ++i) {
    if (!found[i]) continue;
    s.kept.push_back(i);
    shapes.push_back(*found[i]);
    basins.push_back(found[i]->basin);
  }
  s.labels = flooded(plane, basins);
  const Extents flooding = extentsOf(s.labels, shapes.size());
  keepLabels(s, shapes,
             [&](std::size_t k) { return flooding.areas[k + 1] >= kMinFilled * shapes[k].area; });
  // A region that is left out may have been a hole in another, which then grows.
  for (bool areLeftOut = true; areLeftOut;) {
    fillHoles(s.labels);
    const Extents filled = extentsOf(s.labels, shapes.size());
    areLeftOut = keepLabels(s, shapes, [&](std::size_t k) {
      const auto area = static_cast<float>(filled.areas[k + 1]);
      return area >= settings.minArea && area <= settings.maxArea &&
             !(settings.excludeBorder && filled.areAtBorder[k + 1]);
    });
  }
  return s;
}

}  // namespace orva::detect
