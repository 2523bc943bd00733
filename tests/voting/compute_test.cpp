#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/reference/bip.h"
#include "tests/support/reference/voting.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

TEST(Compute, HasItsStrongestCenterInTheMiddleOfADisc) {
  VotingParams params;
  params.maxRadius = 12;
  params.coneWidth = 6;
  for (const bool bright : {true, false}) {
    params.regionType = bright ? 0 : 1;
    const auto img = discImage<unsigned char>({48, 40}, {{25, 18, 8}}, bright ? 200.0F : 50.0F,
                                              bright ? 50.0F : 200.0F);
    const Probe probe = computed(params, img);
    const std::vector<float>& weights = probe.center_weights();
    ASSERT_FALSE(weights.empty());
    const auto strongest = std::max_element(weights.begin(), weights.end()) - weights.begin();
    const Point center = probe.centers()[static_cast<std::size_t>(strongest)];
    EXPECT_LE(std::abs(center.x - 25), 1);
    EXPECT_LE(std::abs(center.y - 18), 1);
  }
}

TEST(Compute, OfDarkDiscsVotesLikeOfBrightDiscs) {
  const image<float> bright = oneDisc();
  image<float> dark = bright.duplicate();
  for (int i = 0; i < dark.npix(); ++i) dark.pixels()[i] = -bright.pixels()[i];
  VotingParams params;
  Probe a = computed(params, bright);
  params.regionType = 1;
  Probe b = computed(params, dark);
  EXPECT_FALSE(a.centers().empty());
  EXPECT_EQ(coordinates(a.centers()), coordinates(b.centers()));
  EXPECT_TRUE(sameFloats(a.center_weights(), b.center_weights()));
  EXPECT_TRUE(samePoints(a.points_, b.points_));
  EXPECT_TRUE(sameImage(a.acc_, b.acc_));
}

TEST(Compute, OfAShiftedImageFindsShiftedCenters) {
  VotingParams params;
  params.regionType = 2;
  const auto discs = [](int dx, int dy) {
    return discImage<float>({90, 80}, {{30 + dx, 28 + dy, 7}, {50 + dx, 40 + dy, 5}}, 90.0F, 0.0F);
  };
  const Probe probe = computed(params, discs(0, 0));
  ASSERT_FALSE(probe.centers().empty());
  for (const auto& [dx, dy] : Coordinates{{1, 0}, {0, 1}, {9, 13}, {-7, 4}, {-6, -5}}) {
    const Probe shifted = computed(params, discs(dx, dy));
    Coordinates expected = coordinates(probe.centers());
    for (auto& [x, y] : expected) {
      x += dx;
      y += dy;
    }
    EXPECT_EQ(coordinates(shifted.centers()), expected);
    EXPECT_TRUE(sameFloats(shifted.center_weights(), probe.center_weights()));
  }
}

TEST(Compute, LeavesTheImageAlone) {
  Random random(1);
  const auto img = randomImage<float>(random, {25, 20});
  const auto before = img.duplicate();
  computed({}, img);
  EXPECT_TRUE(sameImage(img, before));
}

TEST(Compute, LeavesTheMeanVoteAtEveryCenterAndZeroElsewhere) {
  Probe probe = computed({}, discImage<float>({60, 30}, {{15, 15, 6}, {43, 14, 8}}, 70.0F, 0.0F));
  ASSERT_GE(probe.centers().size(), 2U);
  ASSERT_EQ(probe.centers().size(), probe.center_weights().size());
  image<float> expected = blank<float>({60, 30});
  for (std::size_t i = 0; i < probe.centers().size(); ++i) {
    EXPECT_GT(probe.center_weights()[i], 0.0F);
    expected.setPixel(probe.centers()[i].x, probe.centers()[i].y, probe.center_weights()[i]);
  }
  EXPECT_TRUE(sameImage(probe.votingImage(), expected));
}

TEST(Compute, SharesItsVotingImage) {
  Probe probe = computed({}, oneDisc());
  EXPECT_EQ(probe.votingImage().pixels(), probe.votingImage_.pixels());
}

TEST(Compute, SetsTheWidthsOfAllConeTypesToThoseOfTheAccumulator) {
  VotingParams params;
  params.maxRadius = 20;
  params.coneWidth = 10;
  Probe probe = computed(params, blank<float>({31, 17}));
  // The root of 500, plus 3, rounded down.
  EXPECT_EQ(probe.margin_, 25);
  EXPECT_EQ(probe.acc_.nx(), 81);
  EXPECT_EQ(probe.acc_.ny(), 67);
  for (const int width : {voting::WPoint2D::nx, voting::ConePlane2D::nx, voting::Cone2D::nx})
    EXPECT_EQ(width, 81);
  for (const int height : {voting::WPoint2D::ny, voting::ConePlane2D::ny, voting::Cone2D::ny})
    EXPECT_EQ(height, 67);
  EXPECT_EQ(probe.nx_, 31);
  EXPECT_EQ(probe.ny_, 17);
  EXPECT_EQ(probe.npix_, 31 * 17);
}

// The threshold of centers is a number of votes, or a share of the largest vote.
TEST(Compute, SelectsVotesAboveTheThreshold) {
  for (const bool isAbsolute : {true, false}) {
    for (const float threshold : {0.3F, 0.5F, 0.9F}) {
      VotingParams params = absolute(threshold);
      params.absoluteValues = isAbsolute;
      const Probe probe = computed(params, oneDisc());
      const int m = probe.margin_;
      float maxVote = 0.0F;
      for (int y = 0; y < 36; ++y) {
        for (int x = 0; x < 40; ++x) maxVote = std::max(maxVote, probe.acc_.pixel(x + m, y + m));
      }
      const float limit = isAbsolute ? threshold : threshold * maxVote;
      image<unsigned char> mask = blank<unsigned char>({40, 36});
      for (int y = 0; y < 36; ++y) {
        for (int x = 0; x < 40; ++x) {
          if (probe.acc_.pixel(x + m, y + m) > limit) mask.setPixel(x, y, 255.0F);
        }
      }
      int regions = 0;
      bip::regions(mask, regions, 255, 1, NEIGHBORHOOD_4);
      EXPECT_GT(regions, 0);
      EXPECT_EQ(static_cast<int>(probe.centers().size()), regions);
    }
  }
}

// Brightness that grows to the right sends the votes of the last columns over the border.
TEST(Compute, DropsVotesInTheMargin) {
  image<float> ramp = blank<float>({12, 12});
  for (int i = 0; i < ramp.npix(); ++i) {
    ramp.pixels()[i] = static_cast<float>((i % 12) * (i % 12));
  }
  for (const int type : {0, 1, 2}) {
    VotingParams params = absolute(0.0F);
    params.regionType = type;
    params.minRadius = 9;
    params.maxRadius = 14;
    params.gradThreshold = 0.0F;
    Probe probe = computed(params, ramp);
    const std::unique_ptr<image<float>> inside(
        probe.acc_.roi(Point3D(probe.margin_, probe.margin_, 0),
                       Point3D(probe.margin_ + 11, probe.margin_ + 11, 0)));
    const auto sumOf = [](const image<float>& votes) {
      return std::accumulate(votes.pixels(), votes.pixels() + votes.npix(), 0.0);
    };
    EXPECT_GT(sumOf(probe.acc_), sumOf(*inside)) << type;
    // Only votes within the image make centers.
    image<unsigned char> mask = blank<unsigned char>({12, 12});
    for (int i = 0; i < mask.npix(); ++i) mask.setPixel(i, inside->pixel(i) > 0.0F ? 255.0F : 0.0F);
    int n = 0;
    const image<short> labels = reference::regions(mask, n, 255, 1, 4);
    Coordinates centers;
    std::vector<float> weights;
    for (const RegionFeature& f : reference::regionFeatures(labels, n, inside.get())) {
      centers.emplace_back(f.cx, f.cy);
      weights.push_back(f.mean);
    }
    EXPECT_EQ(coordinates(probe.centers()), centers);
    EXPECT_TRUE(sameFloats(probe.center_weights(), weights));
    expectSameVoting(probe, reference::compute(params, ramp));
  }
}

TEST(Compute, OfAPointInTheCornerVotesWithoutFault) {
  for (const auto& [x, y] : Coordinates{{0, 0}, {19, 0}, {0, 14}, {19, 14}}) {
    for (const int type : {0, 1, 2}) {
      VotingParams params;
      params.regionType = type;
      params.coneWidth = 25;
      const auto img = discImage<float>({20, 15}, {{x, y, 0}}, 90.0F, 0.0F);
      Probe probe = computed(params, img);
      EXPECT_FALSE(probe.points_.empty());
      expectSameVoting(probe, reference::compute(params, img));
    }
  }
}

TEST(Compute, ExponentialLeavesTheWeightsWhichIsIntended) {
  const Probe plain = computed({}, oneDisc());
  ASSERT_FALSE(plain.points_.empty());
  for (const int weighting : {1, 2, -1}) {
    for (const float weightParam : {-2.0F, 0.0F, 0.5F, 1.0F, 30.0F}) {
      VotingParams params;
      params.weighting = weighting;
      params.weightParam = weightParam;
      Probe probe = computed(params, oneDisc());
      EXPECT_TRUE(samePoints(probe.points_, plain.points_));
      EXPECT_EQ(coordinates(probe.centers()), coordinates(plain.centers()));
      EXPECT_TRUE(sameFloats(probe.center_weights(), plain.center_weights()));
    }
  }
}

TEST(Compute, PowerWithinOneThousandthOfOneLeavesTheWeights) {
  const Probe plain = computed({}, oneDisc());
  for (const float weightParam : {0.9995F, 1.0005F}) {
    VotingParams params;
    params.weightParam = weightParam;
    EXPECT_TRUE(samePoints(computed(params, oneDisc()).points_, plain.points_));
  }
  for (const float weightParam : {0.99F, 1.01F}) {
    VotingParams params;
    params.weightParam = weightParam;
    EXPECT_FALSE(samePoints(computed(params, oneDisc()).points_, plain.points_));
  }
}

TEST(Compute, CollectingCentersButNotWeightsIsIntended) {
  const auto first = oneDisc();
  const auto second = discImage<float>({70, 33}, {{14, 16, 6}, {50, 15, 7}}, 80.0F, 5.0F);
  const Probe a = computed({}, first);
  Probe b = computed({}, second);
  Probe both = computed({}, first);
  both.compute(second);
  Coordinates expected = coordinates(a.centers());
  for (const auto& c : coordinates(b.centers())) expected.push_back(c);
  EXPECT_EQ(coordinates(both.centers()), expected);
  EXPECT_TRUE(sameFloats(both.center_weights(), b.center_weights()));
  EXPECT_TRUE(sameImage(both.votingImage(), b.votingImage()));
  EXPECT_TRUE(samePoints(both.points_, b.points_));
}

TEST(Compute, OfAConstantImageFindsNothing) {
  for (const bool isAbsolute : {false, true}) {
    VotingParams params = absolute(0.0F);
    params.absoluteValues = isAbsolute;
    params.gradThreshold = 0.0F;
    Probe probe = computed(params, blank<unsigned char>({30, 20}));
    EXPECT_TRUE(probe.points_.empty());
    EXPECT_TRUE(probe.centers().empty());
    EXPECT_TRUE(probe.center_weights().empty());
    EXPECT_TRUE(sameImage(probe.votingImage(), blank<float>({30, 20})));
    EXPECT_EQ(probe.acc_.max(), 0.0F);
  }
}

// Divided by the largest, no magnitude would reach 2.
TEST(Compute, AlwaysAbsoluteGradientThresholdsAreIntended) {
  const auto voters = [](float gradThreshold, bool isAbsolute) {
    VotingParams params = absolute(0.1F);
    params.absoluteValues = isAbsolute;
    params.gradThreshold = gradThreshold;
    Coordinates places;
    const Probe probe = computed(params, oneDisc());
    for (const auto& p : probe.points_) places.emplace_back(p.x, p.y);
    return places;
  };
  const Coordinates strong = voters(2.0F, false);
  EXPECT_FALSE(strong.empty());
  EXPECT_LT(strong.size(), voters(0.1F, false).size());
  EXPECT_EQ(strong, voters(2.0F, true));
}

TEST(Compute, WithGradientsBelowTheThresholdFindsNothing) {
  for (const bool isAbsolute : {false, true}) {
    VotingParams params = absolute(0.1F);
    params.absoluteValues = isAbsolute;
    params.gradThreshold = 200.0F;
    const Probe probe = computed(params, oneDisc());
    EXPECT_TRUE(probe.points_.empty());
    EXPECT_TRUE(probe.centers().empty());
  }
}

// All votes, zeros included, are above it: one region, the whole image.
TEST(Compute, WithANegativeThresholdTakesAllAsOneRegion) {
  Probe probe = computed(absolute(-1.0F), blank<float>({30, 21}));
  EXPECT_EQ(coordinates(probe.centers()), (Coordinates{{14, 10}}));
  EXPECT_TRUE(sameFloats(probe.center_weights(), {0.0F}));
  const Probe disc = computed(absolute(-1.0F), oneDisc());
  EXPECT_EQ(coordinates(disc.centers()), (Coordinates{{19, 17}}));
  EXPECT_GT(disc.center_weights().at(0), 0.0F);
}

}  // namespace
}  // namespace orva::test
