#include "orva/voting/find_centers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>

#include "orva/scalespace/scalespace.h"

namespace orva::voting {
namespace {

void require(bool holds, const char* what) {
  if (!holds) throw std::invalid_argument(std::string("orva::voting::VoteSettings: ") + what);
}

void requireInRange(const VoteSettings& s) {
  const auto isNumber = [](float v, float low) { return std::isfinite(v) && v >= low; };
  require(s.minRadius >= 1 && s.minRadius <= s.maxRadius, "minRadius is not 1 to maxRadius");
  require(s.coneWidth.value_or(0) >= 0, "coneWidth is negative");
  require(isNumber(s.sigma.value_or(1.0F), std::numeric_limits<float>::min()),
          "sigma is not a number above 0");
  require(isNumber(s.gradient.value_or(0.0F), 0.0F), "gradient is not a number of at least 0");
  require(isNumber(s.relativeGradient, 0.0F), "relativeGradient is not a number of at least 0");
  require(isNumber(s.threshold.value_or(0.0F), 0.0F), "threshold is not a number of at least 0");
  require(s.relativeThreshold >= 0.05F && s.relativeThreshold <= 1.0F,
          "relativeThreshold is not 0.05 to 1");
  require(isNumber(s.power, 0.0F), "power is not a number of at least 0");
}

void requireFits(const Image& img, int coneWidth, int maxRadius) {
  const std::int64_t side = std::max(img.nx(), img.ny()) + 2 * voteMargin(coneWidth, maxRadius);
  if (side > std::numeric_limits<std::int16_t>::max()) {
    throw std::length_error(
        "is too large to vote on: a side and twice the margin exceed 32767 pixels");
  }
}

UsedSettings completed(const Image& img, const VoteSettings& s) {
  const double radius = s.maxRadius;
  UsedSettings used{};
  used.coneWidth = s.coneWidth.value_or(static_cast<int>(std::lround(radius / 2)));
  requireFits(img, used.coneWidth, s.maxRadius);
  used.sigma = s.sigma.value_or(static_cast<float>(std::max(1.0, radius / 7)));
  used.gradient = s.gradient
                      ? *s.gradient
                      : s.relativeGradient * scalespace::gradient(img, used.sigma, 1.0F).fmax();
  return used;
}

// Sets up `voting` and returns what the image completed.
UsedSettings prepare(CircularVoting& voting, const Image& img, const VoteSettings& s) {
  requireInRange(s);
  const UsedSettings used = completed(img, s);
  voting.setParams(s.polarity, s.minRadius, s.maxRadius, used.coneWidth, used.gradient,
                   s.threshold.value_or(s.relativeThreshold), used.sigma, CircularVoting::Power,
                   s.power, s.edges, s.threshold.has_value());
  return used;
}

// Gives access to the accumulator.
class Accumulator : public CircularVoting {
 public:
  using CircularVoting::votesWithoutMargin;
};

}  // namespace

std::int64_t voteMargin(int coneWidth, int maxRadius) {
  const double w = coneWidth;
  const double r = maxRadius;
  return static_cast<std::int64_t>(std::sqrt(w * w + r * r) + 3.0);
}

VoteResult findCenters(const Image& img, const VoteSettings& settings,
                       const CircularVoting::PassObserver& history) {
  if (img.isNull()) {
    requireInRange(settings);
    return {};
  }
  CircularVoting voting;
  VoteResult result{prepare(voting, img, settings), {}};
  voting.compute(img, history);
  for (std::size_t i = 0; i < voting.centers().size(); ++i) {
    const Point& p = voting.centers()[i];
    result.centers.push_back({p.x, p.y, voting.center_weights()[i]});
  }
  return result;
}

image<float> voteField(const Image& img, const VoteSettings& settings) {
  if (img.isNull()) {
    requireInRange(settings);
    return image<float>(0, 1, 1, 1, 1);
  }
  Accumulator voting;
  prepare(voting, img, settings);
  voting.compute(img);
  return voting.votesWithoutMargin();
}

}  // namespace orva::voting
