// Circular voting: all that a computation leaves behind, and its cones.
#include "tests/support/reference/voting.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include "tests/fuzz/operations/compare.h"
#include "tests/fuzz/operations/operations.h"
#include "tests/fuzz/operations/pictures.h"
#include "tests/voting/probe.h"

namespace orva_fuzz {
namespace {

using orva_test::Probe;
using reference::VotingParams;

VotingParams takeParams(Input& in) {
  VotingParams p;
  p.regionType = in.between(0, 2);
  p.minRadius = in.between(-1, 8);
  p.maxRadius = in.between(-1, 12);
  p.coneWidth = in.between(-1, 12);
  p.gradThreshold = takeFloat(in);
  p.centerThreshold = takeFloat(in);
  p.sigma = takeSigma(in);
  p.weighting = in.between(0, 1);
  p.weightParam = takeFloat(in);
  p.useEdges = takeBool(in);
  p.absoluteValues = takeBool(in);
  return p;
}

std::unique_ptr<orva::Image> takeVotingPicture(Input& in) {
  const Shape s = takeFilledShape(in);
  // Lines of 200 pixels have few points and a wide margin.
  return takeAnyPicture(in, {std::min(s.nx, 60), std::min(s.ny, 60), s.nz, s.nc, s.nt});
}

void requireSamePoints(const std::vector<orva::voting::VPoint2D>& points,
                       const std::vector<orva::voting::VPoint2D>& twins) {
  require(points.size() == twins.size(), "as many voting points");
  const auto fields = [](const orva::voting::VPoint2D& p) {
    return std::vector<int>{p.x, p.y, p.cx, p.cy, p.angle, p.offset};
  };
  for (std::size_t i = 0; i < points.size(); ++i) {
    require(fields(points[i]) == fields(twins[i]), "a voting point as its twin");
    requireSame(points[i].weight, twins[i].weight, "the weight of a point");
  }
}

void requireSameVoting(Probe& probe, const reference::Voting& twin) {
  requireSame(probe.margin_, twin.margin, "the margin");
  requireSamePoints(probe.points_, twin.points);
  requireSame(probe.acc_, twin.acc, "the accumulator");
  requireSame(probe.prevAcc_, twin.prevAcc, "the previous accumulator");
  requireSame(probe.votingImage(), twin.votingImage, "the voting image");
  requireSame(probe.center_weights(), twin.weights, "the weights of the centres");
  require(orva_test::sameCones(probe.cones_, twin.cones), "the cones as their twins");
}

}  // namespace

void voting(Input& in) {
  const VotingParams params = takeParams(in);
  const std::unique_ptr<orva::Image> img = takeVotingPicture(in);
  Probe probe = orva_test::computed(params, *img);
  const reference::Voting twin = reference::compute(params, *img);
  requireSameVoting(probe, twin);
  requireSame(probe.centers(), twin.centers, "the centres");
}

// With the same engine; the centres of both computations stay.
void votingTwice(Input& in) {
  const VotingParams first = takeParams(in);
  const std::unique_ptr<orva::Image> a = takeVotingPicture(in);
  const VotingParams second = takeParams(in);
  const std::unique_ptr<orva::Image> b = takeVotingPicture(in);
  Probe probe = orva_test::computed(first, *a);
  probe.set(second);
  probe.compute(*b);
  const reference::Voting twin = reference::compute(second, *b);
  requireSameVoting(probe, twin);
  std::vector<orva::Point> centers = reference::compute(first, *a).centers;
  centers.insert(centers.end(), twin.centers.begin(), twin.centers.end());
  requireSame(probe.centers(), centers, "the centres of two computations");
}

void cones(Input& in) {
  const int nearest = in.between(1, 12);
  const int farthest = nearest + in.between(0, 14);
  const int width = in.between(0, 20);
  VotingParams params;
  params.regionType = in.between(0, 2);
  Probe probe(params);
  orva::voting::WPoint2D::nx = in.between(1, 120);
  probe.computeCones(nearest, farthest, width);
  const std::vector<orva::voting::Cone2D> twins =
      reference::cones(params.regionType, nearest, farthest, width, orva::voting::WPoint2D::nx);
  require(orva_test::sameCones(probe.cones_, twins), "computeCones as its twin");
  requireSame(probe.nextConeRadius(farthest, width), reference::nextConeRadius(farthest, width),
              "nextConeRadius");
  const float cosine = takeFloat(in);
  const float sine = takeFloat(in);
  requireSame(probe.computeAngleIndex(cosine, sine), reference::angleIndex(cosine, sine),
              "computeAngleIndex");
}

}  // namespace orva_fuzz
