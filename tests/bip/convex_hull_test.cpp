#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <locale>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/locale.h"
#include "tests/support/reference/hull.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

// What the operation returns, and its console line in `printed`.
template <class Operation>
image<short> resultAndPrint(Operation operation, std::string& printed) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const image<short> result = operation();
  printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  return result;
}

image<short> hull(const image<short>& labels, int precision, std::string& printed) {
  return resultAndPrint(
      [&] {
        image<short> result = labels.duplicate();
        bip::convexHull(result, precision);
        return result;
      },
      printed);
}

image<short> hull(const Mask& mask, int precision, std::string& printed) {
  return resultAndPrint([&] { return bip::convexHull(mask, precision); }, printed);
}

template <class T>
image<short> hull(const image<T>& img, int precision) {
  std::string ignored;
  return hull(img, precision, ignored);
}

image<short> referenceHull(const image<short>& labels, int precision) {
  image<short> result = labels.duplicate();
  reference::convexHull(result, precision);
  return result;
}

// Some separate pixels of each label, so that hulls have many shapes and overlap.
image<short> randomDots(Random& random, const Shape& shape, int maxLabel) {
  image<short> labels = blank<short>(shape);
  for (int i = 0; i < labels.npix(); ++i) {
    labels.pixels()[i] = static_cast<short>(randomInt(random, -5, -1));
  }
  for (int dots = randomInt(random, 0, 3 * (maxLabel + 1)); dots > 0 && !labels.isNull(); --dots) {
    labels.pixels()[randomInt(random, 0, labels.npix() - 1)] =
        static_cast<short>(randomInt(random, 0, maxLabel));
  }
  return labels;
}

TEST(ConvexHull, FillsTheConcaveCornerOfAnL) {
  const image<short> labels = labelsOf({"...........",  //
                                        ".0.........",  //
                                        ".0.........",  //
                                        ".0.........",  //
                                        ".0.........",  //
                                        ".0.........",  //
                                        ".0.........",  //
                                        ".0.........",  //
                                        ".0.........",  //
                                        ".000000000.",  //
                                        "..........."});
  // The true hull: the slabs of many directions cut along the diagonal.
  const image<short> triangle = hull(labels, 50);
  for (int y = 0; y < 11; ++y) {
    for (int x = 0; x < 11; ++x) {
      const bool inside = x >= 1 && y <= 9 && x <= y;
      EXPECT_EQ(triangle.pixel(x, y), inside ? 0.0F : -1.0F) << x << " " << y;
    }
  }
  // A hexagon is looser than the triangle and tighter than the box.
  const image<short> hexagon = hull(labels, 3);
  EXPECT_TRUE(sameImage(hexagon, referenceHull(labels, 3)));
  EXPECT_EQ(hexagon.pixel(9, 1), -1.0F);
  EXPECT_EQ(hexagon.pixel(5, 5), 0.0F);
  EXPECT_GT(std::count(hexagon.pixels(), hexagon.pixels() + 121, 0),
            std::count(triangle.pixels(), triangle.pixels() + 121, 0));
}

// The slabs of directions 0, 60 and 120 degrees through the four points (x, y).
TEST(ConvexHull, WithThreeDirectionsIsAHexagon) {
  const image<short> labels = labelsOf({"....0....",  //
                                        ".........",  //
                                        ".........",  //
                                        ".........",  //
                                        "0.......0",  //
                                        ".........",  //
                                        ".........",  //
                                        ".........",  //
                                        "....0...."});
  const image<short> hexagon = hull(labels, 3);
  for (int y = 0; y < 9; ++y) {
    for (int x = 0; x < 9; ++x) {
      const double u = x - 4;
      const double v = y - 4;
      // A point lies 4 off the middle along y: its projections on 60 and 120 degrees are the
      // widest.
      const double bound = 4 * 0.8660254 + 1e-4;
      const bool inside =
          std::abs(0.5 * u + 0.8660254 * v) <= bound && std::abs(-0.5 * u + 0.8660254 * v) <= bound;
      EXPECT_EQ(hexagon.pixel(x, y), inside ? 0.0F : -1.0F) << x << " " << y;
    }
  }
}

TEST(ConvexHull, BringsThePrecisionInto3To50) {
  Random random(1);
  for (const Shape& shape : {Shape{40, 33}, Shape{7, 6, 5}}) {
    for (int round = 0; round < 5; ++round) {
      const image<short> labels = randomDots(random, shape, 2);
      for (const int few : {kMin, -5, 0, 1, 2}) {
        EXPECT_TRUE(sameImage(hull(labels, few), hull(labels, 3))) << few;
      }
      for (const int many : {51, 1000, kMax}) {
        EXPECT_TRUE(sameImage(hull(labels, many), hull(labels, 50))) << many;
      }
    }
  }
}

// A ring: the more directions the rounder its hull.
TEST(ConvexHull, TakesThePrecisionAsTheNumberOfDirections) {
  image<short> disc = blank<short>({601, 601});
  for (int i = 0; i < disc.npix(); ++i) {
    const int x = i % 601 - 300;
    const int y = i / 601 - 300;
    const int square = x * x + y * y;
    disc.pixels()[i] = square <= 300 * 300 && square > 297 * 297 ? 0 : -1;
  }
  auto before = std::count(disc.pixels(), disc.pixels() + disc.npix(), -2);
  for (const int precision : {50, 49, 5, 4, 3}) {
    const image<short> filled = hull(disc, precision);
    EXPECT_TRUE(sameImage(filled, referenceHull(disc, precision))) << precision;
    const auto size = std::count(filled.pixels(), filled.pixels() + filled.npix(), 0);
    EXPECT_NE(size, before) << precision;
    before = size;
  }
}

TEST(ConvexHull, LeavesConvexRegions) {
  for (const auto& rows :
       {std::vector<std::string>{"0"}, std::vector<std::string>{"....", ".00.", ".00."},
        std::vector<std::string>{"...", ".4.", "..."}, std::vector<std::string>{"0000", "1111"},
        std::vector<std::string>{"0..", "00.", "000"}}) {
    EXPECT_TRUE(sameImage(hull(labelsOf(rows), 50), labelsOf(rows)));
  }
}

TEST(ConvexHull, JoinsThePartsOfARegionAndTakesPixelsAtItsBounds) {
  EXPECT_TRUE(sameImage(hull(labelsOf({"2...2..", ".......", "......."}), 50),
                        labelsOf({"22222..", ".......", "......."})));
  EXPECT_TRUE(sameImage(hull(labelsOf({"...", "0..", "...", "...", "0.."}), 3),
                        labelsOf({"...", "0..", "0..", "0..", "0.."})));
}

TEST(ConvexHull, OfOverlappingRegionsGivesTheLowerLabel) {
  EXPECT_TRUE(sameImage(hull(labelsOf({"1..0.1...0"}), 10), labelsOf({"1110010000"})));
  EXPECT_TRUE(sameImage(hull(labelsOf({"0..1.0...1"}), 10), labelsOf({"0001001111"})));
}

TEST(ConvexHull, NeverChangesTheRegionsInside) {
  const image<short> labels = labelsOf({"0000",  //
                                        "0.10",  //
                                        "0..0",  //
                                        "0000"});
  EXPECT_TRUE(sameImage(hull(labels, 10), labelsOf({"0000",  //
                                                    "0010",  //
                                                    "0000",  //
                                                    "0000"})));
}

TEST(ConvexHull, OfARegionAllOverTheImageChangesNothing) {
  std::string printed;
  EXPECT_TRUE(sameImage(hull(blank<short>({5, 4}), 10, printed), blank<short>({5, 4})));
  EXPECT_EQ(printed, "1 regions detected.\n");
  EXPECT_TRUE(sameImage(hull(blank<short>({5, 4, 3}), 10), blank<short>({5, 4, 3})));
}

TEST(ConvexHull, CountsUnusedLabelsAndSkipsNegativeOnes) {
  std::string printed;
  EXPECT_TRUE(
      sameImage(hull(imageOf<short>({7, 1}, {-3, 40, -32768, -2, 40, -2, 32767}), 10, printed),
                imageOf<short>({7, 1}, {-3, 40, 40, 40, 40, -2, 32767})));
  EXPECT_EQ(printed, "32768 regions detected.\n");
}

TEST(ConvexHull, PrintsTheNumberOfRegions) {
  std::string printed;
  hull(labelsOf({"...", "..."}), 10, printed);
  EXPECT_EQ(printed, "0 regions detected.\n");
  hull(labelsOf({"0.3"}), 10, printed);
  EXPECT_EQ(printed, "4 regions detected.\n");
  hull(maskOf({"...", "..."}), 10, printed);
  EXPECT_EQ(printed, "0 regions detected.\n");
  hull(maskOf({"#.#", "..#", "#.."}), 10, printed);
  EXPECT_EQ(printed, "3 regions detected.\n");
}

TEST(ConvexHull, PrintsTheNumberPlainlyWhateverTheLocaleOfTheStream) {
  const std::locale before = std::cout.imbue(std::locale(std::locale(), new ForeignDigits));
  std::string printed;
  hull(imageOf<short>({1, 1}, {4999}), 10, printed);
  std::cout.imbue(before);
  EXPECT_EQ(printed, "5000 regions detected.\n");
}

TEST(ConvexHull, OfANullImageIsNullAndSilent) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}, Shape{5, 0, 3}}) {
    std::string printed;
    const auto labels = blank<short>(shape);
    EXPECT_TRUE(sameImage(hull(labels, 10, printed), labels));
    EXPECT_EQ(printed, "");
    EXPECT_TRUE(isWhole(hull(blank<unsigned char>(shape), 10, printed), {0, 1, 1, 1, 1}));
    EXPECT_EQ(printed, "");
  }
}

TEST(ConvexHull, OfAMaskLabelsIts255RegionsAlongTheAxes) {
  EXPECT_TRUE(sameImage(hull(maskOf({"###..9.",  //
                                     "#....#.",  //
                                     "#...#..",  //
                                     "......#"}),
                             50),
                        labelsOf({"000....",  //
                                  "00...1.",  //
                                  "0...2..",  //
                                  "......3"})));
}

TEST(ConvexHull, OfAVolumeFillsAlongZ) {
  image<short> labels = blank<short>({5, 5, 5});
  std::fill_n(labels.pixels(), labels.npix(), short{-1});
  labels.setPixel(2, 2, 0, 0.0F);
  labels.setPixel(2, 2, 4, 0.0F);
  image<short> line = labels.duplicate();
  for (int z = 1; z < 4; ++z) line.setPixel(2, 2, z, 0.0F);
  EXPECT_TRUE(sameImage(hull(labels, 3), line));
  // With the four corners of a plane between: a double pyramid.
  for (const int x : {0, 4}) {
    for (const int y : {0, 4}) labels.setPixel(x, y, 2, 0.0F);
  }
  const image<short> pyramid = hull(labels, 20);
  for (int i = 0; i < pyramid.npix(); ++i) {
    const int off = std::max(std::abs(i % 5 - 2), std::abs(i / 5 % 5 - 2));
    const bool inside = off + std::abs(i / 25 - 2) <= 2;
    EXPECT_EQ(pyramid.pixels()[i], inside ? 0 : -1) << i;
  }
}

// Past a million the start values of the ranges count as bounds, so that slabs reach past the
// region. Two pixels, their line across the second of 50 directions:
TEST(ConvexHull, FarFromTheOriginIsLooseWhichIsIntended) {
  const auto pair = [](int nx) {
    image<short> labels = blank<short>({nx, 17});
    std::fill_n(labels.pixels(), labels.npix(), short{-1});
    labels.setPixel(nx - 2, 16, 0.0F);
    labels.setPixel(nx - 1, 0, 0.0F);
    return labels;
  };
  const auto size = [](const image<short>& labels) {
    return std::count(labels.pixels(), labels.pixels() + labels.npix(), 0);
  };
  const image<short> far = pair(1002100);
  const image<short> filled = hull(far, 50);
  EXPECT_TRUE(sameImage(filled, referenceHull(far, 50)));
  EXPECT_GT(size(filled), size(hull(pair(2), 50)));
}

TEST(ConvexHull, ProcessesTheFirstVolumeAndCountsTheLabelsOfAll) {
  Random random(2);
  for (const Shape& shape : {Shape{12, 9, 1, 3}, Shape{12, 9, 1, 1, 2}, Shape{6, 5, 4, 2, 2}}) {
    image<short> labels = randomDots(random, shape, 2);
    labels.pixels()[labels.npix() - 1] = 6;
    labels.pixels()[labels.npix() - 3] = 6;
    image<short> first = blank<short>({shape.nx, shape.ny, shape.nz});
    std::copy_n(labels.pixels(), first.npix(), first.pixels());
    image<short> expected = labels.duplicate();
    const image<short> filled = hull(first, 7);
    std::copy_n(filled.pixels(), filled.npix(), expected.pixels());
    std::string printed;
    EXPECT_TRUE(sameImage(hull(labels, 7, printed), expected));
    EXPECT_EQ(printed, "7 regions detected.\n");
    const Mask mask = randomMask(random, shape, 0.4);
    Mask firstMask = blank<unsigned char>({shape.nx, shape.ny, shape.nz});
    std::copy_n(mask.pixels(), firstMask.npix(), firstMask.pixels());
    EXPECT_TRUE(sameImage(hull(mask, 7), hull(firstMask, 7)));
  }
}

void expectMatchesReference(const image<short>& labels, const Mask& mask,
                            const std::vector<int>& precisions) {
  for (const int precision : precisions) {
    std::string printed;
    EXPECT_TRUE(sameImage(hull(labels, precision, printed), referenceHull(labels, precision)));
    EXPECT_EQ(printed, std::to_string(bip::regionNumber(labels)) + " regions detected.\n");
    EXPECT_TRUE(sameImage(hull(mask, precision), reference::convexHull(mask, precision)));
  }
}

TEST(ConvexHullMatchesReferenceAtEveryWidth, ForOddShapes) {
  Random random(3);
  for (const Shape& shape : oddShapesAndWidths()) {
    const Mask mask = randomMask(random, shape, 0.1 * randomInt(random, 2, 8));
    const bool isVolume = shape.nz > 1;
    expectMatchesReference(randomLabels(random, shape, 2), mask, {3, isVolume ? 5 : 17});
    expectMatchesReference(randomDots(random, shape, 3), mask, {-5, 0, 4, isVolume ? 6 : 1000});
  }
}

TEST(ConvexHullMatchesReferenceAtEveryWidth, ForManyPlanesAndVolumes) {
  Random random(4);
  forEveryWidth([&](int nx) {
    const Shape shape{nx, randomInt(random, 4, 30)};
    expectMatchesReference(randomDots(random, shape, 2), randomMask(random, shape, 0.6),
                           {1, 3, 49, 50, 1000, randomInt(random, 4, 48)});
  });
  for (int round = 0; round < 12; ++round) {
    const Shape shape{randomInt(random, 2, 8), randomInt(random, 2, 8), randomInt(random, 2, 6)};
    expectMatchesReference(randomDots(random, shape, 2), randomMask(random, shape, 0.6),
                           {-5, 3, 4, 9, round == 0 ? 1000 : 7});
  }
}

}  // namespace
}  // namespace orva::test
