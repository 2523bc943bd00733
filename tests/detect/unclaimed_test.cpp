// Regions that no object claims, against their reference implementation, bit for bit, and on drawn
// images.
#include "orva/detect/unclaimed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <stdexcept>
#include <vector>

#include "orva/detect/segment.h"
#include "tests/detect/label_image.h"
#include "tests/detect/scenes.h"
#include "tests/support/reference/unclaimed.h"

namespace orva::test {
namespace {

using detect::labelUnclaimed;
using detect::Object;
using detect::SegmentedImage;
using detect::segmentImage;

// Fields of the objects, for comparisons.
std::vector<float> fieldsOf(const std::vector<Object>& objects) {
  std::vector<float> fields;
  for (const Object& o : objects) {
    fields.insert(fields.end(), {o.x, o.y, o.radius, o.score, o.coverage});
  }
  return fields;
}

// Blobs of random sizes on noise, of which the first ones are labelled.
struct Blobs {
  image<float> plane;
  image<int> labels;
};

Blobs randomBlobs(std::mt19937& random, int nx, int ny, int blobs, int labelled) {
  Blobs b{image<float>(nx, ny, 1, 1, 1), image<int>(nx, ny, 1, 1, 1)};
  addNoise(b.plane, 4, static_cast<unsigned>(random()));
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int k = 0; k < blobs; ++k) {
    const Ellipse e{static_cast<double>(below(nx)),
                    static_cast<double>(below(ny)),
                    2.0 + below(4),
                    2.0 + below(4),
                    below(100) / 32.0,
                    20.0 + below(80)};
    for (int y = 0; y < ny; ++y) {
      for (int x = 0; x < nx; ++x) {
        const int i = y * nx + x;
        if (!e.contains(x, y) || b.labels.pixels()[i] > 0) continue;
        b.plane.pixels()[i] += static_cast<float>(e.grey);
        if (k < labelled) b.labels.pixels()[i] = k + 1;
      }
    }
  }
  return b;
}

int expectSame(const Blobs& b) {
  image<int> labels = labelImage(b.labels.nx(), labelsOf(b.labels));
  image<int> expected = labelImage(b.labels.nx(), labelsOf(b.labels));
  const std::vector<Object> objects = labelUnclaimed(b.plane, labels);
  EXPECT_EQ(fieldsOf(objects), fieldsOf(reference::labelUnclaimed(b.plane, expected)));
  EXPECT_EQ(labelsOf(labels), labelsOf(expected));
  return static_cast<int>(objects.size());
}

TEST(UnclaimedMatchesReference, OnRandomImages) {
  std::mt19937 random(23);
  int found = 0;
  for (int nx = 1; nx <= 97; nx += 4) {
    const int ny = 1 + static_cast<int>(random() % 90);
    found += expectSame(randomBlobs(random, nx, ny, 24, static_cast<int>(random() % 12)));
  }
  EXPECT_GE(found, 30);
}

TEST(UnclaimedMatchesReference, WhereTheBackgroundIsSampled) {
  std::mt19937 random(29);
  EXPECT_GE(expectSame(randomBlobs(random, 801, 701, 60, 20)), 10);
}

// Discs, and a bar that is too narrow for a round object.
constexpr int kBarLeft = 124;
constexpr int kBarRight = 126;
constexpr int kBarTop = 21;
constexpr int kBarBottom = 89;

image<float> discsAndBar(float barGrey) {
  image<float> img = drawn(140, 110, discGrid(110, 110, 8, 11, 31));
  for (int y = kBarTop; y <= kBarBottom; ++y) {
    for (int x = kBarLeft; x <= kBarRight; ++x) img.pixels()[y * img.nx() + x] += barGrey;
  }
  addNoise(img, 3, 32);
  return img;
}

bool hasBar(const SegmentedImage& s) {
  return !s.objects.empty() && s.objects.back().coverage == 0.0F;
}

TEST(SegmentImage, AddsABarThatStandsOutLikeTheDiscs) {
  const image<float> img = discsAndBar(90);
  const SegmentedImage s = segmentImage(img, {}, {});
  ASSERT_TRUE(hasBar(s));
  const Object& bar = s.objects.back();
  EXPECT_NEAR(bar.x, (kBarLeft + kBarRight) / 2.0, 0.3);
  EXPECT_NEAR(bar.y, (kBarTop + kBarBottom) / 2.0, 0.3);
  EXPECT_EQ(bar.score, 0.5F);
  const std::vector<int> labels = labelsOf(s.labels);
  const auto area = std::count(labels.begin(), labels.end(), static_cast<int>(s.objects.size()));
  EXPECT_NEAR(static_cast<double>(area), 3 * 69, 20);
  EXPECT_NEAR(static_cast<double>(bar.radius * bar.radius) * 3.14159265, static_cast<double>(area),
              1);
}

TEST(SegmentImage, KeepsTheRegionsOfTheObjectsFound) {
  const image<float> img = discsAndBar(90);
  const detect::FindResult found = detect::findObjects(img, {});
  detect::SegmentSettings settings;
  settings.polarity = found.used.polarity;
  const detect::Segmentation plain = segmentObjects(img, found.objects, settings);
  const SegmentedImage s = segmentImage(img, {}, {});
  EXPECT_EQ(s.used.radius, found.used.radius);
  EXPECT_EQ(s.leftOut, found.objects.size() - plain.kept.size());
  ASSERT_EQ(s.objects.size(), plain.kept.size() + 1);
  std::vector<int> labels = labelsOf(s.labels);
  std::replace(labels.begin(), labels.end(), static_cast<int>(s.objects.size()), 0);
  EXPECT_EQ(labels, labelsOf(plain.labels));
  for (std::size_t k = 0; k < plain.kept.size(); ++k) {
    EXPECT_EQ(s.objects[k].x, found.objects[plain.kept[k]].x) << k;
  }
}

TEST(SegmentImage, LeavesFaintOrSmallRegionsUnclaimed) {
  EXPECT_FALSE(hasBar(segmentImage(discsAndBar(15), {}, {})));
  image<float> img = drawn(140, 110, discGrid(110, 110, 8, 11, 31));
  for (int y = 40; y < 60; ++y) std::fill_n(img.pixels() + y * img.nx() + 125, 3, 140.0F);
  const SegmentedImage s = segmentImage(img, {}, {});
  EXPECT_EQ(s.labels.pixel(126, 50), 0);
}

TEST(SegmentImage, SettingsHoldForUnclaimedRegions) {
  const image<float> img = discsAndBar(90);
  detect::FindSettings sought;
  sought.minScore = 0.51F;
  EXPECT_FALSE(hasBar(segmentImage(img, sought, {})));
  sought.minScore = 0.4F;
  EXPECT_TRUE(hasBar(segmentImage(img, sought, {})));
  sought.maxRadius = 7.5F;  // that of the bar's area is above 8
  EXPECT_FALSE(hasBar(segmentImage(img, sought, {})));
  detect::SegmentSettings kept;
  kept.maxArea = 180;
  const SegmentedImage s = segmentImage(img, {}, kept);
  EXPECT_FALSE(hasBar(s));
  EXPECT_GE(s.leftOut, 1U);
}

TEST(SegmentImage, DarkObjectsAreTheNegativeOfBrightOnes) {
  const image<float> bright = discsAndBar(90);
  image<float> dark(bright.nx(), bright.ny(), 1, 1, 1);
  std::transform(bright.pixels(), bright.pixels() + bright.npix(), dark.pixels(),
                 [](float v) { return 1000 - v; });
  const SegmentedImage s = segmentImage(dark, {}, {});
  EXPECT_TRUE(hasBar(s));
  EXPECT_EQ(s.objects.size(), segmentImage(bright, {}, {}).objects.size());
}

TEST(SegmentImage, NothingIsFoundInNothing) {
  EXPECT_TRUE(segmentImage(image<float>(0, 0, 1, 1, 1), {}, {}).objects.empty());
  const SegmentedImage s = segmentImage(drawn(40, 30, {}), {}, {});
  EXPECT_TRUE(s.objects.empty());
  EXPECT_EQ(labelsOf(s.labels), std::vector<int>(40 * 30));
  EXPECT_EQ(segmentImage(drawn(60, 60, {disc(30, 30, 10)}), {}, {}).objects.size(), 1U);
}

TEST(SegmentImage, RefusesSettingsOutOfTheirRange) {
  detect::FindSettings sought;
  sought.radius = -1.0F;
  EXPECT_THROW(segmentImage(image<float>(0, 0, 1, 1, 1), sought, {}), std::invalid_argument);
  detect::SegmentSettings kept;
  kept.minArea = -1.0F;
  EXPECT_THROW(segmentImage(image<float>(0, 0, 1, 1, 1), {}, kept), std::invalid_argument);
}

}  // namespace
}  // namespace orva::test
