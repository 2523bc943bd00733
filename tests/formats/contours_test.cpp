// The polygons around labelled pixels.
#include "formats/contours.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orva::test {
namespace {

using formats::Contour;
using formats::contoursOf;
using formats::Corner;
using formats::Polygon;
using formats::Ring;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Rows of digits; '.' is 0.
image<int> labelImage(const std::vector<std::string>& rows) {
  image<int> labels(static_cast<int>(rows.front().size()), static_cast<int>(rows.size()), 1, 1, 1);
  for (int y = 0; y < labels.ny(); ++y) {
    for (int x = 0; x < labels.nx(); ++x) {
      const char c = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
      labels.pixels()[x + y * labels.nx()] = c == '.' ? 0 : c - '0';
    }
  }
  return labels;
}

std::int64_t doubledAreaOf(const Ring& ring) {
  std::int64_t sum = 0;
  for (std::size_t i = 0; i < ring.size(); ++i) {
    const Corner& a = ring[i];
    const Corner& b = ring[(i + 1) % ring.size()];
    sum += std::int64_t{a.x} * b.y - std::int64_t{b.x} * a.y;
  }
  return sum;
}

// The pixels whose center is inside by the even-odd rule.
std::set<std::pair<int, int>> filled(const Polygon& polygon, int nx, int ny) {
  std::set<std::pair<int, int>> pixels;
  std::vector<Ring> rings = polygon.holes;
  rings.push_back(polygon.outer);
  for (int y = 0; y < ny; ++y) {
    for (int x = 0; x < nx; ++x) {
      bool isInside = false;
      for (const Ring& ring : rings) {
        for (std::size_t i = 0; i < ring.size(); ++i) {
          const Corner& a = ring[i];
          const Corner& b = ring[(i + 1) % ring.size()];
          // A vertical side to the left of the center, at its height.
          if (a.x == b.x && a.x <= x && std::min(a.y, b.y) <= y && y < std::max(a.y, b.y)) {
            isInside = !isInside;
          }
        }
      }
      if (isInside) pixels.emplace(x, y);
    }
  }
  return pixels;
}

// The parts of a label that are connected along edges.
std::set<std::set<std::pair<int, int>>> partsOf(const image<int>& labels, int label) {
  std::set<std::pair<int, int>> open;
  for (int y = 0; y < labels.ny(); ++y) {
    for (int x = 0; x < labels.nx(); ++x) {
      if (labels.pixels()[x + y * labels.nx()] == label) open.emplace(x, y);
    }
  }
  std::set<std::set<std::pair<int, int>>> parts;
  while (!open.empty()) {
    std::set<std::pair<int, int>> part;
    std::vector<std::pair<int, int>> next{*open.begin()};
    while (!next.empty()) {
      const auto [x, y] = next.back();
      next.pop_back();
      if (open.erase({x, y}) == 0) continue;
      part.emplace(x, y);
      for (const auto& neighbour : {std::pair(x + 1, y), {x - 1, y}, {x, y + 1}, {x, y - 1}}) {
        next.push_back(neighbour);
      }
    }
    parts.insert(part);
  }
  return parts;
}

// Sides along the axes that alternate, and no corner twice.
void expectSimple(const Ring& ring) {
  ASSERT_GE(ring.size(), 4U);
  std::set<std::pair<int, int>> corners;
  for (std::size_t i = 0; i < ring.size(); ++i) {
    const Corner& a = ring[i];
    const Corner& b = ring[(i + 1) % ring.size()];
    const Corner& c = ring[(i + 2) % ring.size()];
    EXPECT_TRUE((a.x == b.x) != (a.y == b.y));
    EXPECT_TRUE((a.x == b.x) != (b.x == c.x)) << "collinear at " << b.x << ' ' << b.y;
    EXPECT_TRUE(corners.emplace(a.x, a.y).second) << "twice " << a.x << ' ' << a.y;
  }
}

void expectExact(const image<int>& labels) {
  std::map<int, std::set<std::set<std::pair<int, int>>>> expected;
  for (int i = 0; i < labels.npix(); ++i) {
    const int label = labels.pixels()[i];
    if (label > 0 && !expected.contains(label)) expected[label] = partsOf(labels, label);
  }
  std::map<int, std::set<std::set<std::pair<int, int>>>> found;
  int last = 0;
  for (const Contour& contour : contoursOf(labels)) {
    EXPECT_GT(contour.label, last);
    last = contour.label;
    for (const Polygon& polygon : contour.polygons) {
      expectSimple(polygon.outer);
      EXPECT_GT(doubledAreaOf(polygon.outer), 0);
      for (const Ring& hole : polygon.holes) {
        expectSimple(hole);
        EXPECT_LT(doubledAreaOf(hole), 0);
      }
      found[contour.label].insert(filled(polygon, labels.nx(), labels.ny()));
    }
  }
  EXPECT_EQ(found, expected);
}

TEST(Contours, APixelIsASquare) {
  const auto contours = contoursOf(labelImage({"...", "..7"}));
  ASSERT_EQ(contours.size(), 1U);
  EXPECT_EQ(contours[0].label, 7);
  ASSERT_EQ(contours[0].polygons.size(), 1U);
  EXPECT_THAT(contours[0].polygons[0].outer,
              ElementsAre(Corner{2, 1}, Corner{3, 1}, Corner{3, 2}, Corner{2, 2}));
  EXPECT_THAT(contours[0].polygons[0].holes, IsEmpty());
}

TEST(Contours, LabelsComeInAscendingOrder) {
  const auto contours = contoursOf(labelImage({"93.", "..5"}));
  ASSERT_EQ(contours.size(), 3U);
  EXPECT_EQ(contours[0].label, 3);
  EXPECT_EQ(contours[1].label, 5);
  EXPECT_EQ(contours[2].label, 9);
}

TEST(Contours, NoLabelsHaveNoContours) {
  EXPECT_THAT(contoursOf(labelImage({"...", "..."})), IsEmpty());
  EXPECT_THAT(contoursOf(image<int>(0, 0, 1, 1, 1)), IsEmpty());
}

TEST(Contours, ARingHasAHoleAroundAnotherLabel) {
  const image<int> labels = labelImage({"11111", "1...1", "1.2.1", "1...1", "11111"});
  const auto contours = contoursOf(labels);
  ASSERT_EQ(contours.size(), 2U);
  ASSERT_EQ(contours[0].polygons.size(), 1U);
  ASSERT_EQ(contours[0].polygons[0].holes.size(), 1U);
  EXPECT_EQ(contours[0].polygons[0].holes[0].size(), 4U);
  expectExact(labels);
}

TEST(Contours, PixelsThatTouchDiagonallyAreTwoPolygons) {
  const image<int> labels = labelImage({"1..", ".1.", "..1"});
  ASSERT_EQ(contoursOf(labels)[0].polygons.size(), 3U);
  expectExact(labels);
}

TEST(Contours, HolesThatTouchDiagonallyAreTwoRings) {
  const image<int> labels = labelImage({"1111", "1.11", "11.1", "1111"});
  ASSERT_EQ(contoursOf(labels)[0].polygons.size(), 1U);
  EXPECT_EQ(contoursOf(labels)[0].polygons[0].holes.size(), 2U);
  expectExact(labels);
}

TEST(Contours, ARingThatClosesAtACornerHasAHole) {
  const image<int> labels = labelImage({".11", "1.1", "111"});
  const auto contours = contoursOf(labels);
  ASSERT_EQ(contours[0].polygons.size(), 1U);
  EXPECT_EQ(contours[0].polygons[0].holes.size(), 1U);
  expectExact(labels);
}

TEST(Contours, FillingGivesThePixelsOfEveryTinyImage) {
  for (unsigned bits = 0; bits < 1U << 12U; ++bits) {
    image<int> labels(4, 3, 1, 1, 1);
    for (int i = 0; i < 12; ++i) labels.pixels()[i] = static_cast<int>(bits >> i & 1U);
    expectExact(labels);
    if (HasFailure()) FAIL() << bits;
  }
}

TEST(Contours, FillingGivesThePixelsOfRandomImages) {
  std::mt19937 random(19);
  for (int trial = 0; trial < 300; ++trial) {
    const unsigned kinds = 2 + random() % 4;
    image<int> labels(static_cast<int>(1 + random() % 24), static_cast<int>(1 + random() % 24), 1,
                      1, 1);
    for (int i = 0; i < labels.npix(); ++i) labels.pixels()[i] = static_cast<int>(random() % kinds);
    expectExact(labels);
    if (HasFailure()) FAIL() << "trial " << trial;
  }
}

}  // namespace
}  // namespace orva::test
