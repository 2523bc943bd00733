// The memory that labelling takes beside the label image: at most half as much again, on pictures
// of few and of many runs, regions and provisional labels.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/memory_limit.h"
#include "tests/support/reference/bip.h"

namespace orva::test {
namespace {

// Whether the pixel of a row and a column belongs to an object.
using PixelRule = std::function<bool(int x, int y)>;

image<unsigned char> drawn(const Shape& shape, const PixelRule& picture) {
  image<unsigned char> mask = blank<unsigned char>(shape);
  for (int i = 0; i < mask.npix(); ++i) {
    mask.pixels()[i] = picture(i % shape.nx, i / shape.nx) ? 255 : 0;
  }
  return mask;
}

// Windings of one pixel around the middle, with gaps of one pixel, all connected by a column.
bool isOnSpiral(int x, int y, int side) {
  const int ring = std::min(std::min(x, side - 1 - x), std::min(y, side - 1 - y));
  return ring % 2 == 0 || (x == side / 2 && y < side / 2);
}

std::vector<std::pair<std::string, PixelRule>> pictures(int side) {
  std::mt19937 random(3);
  const auto noise = [random](int percent) {
    return
        [random, percent](int, int) mutable { return static_cast<int>(random() % 100) < percent; };
  };
  return {{"solid", [](int, int) { return true; }},
          {"spiral", [side](int x, int y) { return isOnSpiral(x, y, side); }},
          {"checkerboard", [](int x, int y) { return (x + y) % 2 == 0; }},
          {"columns", [](int x, int) { return x % 2 == 0; }},
          {"rows", [](int, int y) { return y % 2 == 0; }},
          {"combs", [](int x, int y) { return y % 3 == 0 ? x % 2 == 0 : y % 3 == 1; }},
          {"noise of half", noise(50)},
          {"noise of a fifth", noise(20)},
          {"noise of two thirds", noise(67)}};
}

// Expects that `work` fits in the label image of `mask`, half as much again and a little for
// streams and for the alignment of large blocks.
void expectHalf(const std::string& name, const Image& mask, const std::function<void()>& work) {
  SCOPED_TRACE(name);
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer answers failed allocations";
  const long labels = 2L * mask.npix();
  const Ending ending = endingWith(labels + labels / 2 + 4 * kMebibyte, [&work] {
    mallopt(M_MMAP_THRESHOLD, 1 << 17);  // no holes in the heap: large blocks are mappings
    work();
  });
  EXPECT_EQ(ending.status, 0) << ending.err;
}

TEST(LabellingMemory, IsAtMostHalfOfThePlane) {
  constexpr int side = 2400;
  for (const auto& [name, picture] : pictures(side)) {
    const image<unsigned char> mask = drawn({side, side}, picture);
    for (const auto type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
      for (const int value : {255, -1}) {
        int n = 0;
        expectHalf(name + ' ' + std::to_string(type) + ' ' + std::to_string(value), mask,
                   [&] { bip::regions(mask, n, value, 1, type); });
      }
    }
  }
}

TEST(LabellingMemory, IsAtMostHalfOfAPartition) {
  image<short> values = blank<short>({2400, 2400});
  std::mt19937 random(4);
  std::generate_n(values.pixels(), values.npix(), [&] { return static_cast<short>(random()); });
  expectHalf("single pixels", values, [&] { bip::regions(values); });
  std::generate_n(values.pixels(), values.npix(), [&] { return static_cast<short>(random() % 2); });
  expectHalf("noise", values, [&] { bip::regions(values); });
}

TEST(LabellingMemory, IsAtMostHalfOfThinImages) {
  for (const Shape& shape : {Shape{6000000, 1}, Shape{1, 6000000}, Shape{1, 1, 6000000},
                             Shape{1500, 2000, 2}, Shape{3, 700000, 3}}) {
    const image<unsigned char> mask = drawn(shape, [](int x, int y) { return (x + y) % 2 == 0; });
    expectHalf(std::to_string(shape.nx) + " wide", mask, [&] {
      int n = 0;
      bip::regions(mask, n, 255, 1, NEIGHBORHOOD_8);
    });
  }
}

// On these pictures, and with reaches that fill the queue, the limit decides how labels are found.
TEST(LabellingMatchesReference, ForManyRuns) {
  constexpr int side = 330;
  for (const auto& [name, picture] : pictures(side)) {
    const image<unsigned char> mask = drawn({side, side}, picture);
    for (const auto type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
      for (const int value : {255, -1}) {
        int n = 0;
        int expected = 0;
        EXPECT_TRUE(sameImage(bip::regions(mask, n, value, 1, type),
                              reference::regions(mask, expected, value, 1, type)))
            << name << ' ' << type << ' ' << value;
        EXPECT_EQ(n, expected) << name;
      }
    }
  }
}

// More than 65536 provisional labels, which end up in few enough regions.
TEST(LabellingMatchesReference, ForManyProvisionalLabels) {
  Random random(6);
  const auto mask = randomMask(random, {1900, 1900}, 0.5);
  for (const int value : {255, -1}) {
    int n = 0;
    int expected = 0;
    EXPECT_TRUE(sameImage(bip::regions(mask, n, value, 1, NEIGHBORHOOD_8),
                          reference::regions(mask, expected, value, 1, NEIGHBORHOOD_8)));
    EXPECT_EQ(n, expected);
  }
}

TEST(LabellingMatchesReference, ForAFarReach) {
  Random random(5);
  for (const Shape& shape : {Shape{70, 60}, Shape{16, 15, 14}, Shape{9000, 1}}) {
    for (const double share : {0.02, 0.3, 1.0}) {
      const auto mask = randomMask(random, shape, share);
      for (const auto type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
        for (const int reach : {5, 900}) {
          int n = 0;
          int expected = 0;
          EXPECT_TRUE(sameImage(bip::regions(mask, n, 255, reach, type),
                                reference::regions(mask, expected, 255, reach, type)))
              << shape.nx << ' ' << share << ' ' << type << ' ' << reach;
          EXPECT_EQ(n, expected);
        }
      }
    }
  }
}

}  // namespace
}  // namespace orva::test
