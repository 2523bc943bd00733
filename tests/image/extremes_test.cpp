// Of equal extremes the first is taken, however far apart they lie.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/images.h"

namespace orva::test {
namespace {

bool sameColour(const Rgb& a, const Rgb& b) { return a.c0 == b.c0 && a.c1 == b.c1 && a.c2 == b.c2; }

// Places around the ends of blocks of 32 and of 1024 pixels, and behind the last whole block.
const std::vector<int>& places() {
  static const std::vector<int> all = {0,    1,    31,   32,   33,   63,   64,   1000, 1023,
                                       1024, 1025, 1500, 2047, 2048, 2049, 3071, 3073, 3099};
  return all;
}
constexpr int kCount = 3100;

// Calls check(i, j) for every two of the places, the earlier one first.
template <class Check>
void forEachTwoPlaces(const Check& check) {
  for (const int i : places()) {
    for (const int j : places()) {
      if (i < j) check(i, j);
    }
  }
}

TEST(EqualExtremes, OfZerosKeepTheSignOfTheFirst) {
  forEachTwoPlaces([](int i, int j) {
    for (const float first : {0.0F, -0.0F}) {
      image<float> img = blank<float>({kCount, 1});
      std::fill_n(img.pixels(), kCount, 1.0F);
      img.setPixel(i, first);
      img.setPixel(j, -first);
      EXPECT_EQ(std::signbit(img.min()), std::signbit(first)) << i << " and " << j;
      EXPECT_EQ(img.min(), 0.0F);
      std::replace(img.pixels(), img.pixels() + kCount, 1.0F, -1.0F);
      EXPECT_EQ(std::signbit(img.max()), std::signbit(first)) << i << " and " << j;
      EXPECT_EQ(img.max(), 0.0F);
      EXPECT_EQ(std::signbit(img.fmax()), std::signbit(first));
    }
  });
}

// Two different colours of about half the largest brightness whose luminance is the same float.
std::vector<Rgb> equallyBright() {
  std::vector<Rgb> found;
  for (int c0 = 0; c0 < 256 && found.empty(); ++c0) {
    for (int c2 = 0; c2 < 256 && found.empty(); ++c2) {
      for (int c1 = 100; c1 < 156; ++c1) {
        const Rgb a{static_cast<unsigned char>(c0), 128, static_cast<unsigned char>(c2)};
        const Rgb b{static_cast<unsigned char>(255 - c0), static_cast<unsigned char>(c1),
                    static_cast<unsigned char>(c2 / 2)};
        if (luminance(a) == luminance(b) && !sameColour(a, b)) found = {a, b};
      }
    }
  }
  return found;
}

TEST(EqualExtremes, OfColoursAreTheFirstByBrightness) {
  const std::vector<Rgb> two = equallyBright();
  ASSERT_EQ(two.size(), 2U);
  forEachTwoPlaces([&two](int i, int j) {
    for (const int swapped : {0, 1}) {
      const Rgb first = two[static_cast<std::size_t>(swapped)];
      const Rgb second = two[static_cast<std::size_t>(1 - swapped)];
      image<Rgb> img = blank<Rgb>({kCount, 1});
      for (const unsigned char others : std::vector<unsigned char>{0, 255}) {
        std::fill_n(img.pixels(), kCount, Rgb{others, others, others});
        img.pixels()[i] = first;
        img.pixels()[j] = second;
        EXPECT_TRUE(sameColour(others == 0 ? img.max() : img.min(), first)) << i << " and " << j;
      }
    }
  });
}

}  // namespace
}  // namespace orva::test
