// Reference implementation of circular voting: the whole computation, step by step, from its
// definition.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_VOTING_H
#define ORVA_TESTS_SUPPORT_REFERENCE_VOTING_H

#include <utility>
#include <vector>

#include "orva/image/image.h"
#include "orva/voting/circularvoting.h"

namespace orva::reference {

// The arguments of CircularVoting::setParams(), in its order.
struct VotingParams {
  int regionType = 0;  // 0 bright, 1 dark, 2 both
  int minRadius = 1;
  int maxRadius = 10;
  int coneWidth = 5;
  float gradThreshold = 1.0F;
  float centerThreshold = 0.5F;
  float sigma = 1.0F;
  int weighting = 0;  // 0 power, 1 exponential
  float weightParam = 1.0F;
  bool useEdges = false;
  bool absoluteValues = false;
};

// The parameters as setParams() stores them.
VotingParams repaired(VotingParams params);

// The state after a computation.
struct Voting {
  int margin = 0;
  std::vector<voting::VPoint2D> points;
  std::vector<voting::Cone2D> cones;
  image<float> acc = {0, 1, 1, 1, 1};
  image<float> prevAcc = {0, 1, 1, 1, 1};
  image<float> votingImage = {0, 1, 1, 1, 1};
  std::vector<Point> centers;
  std::vector<float> weights;
  int regions = 0;  // of the final mask
  // The cone width and the accumulator before every narrowing pass.
  std::vector<std::pair<int, image<float>>> history;
};

// One cone for each of 256 directions, for an accumulator `width` pixels wide.
std::vector<voting::Cone2D> cones(int regionType, int minRadius, int maxRadius, int coneWidth,
                                  int width);
int nextConeRadius(int maxRadius, int width);
int angleIndex(float cosine, float sine);
void turnToMax(voting::VPoint2D& p, const std::vector<voting::Cone2D>& cones,
               const image<float>& acc);
void turnToMean(voting::VPoint2D& p, const std::vector<voting::Cone2D>& cones,
                const image<float>& acc);

// All passes over points that lie in an accumulator of the given size.
Voting vote(const VotingParams& params, std::vector<voting::VPoint2D> points, int nx, int ny);

// The voting of an image with pixels.
Voting compute(const VotingParams& params, const Image& img);

}  // namespace orva::reference

#endif
