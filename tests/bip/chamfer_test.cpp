#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/distance.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

using Floats = std::vector<float>;

const float kRoot2 = std::sqrt(2.0F);
const float kRoot3 = std::sqrt(3.0F);
constexpr float kUnknown = 10000.0F;
const std::vector<int> kNone = {0, 1, 1, 1, 1};

const std::string kEmptyMessage =
    "In bip::chamfer\n   Warning: input is empty, return null image\n";
const std::string kFormatMessage =
    "In bip::chamfer\n   Warning: input is not BYTE or SHORT image, return null image\n";

// 0, 255 and some values between; few zeros or many.
Mask randomObjects(Random& random, const Shape& shape) {
  const double share = std::vector<double>{
      0.3, 0.6, 0.9, 0.98, 0.995}[static_cast<std::size_t>(randomInt(random, 0, 4))];
  Mask mask = randomMask(random, shape, share);
  for (int i = 0; i < mask.npix(); ++i) {
    if (randomInt(random, 0, 9) == 0 && mask.pixels()[i] == 255) {
      mask.pixels()[i] = static_cast<unsigned char>(randomInt(random, 1, 254));
    }
  }
  return mask;
}

// Blocks of one label with gaps in the numbering, and several values below 0.
image<short> randomBlocks(Random& random, const Shape& shape) {
  const std::vector<short> values = {-32768, -7, -1, -1, 0, 3, 4, 900, 32767};
  image<short> labels = blank<short>(shape);
  const auto any = [&] {
    return values[static_cast<std::size_t>(
        randomInt(random, 0, static_cast<int>(values.size()) - 1))];
  };
  std::fill_n(labels.pixels(), labels.npix(), any());
  for (int block = randomInt(random, 0, 5); block > 0; --block) {
    const int x0 = randomInt(random, 0, shape.nx - 1);
    const int y0 = randomInt(random, 0, shape.ny - 1);
    const int x1 = randomInt(random, x0, shape.nx - 1);
    const int y1 = randomInt(random, y0, shape.ny - 1);
    const short value = any();
    for (int i = 0; i < labels.npix(); ++i) {
      const int x = i % shape.nx;
      const int y = i / shape.nx % shape.ny;
      const bool skipped = randomInt(random, 0, 60) == 0;
      if (x >= x0 && x <= x1 && y >= y0 && y <= y1 && !skipped) labels.pixels()[i] = value;
    }
  }
  return labels;
}

TEST(Fchamfer, CountsAxialAndDiagonalStepsAtTheirLength) {
  Mask mask = fullMask({7, 7});
  mask.setPixel(3, 3, 0.0F);
  const image<float> distance = bip::fchamfer(mask);
  EXPECT_EQ(sizesOf(distance), (std::vector<int>{7, 7, 1, 1, 1}));
  const float a = 1.0F + kRoot2;
  const float d = kRoot2 + kRoot2;
  const Floats rows[] = {{d, a, 2, a, d}, {a, kRoot2, 1, kRoot2, a}, {2, 1, 0, 1, 2}};
  for (int y = 1; y <= 5; ++y) {
    for (int x = 1; x <= 5; ++x) {
      const auto row = static_cast<std::size_t>(y <= 3 ? y - 1 : 5 - y);
      EXPECT_EQ(distance.pixel(x, y), rows[row][static_cast<std::size_t>(x - 1)]) << x << " " << y;
    }
  }
}

TEST(Fchamfer, OfALonePlaneIsTheShortestPathOfSteps) {
  Mask mask = fullMask({61, 47});
  mask.setPixel(13, 30, 0.0F);
  const image<float> distance = bip::fchamfer(mask);
  for (int y = 1; y < 46; ++y) {
    for (int x = 1; x < 60; ++x) {
      const int a = std::abs(x - 13);
      const int b = std::abs(y - 30);
      const double path = std::max(a, b) - std::min(a, b) + std::min(a, b) * std::sqrt(2.0);
      EXPECT_NEAR(distance.pixel(x, y), path, 1e-4) << x << " " << y;
    }
  }
}

TEST(Fchamfer, OfAVolumeGivesThe26NeighboursTheLengthOfTheirSteps) {
  Mask mask = fullMask({7, 6, 5});
  mask.setPixel(3, 3, 2, 0.0F);
  const image<float> distance = bip::fchamfer(mask);
  EXPECT_EQ(sizesOf(distance), (std::vector<int>{7, 6, 5, 1, 1}));
  for (int dz = -1; dz <= 1; ++dz) {
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        const float lengths[] = {0.0F, 1.0F, kRoot2, kRoot3};
        EXPECT_EQ(distance.pixel(3 + dx, 3 + dy, 2 + dz), lengths[dx * dx + dy * dy + dz * dz])
            << dx << " " << dy << " " << dz;
      }
    }
  }
}

TEST(Fchamfer, TakesEveryNonZeroByteAsObject) {
  EXPECT_TRUE(sameImage(bip::fchamfer(imageOf<unsigned char>({5, 3}, {1, 2, 3, 4, 5,      //
                                                                      0, 1, 254, 128, 0,  //
                                                                      0, 0, 0, 0, 0})),
                        imageOf<float>({5, 3}, {1, 1, 2, 1, 1,  //
                                                0, 1, 1, 1, 0,  //
                                                0, 0, 0, 0, 0})));
}

// The passes leave the border out: it follows at 1 per step, in one pass of rising index.
TEST(Fchamfer, AddingOneForEveryStepFromTheBorderIsIntended) {
  EXPECT_TRUE(sameImage(bip::fchamfer(maskOf({"####", "#..#", "#..#", "####"})),
                        imageOf<float>({4, 4}, {1, 1, 1, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 1, 1, 1})));
  EXPECT_TRUE(
      sameImage(bip::fchamfer(maskOf({"#####", "#####", "##.##", "#####", "#####"})),
                imageOf<float>({5, 5}, {kRoot2 + 1, 2, 2, 2, kRoot2 + 1, 2, kRoot2, 1, kRoot2, 2,
                                        2,          1, 0, 1, 2,          2, kRoot2, 1, kRoot2, 2,
                                        kRoot2 + 1, 2, 2, 2, kRoot2 + 1})));
}

TEST(Fchamfer, OfARowIsReachedOnlyFromTheLeftWhichIsIntended) {
  const Floats row = {kUnknown, kUnknown, 1, 0, 1, 2, 3};
  EXPECT_EQ(pixelsOf(bip::fchamfer(maskOf({"###.###"}))), row);
  Mask column = fullMask({1, 7});
  column.setPixel(3, 0.0F);
  EXPECT_EQ(pixelsOf(bip::fchamfer(column)), row);
  Mask depth = fullMask({1, 1, 7});
  depth.setPixel(3, 0.0F);
  EXPECT_EQ(pixelsOf(bip::fchamfer(depth)), row);
}

TEST(Fchamfer, WithoutBackgroundStaysUnknown) {
  for (const Shape& shape : {Shape{1, 1}, Shape{6, 5}, Shape{6, 5, 2}, Shape{5, 5, 5}}) {
    const image<float> distance = bip::fchamfer(fullMask(shape));
    EXPECT_EQ(pixelsOf(distance), Floats(static_cast<std::size_t>(distance.npix()), kUnknown));
    image<short> labels = blank<short>(shape);
    EXPECT_EQ(pixelsOf(bip::fchamfer(labels)), pixelsOf(distance));
  }
}

TEST(Fchamfer, OfABackgroundIsZero) {
  EXPECT_TRUE(sameImage(bip::fchamfer(blank<unsigned char>({4, 3, 2})), blank<float>({4, 3, 2})));
  image<short> labels = blank<short>({4, 3, 2});
  std::fill_n(labels.pixels(), labels.npix(), short{-1});
  EXPECT_TRUE(sameImage(bip::fchamfer(labels), blank<float>({4, 3, 2})));
}

TEST(Fchamfer, OfLabelsStartsAtTheBoundaryWithOne) {
  EXPECT_TRUE(sameImage(bip::fchamfer(labelsOf({".......",  //
                                                ".55555.",  //
                                                ".55555.",  //
                                                ".55555.",  //
                                                ".55555.",  //
                                                ".55555.",  //
                                                "......."})),
                        imageOf<float>({7, 7}, {0, 0, 0, 0, 0, 0, 0,  //
                                                0, 1, 1, 1, 1, 1, 0,  //
                                                0, 1, 2, 2, 2, 1, 0,  //
                                                0, 1, 2, 3, 2, 1, 0,  //
                                                0, 1, 2, 2, 2, 1, 0,  //
                                                0, 1, 1, 1, 1, 1, 0,  //
                                                0, 0, 0, 0, 0, 0, 0})));
}

// One row of border pixels differs from the rest; values below 0 differ but all are background.
TEST(Fchamfer, OfLabelsMeetsOtherRegionsButNotTheImageBorder) {
  EXPECT_TRUE(sameImage(bip::fchamfer(labelsOf({"0000111",  //
                                                "0000111",  //
                                                "0000111"})),
                        imageOf<float>({7, 3}, {4, 3, 2, 1, 1, 2, 3,  //
                                                4, 3, 2, 1, 1, 2, 3,  //
                                                4, 3, 2, 1, 1, 2, 3})));
  EXPECT_EQ(pixelsOf(bip::fchamfer(imageOf<short>({5, 1}, {-1, -2, -32768, 0, 0}))),
            (Floats{0, 0, 0, 1, 2}));
}

TEST(Fchamfer, OfALabelVolumeMeetsBoundariesAlongAllAxes) {
  image<short> labels = blank<short>({5, 5, 5});
  labels.setPixel(2, 2, 4, -1.0F);
  const image<float> distance = bip::fchamfer(labels);
  EXPECT_EQ(distance.pixel(2, 2, 4), 0.0F);
  EXPECT_EQ(distance.pixel(1, 1, 3), 1.0F);
  EXPECT_EQ(distance.pixel(2, 2, 3), 1.0F);
  EXPECT_EQ(distance.pixel(2, 2, 2), 2.0F);
  EXPECT_EQ(distance.pixel(2, 2, 1), 3.0F);
  EXPECT_EQ(distance.pixel(2, 2, 0), 4.0F);
}

// Where distances come near the value that stands for unknown. Next to the source's row they end
// on a diagonal step, which the last pass shortens to 1 from a distance of 9999 on.
TEST(Fchamfer, FollowsItsNeighboursFrom9999OnWhichIsIntended) {
  for (const bool fromLeft : {true, false}) {
    const auto column = [fromLeft](int steps) { return fromLeft ? 1 + steps : 10018 - steps; };
    Mask mask = fullMask({10020, 5});
    mask.setPixel(column(0), 1, 0.0F);
    const image<float> distance = bip::fchamfer(mask);
    EXPECT_TRUE(sameImage(distance, reference::fchamfer(mask)));
    EXPECT_EQ(distance.pixel(column(9998), 1), 9998.0F);
    EXPECT_NEAR(distance.pixel(column(9998), 2), 9998.41F, 0.1);
    EXPECT_EQ(distance.pixel(column(9999), 2), 9999.0F);
  }
}

TEST(Fchamfer, MeasuresTheFirstVolume) {
  Random random(1);
  for (const Shape& shape : {Shape{9, 8, 1, 3}, Shape{9, 8, 1, 1, 2}, Shape{7, 6, 4, 2, 2}}) {
    const Shape volume{shape.nx, shape.ny, shape.nz};
    const Mask mask = randomObjects(random, shape);
    Mask first = blank<unsigned char>(volume);
    std::copy_n(mask.pixels(), first.npix(), first.pixels());
    EXPECT_TRUE(sameImage(bip::fchamfer(mask), bip::fchamfer(first)));
    EXPECT_TRUE(sameImage(bip::chamfer(mask, false), bip::chamfer(first, false)));
    const image<short> labels = randomBlocks(random, shape);
    image<short> firstLabels = blank<short>(volume);
    std::copy_n(labels.pixels(), firstLabels.npix(), firstLabels.pixels());
    EXPECT_TRUE(sameImage(bip::fchamfer(labels), bip::fchamfer(firstLabels)));
  }
}

TEST(Fchamfer, LeavesItsInput) {
  Random random(2);
  const Mask mask = randomObjects(random, {12, 9, 3});
  const Mask before = mask.duplicate();
  bip::fchamfer(mask);
  bip::chamfer(mask, true);
  EXPECT_TRUE(sameImage(mask, before));
}

void expectRefused(const Image& in, const std::string& message) {
  testing::internal::CaptureStderr();
  EXPECT_TRUE(isWhole(bip::fchamfer(in), kNone));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
  for (const bool invert : {false, true}) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(isWhole(bip::chamfer(in, invert), kNone));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
  }
}

TEST(Chamfer, OfANullImageIsNullWithAWarning) {
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}, Shape{5, 0, 3}}) {
    expectRefused(blank<unsigned char>(shape), kEmptyMessage);
    expectRefused(blank<short>(shape), kEmptyMessage);
    expectRefused(blank<float>(shape), kEmptyMessage);
  }
}

TEST(Chamfer, OfOtherPixelTypesIsNullWithAWarning) {
  const Shape shape{3, 3};
  expectRefused(blank<float>(shape), kFormatMessage);
  expectRefused(blank<int>(shape), kFormatMessage);
  expectRefused(blank<unsigned int>(shape), kFormatMessage);
  expectRefused(blank<Rgb>(shape), kFormatMessage);
  for (const int format :
       {-1, static_cast<int>(USHORT), static_cast<int>(SHORTRGB), static_cast<int>(RGBA), 11}) {
    expectRefused(ForeignImage(format), kFormatMessage);
  }
}

TEST(Chamfer, PrintsNothingForWhatItCanMeasure) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  bip::chamfer(maskOf({"#.#"}), true);
  bip::chamfer(labelsOf({"0.1"}), false);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Chamfer, StretchesTheDistancesTo255) {
  EXPECT_EQ(pixelsOf(bip::fchamfer(maskOf({".####"}))), (Floats{0, 1, 2, 3, 4}));
  EXPECT_EQ(pixelsOf(bip::chamfer(maskOf({".####"}), false)),
            (std::vector<unsigned char>{0, 63, 127, 191, 255}));
  EXPECT_EQ(pixelsOf(bip::chamfer(maskOf({".####"}), true)),
            (std::vector<unsigned char>{255, 192, 128, 64, 0}));
}

TEST(Chamfer, OfEqualDistancesIsZeroOrInverted255) {
  for (const Mask& mask : {fullMask({4, 3}), blank<unsigned char>({4, 3})}) {
    EXPECT_EQ(pixelsOf(bip::chamfer(mask, false)), std::vector<unsigned char>(12, 0));
    EXPECT_EQ(pixelsOf(bip::chamfer(mask, true)), std::vector<unsigned char>(12, 255));
  }
}

template <class T>
void expectMatchesReference(const image<T>& img) {
  const image<float> distance = reference::fchamfer(img);
  EXPECT_TRUE(sameImage(bip::fchamfer(img), distance));
  for (const bool invert : {false, true}) {
    EXPECT_TRUE(sameImage(bip::chamfer(img, invert), reference::chamferBytes(distance, invert)));
  }
}

TEST(ChamferMatchesReferenceAtEveryWidth, ForOddShapes) {
  Random random(3);
  for (const Shape& shape : oddShapesAndWidths()) {
    expectMatchesReference(randomObjects(random, shape));
    expectMatchesReference(randomBlocks(random, shape));
    expectMatchesReference(randomLabels(random, shape, 2));
  }
}

TEST(ChamferMatchesReferenceAtEveryWidth, ForObjectsAndBlocks) {
  Random random(4);
  forEveryWidth([&](int nx) {
    const Shape shape{nx, randomInt(random, 1, 40)};
    expectMatchesReference(randomObjects(random, shape));
    expectMatchesReference(randomBlocks(random, shape));
  });
}

TEST(ChamferMatchesReference, ForManyVolumes) {
  Random random(5);
  for (int round = 0; round < 100; ++round) {
    const Shape shape{randomInt(random, 1, 16), randomInt(random, 1, 16), randomInt(random, 1, 9)};
    expectMatchesReference(randomObjects(random, shape));
    expectMatchesReference(randomBlocks(random, shape));
  }
}

// A depth and a channel below zero multiply to one frame, of which no volume is left.
TEST(Chamfer, OfNegativeSizesWithAPositiveProductIsNull) {
  Mask mask(5, 5, -1, -1, 1);
  ASSERT_EQ(mask.npix(), 25);
  EXPECT_TRUE(isWhole(bip::fchamfer(mask), {5, 5, 0, 1, 1}));
  EXPECT_TRUE(isWhole(bip::fchamfer(image<short>(5, 5, -1, -1, 1)), {5, 5, 0, 1, 1}));
  EXPECT_TRUE(bip::fchamfer(Mask(-1, -5, 1, 1, 1)).isNull());
  EXPECT_TRUE(bip::chamfer(mask, true).isNull());
}

}  // namespace
}  // namespace orva::test
