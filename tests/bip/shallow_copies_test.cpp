// Operations in place change the pixels that an image shares: every shallow copy shows the change.
#include <gtest/gtest.h>

#include <memory>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/printed.h"
#include "tests/support/reference/bip.h"
#include "tests/support/reference/distance.h"
#include "tests/support/reference/hull.h"
#include "tests/support/reference/selection.h"

namespace orva::test {
namespace {

// Calls change() on an image, and expected() on one that shares nothing with it. Both change it,
// and a copy of the first shows what the second has become.
template <class T, class Change, class Expected>
void expectSeenThroughCopies(const image<T>& original, const Change& change,
                             const Expected& expected) {
  image<T> img = original.duplicate();
  const image<T> copy(img);
  const std::unique_ptr<Image> onHeap(img.copy());
  const void* pixels = img.data();
  image<T> apart = original.duplicate();
  printedBy([&] { change(img); });
  printedBy([&] { expected(apart); });
  EXPECT_FALSE(sameImage(apart, original)) << "nothing to see";
  EXPECT_EQ(img.data(), pixels);
  EXPECT_TRUE(sameImage(img, apart));
  EXPECT_TRUE(sameImage(copy, apart));
  EXPECT_TRUE(sameImage(*onHeap, apart));
}

image<unsigned char> mask() {
  Random random(91);
  return randomMask(random, {70, 40}, 0.7);
}

// Brackets of every second label, with background around them.
image<short> labels() {
  image<short> img = blank<short>({40, 30});
  for (int i = 0; i < img.npix(); ++i) {
    const int x = i % 40;
    const int y = i / 40;
    const bool isObject = x % 10 > 2 && y % 10 > 2 && (x % 10 < 6 || y % 10 < 6);
    img.pixels()[i] = static_cast<short>(isObject ? 2 * (x / 10) + 8 * (y / 10) : -1);
  }
  return img;
}

TEST(ShallowCopies, ShowWhatRelabelAndReverseDo) {
  expectSeenThroughCopies(labels(), bip::relabel, reference::relabel);
  expectSeenThroughCopies(mask(), bip::reverse, reference::reverse);
}

TEST(ShallowCopies, ShowErosionAndDilation) {
  using Mask = image<unsigned char>;
  expectSeenThroughCopies(
      labels(), [](image<short>& i) { bip::erode(i); },
      [](image<short>& i) { reference::erode(i); });
  expectSeenThroughCopies(
      mask(), [](Mask& i) { bip::erode(i); }, [](Mask& i) { reference::erode(i); });
  expectSeenThroughCopies(mask(), bip::dilate, reference::dilate);
  expectSeenThroughCopies(mask(), bip::removeInternalStructures,
                          reference::removeInternalStructures);
}

TEST(ShallowCopies, ShowPropagationAndHulls) {
  using Labels = image<short>;
  expectSeenThroughCopies(
      labels(), [](Labels& i) { bip::propagate(i, 2.5F); },
      [](Labels& i) { reference::propagate(i, 2.5F); });
  expectSeenThroughCopies(
      labels(), [](Labels& i) { bip::convexHull(i, 12); },
      [](Labels& i) { reference::convexHull(i, 12); });
}

TEST(ShallowCopies, ShowTheSelectionOfRegions) {
  using Mask = image<unsigned char>;
  Random random(92);
  const Mask brightness = randomImage<unsigned char>(random, {70, 40});
  const Mask scattered = randomMask(random, {70, 40}, 0.4);
  expectSeenThroughCopies(
      scattered, [&](Mask& i) { bip::selectRegions(i, brightness, 120.0F, 3); },
      [&](Mask& i) { reference::selectRegions(i, brightness, 120.0F, 3); });
  expectSeenThroughCopies(
      scattered, [](Mask& i) { bip::selectRegionsBySize(i, 3, 9); },
      [](Mask& i) { reference::selectRegionsBySize(i, 3, 9); });
}

// Brightness is measured before anything is erased.
TEST(SelectRegions, ByTheMaskItselfErasesBySize) {
  image<unsigned char> mask =
      imageOf<unsigned char>({8, 3}, {255, 0, 255, 255, 0, 255, 255, 255,  //
                                      0,   7, 0,   0,   0, 0,   0,   255,  //
                                      255, 7, 0,   255, 0, 255, 0,   0});
  const image<unsigned char> before = mask.duplicate();
  bip::selectRegions(mask, mask, 255.0F, 1);
  EXPECT_TRUE(sameImage(mask, before));
  bip::selectRegions(mask, mask, 0.0F, 2);
  EXPECT_TRUE(sameImage(mask, imageOf<unsigned char>({8, 3}, {0, 0, 255, 255, 0, 255, 255, 255,  //
                                                              0, 7, 0,   0,   0, 0,   0,   255,  //
                                                              0, 7, 0,   0,   0, 0,   0,   0})));
  bip::selectRegions(mask, mask, 255.5F, 1);
  EXPECT_TRUE(sameImage(mask, imageOf<unsigned char>({8, 3}, {0, 0, 0, 0, 0, 0, 0, 0,  //
                                                              0, 7, 0, 0, 0, 0, 0, 0,  //
                                                              0, 7, 0, 0, 0, 0, 0, 0})));
}

}  // namespace
}  // namespace orva::test
