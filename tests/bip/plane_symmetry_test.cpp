// Stacks with their planes in another order.
//
// What is done pixel by pixel follows any order. What reads plane 0 alone (erode, dilate, edge,
// boundaries, findZeros) follows any order of the others. Exceptions, which have z for an axis and
// follow at most the order from back to front (symmetry_test.cpp and others): regions and their
// selection, bounds and centroids along z, the filling of holes, distances, propagation and hulls.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image_math/image_math.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

const Shape kPlaneShapes[] = {{7, 6, 4}, {11, 5, 7}, {23, 1, 3}, {40, 9}};

template <class T>
image<T> changed(const image<T>& img, void (*f)(image<T>&)) {
  image<T> result = img.duplicate();
  f(result);
  return result;
}

template <class T>
class Rearranged : public testing::Test {};
TYPED_TEST_SUITE(Rearranged, PixelTypes);

TYPED_TEST(Rearranged, PixelsAreAboveTheSameThreshold) {
  Random random(341);
  for (const Shape& shape : kPlaneShapes) {
    const auto img = randomImage<TypeParam>(random, shape);
    const auto order = shuffledFrames(random, img);
    for (const float t : {0.0F, 100.5F, 128.0F}) {
      const Mask mask = bip::threshold(img, t);
      EXPECT_TRUE(sameImage(bip::threshold(reordered(img, order), t), reordered(mask, order)));
      for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_TRUE(sameImage(bip::threshold(volumeSymmetries<TypeParam>()[k](img), t),
                              volumeSymmetries<unsigned char>()[k](mask)));
      }
    }
  }
}

TEST(RearrangedPixels, AreComplementedAndBinaryAlike) {
  Random random(342);
  for (const Shape& shape : oddShapes()) {
    const auto img = randomImage<unsigned char>(random, shape);
    const auto order = shuffledFrames(random, img);
    EXPECT_TRUE(sameImage(changed(reordered(img, order), bip::reverse),
                          reordered(changed(img, bip::reverse), order)));
    const Mask mask = randomMask(random, shape, 0.5);
    EXPECT_TRUE(bip::isBinaryImage(mask));
    EXPECT_TRUE(bip::isBinaryImage(reordered(mask, order)));
    Mask spoilt = mask.duplicate();  // by one pixel, wherever the turns take it
    spoilt.setPixel(randomInt(random, 0, mask.npix() - 1), 254.0F);
    EXPECT_FALSE(bip::isBinaryImage(reordered(spoilt, order)));
    for (const auto turn : volumeSymmetries<unsigned char>()) {
      EXPECT_TRUE(bip::isBinaryImage(turn(mask)));
      EXPECT_FALSE(bip::isBinaryImage(turn(spoilt)));
    }
  }
}

// Labels keep their order, which is not that of their pixels.
TEST(RearrangedLabels, AreCountedAndRelabelledAlike) {
  Random random(343);
  for (const Shape& shape : kPlaneShapes) {
    Labels labels = randomLabels(random, shape, 5);
    for (int i = 0; i < labels.npix(); ++i) {  // gaps, and other negative values than -1
      short& k = labels.pixels()[i];
      k = static_cast<short>(k < 0 ? k - i % 3 : 7 * k + 2);
    }
    const Labels whole = changed(labels, bip::relabel);
    ASSERT_FALSE(sameImage(whole, labels));
    const auto order = shuffledFrames(random, labels);
    std::vector<Labels> some = {reordered(labels, order)};
    std::vector<Labels> expected = {reordered(whole, order)};
    for (const auto turn : volumeSymmetries<short>()) {
      some.push_back(turn(labels));
      expected.push_back(turn(whole));
    }
    for (std::size_t i = 0; i < some.size(); ++i) {
      EXPECT_EQ(bip::regionNumber(some[i]), bip::regionNumber(labels));
      EXPECT_TRUE(sameImage(changed(some[i], bip::relabel), expected[i]));
    }
  }
}

TEST(ReorderedPlanes, HaveTheSameRegionFeaturesButAlongZ) {
  Random random(344);
  const int n = 6;
  for (const Shape& shape : kPlaneShapes) {
    const Labels labels = randomLabels(random, shape, n - 1);
    const auto img = randomImage<unsigned char>(random, shape);
    const auto order = shuffledFrames(random, labels);
    const auto plain = bip::regionFeatures(labels, n, img);
    const auto other = bip::regionFeatures(reordered(labels, order), n, reordered(img, order));
    for (std::size_t k = 0; k < n; ++k) {
      const auto flat = [](const RegionFeature& f) {
        return std::vector{f.xmin, f.xmax, f.ymin, f.ymax, f.cx, f.cy, f.npix, f.radius};
      };
      EXPECT_EQ(flat(other[k]), flat(plain[k]));
      EXPECT_EQ(other[k].mean, plain[k].mean);  // sums of bytes are exact
      // A sum of npix squares, each addition off by at most a 2^-24 share of it, twice.
      EXPECT_NEAR(other[k].var, plain[k].var,
                  2.0F * 6e-8F * static_cast<float>(plain[k].npix) * plain[k].var);
    }
    EXPECT_EQ(bip::histogram(reordered(img, order), 3, 250), bip::histogram(img, 3, 250));
  }
}

// In a stack all of plane 0 is border, and the others stay as they are.
TEST(ReorderedPlanes, BehindTheFirstAreErodedAndDilatedAlike) {
  Random random(345);
  const std::vector<int> order = {0, 3, 1, 2};
  for (int round = 0; round < 10; ++round) {
    const Mask mask = randomMask(random, {12, 9, 4}, 0.6);
    for (void (*f)(Mask&) : {static_cast<void (*)(Mask&)>(bip::erode), bip::dilate}) {
      const Mask result = changed(mask, f);
      EXPECT_TRUE(sameImage(changed(reordered(mask, order), f), reordered(result, order)));
      for (const auto turn : planeSymmetries<unsigned char>()) {
        EXPECT_TRUE(sameImage(changed(turn(mask), f), turn(result)));
      }
    }
    const Labels labels = randomLabels(random, {12, 9, 4}, 3);
    void (*const erode)(Labels&) = bip::erode;
    const Labels eroded = changed(labels, erode);
    EXPECT_TRUE(sameImage(changed(reordered(labels, order), erode), reordered(eroded, order)));
    for (const auto turn : planeSymmetries<short>()) {
      EXPECT_TRUE(sameImage(changed(turn(labels), erode), turn(eroded)));
    }
  }
}

TEST(ReorderedPlanes, BehindTheFirstDoNotChangeItsEdges) {
  Random random(346);
  const std::vector<int> order = {0, 3, 1, 2};
  const auto sameLists = [](const auto& a, const auto& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](auto p, auto q) {
             return p.x == q.x && p.y == q.y;
           });
  };
  for (int round = 0; round < 10; ++round) {
    const auto img = randomImage<float>(random, {12, 9, 4});
    const Mask mask = bip::threshold(img, 0.0F);
    EXPECT_TRUE(sameImage(bip::edge(reordered(mask, order)), bip::edge(mask)));
    const auto zeros = image_math::findZeros(img);
    ASSERT_FALSE(zeros.empty());
    EXPECT_TRUE(sameLists(image_math::findZeros(reordered(img, order)), zeros));
    const Labels labels = randomLabels(random, {12, 9, 4}, 3);
    const auto lists = bip::boundaries(labels);
    const auto others = bip::boundaries(reordered(labels, order));
    ASSERT_EQ(others.size(), lists.size());
    for (std::size_t k = 0; k < lists.size(); ++k) EXPECT_TRUE(sameLists(others[k], lists[k]));
  }
}

}  // namespace
}  // namespace orva::test
