// The whole computation against the reference implementation, bit for bit: centers, weights, votes,
// points and cones.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/reference/voting.h"
#include "tests/support/shapes.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

// Returns the number of centers.
std::size_t expectMatchesReference(const VotingParams& params, const Image& img) {
  Probe probe(params);
  probe.compute(img);
  expectSameVoting(probe, reference::compute(params, img));
  return probe.centers().size();
}

std::vector<Disc> randomDiscs(Random& random, const Shape& shape) {
  std::vector<Disc> discs;
  for (int i = randomInt(random, 1, 6); i > 0; --i) {
    discs.push_back({randomInt(random, -3, shape.nx + 2), randomInt(random, -3, shape.ny + 2),
                     randomInt(random, 0, 9)});
  }
  return discs;
}

float randomFloat(Random& random, float low, float high) {
  return std::uniform_real_distribution<float>(low, high)(random);
}

VotingParams randomParams(Random& random) {
  VotingParams p;
  p.regionType = randomInt(random, 0, 2);
  p.minRadius = randomInt(random, -1, 5);
  p.maxRadius = randomInt(random, p.minRadius - 1, 12);
  p.coneWidth = randomInt(random, 0, 3) == 0 ? 0 : randomInt(random, -1, 15);
  p.gradThreshold = randomFloat(random, -1.0F, 5.0F);
  p.absoluteValues = randomInt(random, 0, 1) == 0;
  p.centerThreshold =
      p.absoluteValues ? randomFloat(random, 0.0F, 40.0F) : randomFloat(random, -0.2F, 1.2F);
  p.sigma = randomFloat(random, 0.5F, 2.5F);
  p.weighting = randomInt(random, 0, 2);
  p.weightParam = randomInt(random, 0, 3) == 0 ? 1.0F : randomFloat(random, -0.5F, 2.5F);
  p.useEdges = randomInt(random, 0, 2) == 0;
  return p;
}

std::string described(const VotingParams& p) {
  std::string text;
  for (const float v :
       {static_cast<float>(p.regionType), static_cast<float>(p.minRadius),
        static_cast<float>(p.maxRadius), static_cast<float>(p.coneWidth), p.gradThreshold,
        p.centerThreshold, p.sigma, static_cast<float>(p.weighting), p.weightParam,
        p.useEdges ? 1.0F : 0.0F, p.absoluteValues ? 1.0F : 0.0F}) {
    text += std::to_string(v) + " ";
  }
  return text;
}

// A NaN is the largest magnitude where it is the first, and then the others are not divided by it.
TEST(VotingMatchesReference, ForANanOffTheDisc) {
  const image<float> img = oneDisc();
  for (const int at : {0, 1, img.npix() - 1}) {
    image<float> marked = img.duplicate();
    marked.pixels()[at] = std::numeric_limits<float>::quiet_NaN();
    for (const bool absolute : {false, true}) {
      VotingParams params;
      params.absoluteValues = absolute;
      EXPECT_GT(expectMatchesReference(params, marked), 0U) << at;
    }
  }
}

TEST(VotingMatchesReference, ForDiscsWithRandomSettings) {
  Random random(1);
  int fruitful = 0;
  for (int round = 0; round < 60; ++round) {
    const VotingParams params = randomParams(random);
    SCOPED_TRACE(described(params));
    const Shape shape{randomInt(random, 1, 60), randomInt(random, 1, 40)};
    const auto img = discImage<unsigned char>(shape, randomDiscs(random, shape), 220, 30);
    if (expectMatchesReference(params, img) > 0) ++fruitful;
  }
  EXPECT_GT(fruitful, 20);
}

TEST(VotingMatchesReference, ForNoiseWithRandomSettings) {
  Random random(2);
  for (int round = 0; round < 30; ++round) {
    const VotingParams params = randomParams(random);
    SCOPED_TRACE(described(params));
    const Shape shape{randomInt(random, 1, 40), randomInt(random, 1, 25)};
    expectMatchesReference(params, randomImage<unsigned char>(random, shape));
  }
}

// Every type of region, weighting, edge switch and kind of threshold with every other.
TEST(VotingMatchesReference, InEveryMode) {
  const image<unsigned char> img =
      discImage<unsigned char>({41, 33}, {{12, 11, 6}, {28, 20, 8}}, 200, 40);
  for (int mode = 0; mode < 24; ++mode) {
    VotingParams params;
    params.regionType = mode % 3;
    params.weighting = mode / 3 % 2;
    params.useEdges = mode / 6 % 2 == 1;
    params.absoluteValues = mode / 12 == 1;
    params.weightParam = 0.5F;
    params.centerThreshold = params.absoluteValues ? 20.0F : 0.4F;
    SCOPED_TRACE(described(params));
    EXPECT_GT(expectMatchesReference(params, img), 0U);
  }
}

TEST(VotingMatchesReference, WithEveryKindOfCone) {
  struct Row {
    int minRadius, maxRadius, coneWidth;
  };
  const image<short> img = discImage<short>({45, 35}, {{15, 14, 7}, {33, 20, 9}}, -500, 900);
  for (const Row& row :
       {Row{1, 20, 10}, Row{1, 8, 0}, Row{5, 10, 3}, Row{7, 7, 0}, Row{6, 6, 6}, Row{1, 1, 0},
        Row{1, 1, 9}, Row{2, 5, 30}, Row{9, 12, 25}, Row{20, 4, 2}}) {
    for (const int type : {0, 1, 2}) {
      VotingParams params;
      params.regionType = type;
      params.minRadius = row.minRadius;
      params.maxRadius = row.maxRadius;
      params.coneWidth = row.coneWidth;
      SCOPED_TRACE(described(params));
      expectMatchesReference(params, img);
    }
  }
}

TEST(VotingMatchesReference, ForOddShapes) {
  Random random(3);
  for (const Shape& shape : {Shape{1, 1}, Shape{1, 50}, Shape{50, 1}, Shape{2, 2}, Shape{3, 40},
                             Shape{130, 2}, Shape{64, 3}, Shape{65, 4}}) {
    for (const bool useEdges : {false, true}) {
      VotingParams params;
      params.regionType = 2;
      params.useEdges = useEdges;
      expectMatchesReference(params, randomImage<unsigned char>(random, shape));
    }
  }
}

// Votes are added in blocks of neighbours, which rows of every length cut in other places.
TEST(VotingMatchesReferenceAtEveryWidth, ForDiscsAndNoise) {
  Random random(8);
  forEveryWidth([&](int width) {
    const Shape shape{width, 5 + width % 13};
    VotingParams params;
    params.regionType = width % 3;
    params.maxRadius = 1 + width % 9;
    params.coneWidth = width % 5;
    params.centerThreshold = 0.1F;
    expectMatchesReference(params,
                           discImage<unsigned char>(shape, randomDiscs(random, shape), 200, 30));
    expectMatchesReference(params, randomImage<unsigned char>(random, shape));
  });
}

// Very large cones are kept in another way.
TEST(VotingMatchesReference, WithConesOfManyCells) {
  VotingParams params;
  params.minRadius = 10;
  params.maxRadius = 260;
  params.coneWidth = 70;
  EXPECT_GT(
      expectMatchesReference(params, discImage<unsigned char>({25, 19}, {{12, 9, 5}}, 200, 30)),
      0U);
}

// Filters run along the frames; the points are those of plane 0.
TEST(VotingMatchesReference, ForStacks) {
  Random random(4);
  for (const Shape& shape :
       {Shape{30, 24, 3}, Shape{30, 24, 1, 2}, Shape{30, 24, 1, 1, 2}, Shape{20, 18, 2, 2, 2}}) {
    for (const bool useEdges : {false, true}) {
      auto img = discImage<unsigned char>(shape, {{10, 9, 5}, {22, 15, 4}}, 180, 20);
      for (int i = shape.nx * shape.ny; i < img.npix(); ++i) {
        img.pixels()[i] = static_cast<unsigned char>(img.pixels()[i] + randomInt(random, 0, 40));
      }
      VotingParams params;
      params.useEdges = useEdges;
      params.gradThreshold = 0.5F;
      expectMatchesReference(params, img);
    }
  }
}

TEST(VotingMatchesReference, ForANanInADisc) {
  image<float> img = discImage<float>({40, 30}, {{10, 10, 6}, {29, 18, 7}}, 100.0F, 0.0F);
  img.setPixel(29, 18, std::numeric_limits<float>::quiet_NaN());
  for (const bool absolute : {false, true}) {
    VotingParams params;
    params.absoluteValues = absolute;
    EXPECT_GT(expectMatchesReference(params, img), 0U);
  }
}

// Most pixels of noise that vote next to themselves make a region of their own.
TEST(VotingMatchesReference, ForMoreCentersThanLabels) {
  Random random(5);
  const auto img = randomImage<float>(random, {640, 640});
  VotingParams params;
  params.maxRadius = 1;
  params.coneWidth = 0;
  params.gradThreshold = 0.0F;
  params.sigma = 0.6F;
  params.absoluteValues = true;
  params.centerThreshold = 600.0F;
  Probe probe(params);
  testing::internal::CaptureStderr();
  probe.compute(img);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "In bip::regions\n   Warning: more than 32768 regions, the rest are ignored\n");
  EXPECT_EQ(probe.centers().size(), 32768U);
  expectSameVoting(probe, reference::compute(params, img));
}

template <class T>
class VotingMatchesReference : public testing::Test {};
TYPED_TEST_SUITE(VotingMatchesReference, PixelTypes);

TYPED_TEST(VotingMatchesReference, ForEveryPixelType) {
  Random random(6);
  for (int round = 0; round < 6; ++round) {
    VotingParams params = randomParams(random);
    params.gradThreshold = 1.0F;
    SCOPED_TRACE(described(params));
    const Shape shape{randomInt(random, 20, 50), randomInt(random, 20, 40)};
    expectMatchesReference(params,
                           discImage<TypeParam>(shape, randomDiscs(random, shape), 210, 15));
    expectMatchesReference(params, randomImage<TypeParam>(random, {randomInt(random, 1, 25), 17}));
  }
}

}  // namespace
}  // namespace orva::test
