// The search for objects, their regions and measurements on images of any kind, with any settings
// and objects: what the headers promise of the results, the same results once more, and the regions
// of given basins as in the reference implementation.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/detect/flooding.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"
#include "orva/detect/unclaimed.h"
#include "tests/fuzz/operations/parameters.h"
#include "tests/fuzz/operations/pictures.h"
#include "tests/support/reference/flooding.h"
#include "tests/support/reference/unclaimed.h"

namespace orva::test {
namespace {

using detect::Object;

// One plane of up to 64 pixels a side, now and then without pixels.
Shape takePlane(Input& in) {
  if (in.take<std::uint8_t>() < 4) return takeShape(in);
  return {in.between(1, 64), in.between(1, 64), 1, 1, 1};
}

std::optional<detect::Polarity> takePolarity(Input& in) {
  const int choice = in.between(0, 2);
  if (choice == 2) return std::nullopt;
  return choice == 0 ? detect::Polarity::Bright : detect::Polarity::Dark;
}

// Most often a number of at least 0.
float takeLength(Input& in) {
  const float v = takeFloat(in);
  return in.take<std::uint8_t>() < 24 ? v : std::fabs(v);
}

std::optional<float> takeOptional(Input& in) {
  if (takeBool(in)) return std::nullopt;
  return takeLength(in);
}

detect::FindSettings takeFindSettings(Input& in) {
  detect::FindSettings s;
  s.radius = takeOptional(in);
  s.polarity = takePolarity(in);
  s.minRadius = takeOptional(in);
  s.maxRadius = takeOptional(in);
  s.minScore = static_cast<float>(in.between(0, 20)) / 16;
  return s;
}

detect::SegmentSettings takeSegmentSettings(Input& in) {
  detect::SegmentSettings s;
  s.polarity = takePolarity(in);
  if (takeBool(in)) s.minArea = takeLength(in);
  if (takeBool(in)) s.maxArea = takeLength(in);
  s.excludeBorder = takeBool(in);
  return s;
}

template <class T>
bool haveSameBytes(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

void requireObjects(const Image& img, const detect::FindSettings& settings,
                    const detect::FindResult& result) {
  const auto order = [](const Object& o) { return std::tuple(-o.score, o.y, o.x); };
  const detect::Settings& used = result.used;
  require(used.confidence >= 0 && used.confidence <= 1, "a confidence of 0 to 1");
  require(std::isfinite(used.radius) && used.radius >= 0, "a radius");
  if (settings.polarity) require(used.polarity == *settings.polarity, "the polarity given");
  for (std::size_t i = 0; i < result.objects.size(); ++i) {
    const Object& o = result.objects[i];
    require(
        o.x >= -0.5F * static_cast<float>(img.nx()) && o.x <= 1.5F * static_cast<float>(img.nx()),
        "x near the image");
    require(
        o.y >= -0.5F * static_cast<float>(img.ny()) && o.y <= 1.5F * static_cast<float>(img.ny()),
        "y near the image");
    require(o.radius > 0 && std::isfinite(o.radius), "an object with a radius");
    require(o.score >= settings.minScore && o.score <= 1, "a score in the range");
    require(o.coverage >= 0 && o.coverage <= 1, "a coverage of 0 to 1");
    require(!settings.minRadius || o.radius >= *settings.minRadius, "no smaller object");
    require(!settings.maxRadius || o.radius <= *settings.maxRadius, "no larger object");
    require(i == 0 || order(result.objects[i - 1]) <= order(o), "objects in their order");
  }
}

// The objects found, or others.
std::vector<Object> objectsIn(Input& in, const Image& img) {
  detect::FindResult result;
  const detect::FindSettings settings = takeFindSettings(in);
  try {
    result = detect::findObjects(img, settings);
    requireObjects(img, settings, result);
    require(haveSameBytes(detect::findObjects(img, settings).objects, result.objects),
            "the same objects once more");
  } catch (const std::invalid_argument&) {
    // The unit tests know which settings are refused.
  }
  for (int n = in.between(0, 12); n > 0; --n) {
    result.objects.push_back({takeFloat(in), takeFloat(in), takeFloat(in), 0.5F, 0.5F});
  }
  return result.objects;
}

// Pixels of `label` that are reached from its first one.
int connectedArea(const image<int>& labels, int label) {
  const int* const begin = labels.pixels();
  const auto first = std::find(begin, begin + labels.npix(), label) - begin;
  if (first == labels.npix()) return 0;
  std::vector<bool> isSeen(static_cast<std::size_t>(labels.npix()));
  std::vector<int> open{static_cast<int>(first)};
  isSeen[static_cast<std::size_t>(first)] = true;
  int area = 0;
  while (!open.empty()) {
    const int i = open.back();
    open.pop_back();
    ++area;
    const auto visit = [&](int j, bool isNeighbour) {
      if (!isNeighbour || begin[j] != label || isSeen[static_cast<std::size_t>(j)]) return;
      isSeen[static_cast<std::size_t>(j)] = true;
      open.push_back(j);
    };
    visit(i - 1, i % labels.nx() > 0);
    visit(i + 1, (i + 1) % labels.nx() > 0);
    visit(i - labels.nx(), i >= labels.nx());
    visit(i + labels.nx(), i + labels.nx() < labels.npix());
  }
  return area;
}

void requireRegions(const Image& img, const std::vector<Object>& objects,
                    const detect::SegmentSettings& settings, const detect::Segmentation& s) {
  require(s.labels.nx() == img.nx() && s.labels.ny() == img.ny(), "labels of the image's size");
  for (std::size_t k = 0; k < s.kept.size(); ++k) {
    require(s.kept[k] < objects.size() && (k == 0 || s.kept[k - 1] < s.kept[k]),
            "objects in their order");
  }
  const std::vector<detect::ObjectMeasures> all = detect::measureObjects(s.labels, img);
  require(all.size() == s.kept.size(), "a region for each object kept");
  for (std::size_t k = 0; k < all.size(); ++k) {
    const detect::ObjectMeasures& m = all[k];
    const auto area = static_cast<float>(m.area);
    require(m.label == static_cast<int>(k + 1), "labels without gaps");
    require(m.area == connectedArea(s.labels, m.label), "connected regions");
    require(area >= settings.minArea && area <= settings.maxArea, "an area in the range");
    require(!(settings.excludeBorder && m.touchesBorder), "no region at the border");
    require(m.minRow <= m.centroidRow && m.centroidRow < m.endRow &&
                m.minColumn <= m.centroidColumn && m.centroidColumn < m.endColumn,
            "a centroid in the box");
    require(m.solidity > 0 && m.solidity <= 1, "a solidity of up to 1");
    require(m.eccentricity >= 0 && m.eccentricity <= 1, "an eccentricity of up to 1");
    require(m.majorAxisLength >= m.minorAxisLength && m.minorAxisLength >= 0, "ordered axes");
    require(!(m.minIntensity > m.meanIntensity) || std::isinf(m.meanIntensity) ||
                m.minIntensity - m.meanIntensity <= 1e-6 * std::fabs(m.meanIntensity),
            "a mean above the smallest intensity");
  }
}

void findAndSegment(Input& in) {
  const std::unique_ptr<Image> img = takeAnyPicture(in, takePlane(in));
  const std::vector<Object> objects = objectsIn(in, *img);
  const detect::SegmentSettings settings = takeSegmentSettings(in);
  try {
    const detect::Segmentation s = detect::segmentObjects(*img, objects, settings);
    requireRegions(*img, objects, settings, s);
    const detect::Segmentation again = detect::segmentObjects(*img, objects, settings);
    require(s.kept == again.kept, "the same regions once more");
    require(
        std::equal(s.labels.pixels(), s.labels.pixels() + s.labels.npix(), again.labels.pixels()),
        "the same labels once more");
  } catch (const std::invalid_argument&) {
    require(!(settings.minArea >= 0 && std::isfinite(settings.minArea) &&
              settings.maxArea >= settings.minArea),
            "only settings out of their range are refused");
  }
}

void segmentWhole(Input& in) {
  const std::unique_ptr<Image> img = takeAnyPicture(in, takePlane(in));
  const detect::SegmentSettings settings = takeSegmentSettings(in);
  try {
    const detect::SegmentedImage s = detect::segmentImage(*img, {}, settings);
    const auto measures = detect::measureObjects(s.labels, *img);
    require(measures.size() == s.objects.size(), "a region for every object");
  } catch (const std::invalid_argument&) {
  }
}

void claim(Input& in) {
  image<float> plane = takePicture<float>(in, {in.between(1, 24), in.between(1, 24), 1, 1, 1});
  std::replace_if(
      plane.pixels(), plane.pixels() + plane.npix(), [](float v) { return !std::isfinite(v); },
      0.0F);
  image<int> labels(plane.nx(), plane.ny(), 1, 1, 1);
  for (int n = in.between(0, 8), k = 1; k <= n; ++k) {
    labels.pixels()[in.between(0, labels.npix() - 1)] = k;
  }
  image<int> expected(labels.nx(), labels.ny(), 1, 1, 1);
  std::copy(labels.pixels(), labels.pixels() + labels.npix(), expected.pixels());
  const std::size_t n = detect::labelUnclaimed(plane, labels).size();
  require(n == reference::labelUnclaimed(plane, expected).size(), "regions as in the reference");
  require(std::equal(labels.pixels(), labels.pixels() + labels.npix(), expected.pixels()),
          "labels as in the reference");
}

void flood(Input& in) {
  const image<float> values =
      takePicture<float>(in, {in.between(1, 24), in.between(1, 24), 1, 1, 1});
  std::vector<detect::Basin> basins;
  for (int n = in.between(0, 8); n > 0; --n) {
    detect::Basin b{};
    b.x = static_cast<float>(in.between(0, 255)) / 256 * static_cast<float>(values.nx() - 1);
    b.y = static_cast<float>(in.between(0, 255)) / 256 * static_cast<float>(values.ny() - 1);
    for (float& radius : b.radii) radius = 0.5F + static_cast<float>(in.between(0, 255)) / 16;
    b.threshold = takeFloat(in);
    basins.push_back(b);
  }
  const auto requireSameLabels = [](const image<int>& a, const image<int>& b, const char* what) {
    require(std::equal(a.pixels(), a.pixels() + a.npix(), b.pixels(), b.pixels() + b.npix()), what);
  };
  image<int> labels = detect::flooded(values, basins);
  requireSameLabels(labels, reference::flooded(values, basins), "labels as in the reference");
  const image<int> expected = reference::withoutHoles(labels);
  detect::fillHoles(labels);
  requireSameLabels(labels, expected, "filled holes as in the reference");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  const Captured captured;
  if (takeBool(in)) {
    flood(in);
    claim(in);
  } else {
    findAndSegment(in);
    segmentWhole(in);
  }
  return 0;
}

}  // namespace orva::test
