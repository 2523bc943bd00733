// Voting at the ends of its ranges: coordinates of 16 bits, sigmas that are no numbers, images of
// one row, and no memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/memory_limit.h"
#include "tests/support/shapes.h"
#include "tests/support/special_values.h"
#include "tests/support/symmetries.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

constexpr int kLongestSide = 32767;

const std::string kTooLarge =
    "In CircularVoting::compute\n   Warning: image is too large, no centers\n";

std::string errorsOf(Probe& probe, const Image& img) {
  testing::internal::CaptureStderr();
  probe.compute(img);
  return testing::internal::GetCapturedStderr();
}

// The last pixel that the coordinates reach is a voting point like any other.
TEST(LongestImage, HasCentersAtItsFarEnd) {
  VotingParams params;
  params.maxRadius = 12;
  params.coneWidth = 4;
  const int margin = 15;
  const int length = kLongestSide - 2 * margin;
  const auto wide = discImage<unsigned char>({length, 24}, {{length - 13, 12, 7}}, 200.0F, 0.0F);
  Probe probe(params);
  EXPECT_EQ(errorsOf(probe, wide), "");
  ASSERT_EQ(probe.margin_, margin);
  const auto isNear = [&](const Probe& p, int x, int y) {
    return std::any_of(p.centers().begin(), p.centers().end(), [=](const Point& c) {
      return std::abs(c.x - x) <= 2 && std::abs(c.y - y) <= 2;
    });
  };
  EXPECT_TRUE(isNear(probe, length - 13, 12));
  Probe other(params);
  EXPECT_EQ(errorsOf(other, transposed(wide)), "");
  EXPECT_TRUE(isNear(other, 12, length - 13));
  for (const auto& p : probe.points_) {
    ASSERT_GE(p.x, 0);
    ASSERT_LT(p.x, length);
  }
}

TEST(LongestImage, IsAsLongAsItsMarginLeavesRoomFor) {
  struct Row {
    int maxRadius, coneWidth, margin;
  };
  // The margin is the root of the sum of squares, and three pixels, rounded down.
  for (const Row& row : {Row{1, 0, 4}, Row{1, 1, 4}, Row{3, 4, 8}, Row{100, 0, 103},
                         Row{300, 400, 503}, Row{2, 30, 33}}) {
    VotingParams params = absolute(-1.0F);
    params.maxRadius = row.maxRadius;
    params.coneWidth = row.coneWidth;
    const int length = kLongestSide - 2 * row.margin;
    for (const bool upright : {false, true}) {
      Probe fits(params);
      EXPECT_EQ(errorsOf(fits, blank<unsigned char>(upright ? Shape{1, length} : Shape{length, 1})),
                "");
      EXPECT_EQ(fits.margin_, row.margin);
      EXPECT_EQ(fits.centers().size(), 1U);
      Probe tooLong(params);
      EXPECT_EQ(errorsOf(tooLong, blank<unsigned char>(upright ? Shape{1, length + 1}
                                                               : Shape{length + 1, 1})),
                kTooLarge);
      EXPECT_TRUE(tooLong.centers().empty());
    }
  }
}

TEST(LargestRadius, ThatFitsAnImageIsOneBelowThatWhichIsTooLarge) {
  // A side of 1 and twice 16383 are 32767; the accumulators would take 4 GiB each.
  VotingParams params;
  params.coneWidth = 0;
  params.maxRadius = 16381;
  for (const int radius : {16381, 20000, 32768, 65536, 46341, 1 << 30, INT_MAX - 3, INT_MAX}) {
    for (const int width : {0, 1, INT_MAX}) {
      params.maxRadius = radius;
      params.coneWidth = width;
      Probe probe(params);
      EXPECT_EQ(errorsOf(probe, blank<float>({1, 1})), kTooLarge) << radius << ' ' << width;
      EXPECT_TRUE(probe.centers().empty());
      EXPECT_TRUE(probe.points_.empty());
    }
  }
}

TEST(LargestRadius, BelowZeroIsOne) {
  for (const int radius : {0, -1, INT_MIN}) {
    VotingParams params;
    params.minRadius = radius;
    params.maxRadius = radius;
    params.coneWidth = radius;
    Probe probe(params);
    EXPECT_EQ(errorsOf(probe, oneDisc()), "");
    EXPECT_EQ(probe.margin_, 4);
  }
}

TEST(DegenerateSigma, VotesAsTheReference) {
  Random random(901);
  const auto noise = randomImage<unsigned char>(random, {9, 7});
  for (const float sigma : {kNaN, kInfinity, -kInfinity, 0.0F, -0.0F, -3.0F, 1e-30F, 1e9F, 3e38F}) {
    for (const bool useEdges : {false, true}) {
      VotingParams params = absolute(0.0F);
      params.sigma = sigma;
      params.useEdges = useEdges;
      params.maxRadius = 5;
      params.coneWidth = 2;
      const image<float> disc = oneDisc();
      for (const Image* img :
           {static_cast<const Image*>(&disc), static_cast<const Image*>(&noise)}) {
        Probe probe = computed(params, *img);
        expectSameVoting(probe, reference::compute(params, *img));
      }
    }
  }
}

TEST(HugeSigma, VotesAsTheReference) {
  Random random(902);
  VotingParams params;
  params.sigma = 25000.0F;
  params.gradThreshold = 0.0F;
  const auto img = randomImage<float>(random, {6, 5});
  Probe probe = computed(params, img);
  expectSameVoting(probe, reference::compute(params, img));
}

TEST(SmallImage, IsVotedOnWithTheSizesItShows) {
  for (const Shape& s : smallShapes()) {
    const image<short> img = blank<short>(s);
    Probe probe = computed(absolute(-1.0F), img);
    // Of an image whose votes all exceed the threshold the whole is one region.
    const bool hasPixels = !img.isNull() && img.nx() > 0 && img.ny() > 0;
    EXPECT_EQ(probe.centers().size(), hasPixels ? 1U : 0U);
    EXPECT_TRUE(isWhole(probe.votingImage(), {img.nx(), img.ny(), 1, 1, 1}));
  }
}

void computeWith(int maxRadius, int coneWidth, const Image& img) {
  VotingParams params;
  params.maxRadius = maxRadius;
  params.coneWidth = coneWidth;
  Probe probe(params);
  probe.compute(img);
}

TEST(VotingWithoutMemory, EndsTheProcess) {
  // Of a large image, and of large cones for a small one.
  Random random(903);
  const auto large = randomImage<unsigned char>(random, {300, 250});
  expectMemoryToRunOut("image", {"Error: out of memory\n", "Out of memory\n"},
                       [&] { computeWith(2, 1, large); });
  expectMemoryToRunOut("cones", {"Error: out of memory\n", "Out of memory\n"},
                       [&] { computeWith(80, 40, oneDisc()); });
}

TEST(VotingWithoutMemory, ForTheLargestRadiusEndsTheProcess) {
  for (const int radius : {12000, 16380}) {
    expectNoMemory(
        "voting",
        [&] {
          computeWith(radius, 10, blank<float>({1, 1}));
        },
        300 * kMebibyte);
  }
}

TEST(VotingWithoutMemory, ForConesOfACallersEndsTheProcess) {
  Probe probe{VotingParams()};
  expectNoMemory("computeCones", [&] { probe.computeCones(1, 200, 200); });
  expectNoMemory("ConePlane2D",
                 [] { const voting::ConePlane2D plane(2000000, voting::WPoint2D()); });
}

}  // namespace
}  // namespace orva::test
