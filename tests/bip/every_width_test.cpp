#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/negative_image.h"
#include "tests/support/reference/bip.h"
#include "tests/support/reference/distance.h"
#include "tests/support/reference/selection.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"
#include "tests/support/symmetries.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

// Calls check(random, shape) with a plane and a volume of every width.
template <class Check>
void forPlanesAndVolumesOfEveryWidth(Check check) {
  Random random(5);
  forEveryWidth([&](int width) {
    check(random, Shape{width, 1 + width % 7});
    check(random, Shape{width, 2 + width % 3, 2 + width % 2});
  });
}

template <class T>
void expectSameRegions(const image<T>& in, int value, NeighborhoodType type) {
  int n = -1;
  int expected = -1;
  if constexpr (sizeof(T) == 1) {
    const image<short> labels = bip::regions(in, n, value, 1, type);
    ASSERT_TRUE(sameImage(labels, reference::regions(in, expected, value, 1, type))) << in.nx();
  } else {
    const image<short> labels = bip::regions(in, n);
    ASSERT_TRUE(sameImage(labels, reference::regions(in, expected))) << in.nx();
  }
  ASSERT_EQ(n, expected);
}

TEST(LabellingMatchesReferenceAtEveryWidth, ForMasks) {
  forPlanesAndVolumesOfEveryWidth([](Random& random, const Shape& shape) {
    for (const double share : {0.02, 0.5, 0.7, 0.98}) {
      const image<unsigned char> mask = randomMask(random, shape, share);
      for (const auto type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
        for (const int value : {255, 0, -1}) expectSameRegions(mask, value, type);
      }
    }
  });
}

TEST(LabellingMatchesReferenceAtEveryWidth, ForAreasOfEqualValue) {
  forPlanesAndVolumesOfEveryWidth([](Random& random, const Shape& shape) {
    image<unsigned char> bytes = blank<unsigned char>(shape);
    std::generate_n(bytes.pixels(), bytes.npix(),
                    [&] { return static_cast<unsigned char>(randomInt(random, 0, 2)); });
    expectSameRegions(bytes, -1, NEIGHBORHOOD_4);
    expectSameRegions(bytes, -1, NEIGHBORHOOD_8);
    expectSameRegions(bytes, 1, NEIGHBORHOOD_8);
    expectSameRegions(randomLabels(random, shape, 2), 0, NEIGHBORHOOD_8);
  });
}

TEST(LabellingMatchesReference, ForSpiralsAndCombs) {
  for (const int size : {63, 64, 65, 127, 200}) {
    const image<unsigned char> mask = spiral(size);
    for (const auto type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
      expectSameRegions(mask, 255, type);
      expectSameRegions(mask, 0, type);
      expectSameRegions(mask, -1, type);
    }
    // Teeth that meet in the last row only, and whose labels are joined there.
    image<unsigned char> comb = blank<unsigned char>({size, size});
    for (int i = 0; i < comb.npix(); ++i) {
      comb.pixels()[i] = i % size % 2 == 0 || i / size == size - 1 ? 255 : 0;
    }
    expectSameRegions(comb, 255, NEIGHBORHOOD_4);
    expectSameRegions(transposed(comb), 255, NEIGHBORHOOD_8);
  }
}

void expectSameFeatures(const image<short>& labels, int n, const Image& brightness) {
  const auto own = bip::regionFeatures(labels, n, brightness);
  const auto expected = reference::regionFeatures(labels, n, &brightness);
  ASSERT_EQ(own.size(), expected.size());
  for (std::size_t k = 0; k < own.size(); ++k) {
    const auto numbers = [](const RegionFeature& f) {
      return std::vector<int>{f.xmin, f.xmax, f.ymin, f.ymax, f.zmin,  f.zmax,
                              f.cx,   f.cy,   f.cz,   f.npix, f.radius};
    };
    ASSERT_EQ(numbers(own[k]), numbers(expected[k]));
    ASSERT_EQ(own[k].mean, expected[k].mean);
    ASSERT_EQ(own[k].var, expected[k].var);
  }
  ASSERT_EQ(bip::regionIntensityArrays(labels, n, brightness, false),
            reference::regionIntensityArrays(labels, n, brightness, false));
}

TEST(RegionFeatureMatchesReferenceAtEveryWidth, ForEveryPixelType) {
  forPlanesAndVolumesOfEveryWidth([](Random& random, const Shape& plane) {
    Shape shape = plane;
    shape.nc = 1 + plane.nx % 2;  // the brightness of all channels counts, the geometry of one
    const image<short> labels = randomLabels(random, shape, 5);
    for (const int n : {6, 3}) {
      expectSameFeatures(labels, n, randomImage<unsigned char>(random, shape));
      expectSameFeatures(labels, n, randomImage<short>(random, shape));
      expectSameFeatures(labels, n, randomImage<int>(random, shape));
      expectSameFeatures(labels, n, randomImage<unsigned int>(random, shape));
      expectSameFeatures(labels, n, randomImage<float>(random, shape));
      expectSameFeatures(labels, n, randomImage<Rgb>(random, shape));
    }
  });
}

template <class T, class Own, class Reference>
void expectSameChange(const image<T>& img, Own own, Reference expected) {
  image<T> a = img.duplicate();
  image<T> b = img.duplicate();
  own(a);
  expected(b);
  ASSERT_TRUE(sameImage(a, b)) << img.nx() << " x " << img.ny();
}

TEST(MorphologyMatchesReferenceAtEveryWidth, ForMasksAndLabels) {
  forPlanesAndVolumesOfEveryWidth([](Random& random, const Shape& shape) {
    for (const double share : {0.1, 0.9}) {
      image<unsigned char> mask = randomMask(random, shape, share);
      for (const bool isMask : {true, false}) {
        if (!isMask) mask.pixels()[randomInt(random, 0, mask.npix() - 1)] = 254;
        expectSameChange(
            mask, [](auto& m) { bip::erode(m); }, [](auto& m) { reference::erode(m); });
        expectSameChange(
            mask, [](auto& m) { bip::dilate(m); }, [](auto& m) { reference::dilate(m); });
      }
      expectSameChange(
          mask, [](auto& m) { bip::removeInternalStructures(m); },
          [](auto& m) { reference::removeInternalStructures(m); });
    }
    expectSameChange(
        randomLabels(random, shape, 1), [](auto& m) { bip::erode(m); },
        [](auto& m) { reference::erode(m); });
  });
}

template <class T>
void expectSameEdges(Random& random, const Shape& shape) {
  image<T> img = blank<T>(shape);
  std::generate_n(img.pixels(), img.npix(),
                  [&] { return static_cast<T>(randomInt(random, 0, 5) == 0 ? 3 : 1); });
  if constexpr (std::is_same_v<T, float>) {
    img.pixels()[randomInt(random, 0, img.npix() - 1)] = std::nanf("");
  }
  ASSERT_TRUE(sameImage(bip::edge(img), reference::edge(img))) << shape.nx;
}

TEST(EdgeMatchesReferenceAtEveryWidth, ForEveryPixelType) {
  forPlanesAndVolumesOfEveryWidth([](Random& random, const Shape& shape) {
    expectSameEdges<unsigned char>(random, shape);
    expectSameEdges<short>(random, shape);
    expectSameEdges<int>(random, shape);
    expectSameEdges<float>(random, shape);
  });
}

template <class T>
void expectSameThresholds(Random& random, const Shape& shape) {
  image<T> img = randomImage<T>(random, shape);
  if constexpr (std::is_same_v<T, float>) img.pixels()[0] = std::nanf("");
  for (const float t :
       {0.0F, -0.5F, 0.5F, 100.0F, 100.25F, 254.5F, 255.0F, 255.5F, 32766.5F, 32767.0F, 32768.0F,
        -32768.0F, -32768.5F, -40000.0F, 1e9F, kInfinity, -kInfinity, std::nanf("")}) {
    ASSERT_TRUE(sameImage(bip::threshold(img, t), reference::threshold(img, t))) << t;
  }
  const float own = img.pixel(img.npix() / 2);
  ASSERT_TRUE(sameImage(bip::threshold(img, own), reference::threshold(img, own)));
}

TEST(ThresholdMatchesReferenceAtEveryWidth, ForEveryPixelType) {
  forPlanesAndVolumesOfEveryWidth([](Random& random, const Shape& shape) {
    expectSameThresholds<unsigned char>(random, shape);
    expectSameThresholds<short>(random, shape);
    expectSameThresholds<int>(random, shape);
    expectSameThresholds<unsigned int>(random, shape);
    expectSameThresholds<float>(random, shape);
    expectSameThresholds<Rgb>(random, shape);
  });
}

TEST(ForeignImageMatchesReference, ByItsPixelsNotItsData) {
  Random random(9);
  const NegativeImage img(randomImage<short>(random, {70, 40}));
  EXPECT_TRUE(sameImage(bip::threshold(img, 50.0F), reference::threshold(img, 50.0F)));
  expectSameFeatures(randomLabels(random, {70, 40}, 4), 5, img);

  const image<short> labels = randomLabels(random, {70, 40}, 4);
  image<short> negated = labels.duplicate();
  for (int i = 0; i < labels.npix(); ++i) negated.setPixel(i, -labels.pixel(i));
  EXPECT_TRUE(sameImage(bip::fchamfer(NegativeImage(labels)), reference::fchamfer(negated)));
}

}  // namespace
}  // namespace orva::test
