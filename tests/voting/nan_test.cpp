// Settings that are no numbers: every comparison with one fails.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/images.h"
#include "tests/support/reference/voting.h"
#include "tests/support/special_values.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

TEST(VotingMatchesReference, ForNansInEverySetting) {
  Random random(73);
  const auto img = randomImage<unsigned char>(random, {37, 29});
  for (float VotingParams::*setting : {&VotingParams::gradThreshold, &VotingParams::centerThreshold,
                                       &VotingParams::weightParam, &VotingParams::sigma}) {
    for (const bool isAbsolute : {false, true}) {
      VotingParams params;
      params.absoluteValues = isAbsolute;
      params.weightParam = 2.0F;
      params.*setting = kNaN;
      Probe probe = computed(params, img);
      expectSameVoting(probe, reference::compute(params, img));
    }
  }
}

TEST(ComputeWithNaN, KeepsPointsAndWeightsButNoCenters) {
  VotingParams all;
  all.gradThreshold = -1.0F;
  VotingParams params;
  params.gradThreshold = kNaN;
  EXPECT_FALSE(computed(all, oneDisc()).points_.empty());
  EXPECT_TRUE(samePoints(computed(params, oneDisc()).points_, computed(all, oneDisc()).points_));
  all.weightParam = 1.0F;
  params.weightParam = kNaN;
  EXPECT_TRUE(samePoints(computed(params, oneDisc()).points_, computed(all, oneDisc()).points_));
  EXPECT_FALSE(computed(absolute(0.5F), oneDisc()).centers().empty());
  EXPECT_TRUE(computed(absolute(kNaN), oneDisc()).centers().empty());
}

}  // namespace
}  // namespace orva::test
