// Images on which no voting takes place: without pixels, of no float form, or too large.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/raw_image.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

const std::string tooLargeMessage =
    "In CircularVoting::compute\n   Warning: image is too large, no centers\n";

VotingParams marginOf25() {
  VotingParams params = absolute(-1.0F);
  params.maxRadius = 20;
  params.coneWidth = 10;
  return params;
}

const std::vector<Shape> kWithoutPixels = {{5, 5, 0}, {0, 1}, {0, 0}, {7, 0}, {5, 5, 1, 0}};

TEST(Compute, OfAnImageWithoutPixelsFindsNoCenters) {
  for (const Shape& shape : kWithoutPixels) {
    for (const float threshold : {0.5F, -1.0F}) {
      for (const bool useEdges : {false, true}) {
        VotingParams params = absolute(threshold);
        params.useEdges = useEdges;
        Probe probe = computed(params, blank<float>(shape));
        EXPECT_TRUE(probe.centers().empty());
        EXPECT_TRUE(probe.center_weights().empty());
        EXPECT_TRUE(probe.points_.empty());
      }
    }
  }
}

TEST(Compute, OfNoPixelsKeepsEarlierCentersButNoWeights) {
  Probe probe = computed({}, oneDisc());
  const Coordinates before = coordinates(probe.centers());
  ASSERT_FALSE(before.empty());
  probe.compute(blank<float>({5, 5, 0}));
  EXPECT_EQ(coordinates(probe.centers()), before);
  EXPECT_TRUE(probe.center_weights().empty());
}

// The margin, the class-wide sizes, the accumulators and the cones are those of an image of these
// sizes, whatever an earlier call left.
TEST(Compute, OfANullImageGoesThroughAllItsSteps) {
  for (const Shape& shape : kWithoutPixels) {
    for (const bool fresh : {true, false}) {
      VotingParams params = marginOf25();
      params.useEdges = true;
      Probe probe = fresh ? Probe() : computed({}, oneDisc());
      probe.centers_.clear();
      probe.set(params);
      voting::WPoint2D::nx = voting::ConePlane2D::nx = voting::Cone2D::nx = -1;
      voting::WPoint2D::ny = voting::ConePlane2D::ny = voting::Cone2D::ny = -1;
      probe.compute(blank<float>(shape));
      const int nx = shape.nx + 50;
      const int ny = shape.ny + 50;
      EXPECT_EQ(probe.margin_, 25);
      for (const int width : {voting::WPoint2D::nx, voting::ConePlane2D::nx, voting::Cone2D::nx})
        EXPECT_EQ(width, nx);
      for (const int height : {voting::WPoint2D::ny, voting::ConePlane2D::ny, voting::Cone2D::ny})
        EXPECT_EQ(height, ny);
      EXPECT_TRUE(sameImage(probe.acc_, blank<float>({nx, ny})));
      EXPECT_TRUE(sameImage(probe.prevAcc_, blank<float>({nx, ny})));
      EXPECT_TRUE(sameCones(probe.cones_, reference::cones(0, 1, 20, 0, nx)));
      EXPECT_EQ(probe.nx_, shape.nx);
      EXPECT_EQ(probe.ny_, shape.ny);
      EXPECT_EQ(probe.npix_, shape.nx * shape.ny);
      EXPECT_TRUE(sameImage(probe.votingImage(), blank<float>({shape.nx, shape.ny})));
      EXPECT_TRUE(probe.points_.empty());
      EXPECT_TRUE(probe.centers().empty());
      EXPECT_TRUE(probe.center_weights().empty());
    }
  }
}

TEST(Compute, OfAFormatWithoutFloatFormFindsNoCenters) {
  for (const int format : {static_cast<int>(RGBA), 11, -1}) {
    for (const bool useEdges : {false, true}) {
      VotingParams params;
      params.useEdges = useEdges;
      const Probe probe = computed(params, ForeignImage(format));
      EXPECT_TRUE(probe.points_.empty());
      EXPECT_TRUE(probe.centers().empty());
    }
  }
}

TEST(Compute, OfATooLargeImageFindsNoCentersAndWarns) {
  for (const Shape& shape : {Shape{32718, 1}, Shape{1, 32718}, Shape{40000, 2}}) {
    Probe probe(marginOf25());
    testing::internal::CaptureStderr();
    probe.compute(blank<unsigned char>(shape));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), tooLargeMessage);
    EXPECT_TRUE(probe.centers().empty());
    EXPECT_TRUE(probe.center_weights().empty());
  }
}

TEST(Compute, OfTheLargestImageThatFitsFindsCenters) {
  for (const Shape& shape : {Shape{32717, 1}, Shape{1, 32717}}) {
    Probe probe(marginOf25());
    testing::internal::CaptureStderr();
    probe.compute(blank<unsigned char>(shape));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const int middle = 16358;
    EXPECT_EQ(coordinates(probe.centers()),
              (Coordinates{{shape.nx > 1 ? middle : 0, shape.ny > 1 ? middle : 0}}));
  }
}

TEST(Compute, WithATooLargeMarginFindsNoCentersAndWarns) {
  struct Row {
    int maxRadius, coneWidth;
  };
  for (const Row& row : {Row{16390, 0}, Row{1, 16390}, Row{INT_MAX, 0}, Row{INT_MAX, INT_MAX},
                         Row{1, INT_MAX}, Row{40000, 60000}}) {
    VotingParams params = absolute(-1.0F);
    params.maxRadius = row.maxRadius;
    params.coneWidth = row.coneWidth;
    Probe probe(params);
    testing::internal::CaptureStderr();
    probe.compute(oneDisc());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), tooLargeMessage);
    EXPECT_TRUE(probe.centers().empty());
  }
}

TEST(Compute, OfNoPixelsDoesNotReportRadiiThatDoNotFit) {
  for (const Shape& shape : kWithoutPixels) {
    VotingParams params;
    params.maxRadius = 50000;
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    computed(params, blank<float>(shape));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }
}

// What an earlier call left must not show.
TEST(Compute, OfATooLargeImageLeavesABlackVotingImageAndNoVotes) {
  for (const Shape& shape : {Shape{33000, 1}, Shape{2, 40000}, Shape{40000, 2, 0}}) {
    for (const bool fresh : {true, false}) {
      Probe probe = fresh ? Probe(VotingParams()) : computed({}, oneDisc());
      testing::internal::CaptureStderr();
      probe.compute(blank<unsigned char>(shape));
      testing::internal::GetCapturedStderr();
      EXPECT_TRUE(sameImage(probe.votingImage(), blank<float>({shape.nx, shape.ny})));
      EXPECT_TRUE(sameImage(probe.acc_, blank<float>({0, 1})));
    }
  }
}

TEST(Compute, OfATooLargeImageKeepsEarlierCentersButNoWeights) {
  Probe probe = computed({}, oneDisc());
  const Coordinates before = coordinates(probe.centers());
  testing::internal::CaptureStderr();
  probe.compute(blank<unsigned char>({33000, 1}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), tooLargeMessage);
  EXPECT_EQ(coordinates(probe.centers()), before);
  EXPECT_TRUE(probe.center_weights().empty());
}

TEST(Compute, OfWidthAndHeightThatNoImageHasLeavesNoVotingImage) {
  Probe voting(marginOf25());
  voting.compute(image<unsigned char>(70000, 70000, 0, 1, 1));
  EXPECT_TRUE(voting.centers().empty());
  EXPECT_TRUE(voting.votingImage().isNull());
}

}  // namespace
}  // namespace orva::test
