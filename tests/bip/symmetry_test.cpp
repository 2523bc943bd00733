// Operations without a preferred direction: what they give for a turned image is what they give
// for the image, turned. Distances, hulls, shifts and the order of planes have files of their own.
//
// Exceptions, each where it belongs: the numbers of regions follow the raster order; axial
// neighbours past the border are held there, one-sidedly; mean coordinates are rounded down, and
// sums of fractions differ in their last bits; the first region in raster order survives
// selectRegionsBySize(); planes are no symmetry of what grows along z, except that they may be
// passed from back to front.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

const Shape kShapes[] = {{23, 17}, {40, 9}, {1, 30}, {31, 1}, {9, 8, 5}, {5, 12, 7}};

// Regions in the order of their first pixels: images of one partition become the same.
Labels renumbered(const Labels& labels) {
  std::map<short, short> names;
  Labels result = labels.duplicate();
  for (int i = 0; i < result.npix(); ++i) {
    short& k = result.pixels()[i];
    if (k >= 0) k = names.try_emplace(k, static_cast<short>(names.size())).first->second;
  }
  return result;
}

Mask smallBytes(Random& random, const Shape& shape, int max) {
  Mask img = blank<unsigned char>(shape);
  std::generate_n(img.pixels(), img.npix(),
                  [&] { return static_cast<unsigned char>(randomInt(random, 0, max)); });
  return img;
}

TEST(TurnedRegions, AreAsMany) {
  Random random(301);
  struct Neighbours {
    int reach;
    NeighborhoodType type;
  };
  for (const Shape& shape : kShapes) {
    for (int round = 0; round < 6; ++round) {
      const Mask img = smallBytes(random, shape, 2);
      for (const int value : {1, -1}) {
        for (const Neighbours& by :
             {Neighbours{1, NEIGHBORHOOD_4}, Neighbours{1, NEIGHBORHOOD_8},
              Neighbours{2, NEIGHBORHOOD_8}, Neighbours{0, NEIGHBORHOOD_4}}) {
          int n = 0;
          bip::regions(img, n, value, by.reach, by.type);
          for (const Symmetry<unsigned char> turn : volumeSymmetries<unsigned char>()) {
            int turnedN = 0;
            bip::regions(turn(img), turnedN, value, by.reach, by.type);
            EXPECT_EQ(turnedN, n);
          }
        }
      }
    }
  }
}

// A pixel nearer to the border than the reach has the border pixel as its neighbour, which does not
// have it: what such regions join depends on where they are begun. A background keeps them apart.
TEST(TurnedRegions, OfAxialNeighboursFartherAwayNeedABackground) {
  Random random(316);
  for (int round = 0; round < 10; ++round) {
    const Mask mask = framed<unsigned char>(randomMask(random, {15, 13}, 0.4), 19, 17, 2, 2, 0);
    int n = 0;
    bip::regions(mask, n, 255, 2, NEIGHBORHOOD_4);
    for (const Symmetry<unsigned char> turn : planeSymmetries<unsigned char>()) {
      int turnedN = 0;
      bip::regions(turn(mask), turnedN, 255, 2, NEIGHBORHOOD_4);
      EXPECT_EQ(turnedN, n);
    }
  }
}

TEST(TurnedRegions, CoverTheTurnedPixels) {
  Random random(302);
  for (const Shape& shape : kShapes) {
    for (int round = 0; round < 6; ++round) {
      const Mask mask = randomMask(random, shape, 0.5);
      const Labels areas = randomLabels(random, shape, 2);
      const Labels partition = bip::regions(areas);
      for (std::size_t t = 0; t < volumeSymmetries<short>().size(); ++t) {
        const auto turn = volumeSymmetries<short>()[t];
        const Mask turnedMask = volumeSymmetries<unsigned char>()[t](mask);
        for (const auto type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
          int n = 0;
          const Labels labels = bip::regions(mask, n, 255, 1, type);
          const Labels turned = bip::regions(turnedMask, n, 255, 1, type);
          EXPECT_TRUE(sameImage(renumbered(turn(turned)), labels));
        }
        EXPECT_TRUE(sameImage(renumbered(turn(bip::regions(turn(areas)))), partition));
      }
    }
  }
}

TEST(FramedRegions, KeepTheirNumbersAndTheirShapes) {
  Random random(303);
  for (int round = 0; round < 10; ++round) {
    const Mask mask = randomMask(random, {13, 11}, 0.5);
    const Mask moved = framed<unsigned char>(mask, 30, 29, 4 + round, 9, 0);
    EXPECT_TRUE(sameImage(bip::regions(moved),
                          framed<short>(bip::regions(mask), 30, 29, 4 + round, 9, -1)));
  }
}

// The record of a region whose image was turned, turned back. A mean coordinate that is no whole
// number is rounded down on either side: then it is one less than the mirrored one.
struct Bounds {
  int xmin, xmax, ymin, ymax, zmin, zmax, npix, radius;
  bool operator==(const Bounds&) const = default;
};

Bounds boundsOf(const RegionFeature& f) {
  return {f.xmin, f.xmax, f.ymin, f.ymax, f.zmin, f.zmax, f.npix, f.radius};
}

TEST(TurnedRegionFeatures, AreTurned) {
  Random random(304);
  const int n = 6;
  for (const Shape& shape : kShapes) {
    const Labels labels = randomLabels(random, shape, n - 1);
    const Mask brightness = smallBytes(random, shape, 255);
    const auto plain = bip::regionFeatures(labels, n, brightness);
    for (std::size_t t = 0; t < 4; ++t) {
      const auto turned = bip::regionFeatures(volumeSymmetries<short>()[t](labels), n,
                                              volumeSymmetries<unsigned char>()[t](brightness));
      for (std::size_t k = 0; k < n; ++k) {
        Bounds back = boundsOf(turned[k]);
        const RegionFeature& f = plain[k];
        int cx = turned[k].cx;
        int cy = turned[k].cy;
        int cz = turned[k].cz;
        if (f.npix > 0) {
          const auto mirror = [](int size, int& low, int& high, int& center, int expected) {
            low = std::exchange(high, size - 1 - low);
            low = size - 1 - low;
            const int mirrored = size - 1 - center;
            EXPECT_TRUE(mirrored == expected || mirrored == expected + 1) << mirrored;
            center = expected;
          };
          if (t == 0) mirror(shape.nx, back.xmin, back.xmax, cx, f.cx);
          if (t == 1) mirror(shape.ny, back.ymin, back.ymax, cy, f.cy);
          if (t == 3) mirror(shape.nz, back.zmin, back.zmax, cz, f.cz);
          if (t == 2) {
            std::swap(back.xmin, back.ymin);
            std::swap(back.xmax, back.ymax);
            std::swap(cx, cy);
          }
        }
        EXPECT_EQ(back, boundsOf(f)) << "turn " << t << " region " << k;
        EXPECT_EQ((std::vector{cx, cy, cz}), (std::vector{f.cx, f.cy, f.cz}));
        // Sums of bytes are exact.
        EXPECT_EQ(turned[k].mean, f.mean);
        // Squares of distances to a rounded mean are not: each of the npix additions is off by at
        // most a 2^-24 share of the sum.
        EXPECT_NEAR(turned[k].var, f.var, 2.0F * 6e-8F * static_cast<float>(f.npix) * f.var);
      }
    }
  }
}

TEST(RearrangedPixels, HaveTheSameSortedBrightnessAndHistogram) {
  Random random(305);
  for (const Shape& shape : kShapes) {
    const Labels labels = randomLabels(random, shape, 4);
    const Mask img = smallBytes(random, shape, 255);
    const auto order = shuffledFrames(random, img);
    const auto lists = bip::regionIntensityArrays(labels, 5, img, true);
    const auto counts = bip::histogram(img, 3, 250);
    EXPECT_EQ(bip::regionIntensityArrays(reordered(labels, order), 5, reordered(img, order), true),
              lists);
    for (std::size_t t = 0; t < 4; ++t) {
      const Mask turned = volumeSymmetries<unsigned char>()[t](img);
      EXPECT_EQ(bip::regionIntensityArrays(volumeSymmetries<short>()[t](labels), 5, turned, true),
                lists);
      EXPECT_EQ(bip::histogram(turned, 3, 250), counts);
    }
  }
}

TEST(TurnedMasks, AreErodedDilatedFilledAndReversedAlike) {
  Random random(306);
  const auto inPlace = [](void (*f)(Mask&)) {
    return [f](const Mask& in) {
      Mask out = in.duplicate();
      f(out);
      return out;
    };
  };
  const std::vector<std::function<Mask(const Mask&)>> operations = {
      inPlace(bip::erode),
      inPlace(bip::dilate),
      inPlace(bip::removeInternalStructures),
      inPlace(bip::reverse),
      [](const Mask& in) { return bip::edge(in); },
      [](const Mask& in) { return bip::threshold(in, 128.0F); }};
  for (int round = 0; round < 30; ++round) {
    const Mask mask = randomMask(random, {randomInt(random, 1, 40), randomInt(random, 1, 20)}, 0.6);
    for (const auto& operation : operations) {
      for (const auto turn : planeSymmetries<unsigned char>()) {
        EXPECT_TRUE(sameImage(operation(turn(mask)), turn(operation(mask))));
      }
    }
    const Labels labels = randomLabels(random, {17, 12}, 2);
    Labels eroded = labels.duplicate();
    bip::erode(eroded);
    for (const auto turn : planeSymmetries<short>()) {
      Labels turned = turn(labels);
      bip::erode(turned);
      EXPECT_TRUE(sameImage(turned, turn(eroded)));
    }
  }
}

TEST(TurnedVolumes, AreFilledAlike) {
  Random random(307);
  for (const Shape& shape : {Shape{9, 8, 5}, Shape{4, 11, 6}}) {
    for (int round = 0; round < 8; ++round) {
      const Mask volume = randomMask(random, shape, 0.75);
      Mask filled = volume.duplicate();
      bip::removeInternalStructures(filled);
      for (const auto turn : volumeSymmetries<unsigned char>()) {
        Mask turned = turn(volume);
        bip::removeInternalStructures(turned);
        EXPECT_TRUE(sameImage(turned, turn(filled)));
      }
    }
  }
}

// With a background around them as wide as the reach of the operation.
TEST(FramedMasks, AreErodedDilatedAndFilledAlikeWhereverTheyLie) {
  Random random(308);
  for (int round = 0; round < 10; ++round) {
    const Mask mask = framed<unsigned char>(randomMask(random, {15, 12}, 0.6), 19, 16, 2, 2, 0);
    const int dx = randomInt(random, 0, 9);
    const int dy = randomInt(random, 0, 9);
    for (void (*f)(Mask&) :
         {static_cast<void (*)(Mask&)>(bip::erode), bip::dilate, bip::removeInternalStructures}) {
      Mask here = mask.duplicate();
      Mask there = framed<unsigned char>(mask, 28, 25, dx, dy, 0);
      f(here);
      f(there);
      EXPECT_TRUE(sameImage(there, framed<unsigned char>(here, 28, 25, dx, dy, 0)));
    }
    EXPECT_TRUE(sameImage(bip::edge(framed<unsigned char>(mask, 28, 25, dx, dy, 0)),
                          framed<unsigned char>(bip::edge(mask), 28, 25, dx, dy, 0)));
  }
}

TEST(TurnedLabels, HaveTheTurnedBoundaries) {
  Random random(309);
  using Pixels = std::vector<std::pair<int, int>>;
  const auto sorted = [](const std::vector<Point>& points, const auto& place) {
    Pixels result;
    for (const Point& p : points) result.push_back(place(int{p.x}, int{p.y}));
    std::sort(result.begin(), result.end());
    return result;
  };
  for (int round = 0; round < 10; ++round) {
    const Labels labels = randomLabels(random, {18, 13}, 3);
    const auto plain = bip::boundaries(labels);
    const auto across = bip::boundaries(flipped(labels));
    const auto exchanged = bip::boundaries(transposed(labels));
    ASSERT_EQ(across.size(), plain.size());
    ASSERT_EQ(exchanged.size(), plain.size());
    const auto same = [](int x, int y) { return std::pair(x, y); };
    for (std::size_t k = 0; k < plain.size(); ++k) {
      EXPECT_EQ(sorted(across[k], [](int x, int y) { return std::pair(17 - x, y); }),
                sorted(plain[k], same));
      EXPECT_EQ(sorted(exchanged[k], [](int x, int y) { return std::pair(y, x); }),
                sorted(plain[k], same));
    }
  }
}

TEST(TurnedMasks, KeepTheSameRegions) {
  Random random(314);
  for (int round = 0; round < 10; ++round) {
    // A ring around all is the first region of every turn, and large.
    const Mask inner = framed<unsigned char>(randomMask(random, {24, 18}, 0.45), 26, 20, 1, 1, 0);
    const Mask mask = framed<unsigned char>(inner, 28, 22, 1, 1, 255);
    const Mask brightness = smallBytes(random, {28, 22}, 255);
    const auto selected = [](Mask m, const Mask& values) {
      m = m.duplicate();
      bip::selectRegions(m, values, 120.0F, 3);
      return m;
    };
    const auto selectedBySize = [](Mask m) {
      m = m.duplicate();
      bip::selectRegionsBySize(m, 4, 200);
      return m;
    };
    ASSERT_FALSE(sameImage(selected(mask, brightness), mask));
    ASSERT_FALSE(sameImage(selectedBySize(mask), mask));
    for (const auto turn : planeSymmetries<unsigned char>()) {
      EXPECT_TRUE(
          sameImage(selected(turn(mask), turn(brightness)), turn(selected(mask, brightness))));
      EXPECT_TRUE(sameImage(selectedBySize(turn(mask)), turn(selectedBySize(mask))));
    }
  }
}

// Its sums are taken in raster order: 600 additions of at most 255.
TEST(TurnedImages, HaveNearlyTheSameThreshold) {
  Random random(315);
  for (int round = 0; round < 10; ++round) {
    const Mask img = smallBytes(random, {29, 21}, 255);
    const float t = bip::computeThreshold(img, 2.0F);
    for (const auto turn : planeSymmetries<unsigned char>()) {
      EXPECT_NEAR(bip::computeThreshold(turn(img), 2.0F), t, 0.05F);
    }
  }
}

}  // namespace
}  // namespace orva::test
