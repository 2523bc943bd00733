// Image sizes that tests loop over, and the sweep over all widths.
#ifndef ORVA_TESTS_SUPPORT_SHAPES_H
#define ORVA_TESTS_SUPPORT_SHAPES_H

#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "tests/support/images.h"

namespace orva::test {

// Wide enough for every remainder of the loops that take several pixels per iteration.
inline constexpr int kMaxSweepWidth = 130;

// Calls check(width) for every width of the sweep; the first fatal failure ends it.
template <class Check>
void forEveryWidth(const Check& check) {
  for (int width = 1; width <= kMaxSweepWidth; ++width) {
    SCOPED_TRACE("width " + std::to_string(width));
    check(width);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// A single pixel, single rows and columns, plain and odd planes, stacks, channels and time points.
inline std::vector<Shape> oddShapes() {
  return {{1, 1},          {1, 9},       {11, 1},         {2, 2},          {3, 3},
          {16, 5},         {7, 13},      {1, 1, 6},       {5, 4, 3},       {1, 7, 2, 3},
          {1, 40},         {130, 3},     {31, 24},        {7, 1, 4},       {1, 6, 5},
          {5, 4, 1, 2},    {9, 1, 1, 4}, {6, 3, 1, 1, 5}, {4, 3, 2, 3, 2}, {3, 5, 4, 1, 2},
          {33, 2, 1, 2, 2}};
}

// The same, and every width of a sweep with few rows.
inline std::vector<Shape> oddShapesAndWidths() {
  std::vector<Shape> shapes = oddShapes();
  forEveryWidth([&](int width) { shapes.push_back({width, 1 + width % 3, 1, 1 + width % 2}); });
  return shapes;
}

// A shape of the given width with few rows, and with planes, channels and time points at times.
inline Shape shapeOfWidth(Random& random, int nx) {
  Shape shape{nx, randomInt(random, 1, 6)};
  if (randomInt(random, 0, 1) == 1) {
    shape.nz = randomInt(random, 1, 3);
    shape.nc = randomInt(random, 1, 2);
    shape.nt = randomInt(random, 1, 2);
  }
  return shape;
}

// Sizes of x and y up to 12, of z, channel and time point up to 3.
inline Shape randomShape(Random& random) {
  return {randomInt(random, 1, 12), randomInt(random, 1, 12), randomInt(random, 1, 3),
          randomInt(random, 1, 3), randomInt(random, 1, 3)};
}

// Every choice of five sizes in -2 .. 2 that an image may have: those whose product is not
// negative.
inline std::vector<Shape> smallShapes() {
  std::vector<Shape> shapes;
  for (int i = 0; i < 5 * 5 * 5 * 5 * 5; ++i) {
    const auto size = [i](int power) { return i / power % 5 - 2; };
    const Shape s{size(1), size(5), size(25), size(125), size(625)};
    if (s.nx * s.ny * s.nz * s.nc * s.nt >= 0) shapes.push_back(s);
  }
  return shapes;
}

inline std::vector<int> sizesOf(const Image& img) {
  return {img.nx(), img.ny(), img.nz(), img.nc(), img.nt()};
}

// Has the given sizes and as many pixels, and memory if and only if there are any.
inline ::testing::AssertionResult isWhole(const Image& img, const std::vector<int>& sizes) {
  if (sizesOf(img) != sizes) {
    return ::testing::AssertionFailure() << "sizes are " << ::testing::PrintToString(sizesOf(img))
                                         << ", not " << ::testing::PrintToString(sizes);
  }
  if (img.npix() != std::accumulate(sizes.begin(), sizes.end(), 1, std::multiplies<>())) {
    return ::testing::AssertionFailure() << "npix is " << img.npix();
  }
  if ((img.data() == nullptr) != (img.npix() == 0)) {
    return ::testing::AssertionFailure() << "memory does not fit npix";
  }
  return ::testing::AssertionSuccess();
}

}  // namespace orva::test

#endif
