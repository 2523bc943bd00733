// The voting image that a caller has taken is no longer the engine's.
#include <gtest/gtest.h>

#include "tests/support/images.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

TEST(VotingImage, TakenEarlierStaysAsItIs) {
  Probe probe = computed({}, oneDisc());
  image<float> taken = probe.votingImage();
  const image<float> before = taken.duplicate();
  EXPECT_GT(taken.max(), 0.0F);
  // Of the same size, once with other centers and once without any.
  probe.compute(discImage<float>({40, 36}, {{12, 20, 7}, {29, 11, 5}}, 90.0F, 1.0F));
  EXPECT_TRUE(sameImage(taken, before));
  EXPECT_FALSE(sameImage(probe.votingImage(), before));
  probe.compute(blank<float>({40, 36}));
  EXPECT_TRUE(sameImage(taken, before));
  EXPECT_EQ(probe.votingImage().max(), 0.0F);
  // And what is done to it is not seen by the engine.
  taken.setPixel(0, 5.0F);
  EXPECT_EQ(probe.votingImage().max(), 0.0F);
}

}  // namespace
}  // namespace orva::test
