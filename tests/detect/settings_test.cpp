// What settings do, and that every image is accepted.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <vector>

#include "orva/detect/detect.h"
#include "tests/detect/scenes.h"

namespace orva::test {
namespace {

using detect::combinedEstimate;
using detect::estimateSettings;
using detect::findObjects;
using detect::FindSettings;
using detect::Object;
using detect::Polarity;
using detect::SettingsEstimate;

image<float> scene(double grey = 100.0) {
  image<float> img = drawn(200, 160,
                           {disc(40, 40, 10, grey), disc(100, 50, 10, grey),
                            disc(160, 100, 10, grey), disc(60, 110, 10, grey)},
                           120.0);
  addNoise(img, 4.0, 8);
  return img;
}

template <class T>
image<T> convertedTo(const image<float>& from) {
  image<T> to(from.nx(), from.ny(), 1, 1, 1);
  for (int i = 0; i < from.npix(); ++i) to.setPixel(i, std::round(from.pixels()[i]));
  return to;
}

void expectSame(const std::vector<Object>& a, const std::vector<Object>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    EXPECT_EQ(a[i].x, b[i].x);
    EXPECT_EQ(a[i].y, b[i].y);
    EXPECT_EQ(a[i].radius, b[i].radius);
    EXPECT_EQ(a[i].score, b[i].score);
    EXPECT_EQ(a[i].coverage, b[i].coverage);
  }
}

TEST(EstimateSettings, RadiusAndPolarityAreTheObjects) {
  const auto bright = estimateSettings(scene());
  EXPECT_EQ(bright.polarity, Polarity::Bright);
  EXPECT_NEAR(bright.radius, 10.0, 0.3);
  EXPECT_GT(bright.confidence, 0.5F);
  EXPECT_EQ(bright.runnerUp.polarity, Polarity::Dark);
  EXPECT_LT(bright.runnerUp.confidence, bright.confidence);
  const auto dark = estimateSettings(scene(-100.0));
  EXPECT_EQ(dark.polarity, Polarity::Dark);
  EXPECT_NEAR(dark.radius, 10.0, 0.3);
}

TEST(EstimateSettings, BrightnessScaleDoesNotMatter) {
  const image<float> img = scene();
  image<float> scaled(img.nx(), img.ny(), 1, 1, 1);
  for (int i = 0; i < img.npix(); ++i) scaled.pixels()[i] = img.pixels()[i] * 4096.0F;
  expectSame(found(img), found(scaled));
}

SettingsEstimate estimateOf(float radius, Polarity polarity, float confidence) {
  SettingsEstimate e;
  e.radius = radius;
  e.polarity = polarity;
  e.confidence = confidence;
  e.runnerUp.polarity = polarity == Polarity::Dark ? Polarity::Bright : Polarity::Dark;
  return e;
}

TEST(TypicalRadius, IsTheMedianOfSureObjects) {
  const auto of = [](float radius, float score) { return Object{0, 0, radius, score, 1}; };
  EXPECT_EQ(detect::typicalRadius({}), 0.0F);
  EXPECT_EQ(detect::typicalRadius({of(7, 0.9F)}), 7.0F);
  EXPECT_EQ(detect::typicalRadius({of(5, 0.9F), of(6, 0.8F), of(9, 0.9F), of(30, 0.3F)}), 6.0F);
  EXPECT_EQ(detect::typicalRadius({of(4, 0.1F), of(8, 0.4F), of(9, 0.2F)}), 8.0F);
}

TEST(CombinedEstimate, OfNoImagesIsEmpty) {
  EXPECT_EQ(combinedEstimate({}).radius, 0.0F);
  EXPECT_EQ(combinedEstimate({SettingsEstimate{}, SettingsEstimate{}}).confidence, 0.0F);
}

TEST(CombinedEstimate, FollowsThePolarityOfMoreConfidence) {
  const SettingsEstimate e =
      combinedEstimate({estimateOf(8, Polarity::Bright, 0.5F), estimateOf(20, Polarity::Dark, 0.9F),
                        estimateOf(10, Polarity::Bright, 0.7F)});
  EXPECT_EQ(e.polarity, Polarity::Bright);
  EXPECT_EQ(e.radius, 10.0F);
  EXPECT_FLOAT_EQ(e.confidence, 0.4F);  // 1.2 over three images
  EXPECT_EQ(e.runnerUp.polarity, Polarity::Dark);
  EXPECT_EQ(e.runnerUp.radius, 20.0F);
  EXPECT_FLOAT_EQ(e.runnerUp.confidence, 0.3F);
}

TEST(CombinedEstimate, ImagesWithoutObjectsDoNotCount) {
  const SettingsEstimate one = estimateOf(9, Polarity::Dark, 0.8F);
  const SettingsEstimate e = combinedEstimate({SettingsEstimate{}, one, SettingsEstimate{}});
  EXPECT_EQ(e.polarity, Polarity::Dark);
  EXPECT_EQ(e.radius, 9.0F);
  EXPECT_FLOAT_EQ(e.confidence, 0.8F);
}

TEST(FindSettings, OutOfRangeIsRefused) {
  const image<float> img = scene();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinite = std::numeric_limits<float>::infinity();
  const auto refused = [&](auto&& change) {
    FindSettings s;
    change(s);
    EXPECT_THROW(findObjects(img, s), std::invalid_argument);
    EXPECT_THROW(findObjects(image<float>(0, 0, 0, 0, 0), s), std::invalid_argument);
  };
  for (const float r : {0.0F, -1.0F, nan, infinite}) {
    refused([=](FindSettings& s) { s.radius = r; });
  }
  for (const float r : {-1.0F, nan, infinite}) {
    refused([=](FindSettings& s) { s.minRadius = r; });
    refused([=](FindSettings& s) { s.maxRadius = r; });
    refused([=](FindSettings& s) { s.minScore = r; });
  }
  refused([](FindSettings& s) {
    s.minRadius = 5.0F;
    s.maxRadius = 4.0F;
  });
  refused([](FindSettings& s) { s.minScore = 1.5F; });
}

TEST(FindSettings, RadiiKeepObjectsOfOtherSizesOut) {
  image<float> img =
      drawn(260, 200, {disc(40, 40, 8), disc(40, 120, 8), disc(170, 100, 40), disc(90, 40, 8)});
  addNoise(img, 4.0, 1);
  const auto count = [&](auto&& change) {
    FindSettings s;
    change(s);
    return findObjects(img, s).objects.size();
  };
  EXPECT_EQ(count([](FindSettings&) {}), 4U);
  EXPECT_EQ(count([](FindSettings& s) { s.maxRadius = 20.0F; }), 3U);
  EXPECT_EQ(count([](FindSettings& s) { s.minRadius = 20.0F; }), 1U);
  EXPECT_EQ(count([](FindSettings& s) { s.radius = 8.0F; }), 3U);
  EXPECT_EQ(count([](FindSettings& s) { s.radius = 40.0F; }), 1U);
}

TEST(FindSettings, NoObjectLeavesTheRange) {
  image<float> img = drawn(413, 376, discGrid(413, 376, 6, 20, 7));
  addNoise(img, 15.0, 3);
  for (float low = 6.0F; low < 16.0F; low += 0.7F) {
    FindSettings s;
    s.minRadius = low;
    s.maxRadius = low + 3;
    s.minScore = 0.0F;
    const std::vector<Object> objects = findObjects(img, s).objects;
    EXPECT_FALSE(objects.empty()) << low;
    for (const Object& o : objects) {
      EXPECT_GE(o.radius, low);
      EXPECT_LE(o.radius, low + 3);
    }
  }
}

TEST(FindSettings, PolarityIsHeld) {
  FindSettings s;
  s.polarity = Polarity::Dark;
  EXPECT_TRUE(findObjects(scene(), s).objects.empty());
  EXPECT_EQ(findObjects(scene(-100.0), s).objects.size(), 4U);
  EXPECT_EQ(findObjects(scene(), s).used.polarity, Polarity::Dark);
}

TEST(FindSettings, MinScoreOnlyLeavesObjectsOut) {
  const image<float> img = scene();
  FindSettings s;
  s.minScore = 0.0F;
  const std::vector<Object> all = findObjects(img, s).objects;
  s.minScore = 0.5F;
  const std::vector<Object> sure = findObjects(img, s).objects;
  EXPECT_EQ(sure.size(), 4U);
  ASSERT_GE(all.size(), sure.size());
  expectSame(sure, {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(sure.size())});
  s.minScore = 1.0F;
  EXPECT_TRUE(findObjects(img, s).objects.empty());
}

TEST(FindObjects, EveryPixelTypeIsRead) {
  const image<float> img = scene();
  const std::vector<Object> expected = found(convertedTo<unsigned char>(img));
  EXPECT_EQ(expected.size(), 4U);
  expectSame(found(convertedTo<short>(img)), expected);
  expectSame(found(convertedTo<int>(img)), expected);
  expectSame(found(convertedTo<unsigned int>(img)), expected);
  expectSame(found(convertedTo<float>(img)), expected);
  EXPECT_EQ(found(convertedTo<GenericRgb<unsigned char>>(img)).size(), 4U);
}

TEST(FindObjects, StacksAreSearchedInPlaneZero) {
  const image<float> img = scene();
  image<float> stack(img.nx(), img.ny(), 3, 1, 1);
  std::copy_n(img.pixels(), img.npix(), stack.pixels());
  for (int i = 0; i < img.npix(); ++i) stack.pixels()[img.npix() + i] = -img.pixels()[i];
  expectSame(found(stack), found(img));
}

TEST(FindObjects, PixelsWithoutNumberAreBlack) {
  image<float> img = scene();
  image<float> black = scene();
  float low = img.pixels()[0];
  for (int i = 0; i < img.npix(); ++i) low = std::min(low, img.pixels()[i]);
  const float infinite = std::numeric_limits<float>::infinity();
  for (const int i : {5, 4000, 9000, 9001}) {
    img.pixels()[i] = i % 2 == 0 ? std::numeric_limits<float>::quiet_NaN() : infinite;
    black.pixels()[i] = low;
  }
  img.pixels()[20000] = -infinite;
  black.pixels()[20000] = low;
  expectSame(found(img), found(black));
}

TEST(FindObjects, EverySizeIsAccepted) {
  for (const int nx : {0, 1, 2, 3, 15, 16, 17, 33}) {
    for (const int ny : {0, 1, 2, 3, 15, 16, 17, 40}) {
      image<float> img(nx, ny, 1, 1, 1);
      for (int i = 0; i < img.npix(); ++i) {
        const double dx = i % nx - nx / 2.0;
        const double dy = i / nx - ny / 2.0;
        img.pixels()[i] = dx * dx + dy * dy < 25 ? 100.0F : 10.0F;
      }
      for (const Object& o : found(img)) {
        EXPECT_GE(o.x, -0.5F);
        EXPECT_LE(o.x, static_cast<float>(nx) - 0.5F);
        EXPECT_GE(o.score, 0.5F);
        EXPECT_LE(o.score, 1.0F);
      }
    }
  }
  EXPECT_TRUE(found(image<float>(5, 5, 0, 1, 1)).empty());
}

TEST(FindObjects, WidestRangeOfFloatsIsRead) {
  image<float> img = drawn(100, 100, {disc(50, 50, 12)});
  for (int i = 0; i < img.npix(); ++i) img.pixels()[i] = (img.pixels()[i] - 100) * 6.0e36F;
  const std::vector<Object> objects = found(img);
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_NEAR(objects[0].x, 50, 0.1);
}

}  // namespace
}  // namespace orva::test
