// Regions, their measurements, their selection and their shapes.
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/fuzz/operations/compare.h"
#include "tests/fuzz/operations/operations.h"
#include "tests/fuzz/operations/pictures.h"
#include "tests/support/reference/bip.h"
#include "tests/support/reference/hull.h"
#include "tests/support/reference/selection.h"

namespace orva::test {

namespace {

bool isSameFeature(const RegionFeature& a, const RegionFeature& b) {
  const auto numbers = [](const RegionFeature& f) {
    return std::vector<int>{f.xmin, f.xmax, f.ymin, f.ymax,   f.zmin, f.zmax,
                            f.cx,   f.cy,   f.cz,   f.radius, f.npix};
  };
  return numbers(a) == numbers(b) && isSame(a.mean, b.mean) && isSame(a.var, b.var);
}

bool isSameTable(const std::vector<RegionFeature>& a, const std::vector<RegionFeature>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSameFeature);
}

// In order of size, where -0 and 0 are the same.
bool areSameNumbers(const std::vector<float>& a, const std::vector<float>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](float v, float w) { return v == w || isSame(v, w); });
}

// A number of regions, most often below 40.
int takeNumber(Input& in) {
  const int n = in.between(0, 255);
  return n < 250 ? n % 43 - 3 : n * 200;
}

// All neighbours that reach far make many pairs of pixels: a reach that is quick.
int takeReach(Input& in, const Shape& shape) {
  constexpr int reaches[] = {1, 2, 3, 0, -1, 4, 7, 45, 2147483647, -2147483647 - 1};
  const int reach = reaches[in.between(0, 9)];
  const bool isQuick = reach <= 2 || shape.nx * shape.ny * shape.nz <= 400;
  return isQuick ? reach : 2;
}

}  // namespace

void regionsOfBytes(Input& in) {
  const Shape shape = takeShape(in);
  constexpr int types[] = {4, 8, 4, 8, 0, 6, 26, -8};
  const int type = types[in.between(0, 7)];
  const int reach = takeReach(in, shape);
  constexpr int values[] = {255, 255, 0, -1, 1, 256, -2147483647};
  const int choice = in.between(0, 7);
  const int value = choice < 7 ? values[choice] : in.between(0, 255);
  const image<unsigned char> img = takeMask(in, shape);
  int n = 0;
  int count = 0;
  const auto neighbourhood = static_cast<NeighborhoodType>(type);
  requireSame(bip::regions(img, n, value, reach, neighbourhood),
              reference::regions(img, count, value, reach, type), "regions");
  requireSame(n, count, "the number of regions");
  requireSame(bip::regions(img), reference::regions(img, count, 255, 1, 4), "regions of a mask");
}

void regionsOfLabels(Input& in) {
  const Shape shape = takeShape(in);
  const image<short> labels = takePicture<short>(in, shape);
  int n = 0;
  int count = 0;
  const image<short> expected = reference::regions(labels, count);
  requireSame(bip::regions(labels, n), expected, "regions of shorts");
  requireSame(n, count, "the number of regions of shorts");
  requireSame(bip::regions(labels), expected, "regions of shorts without their number");
}

void relabel(Input& in) {
  const Shape shape = takeShape(in);
  image<short> labels = takePicture<short>(in, shape);
  image<short> expected = labels.duplicate();
  requireSame(bip::regionNumber(labels), reference::regionNumber(labels), "regionNumber");
  bip::relabel(labels);
  reference::relabel(expected);
  requireSame(labels, expected, "relabel");
}

void regionFeatures(Input& in) {
  const int n = takeNumber(in);
  const Shape shape = takeShape(in);
  const Shape other = takeOther(in, shape);
  const image<short> labels = takeLabels(in, shape, 32767);
  const std::unique_ptr<Image> brightness = takeAnyPicture(in, other);
  const int given = std::max(n, 0);
  const int all = reference::regionNumber(labels);
  using bip::regionFeatures;
  using Table = std::vector<RegionFeature>;
  const Table table = reference::regionFeatures(labels, given, brightness.get());
  require(isSameTable(regionFeatures(labels, n, *brightness), table), "regionFeatures");
  require(isSameTable(regionFeatures(labels, n), reference::regionFeatures(labels, given, nullptr)),
          "regionFeatures without brightness");
  require(isSameTable(regionFeatures(labels, *brightness),
                      reference::regionFeatures(labels, all, brightness.get())),
          "regionFeatures of all labels");
  require(isSameTable(regionFeatures(labels), reference::regionFeatures(labels, all, nullptr)),
          "regionFeatures of all labels without brightness");

  std::vector<int> sizes;
  std::vector<float> means;
  std::vector<float> variances;
  for (const RegionFeature& f : table) {
    sizes.push_back(f.npix);
    means.push_back(f.mean);
    variances.push_back(f.var);
  }
  requireSame(RegionFeature::npixArray(table), sizes, "npixArray");
  requireSame(RegionFeature::meanArray(table), means, "meanArray");
  requireSame(RegionFeature::varArray(table), variances, "varArray");
}

void regionIntensityArrays(Input& in) {
  const int n = takeNumber(in);
  const bool sorted = takeBool(in);
  const Shape shape = takeShape(in);
  const Shape other = takeOther(in, shape);
  const image<short> labels = takeLabels(in, shape, 32767);
  const std::unique_ptr<Image> brightness = takeAnyPicture(in, other);
  const auto check = [&](const std::vector<std::vector<float>>& lists, int count) {
    const auto expected = reference::regionIntensityArrays(labels, count, *brightness, sorted);
    require(lists.size() == expected.size(), "as many lists of brightness");
    for (std::size_t k = 0; k < lists.size(); ++k) {
      require(sorted ? areSameNumbers(lists[k], expected[k]) : isSame(lists[k], expected[k]),
              "the lists of brightness");
    }
  };
  using bip::regionIntensityArrays;
  check(regionIntensityArrays(labels, n, *brightness, sorted), std::max(n, 0));
  check(regionIntensityArrays(labels, *brightness, sorted), reference::regionNumber(labels));
}

void selectRegions(Input& in) {
  const float minMean = takeFloat(in);
  const int minSize = takeInt(in);
  const Shape shape = takeShape(in);
  const Shape other = takeOther(in, shape);
  image<unsigned char> mask = takeMask(in, shape);
  const std::unique_ptr<Image> brightness = takeAnyPicture(in, other);
  image<unsigned char> expected = mask.duplicate();
  bip::selectRegions(mask, *brightness, minMean, minSize);
  reference::selectRegions(expected, *brightness, minMean, minSize);
  requireSame(mask, expected, "selectRegions");
}

void selectRegionsBySize(Input& in) {
  const int minSize = takeInt(in);
  const int maxSize = takeInt(in);
  const Shape shape = takeShape(in);
  image<unsigned char> mask = takeMask(in, shape);
  image<unsigned char> expected = mask.duplicate();
  bip::selectRegionsBySize(mask, minSize, maxSize);
  reference::selectRegionsBySize(expected, minSize, maxSize);
  requireSame(mask, expected, "selectRegionsBySize");
}

void boundaries(Input& in) {
  const Shape shape = takeShape(in);
  const image<short> labels = takeLabels(in, shape, 100);
  requireSame(bip::boundaries(labels), reference::boundaries(labels), "boundaries");
}

void convexHull(Input& in) {
  const int wanted = takeInt(in);
  const bool ofMask = takeBool(in);
  const Shape shape = takeShape(in);
  // Directions over a half sphere are many.
  const int precision = shape.nz > 1 ? std::min(wanted, 6) : wanted;
  image<short> labels = takeLabels(in, shape, shape.nz > 1 ? 12 : 60);
  image<short> expected = labels.duplicate();
  if (ofMask) {
    const image<unsigned char> mask = takeMask(in, shape);
    labels = bip::convexHull(mask, precision);
    expected = reference::convexHull(mask, precision);
  } else {
    bip::convexHull(labels, precision);
    reference::convexHull(expected, precision);
  }
  requireSame(labels, expected, "convexHull");
}

}  // namespace orva::test
