// Images without objects give none.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "orva/detect/detect.h"
#include "tests/detect/scenes.h"

namespace orva::test {
namespace {

using detect::estimateSettings;

template <class Value>
image<float> composed(int nx, int ny, Value&& value) {
  image<float> img(nx, ny, 1, 1, 1);
  for (int i = 0; i < img.npix(); ++i) {
    img.pixels()[i] = static_cast<float>(value(i % nx, i / nx));
  }
  return img;
}

TEST(Nothing, ConstantImagesHaveNoObjects) {
  for (const double grey : {0.0, 128.0, 1e30}) {
    const image<float> img = drawn(120, 90, {}, grey);
    EXPECT_TRUE(found(img).empty());
    EXPECT_EQ(estimateSettings(img).confidence, 0.0F);
    EXPECT_EQ(estimateSettings(img).radius, 0.0F);
  }
}

TEST(Nothing, RampsHaveNoObjects) {
  for (int i = 0; i < 8; ++i) {
    image<float> img = composed(300, 260, [i](int x, int y) {
      return 400 + 0.5 * (x * std::cos(0.4 * i) + y * std::sin(0.4 * i));
    });
    EXPECT_TRUE(found(img).empty()) << i;
    addNoise(img, 2.0, static_cast<unsigned>(i));
    EXPECT_TRUE(found(img).empty()) << i << " with noise";
  }
}

TEST(Nothing, StripesHaveNoObjects) {
  for (const double period : {8.0, 16.0, 32.0, 64.0}) {
    for (const double angle : {0.0, 0.5, 1.57079633}) {
      image<float> img = composed(300, 260, [=](int x, int y) {
        const double phase = (x * std::cos(angle) + y * std::sin(angle)) * 6.2831853 / period;
        return 120 + 60 * std::sin(phase);
      });
      EXPECT_TRUE(found(img).empty()) << period << ' ' << angle;
      addNoise(img, 3.0, 1);
      EXPECT_TRUE(found(img).empty()) << period << ' ' << angle << " with noise";
    }
  }
}

TEST(Nothing, SharpStripesHaveNoObjects) {
  for (const double period : {9.0, 12.0, 20.0, 28.0, 40.0, 80.0}) {
    for (int i = 0; i < 5; ++i) {
      const double angle = (i + 0.37) * 0.62831853;
      image<float> img = composed(200, 170, [=](int x, int y) {
        const double phase = (x * std::cos(angle) + y * std::sin(angle)) * 6.2831853 / period;
        return std::sin(phase) < 0 ? 48 : 208;
      });
      EXPECT_TRUE(found(img).empty()) << period << ' ' << angle;
      addNoise(img, 5.0, static_cast<unsigned>(i));
      EXPECT_TRUE(found(img).empty()) << period << ' ' << angle << " with noise";
    }
  }
}

TEST(Nothing, NoiseHasOneObjectPerImageAtMost) {
  std::size_t objects = 0;
  constexpr unsigned kImages = 7;
  for (unsigned i = 0; i < kImages; ++i) {
    image<float> img = drawn(300, 300, {}, 100);
    addNoise(img, 4.0 + 6.0 * i, i);
    objects += found(img).size();
    // Counts of few photons.
    std::mt19937 random(i);
    const double mean = 1.0 + 3.0 * i;
    objects += found(composed(300, 300, [&](int, int) {
                 double product = static_cast<double>(random()) / 4294967296.0;
                 int n = 0;
                 for (; product > std::exp(-mean); ++n) {
                   product *= static_cast<double>(random()) / 4294967296.0;
                 }
                 return n;
               })).size();
    // Salt and pepper on a share of the pixels.
    const double share = 0.002 * (1 << i);
    objects += found(composed(300, 300, [&](int, int) {
                 const double r = static_cast<double>(random()) / 4294967296.0;
                 return r < share / 2 ? 0 : r < share ? 255 : 120;
               })).size();
  }
  EXPECT_LE(objects, 3 * kImages);
}

TEST(Nothing, ObjectsAmongNoiseAreTold) {
  image<float> img = drawn(200, 200, {disc(60, 70, 12), disc(140, 120, 12)});
  addNoise(img, 10.0, 2);
  EXPECT_EQ(found(img).size(), 2U);
}

}  // namespace
}  // namespace orva::test
