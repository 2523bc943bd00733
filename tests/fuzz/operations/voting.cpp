// Circular voting: all that a computation leaves behind, and its cones.
#include "tests/support/reference/voting.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/fuzz/operations/compare.h"
#include "tests/fuzz/operations/operations.h"
#include "tests/fuzz/operations/pictures.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

// A length in -1 .. max, or now and then one whose margin no image has room for, or one far below
// 0. None in between: the voting would take long.
int takeLength(Input& in, int max) {
  constexpr std::array odd{std::numeric_limits<int>::max(),
                           std::numeric_limits<int>::min(),
                           16381,
                           16384,
                           -16384,
                           32767,
                           32768,
                           65536,
                           46341,
                           1000000000,
                           std::numeric_limits<int>::max() - 1,
                           -2,
                           -32768,
                           16383,
                           20000,
                           std::numeric_limits<int>::min() + 1};
  const int byte = in.take<std::uint8_t>();
  if (byte >= 240) return odd[static_cast<std::size_t>(byte - 240)];
  return byte % (max + 2) - 1;
}

reference::VotingParams takeParams(Input& in) {
  reference::VotingParams p;
  p.regionType = in.between(0, 2);
  p.minRadius = takeLength(in, 8);
  p.maxRadius = takeLength(in, 12);
  p.coneWidth = takeLength(in, 12);
  p.gradThreshold = takeFloat(in);
  p.centerThreshold = takeFloat(in);
  p.sigma = takeSigma(in);
  p.weighting = in.between(0, 1);
  p.weightParam = takeFloat(in);
  p.useEdges = takeBool(in);
  p.absoluteValues = takeBool(in);
  return p;
}

std::unique_ptr<Image> takeVotingPicture(Input& in) {
  const Shape s = takeShape(in);
  // Lines of 200 pixels have few points and a wide margin.
  return takeAnyPicture(in, {std::min(s.nx, 60), std::min(s.ny, 60), s.nz, s.nc, s.nt});
}

void requireSamePoints(const std::vector<voting::VPoint2D>& points,
                       const std::vector<voting::VPoint2D>& expected) {
  require(points.size() == expected.size(), "as many voting points");
  const auto fields = [](const voting::VPoint2D& p) {
    return std::vector<int>{p.x, p.y, p.cx, p.cy, p.angle, p.offset};
  };
  for (std::size_t i = 0; i < points.size(); ++i) {
    require(fields(points[i]) == fields(expected[i]), "a voting point as the reference");
    requireSame(points[i].weight, expected[i].weight, "the weight of a point");
  }
}

double marginOf(const reference::VotingParams& params) {
  const reference::VotingParams p = reference::repaired(params);
  return std::floor(std::hypot(double{1} * p.coneWidth, double{1} * p.maxRadius) + 3.0);
}

// True where a side with its margin does not fit the 16 bits of a voting point.
bool isTooLarge(const reference::VotingParams& params, const Image& img) {
  return std::max(img.nx(), img.ny()) + 2.0 * marginOf(params) > 32767.0;
}

// No centers of an image without pixels, nor of one with too wide a margin, which is reported.
bool hasNoVotes(const reference::VotingParams& params, const Image& img) {
  return img.isNull() || isTooLarge(params, img);
}

void requireNoVotes(Probe& probe, const reference::VotingParams& params, const Image& img,
                    const std::string& reported) {
  const std::string warning =
      "In CircularVoting::compute\n   Warning: image is too large, no centers\n";
  require(reported == (img.isNull() ? "" : warning), "a warning of images that are too large");
  require(probe.center_weights().empty() && probe.points_.empty(), "no centers and no points");
  // An image without pixels has accumulators of its size and margin, without votes.
  const bool hasAccumulator = !isTooLarge(params, img);
  const int pad = hasAccumulator ? 2 * static_cast<int>(marginOf(params)) : 0;
  const image<float> empty = hasAccumulator ? image<float>(img.nx() + pad, img.ny() + pad, 1, 1, 1)
                                            : image<float>(0, 1, 1, 1, 1);
  requireSame(probe.acc_, empty, "an accumulator without votes");
  requireSame(probe.prevAcc_, empty, "a previous accumulator without votes");
  requireSame(probe.votingImage(), image<float>(img.nx(), img.ny(), 1, 1, 1),
              "a black voting image");
}

// Computes; what was reported meanwhile.
std::string compute(Probe& probe, const reference::VotingParams& params, const Image& img) {
  const Captured captured;
  probe.set(params);
  probe.compute(img);
  return captured.reported();
}

void requireSameVoting(Probe& probe, const reference::Voting& expected) {
  requireSame(probe.margin_, expected.margin, "the margin");
  requireSamePoints(probe.points_, expected.points);
  requireSame(probe.acc_, expected.acc, "the accumulator");
  requireSame(probe.prevAcc_, expected.prevAcc, "the previous accumulator");
  requireSame(probe.votingImage(), expected.votingImage, "the voting image");
  requireSame(probe.center_weights(), expected.weights, "the weights of the centers");
  require(sameCones(probe.cones_, expected.cones), "the cones as the references");
}

}  // namespace

void voting(Input& in) {
  const reference::VotingParams params = takeParams(in);
  const std::unique_ptr<Image> img = takeVotingPicture(in);
  Probe probe;
  const std::string reported = compute(probe, params, *img);
  if (hasNoVotes(params, *img)) {
    requireNoVotes(probe, params, *img, reported);
    require(probe.centers().empty(), "no centers");
    return;
  }
  const reference::Voting expected = reference::compute(params, *img);
  requireSameVoting(probe, expected);
  requireSame(probe.centers(), expected.centers, "the centers");
}

// With the same object; the centers of both computations stay.
void votingTwice(Input& in) {
  const reference::VotingParams first = takeParams(in);
  const std::unique_ptr<Image> a = takeVotingPicture(in);
  const reference::VotingParams second = takeParams(in);
  const std::unique_ptr<Image> b = takeVotingPicture(in);
  Probe probe;
  compute(probe, first, *a);
  const std::string reported = compute(probe, second, *b);
  std::vector<Point> centers;
  if (!hasNoVotes(first, *a)) centers = reference::compute(first, *a).centers;
  if (hasNoVotes(second, *b)) {
    requireNoVotes(probe, second, *b, reported);
  } else {
    const reference::Voting expected = reference::compute(second, *b);
    requireSameVoting(probe, expected);
    centers.insert(centers.end(), expected.centers.begin(), expected.centers.end());
  }
  requireSame(probe.centers(), centers, "the centers of two computations");
}

void cones(Input& in) {
  const int nearest = in.between(1, 12);
  const int farthest = nearest + in.between(0, 14);
  const int width = in.between(0, 20);
  reference::VotingParams params;
  params.regionType = in.between(0, 2);
  Probe probe(params);
  voting::WPoint2D::nx = in.between(1, 120);
  probe.computeCones(nearest, farthest, width);
  const std::vector<voting::Cone2D> expected =
      reference::cones(params.regionType, nearest, farthest, width, voting::WPoint2D::nx);
  require(sameCones(probe.cones_, expected), "computeCones as the reference");
  requireSame(probe.nextConeRadius(farthest, width), reference::nextConeRadius(farthest, width),
              "nextConeRadius");
  const float cosine = takeFloat(in);
  const float sine = takeFloat(in);
  requireSame(probe.computeAngleIndex(cosine, sine), reference::angleIndex(cosine, sine),
              "computeAngleIndex");
}

}  // namespace orva::test
