// Of an image of another class the samples behind data() are voted on, not what pixel(i) shows.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/images.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/voting.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

TEST(ComputeOfAForeignImage, TakesTheSamples) {
  const image<float> samples = oneDisc();
  const RawImage img({40, 36}, FLOAT, pixelsOf(samples), std::vector<float>(40 * 36, 1.0F));
  for (const bool useEdges : {false, true}) {
    VotingParams params;
    params.useEdges = useEdges;
    Probe probe = computed(params, img);
    EXPECT_FALSE(probe.centers().empty());
    expectSameVoting(probe, reference::compute(params, samples));
  }
}

}  // namespace
}  // namespace orva::test
