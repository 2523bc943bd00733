#include <gtest/gtest.h>

#include <climits>
#include <numeric>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/reference/bip.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

// A chessboard of isolated 255 pixels: (nx * ny + 1) / 2 of them.
const std::string overflowMessage =
    "In bip::regions\n   Warning: more than 32768 regions, the rest are ignored\n";

TEST(Regions, NumbersRegionsInTheRasterOrderOfTheirFirstPixels) {
  int n = -7;
  EXPECT_TRUE(sameImage(bip::regions(maskOf({"..#.#",  //
                                             "#.#.#",  //
                                             "#.###"}),
                                     n, 255, 1, NEIGHBORHOOD_4),
                        labelsOf({"..0.0",  //
                                  "1.0.0",  //
                                  "1.000"})));
  EXPECT_EQ(n, 2);
}

TEST(Regions, WithoutAnyPixelOfTheValueAreNone) {
  for (const int value : {255, 7, 256, INT_MAX}) {
    int n = -7;
    const image<short> labels =
        bip::regions(blank<unsigned char>({4, 3, 2}), n, value, 1, NEIGHBORHOOD_8);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(pixelsOf(labels), std::vector<short>(24, -1));
  }
}

TEST(Regions, OfOnePixelGetALabel) {
  int n = 0;
  EXPECT_TRUE(sameImage(bip::regions(maskOf({"...", ".#.", "..."}), n, 255, 1, NEIGHBORHOOD_4),
                        labelsOf({"...", ".0.", "..."})));
  EXPECT_EQ(n, 1);
}

TEST(Regions, TouchingAtACornerAreOneOnlyForTheBox) {
  const image<unsigned char> mask = maskOf({"#.", ".#"});
  int n = 0;
  bip::regions(mask, n, 255, 1, NEIGHBORHOOD_4);
  EXPECT_EQ(n, 2);
  bip::regions(mask, n, 255, 1, NEIGHBORHOOD_8);
  EXPECT_EQ(n, 1);
}

TEST(Regions, OfVoxelsTouchingAtACornerAreOneOnlyForTheBox) {
  const auto mask = imageOf<unsigned char>({2, 2, 2}, {255, 0, 0, 0, 0, 0, 0, 255});
  int n = 0;
  bip::regions(mask, n, 255, 1, NEIGHBORHOOD_4);
  EXPECT_EQ(n, 2);
  bip::regions(mask, n, 255, 1, NEIGHBORHOOD_8);
  EXPECT_EQ(n, 1);
}

TEST(Regions, OfOneColumnOfVoxelsAreConnectedAlongZ) {
  int n = 0;
  const auto mask = imageOf<unsigned char>({1, 1, 4}, {255, 255, 0, 255});
  EXPECT_EQ(pixelsOf(bip::regions(mask, n, 255, 1, NEIGHBORHOOD_4)),
            (std::vector<short>{0, 0, -1, 1}));
}

TEST(Regions, WithReachTwoSkipDirectNeighbours) {
  int n = 0;
  EXPECT_TRUE(sameImage(
      bip::regions(maskOf({".........", ".........", "..##.#...", ".........", "........."}), n,
                   255, 2, NEIGHBORHOOD_4),
      labelsOf({".........", ".........", "..01.1...", ".........", "........."})));
  EXPECT_EQ(n, 2);
}

// From x = 1 a reach of 2 ends at the border pixel 0; from 0 it goes to 2 and never to 1. So which
// pixel comes first decides.
TEST(Regions, WithReachTwoAreOneSidedAtTheBorder) {
  int n = 0;
  EXPECT_EQ(pixelsOf(bip::regions(maskOf({"##......"}), n, 255, 2, NEIGHBORHOOD_4)),
            (std::vector<short>{0, 1, -1, -1, -1, -1, -1, -1}));
  EXPECT_EQ(pixelsOf(bip::regions(maskOf({"......##"}), n, 255, 2, NEIGHBORHOOD_4)),
            (std::vector<short>{-1, -1, -1, -1, -1, -1, 0, 0}));
}

TEST(Regions, OfAnotherNeighbourhoodAreSinglePixels) {
  for (const int type : {0, 3, 6, 26, -4}) {
    int n = 0;
    EXPECT_TRUE(sameImage(
        bip::regions(maskOf({"##.", ".##"}), n, 255, 1, static_cast<NeighborhoodType>(type)),
        labelsOf({"01.", ".23"})));
    EXPECT_EQ(n, 4);
  }
}

TEST(Regions, OfANegativeValueAreAreasOfEqualValue) {
  int n = 0;
  EXPECT_TRUE(sameImage(bip::regions(maskOf({"112", "133", ".31"}), n, -1, 1, NEIGHBORHOOD_4),
                        labelsOf({"001", "022", "324"})));
  EXPECT_EQ(n, 5);
}

TEST(Regions, WithANegativeReachAreSinglePixels) {
  for (const int reach : {0, -1, INT_MIN}) {
    for (const NeighborhoodType type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
      int n = 0;
      bip::regions(maskOf({"###", "###"}), n, 255, reach, type);
      EXPECT_EQ(n, 6);
    }
  }
}

TEST(Regions, WithAReachBeyondTheImageAreOneForTheBox) {
  for (const int reach : {4, 100, INT_MAX}) {
    int n = 0;
    bip::regions(maskOf({"#...#", ".....", "..#.."}), n, 255, reach, NEIGHBORHOOD_8);
    EXPECT_EQ(n, 1);
  }
}

TEST(Regions, OfANullImageAreAnEmptyImageAndLeaveTheCountAlone) {
  const Shape empty{0, 1};
  for (const Shape& shape : {Shape{0, 1}, Shape{5, 5, 0}, Shape{3, 0}}) {
    int n = 42;
    EXPECT_TRUE(sameImage(bip::regions(blank<unsigned char>(shape), n, 255, 1, NEIGHBORHOOD_4),
                          blank<short>(empty)));
    EXPECT_TRUE(sameImage(bip::regions(blank<short>(shape), n), blank<short>(empty)));
    EXPECT_EQ(n, 42);
    EXPECT_TRUE(sameImage(bip::regions(blank<unsigned char>(shape)), blank<short>(empty)));
    EXPECT_TRUE(sameImage(bip::regions(blank<short>(shape)), blank<short>(empty)));
  }
}

TEST(Regions, OfAShortImageArePartsOfEqualValueConnectedByTheBox) {
  const auto in = imageOf<short>({3, 3}, {-1, 5, -1, 5, -1, 300, -32768, 5, 300});
  int n = 0;
  EXPECT_EQ(pixelsOf(bip::regions(in, n)), (std::vector<short>{0, 1, 0, 1, 0, 2, 3, 1, 2}));
  EXPECT_EQ(n, 4);
}

TEST(Regions, ShortFormsUseTheirDefaults) {
  Random random(11);
  const auto mask = randomMask(random, {23, 14}, 0.5);
  const auto values = randomLabels(random, {23, 14}, 3);
  int n = 0;
  EXPECT_TRUE(sameImage(bip::regions(mask), reference::regions(mask, n, 255, 1, 4)));
  EXPECT_TRUE(sameImage(bip::regions(values), reference::regions(values, n)));
}

TEST(Regions, OfExactlyTheMaxAreAllKept) {
  const image<unsigned char> board = chessboard(256, 256);
  int n = 0;
  testing::internal::CaptureStderr();
  const image<short> labels = bip::regions(board, n, 255, 1, NEIGHBORHOOD_4);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(n, 32768);
  EXPECT_EQ(labels.max(), 32767);
  EXPECT_EQ(bip::regionNumber(labels), 32768);
}

TEST(Regions, BeyondTheMaxAreIgnoredWithAWarning) {
  const image<unsigned char> board = chessboard(301, 301);
  int n = 0;
  testing::internal::CaptureStderr();
  const image<short> labels = bip::regions(board, n, 255, 1, NEIGHBORHOOD_4);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), overflowMessage);
  EXPECT_EQ(n, 32768);
  int expected = 0;
  EXPECT_TRUE(sameImage(labels, reference::regions(board, expected, 255, 1, 4)));
  EXPECT_EQ(labels.pixels()[65534], 32767);
  EXPECT_EQ(labels.pixels()[65536], -1);
}

TEST(Regions, OfAPartitionBeyondTheMaxAreIgnoredWithAWarning) {
  image<short> in = blank<short>({200, 200});
  std::iota(in.pixels(), in.pixels() + in.npix(), short{-20000});
  int n = 0;
  testing::internal::CaptureStderr();
  const image<short> labels = bip::regions(in, n);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), overflowMessage);
  EXPECT_EQ(n, 32768);
  for (int i = 0; i < labels.npix(); ++i) ASSERT_EQ(labels.pixels()[i], i < 32768 ? i : -1);
}

TEST(Regions, OfImagesWiderThanSixteenBitsAreConnectedThroughout) {
  for (const Shape& shape : {Shape{70000, 1}, Shape{1, 70000}, Shape{1, 1, 70000}}) {
    image<unsigned char> mask = blank<unsigned char>(shape);
    std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(255));
    for (const NeighborhoodType type : {NEIGHBORHOOD_4, NEIGHBORHOOD_8}) {
      int n = 0;
      EXPECT_EQ(pixelsOf(bip::regions(mask, n, 255, 1, type)), std::vector<short>(70000, 0));
      EXPECT_EQ(n, 1);
    }
  }
}

TEST(LabellingMatchesReference, ForRandomMasks) {
  Random random(1);
  for (const Shape& shape : oddShapes()) {
    for (int round = 0; round < 12; ++round) {
      // Few values, so that areas form.
      image<unsigned char> in = blank<unsigned char>(shape);
      const int last = randomInt(random, 1, 3);
      for (int i = 0; i < in.npix(); ++i) {
        in.pixels()[i] = static_cast<unsigned char>(85 * randomInt(random, 3 - last, 3));
      }
      for (const int value : {255, 0, -1, -300, 170}) {
        for (const int type : {4, 8, 5}) {
          const int reach = randomInt(random, 0, 3);
          int n = -1;
          int expected = -2;
          EXPECT_TRUE(
              sameImage(bip::regions(in, n, value, reach, static_cast<NeighborhoodType>(type)),
                        reference::regions(in, expected, value, reach, type)))
              << "value " << value << " reach " << reach << " type " << type;
          EXPECT_EQ(n, expected);
        }
      }
    }
  }
}

TEST(LabellingMatchesReference, ForShortImages) {
  Random random(2);
  for (const Shape& shape : oddShapes()) {
    for (int round = 0; round < 12; ++round) {
      const auto in =
          round == 0 ? randomImage<short>(random, shape) : randomLabels(random, shape, round % 4);
      int n = -1;
      int expected = -2;
      EXPECT_TRUE(sameImage(bip::regions(in, n), reference::regions(in, expected)));
      EXPECT_EQ(n, expected);
    }
  }
}

}  // namespace
}  // namespace orva::test
