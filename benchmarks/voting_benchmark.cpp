#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/test_images.h"
#include "benchmarks/workloads.h"
#include "orva/voting/circularvoting.h"
#include "tests/support/reference/voting.h"

namespace orva_benchmark {
namespace {

namespace reference = orva::reference;
using orva::voting::CircularVoting;

constexpr float kGradient = 2.0F;
constexpr float kThreshold = 0.3F;
constexpr float kSigma = 2.0F;
constexpr float kPower = 0.5F;

// The maximum radius is 1.1 to 1.7 times that of the discs.
void compareVoting(int side, int radius, int width, CircularVoting::RegionType type,
                   const std::string& name) {
  compare("voting " + std::to_string(side) + " R " + std::to_string(radius) + " w " +
              std::to_string(width) + " " + name,
          [=] { return discs(side, radius * 5 / 2); })
      .ours([=](const Bytes& img) {
        CircularVoting voting;
        voting.setParams(type, 1, radius, width, kGradient, kThreshold, kSigma,
                         CircularVoting::Power, kPower, false, false);
        voting.compute(img);
        return voting;
      })
      .reference([=](const Bytes& img) {
        reference::VotingParams params;
        params.regionType = type;
        params.maxRadius = radius;
        params.coneWidth = width;
        params.gradThreshold = kGradient;
        params.centerThreshold = kThreshold;
        params.sigma = kSigma;
        params.weightParam = kPower;
        return reference::compute(params, img);
      });
}

}  // namespace

void registerWorkloads() {
  compareVoting(1024, 20, 5, CircularVoting::Bright, "bright");
  compareVoting(1024, 20, 5, CircularVoting::Both, "both");
  compareVoting(2048, 40, 10, CircularVoting::Bright, "bright");
  compareVoting(2048, 40, 10, CircularVoting::Both, "both");
}

}  // namespace orva_benchmark
