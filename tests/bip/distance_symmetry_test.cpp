// Distances and labels spread by them, of turned and shifted images.
//
// Exceptions: a distance is a sum of roots, so that a turned path differs in its last bits, and its
// byte by 1; the passes leave out the border, which follows the scan; of regions at one distance
// propagate() takes that which the scan reaches first. In a volume no pass repeats the steps
// (1, 1, -1) and (-1, -1, 1): a long way along them is longer than along the other diagonals. So a
// volume with much object follows only what keeps that diagonal: x and y exchanged, or all three
// axes turned over. Planes are no symmetry, as distances run along z.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

// A sum of at most 60 steps below 100 is off by at most 60 * 100 * 2^-24.
constexpr float kPathError = 4e-4F;

// Background all round, so that no distance follows the border.
const Shape kInner[] = {{24, 19}, {30, 7}, {11, 10, 8}};

template <class T>
image<T> withBackground(const image<T>& img, T background) {
  return composed<T>(shapeOf(img), [&](int x, int y, int f) {
    const bool border = x == 0 || y == 0 || x == img.nx() - 1 || y == img.ny() - 1 ||
                        (img.nz() > 1 && (f == 0 || f == img.nz() - 1));
    return border ? background : pixelAt(img, x, y, f);
  });
}

TEST(TurnedMasks, HaveTurnedDistances) {
  Random random(310);
  for (const Shape& shape : kInner) {
    for (int round = 0; round < 10; ++round) {
      const Mask mask = withBackground<unsigned char>(randomMask(random, shape, 0.97), 0);
      const image<float> distance = bip::fchamfer(mask);
      EXPECT_LT(distance.max(), 100.0F);
      for (std::size_t t = 0; t < 4; ++t) {
        const image<float> turned = bip::fchamfer(volumeSymmetries<unsigned char>()[t](mask));
        const image<float> back = volumeSymmetries<float>()[t](turned);
        for (int i = 0; i < back.npix(); ++i) {
          ASSERT_NEAR(back.pixels()[i], distance.pixels()[i], kPathError) << i;
        }
      }
    }
  }
}

TEST(TurnedLabels, HaveTurnedDistances) {
  Random random(317);
  for (const Shape& shape : kInner) {
    for (int round = 0; round < 10; ++round) {
      const Labels labels = withBackground<short>(randomLabels(random, shape, 1), -1);
      const image<float> distance = bip::fchamfer(labels);
      for (std::size_t t = 0; t < 4; ++t) {
        const image<float> turned = bip::fchamfer(volumeSymmetries<short>()[t](labels));
        const image<float> back = volumeSymmetries<float>()[t](turned);
        for (int i = 0; i < back.npix(); ++i) {
          ASSERT_NEAR(back.pixels()[i], distance.pixels()[i], kPathError) << i;
        }
      }
    }
  }
}

TEST(FramedMasks, HaveTheSameDistancesWhereverTheyLie) {
  Random random(311);
  for (int round = 0; round < 10; ++round) {
    const Mask mask = withBackground<unsigned char>(randomMask(random, {21, 16}, 0.95), 0);
    EXPECT_TRUE(sameImage(bip::fchamfer(framed<unsigned char>(mask, 33, 30, 6, round, 0)),
                          framed(bip::fchamfer(mask), 33, 30, 6, round, 0.0F)));
    for (const unsigned char background : {std::uint8_t{0}, std::uint8_t{255}}) {
      EXPECT_TRUE(sameImage(
          bip::chamfer(framed<unsigned char>(mask, 33, 30, 6, round, 0), background == 255),
          framed(bip::chamfer(mask, background == 255), 33, 30, 6, round, background)));
    }
  }
}

template <class T>
image<T> turnedOver(const image<T>& img) {
  return flipped(upsideDown(backToFront(img)));
}

// What the exception is: one step of it is taken next to the background. The shortest way over two
// more without another is by three steps, each along two of the axes.
TEST(Volumes, HaveOneDiagonalThatNoPassFollows) {
  const auto distanceTo = [](int dx, int dy, int dz) {
    Mask mask = composed<unsigned char>(
        {13, 13, 13}, [](int, int, int) { return static_cast<unsigned char>(255); });
    mask.setPixel(6, 6, 6, 0.0F);
    return bip::fchamfer(mask).pixel(6 + dx, 6 + dy, 6 + dz);
  };
  const float straight = 3.0F * std::sqrt(3.0F);
  const float detour = std::sqrt(3.0F) + 3.0F * std::sqrt(2.0F);
  for (const int s : {-1, 1}) {
    EXPECT_NEAR(distanceTo(3 * s, 3 * s, 3 * s), straight, kPathError);
    EXPECT_NEAR(distanceTo(-3 * s, 3 * s, 3 * s), straight, kPathError);
    EXPECT_NEAR(distanceTo(3 * s, -3 * s, 3 * s), straight, kPathError);
    EXPECT_NEAR(distanceTo(3 * s, 3 * s, -3 * s), detour, kPathError);
  }
}

// With no background on the border, along which no pass goes.
TEST(TurnedVolumes, OfMuchObjectHaveDistancesWithTheirDiagonal) {
  Random random(318);
  const Shape shape{15, 13, 12};
  for (int round = 0; round < 10; ++round) {
    const Mask mask = withBackground<unsigned char>(randomMask(random, shape, 0.998), 255);
    const image<float> distance = bip::fchamfer(mask);
    const auto isInner = Image::interior(shape.nx, shape.ny, shape.nz);
    const image<float> backs[] = {transposed(bip::fchamfer(transposed(mask))),
                                  turnedOver(bip::fchamfer(turnedOver(mask)))};
    for (const image<float>& back : backs) {
      for (int i = 0; i < back.npix(); ++i) {
        if (isInner[static_cast<std::size_t>(i)]) {
          ASSERT_NEAR(back.pixels()[i], distance.pixels()[i], kPathError) << i;
        }
      }
    }
  }
}

// Distances of at least 1 in pixels differ by 255 * 2 * kPathError / 1 < 1 once they are stretched.
TEST(TurnedMasks, HaveTurnedBytesOfDistances) {
  Random random(319);
  for (const Shape& shape : kInner) {
    const Mask mask = withBackground<unsigned char>(randomMask(random, shape, 0.97), 0);
    for (const bool invert : {false, true}) {
      const Mask bytes = bip::chamfer(mask, invert);
      ASSERT_EQ(bytes.fmax() - bytes.fmin(), 255.0F);
      for (const auto turn : volumeSymmetries<unsigned char>()) {
        const Mask back = turn(bip::chamfer(turn(mask), invert));
        for (int i = 0; i < back.npix(); ++i) {
          ASSERT_NEAR(back.pixels()[i], bytes.pixels()[i], 1) << i;
        }
      }
    }
  }
}

Labels spread(const Labels& seeds, float farthest) {
  Labels result = seeds.duplicate();
  bip::propagate(result, farthest);
  return result;
}

constexpr int kSeeds = 4;

// Single pixels of each label, no nearer to the border than `margin`.
Labels someSeeds(Random& random, const Shape& shape, int margin) {
  Labels seeds = composed<short>(shape, [](int, int, int) { return short{-1}; });
  for (short k = 0; k < kSeeds; ++k) {
    seeds.setPixel(randomInt(random, margin, shape.nx - 1 - margin),
                   randomInt(random, margin, shape.ny - 1 - margin),
                   shape.nz == 1 ? 0 : randomInt(random, 1, shape.nz - 2), static_cast<float>(k));
  }
  return seeds;
}

// Whether the pixels are clearly nearer to one region than to all others, off the border.
std::vector<bool> areClear(const Labels& seeds) {
  std::vector<image<float>> distances;
  for (short k = 0; k < kSeeds; ++k) {
    Mask others = blank<unsigned char>(shapeOf(seeds));
    for (int i = 0; i < others.npix(); ++i) others.pixels()[i] = seeds.pixels()[i] == k ? 0 : 255;
    distances.push_back(bip::fchamfer(others));
  }
  std::vector<bool> result = seeds.interior();
  for (int i = 0; i < seeds.npix(); ++i) {
    std::vector<float> d;
    for (const image<float>& from : distances) d.push_back(from.pixels()[i]);
    std::sort(d.begin(), d.end());
    if (d[1] - d[0] < 2 * kPathError) result[static_cast<std::size_t>(i)] = false;
  }
  return result;
}

TEST(TurnedLabels, AreSpreadToTheSamePixels) {
  Random random(312);
  const std::vector<Symmetry<short>> ofVolumes = {transposed<short>, turnedOver<short>};
  for (const Shape& shape : {Shape{26, 21}, Shape{14, 12, 9}}) {
    for (int round = 0; round < 12; ++round) {
      const Labels seeds = someSeeds(random, shape, 1);
      const std::vector<bool> isClear = areClear(seeds);
      EXPECT_GT(std::count(isClear.begin(), isClear.end(), true), 300);
      const Labels whole = spread(seeds, 9000.0F);
      for (const auto turn : shape.nz == 1 ? planeSymmetries<short>() : ofVolumes) {
        const Labels back = turn(spread(turn(seeds), 9000.0F));
        for (int i = 0; i < back.npix(); ++i) {
          if (isClear[static_cast<std::size_t>(i)]) {
            ASSERT_EQ(back.pixels()[i], whole.pixels()[i]) << i;
          }
        }
      }
    }
  }
}

// Seeds that reach no border.
TEST(FramedLabels, AreSpreadToTheSamePixelsWhereverTheyLie) {
  Random random(320);
  for (const Shape& shape : {Shape{26, 21}, Shape{22, 19, 5}}) {
    for (int round = 0; round < 10; ++round) {
      const Labels seeds = someSeeds(random, shape, 6);
      const Labels disks = spread(seeds, 4.5F);
      ASSERT_FALSE(sameImage(disks, seeds));
      EXPECT_TRUE(sameImage(spread(framed<short>(seeds, 39, 37, 3 + round, 7, -1), 4.5F),
                            framed<short>(disks, 39, 37, 3 + round, 7, -1)));
    }
  }
}

}  // namespace
}  // namespace orva::test
