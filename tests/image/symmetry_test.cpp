// Parts, extremes and conversions are computed pixel by pixel: an image with its pixels rearranged
// gives the result, rearranged.
//
// Exception: scale() takes the lower neighbour, so that it follows a flip only where a size
// grows by a whole number; it can always be transposed. A Roi is cut from the first frame alone, so
// that the others may come in any order.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/support/images.h"
#include "tests/support/shapes.h"
#include "tests/support/symmetries.h"

namespace orva::test {
namespace {

template <class T>
image<T> owned(image<T>* part) {
  const std::unique_ptr<image<T>> holder(part);
  EXPECT_NE(part, nullptr);
  return part == nullptr ? image<T>(0, 1, 1, 1, 1) : *part;
}

template <class T>
class Rearranged : public testing::Test {};
TYPED_TEST_SUITE(Rearranged, PixelTypes);

TYPED_TEST(Rearranged, PixelsHaveTheSameExtremes) {
  Random random(501);
  for (const Shape& shape : oddShapes()) {
    const auto img = randomImage<TypeParam>(random, shape);
    const auto shuffled = reordered(img, shuffledFrames(random, img));
    EXPECT_EQ(shuffled.fmin(), img.fmin());
    EXPECT_EQ(shuffled.fmax(), img.fmax());
    for (const auto turn : volumeSymmetries<TypeParam>()) {
      EXPECT_EQ(turn(img).fmin(), img.fmin());
      EXPECT_EQ(turn(img).fmax(), img.fmax());
    }
  }
}

TYPED_TEST(Rearranged, PixelsAreConvertedAlike) {
  Random random(502);
  for (const Shape& shape : oddShapes()) {
    const auto img = randomImage<TypeParam>(random, shape);
    const auto order = shuffledFrames(random, img);
    const auto shuffled = reordered(img, order);
    EXPECT_TRUE(sameImage(toFloatImage(shuffled), reordered(toFloatImage(img), order)));
    EXPECT_TRUE(sameImage(toRgbImage(shuffled), reordered(toRgbImage(img), order)));
    for (std::size_t t = 0; t < 4; ++t) {
      const auto turned = volumeSymmetries<TypeParam>()[t](img);
      for (const bool scale : {false, true}) {
        EXPECT_TRUE(sameImage(toByteImage(turned, scale),
                              volumeSymmetries<unsigned char>()[t](toByteImage(img, scale))));
      }
      EXPECT_TRUE(sameImage(toFloatImage(turned), volumeSymmetries<float>()[t](toFloatImage(img))));
      EXPECT_TRUE(sameImage(toRgbImage(turned), volumeSymmetries<Rgb>()[t](toRgbImage(img))));
    }
  }
}

TYPED_TEST(Rearranged, FramesAreTakenFromTheirNewPlaces) {
  Random random(503);
  const auto img = randomImage<TypeParam>(random, {6, 5, 2, 3, 2});
  const auto order = shuffledFrames(random, img);
  const auto shuffled = reordered(img, order);
  for (int f = 0; f < img.nframes(); ++f) {
    EXPECT_TRUE(
        sameImage(owned(shuffled.frame(f)), owned(img.frame(order[static_cast<std::size_t>(f)]))));
  }
  // The two time points exchanged, then the first two channels of each.
  const auto times = reordered(img, {6, 7, 8, 9, 10, 11, 0, 1, 2, 3, 4, 5});
  EXPECT_TRUE(sameImage(owned(times.timepoint(0)), owned(img.timepoint(1))));
  EXPECT_TRUE(sameImage(owned(times.timepoint(1)), owned(img.timepoint(0))));
  const auto channels = reordered(img, {2, 3, 0, 1, 4, 5, 8, 9, 6, 7, 10, 11});
  for (int t = 0; t < 2; ++t) {
    EXPECT_TRUE(sameImage(owned(channels.channel(0, t)), owned(img.channel(1, t))));
    EXPECT_TRUE(sameImage(owned(channels.channel(1, t)), owned(img.channel(0, t))));
    EXPECT_TRUE(sameImage(owned(channels.channel(2, t)), owned(img.channel(2, t))));
  }
}

TYPED_TEST(Rearranged, BoxesAreThoseOfTheTurnedCorners) {
  Random random(504);
  const int nx = 9;
  const int ny = 7;
  const auto img = randomImage<TypeParam>(random, {nx, ny, 4});
  for (int round = 0; round < 20; ++round) {
    const int x0 = randomInt(random, 0, nx - 1);
    const int x1 = randomInt(random, x0, nx - 1);
    const int y0 = randomInt(random, 0, ny - 1);
    const int y1 = randomInt(random, y0, ny - 1);
    const auto box = owned(img.roi({x0, y0, 1}, {x1, y1, 2}));
    EXPECT_TRUE(sameImage(owned(flipped(img).roi({nx - 1 - x1, y0, 1}, {nx - 1 - x0, y1, 2})),
                          flipped(box)));
    EXPECT_TRUE(sameImage(owned(upsideDown(img).roi({x0, ny - 1 - y1, 1}, {x1, ny - 1 - y0, 2})),
                          upsideDown(box)));
    EXPECT_TRUE(sameImage(owned(transposed(img).roi({y0, x0, 1}, {y1, x1, 2})), transposed(box)));

    const auto cut = [](const image<TypeParam>& from, int xmin, int ymin, int xmax, int ymax) {
      return owned(
          dynamic_cast<image<TypeParam>*>(Roi::getSubImage(from, Roi(xmin, ymin, xmax, ymax))));
    };
    const auto part = cut(img, x0, y0, x1, y1);
    EXPECT_TRUE(sameImage(cut(flipped(img), nx - 1 - x1, y0, nx - 1 - x0, y1), flipped(part)));
    EXPECT_TRUE(
        sameImage(cut(upsideDown(img), x0, ny - 1 - y1, x1, ny - 1 - y0), upsideDown(part)));
    EXPECT_TRUE(sameImage(cut(transposed(img), y0, x0, y1, x1), transposed(part)));
    EXPECT_TRUE(sameImage(cut(reordered(img, {0, 3, 1, 2}), x0, y0, x1, y1), part));
    const auto moved = framed(img, nx + 6, ny + 5, 4, 3, img.pixels()[0]);
    EXPECT_TRUE(sameImage(cut(moved, x0 + 4, y0 + 3, x1 + 4, y1 + 3), part));
  }
}

TYPED_TEST(Rearranged, ImagesAreScaledToTheTransposedPixels) {
  Random random(505);
  const auto img = randomImage<TypeParam>(random, {7, 5, 3});
  for (int round = 0; round < 20; ++round) {
    const int sx = randomInt(random, 1, 20);
    const int sy = randomInt(random, 1, 20);
    const int sz = randomInt(random, 1, 8);
    EXPECT_TRUE(sameImage(owned(transposed(img).scale(sy, sx, sz)),
                          transposed(owned(img.scale(sx, sy, sz)))));
  }
}

TYPED_TEST(Rearranged, ImagesAreEnlargedByWholeNumbersToTheTurnedPixels) {
  Random random(506);
  const auto img = randomImage<TypeParam>(random, {7, 5, 3});
  for (int factor = 1; factor <= 4; ++factor) {
    for (const auto turn : {flipped<TypeParam>, upsideDown<TypeParam>, backToFront<TypeParam>}) {
      EXPECT_TRUE(sameImage(owned(turn(img).scale(7 * factor, 5 * factor, 3 * factor)),
                            turn(owned(img.scale(7 * factor, 5 * factor, 3 * factor)))));
    }
  }
}

// The border of a turned image is the turned border. All frames count as planes.
TEST(Interior, IsTheSameForEveryTurn) {
  for (const Shape& shape : oddShapes()) {
    const auto interiorOf = [](const Image& img) {
      const std::vector<bool> inside = img.interior();
      return imageOf<unsigned char>(shapeOf(img), {inside.begin(), inside.end()});
    };
    const auto img = blank<unsigned char>(shape);
    const auto inside = interiorOf(img);
    for (const auto turn : volumeSymmetries<unsigned char>()) {
      EXPECT_TRUE(sameImage(interiorOf(turn(img)), turn(inside)));
    }
    if (shape.nx > 1 && shape.nz > 1 && shape.nc * shape.nt == 1) {  // one plane has no z border
      EXPECT_TRUE(sameImage(interiorOf(transposedXZ(img)), transposedXZ(inside)));
    }
  }
}

}  // namespace
}  // namespace orva::test
