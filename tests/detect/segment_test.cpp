#include "orva/detect/segment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <set>
#include <stdexcept>
#include <vector>

#include "tests/detect/label_image.h"
#include "tests/detect/scenes.h"

namespace orva::test {
namespace {

using detect::Object;
using detect::Polarity;
using detect::Segmentation;
using detect::segmentObjects;
using detect::SegmentSettings;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

int labelAt(const Segmentation& s, int x, int y) {
  return s.labels.pixels()[y * s.labels.nx() + x];
}

std::vector<int> pixelsOf(const Segmentation& s) { return labelsOf(s.labels); }

int areaOf(const Segmentation& s, int label) {
  const std::vector<int> pixels = pixelsOf(s);
  return static_cast<int>(std::count(pixels.begin(), pixels.end(), label));
}

Object object(double x, double y, double radius) {
  return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(radius), 1.0F, 1.0F};
}

Object objectOf(const Ellipse& e) { return object(e.x, e.y, std::sqrt(e.a * e.b)); }

std::vector<Object> objectsOf(const std::vector<Ellipse>& ellipses) {
  std::vector<Object> objects;
  for (const Ellipse& e : ellipses) objects.push_back(objectOf(e));
  return objects;
}

SegmentSettings settings(Polarity polarity) {
  SegmentSettings s;
  s.polarity = polarity;
  return s;
}

// Intersection over union of a region and an ellipse.
double overlap(const Segmentation& s, int label, const Ellipse& e) {
  int both = 0;
  int either = 0;
  for (int y = 0; y < s.labels.ny(); ++y) {
    for (int x = 0; x < s.labels.nx(); ++x) {
      const bool isIn = e.contains(x, y);
      const bool isLabelled = labelAt(s, x, y) == label;
      both += isIn && isLabelled ? 1 : 0;
      either += isIn || isLabelled ? 1 : 0;
    }
  }
  return static_cast<double>(both) / either;
}

// Pixels that a 4-connected fill from the first pixel of a label reaches.
int connectedArea(const Segmentation& s, int label) {
  const std::vector<int> pixels = pixelsOf(s);
  const int nx = s.labels.nx();
  const auto first = std::find(pixels.begin(), pixels.end(), label);
  std::vector<int> open{static_cast<int>(first - pixels.begin())};
  std::set<int> seen(open.begin(), open.end());
  while (!open.empty()) {
    const int p = open.back();
    open.pop_back();
    const auto visit = [&](bool isInImage, int next) {
      if (!isInImage || pixels[static_cast<std::size_t>(next)] != label) return;
      if (seen.insert(next).second) open.push_back(next);
    };
    visit(p % nx > 0, p - 1);
    visit(p % nx + 1 < nx, p + 1);
    visit(p >= nx, p - nx);
    visit(p + nx < s.labels.npix(), p + nx);
  }
  return static_cast<int>(seen.size());
}

TEST(Segment, FoundDiscsHaveTheirPixels) {
  for (const Polarity polarity : {Polarity::Bright, Polarity::Dark}) {
    std::vector<Ellipse> discs = discGrid(240, 200, 6, 14, 5);
    for (Ellipse& d : discs) d.grey *= polarity == Polarity::Bright ? 1 : -1;
    image<float> img = drawn(240, 200, discs, 200);
    addNoise(img, 8, 2);
    const detect::FindResult result = detect::findObjects(img, {});
    ASSERT_EQ(result.used.polarity, polarity);
    const Segmentation s = segmentObjects(img, result.objects, settings(polarity));
    ASSERT_EQ(s.kept.size(), result.objects.size());
    EXPECT_EQ(s.kept.size(), discs.size());
    for (std::size_t k = 0; k < s.kept.size(); ++k) {
      const Object& o = result.objects[s.kept[k]];
      const Ellipse disc =
          *std::min_element(discs.begin(), discs.end(), [&](const Ellipse& a, const Ellipse& b) {
            return std::hypot(a.x - o.x, a.y - o.y) < std::hypot(b.x - o.x, b.y - o.y);
          });
      EXPECT_GE(overlap(s, static_cast<int>(k) + 1, disc), 0.85) << disc.x << ' ' << disc.y;
    }
  }
}

TEST(Segment, AnEllipseHasItsPixels) {
  const Ellipse e{40, 40, 24, 12, 0.6};
  image<float> img = drawn(80, 80, {e});
  addNoise(img, 4, 3);
  const Segmentation s = segmentObjects(img, {objectOf(e)}, {});
  EXPECT_GE(overlap(s, 1, e), 0.93);
}

TEST(Segment, TouchingDiscsAreDividedInTheMiddle) {
  const std::vector<Ellipse> discs{disc(30, 30, 12), disc(51, 30, 12)};
  image<float> img = drawn(81, 61, discs);
  for (int i = 0; i < img.npix(); ++i) img.pixels()[i] = std::min(img.pixels()[i], 150.0F);
  const Segmentation s = segmentObjects(img, objectsOf(discs), {});
  ASSERT_EQ(s.kept.size(), 2U);
  for (int y = 26; y <= 34; ++y) {
    EXPECT_EQ(labelAt(s, 39, y), 1) << y;
    EXPECT_EQ(labelAt(s, 42, y), 2) << y;
  }
  EXPECT_GE(overlap(s, 1, discs[0]), 0.9);
  EXPECT_GE(overlap(s, 2, discs[1]), 0.9);
}

TEST(Segment, EachObjectHasAThresholdOfItsOwn) {
  const std::vector<Ellipse> discs{disc(25, 25, 10, 8), disc(70, 25, 10, 190)};
  const image<float> img = drawn(95, 50, discs);
  const Segmentation s = segmentObjects(img, objectsOf(discs), {});
  ASSERT_EQ(s.kept.size(), 2U);
  EXPECT_GE(overlap(s, 1, discs[0]), 0.9);
  EXPECT_GE(overlap(s, 2, discs[1]), 0.9);
}

TEST(Segment, ObjectsAtCornersEndAtTheBorder) {
  constexpr double kRadius = 18;
  std::vector<Ellipse> discs;
  std::vector<Object> objects;
  // Centroid of a quarter of a disc, and the radius of the disc of its area.
  constexpr double kCentroid = 4 * kRadius / (3 * 3.14159265358979);
  for (const double x : {0.0, 89.0}) {
    for (const double y : {0.0, 79.0}) {
      discs.push_back(disc(x, y, kRadius));
      objects.push_back(object(x + (x > 0 ? -kCentroid : kCentroid),
                               y + (y > 0 ? -kCentroid : kCentroid), kRadius / 2));
    }
  }
  const image<float> img = drawn(90, 80, discs);
  const Segmentation s = segmentObjects(img, objects, {});
  ASSERT_EQ(s.kept.size(), 4U);
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_GE(overlap(s, static_cast<int>(k) + 1, discs[k]), 0.85) << k;
  }
}

TEST(Segment, ACircleStandsInForAnotherOutline) {
  const image<float> img = drawn(100, 100, {disc(50, 50, 10)});
  const Segmentation s = segmentObjects(img, {object(50, 50, 16)}, {});
  ASSERT_EQ(s.kept.size(), 1U);
  EXPECT_GE(overlap(s, 1, disc(50, 50, 10)), 0.9);
}

TEST(Segment, HolesAreFilled) {
  const image<float> img = drawn(80, 80, {disc(40, 40, 20), disc(54, 40, 3, -100)});
  const Segmentation s = segmentObjects(img, {object(40, 40, 20)}, {});
  EXPECT_EQ(labelAt(s, 54, 40), 1);
  EXPECT_GE(overlap(s, 1, disc(40, 40, 20)), 0.93);
}

TEST(Segment, RegionsAreConnectedAndNumberedWithoutGaps) {
  std::mt19937 random(11);
  std::vector<Ellipse> discs;
  for (int k = 0; k < 60; ++k) {
    discs.push_back(disc(static_cast<double>(random() % 160), static_cast<double>(random() % 120),
                         3 + static_cast<double>(random() % 10), 60));
  }
  image<float> img = drawn(160, 120, discs);
  addNoise(img, 30, 12);
  const std::vector<Object> objects = objectsOf(discs);
  const Segmentation s = segmentObjects(img, objects, {});
  EXPECT_GE(s.kept.size(), 20U);
  EXPECT_TRUE(std::is_sorted(s.kept.begin(), s.kept.end()));
  const std::vector<int> pixels = pixelsOf(s);
  EXPECT_EQ(static_cast<std::size_t>(*std::max_element(pixels.begin(), pixels.end())),
            s.kept.size());
  for (int label = 1; label <= static_cast<int>(s.kept.size()); ++label) {
    ASSERT_GE(areaOf(s, label), 1) << label;
    EXPECT_EQ(connectedArea(s, label), areaOf(s, label)) << label;
  }
}

TEST(Segment, PixelTypesAgree) {
  const std::vector<Ellipse> discs = discGrid(150, 120, 5, 10, 9);
  image<float> img = drawn(150, 120, discs);
  addNoise(img, 6, 4);
  image<unsigned char> bytes(150, 120, 1, 1, 1);
  image<GenericRgb<unsigned char>> grey(150, 120, 1, 1, 1);
  for (int i = 0; i < img.npix(); ++i) {
    bytes.setPixel(i, img.pixels()[i]);
    img.setPixel(i, bytes.pixel(i));
    grey.setPixel(i, bytes.pixel(i));
  }
  const Segmentation s = segmentObjects(img, objectsOf(discs), {});
  EXPECT_EQ(s.kept.size(), discs.size());
  EXPECT_EQ(pixelsOf(s), pixelsOf(segmentObjects(bytes, objectsOf(discs), {})));
  const Segmentation colour = segmentObjects(grey, objectsOf(discs), {});
  EXPECT_EQ(s.kept, colour.kept);
}

TEST(Segment, OpenPolarityIsThatOfTheOutlines) {
  const std::vector<Ellipse> discs{disc(25, 25, 10, -60), disc(70, 25, 9, -40)};
  const image<float> img = drawn(95, 50, discs, 120);
  const Segmentation open = segmentObjects(img, objectsOf(discs), {});
  EXPECT_EQ(open.kept.size(), 2U);
  EXPECT_EQ(pixelsOf(open),
            pixelsOf(segmentObjects(img, objectsOf(discs), settings(Polarity::Dark))));
  EXPECT_TRUE(segmentObjects(img, objectsOf(discs), settings(Polarity::Bright)).kept.empty());
}

TEST(Segment, LeavesOutWhatTheImageDoesNotShow) {
  image<float> img = drawn(100, 80, {disc(30, 30, 10)});
  addNoise(img, 3, 6);
  const std::vector<Object> objects{
      object(75, 60, 0),         object(kNan, 30, 10),  object(30, kNan, 10),
      object(30, 30, kNan),      object(30, 30, -5),    object(30, 30, kInfinity),
      object(30, 30, 1e30),      object(-1, 30, 10),    object(30, 80, 10),
      object(kInfinity, 30, 10), object(30, 30, 1e-30), object(30.2, 29.9, 10),
      object(30.1, 30.1, 10),
  };
  const Segmentation s = segmentObjects(img, objects, settings(Polarity::Bright));
  EXPECT_EQ(s.kept, std::vector<std::size_t>{11});
  EXPECT_GE(overlap(s, 1, disc(30, 30, 10)), 0.9);
}

TEST(Segment, LeavesOutObjectsOnFlatBackground) {
  const image<float> img = drawn(100, 80, {disc(25, 25, 10)});
  const Segmentation s =
      segmentObjects(img, {object(70, 50, 10), object(25, 25, 10)}, settings(Polarity::Bright));
  EXPECT_EQ(s.kept, std::vector<std::size_t>{1});
}

TEST(Segment, PixelsThatAreNoNumbersAreBackground) {
  image<float> img = drawn(60, 60, {disc(30, 30, 12)});
  img.pixels()[5 * 60 + 5] = kNan;
  img.pixels()[6 * 60 + 50] = kInfinity;
  const Segmentation s = segmentObjects(img, {object(30, 30, 12)}, settings(Polarity::Bright));
  EXPECT_GE(overlap(s, 1, disc(30, 30, 12)), 0.93);
}

TEST(Segment, LimitsOfAreaLeaveRegionsOut) {
  const std::vector<Ellipse> discs{disc(20, 20, 6), disc(50, 20, 9), disc(85, 20, 13)};
  const image<float> img = drawn(110, 45, discs);
  SegmentSettings s;
  s.minArea = 200;
  s.maxArea = 400;
  const Segmentation regions = segmentObjects(img, objectsOf(discs), s);
  EXPECT_EQ(regions.kept, std::vector<std::size_t>{1});
  EXPECT_GE(overlap(regions, 1, discs[1]), 0.9);
  const auto area = static_cast<float>(areaOf(regions, 1));
  s.minArea = s.maxArea = area;
  EXPECT_EQ(segmentObjects(img, objectsOf(discs), s).kept, std::vector<std::size_t>{1});
}

TEST(Segment, RegionsLeftOutLeaveNoHoles) {
  const image<float> img = drawn(80, 80, {disc(40, 40, 24), disc(53, 40, 4)});
  const std::vector<Object> objects{object(40, 40, 24), object(53, 40, 4)};
  const Segmentation all = segmentObjects(img, objects, settings(Polarity::Bright));
  ASSERT_EQ(all.kept.size(), 2U);
  EXPECT_EQ(labelAt(all, 53, 40), 2);
  SegmentSettings s = settings(Polarity::Bright);
  s.minArea = 200;
  const Segmentation large = segmentObjects(img, objects, s);
  EXPECT_EQ(large.kept, std::vector<std::size_t>{0});
  EXPECT_EQ(labelAt(large, 53, 40), 1);
  // The area that the region has with its hole filled counts.
  s.maxArea = static_cast<float>(areaOf(all, 1));
  const Segmentation none = segmentObjects(img, objects, s);
  EXPECT_TRUE(none.kept.empty());
  EXPECT_EQ(labelAt(none, 40, 40), 0);
}

// Three quarters of the circle are outside.
TEST(Segment, ACircleCountsInsideTheImage) {
  image<float> img = drawn(60, 60, {disc(0, 0, 14)});
  const Segmentation s = segmentObjects(img, {object(0, 0, 22)}, settings(Polarity::Bright));
  ASSERT_EQ(s.kept.size(), 1U);
  EXPECT_NEAR(areaOf(s, 1), 3.14159 * 14 * 14 / 4, 30);
}

TEST(Segment, RegionsAtTheBorderAreLeftOutOnDemand) {
  const std::vector<Ellipse> discs{disc(40, 4, 12), disc(40, 35, 10)};
  const image<float> img = drawn(80, 60, discs);
  const std::vector<Object> objects{object(40, 6, 10.5), objectOf(discs[1])};
  EXPECT_EQ(segmentObjects(img, objects, {}).kept.size(), 2U);
  SegmentSettings s;
  s.excludeBorder = true;
  EXPECT_EQ(segmentObjects(img, objects, s).kept, std::vector<std::size_t>{1});
}

TEST(Segment, RejectsSettingsOutOfTheirRange) {
  const image<float> img = drawn(40, 40, {disc(20, 20, 8)});
  const auto run = [&](float minArea, float maxArea) {
    SegmentSettings s;
    s.minArea = minArea;
    s.maxArea = maxArea;
    segmentObjects(img, {}, s);
  };
  EXPECT_THROW(run(-1, 10), std::invalid_argument);
  EXPECT_THROW(run(kNan, 10), std::invalid_argument);
  EXPECT_THROW(run(kInfinity, kInfinity), std::invalid_argument);
  EXPECT_THROW(run(5, 4), std::invalid_argument);
  EXPECT_THROW(run(5, kNan), std::invalid_argument);
  EXPECT_NO_THROW(run(5, 5));
}

TEST(Segment, OfNothingIsBackground) {
  const Object o = object(0, 0, 3);
  const auto expectNone = [](const Segmentation& s, int nx, int ny) {
    EXPECT_EQ(s.labels.nx(), nx);
    EXPECT_EQ(s.labels.ny(), ny);
    EXPECT_TRUE(s.kept.empty());
    const std::vector<int> pixels = pixelsOf(s);
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 0), s.labels.npix());
  };
  expectNone(segmentObjects(image<float>(0, 0, 0, 0, 0), {o}, {}), 0, 0);
  expectNone(segmentObjects(image<float>(1, 1, 1, 1, 1), {o}, {}), 1, 1);
  expectNone(segmentObjects(image<unsigned char>(1, 200, 1, 1, 1), {o}, {}), 1, 200);
  expectNone(segmentObjects(image<float>(50, 40, 1, 1, 1), {o}, {}), 50, 40);
  expectNone(segmentObjects(drawn(50, 40, {disc(20, 20, 8)}), {}, {}), 50, 40);
}

TEST(Segment, FortyThousandObjectsHaveARegionEach) {
  constexpr int kPerRow = 200;
  constexpr int kPitch = 10;
  const image<float> tile = drawn(kPitch, kPitch, {disc(5, 5, 3)});
  constexpr int kSide = kPerRow * kPitch;
  image<unsigned char> img(kSide, kSide, 1, 1, 1);
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      img.setPixel(x, y, tile.pixel(x % kPitch, y % kPitch));
    }
  }
  std::vector<Object> objects;
  for (int k = 0; k < kPerRow * kPerRow; ++k) {
    objects.push_back(object(k % kPerRow * kPitch + 5, k / kPerRow * kPitch + 5, 3));
  }
  const Segmentation s = segmentObjects(img, objects, settings(Polarity::Bright));
  ASSERT_EQ(s.kept.size(), objects.size());
  std::vector<int> areas(objects.size() + 1);
  for (const int label : pixelsOf(s)) ++areas[static_cast<std::size_t>(label)];
  for (std::size_t k = 0; k < objects.size(); ++k) {
    ASSERT_EQ(labelAt(s, static_cast<int>(objects[k].x), static_cast<int>(objects[k].y)),
              static_cast<int>(k) + 1);
    ASSERT_NEAR(areas[k + 1], 28, 9) << k;
  }
}

}  // namespace
}  // namespace orva::test
