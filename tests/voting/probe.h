// CircularVoting with its state accessible, and its comparison with the reference implementation.
#ifndef ORVA_TESTS_VOTING_PROBE_H
#define ORVA_TESTS_VOTING_PROBE_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/support/reference/voting.h"
#include "tests/support/test_images.h"

namespace orva::test {

using reference::VotingParams;

class Probe : public voting::CircularVoting {
 public:
  using CircularVoting::absoluteValues;
  using CircularVoting::acc_;
  using CircularVoting::angleBins_;
  using CircularVoting::angleStep_;
  using CircularVoting::centers_;
  using CircularVoting::centerThreshold;
  using CircularVoting::centerWeights_;
  using CircularVoting::cones_;
  using CircularVoting::coneWidth;
  using CircularVoting::gradThreshold;
  using CircularVoting::margin_;
  using CircularVoting::maxRadius;
  using CircularVoting::minRadius;
  using CircularVoting::npix_;
  using CircularVoting::nx_;
  using CircularVoting::ny_;
  using CircularVoting::points_;
  using CircularVoting::prefix_;
  using CircularVoting::prevAcc_;
  using CircularVoting::regionType;
  using CircularVoting::saveHistory_;
  using CircularVoting::sigma;
  using CircularVoting::useEdges;
  using CircularVoting::votingImage_;
  using CircularVoting::weighting;
  using CircularVoting::weightParam;

  Probe() = default;
  explicit Probe(const VotingParams& p) { set(p); }

  void set(const VotingParams& p) {
    setParams(static_cast<RegionType>(p.regionType), p.minRadius, p.maxRadius, p.coneWidth,
              p.gradThreshold, p.centerThreshold, p.sigma,
              static_cast<WeightingMethod>(p.weighting), p.weightParam, p.useEdges,
              p.absoluteValues);
  }
};

inline Probe computed(const VotingParams& params, const Image& img) {
  Probe probe(params);
  probe.compute(img);
  return probe;
}

// Parameters under which a threshold counts votes.
inline VotingParams absolute(float centerThreshold) {
  VotingParams params;
  params.absoluteValues = true;
  params.centerThreshold = centerThreshold;
  return params;
}

using Coordinates = std::vector<std::pair<int, int>>;

inline Coordinates coordinates(const std::vector<Point>& points) {
  Coordinates result;
  for (const Point& p : points) result.emplace_back(p.x, p.y);
  return result;
}

// Bit for bit.
inline ::testing::AssertionResult sameFloats(const std::vector<float>& a,
                                             const std::vector<float>& b) {
  if (a.size() == b.size() &&
      (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0)) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure()
         << ::testing::PrintToString(a) << " and " << ::testing::PrintToString(b);
}

inline ::testing::AssertionResult samePoints(const std::vector<voting::VPoint2D>& a,
                                             const std::vector<voting::VPoint2D>& b) {
  if (a.size() != b.size()) {
    return ::testing::AssertionFailure() << a.size() << " and " << b.size() << " points";
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    const auto fields = [](const voting::VPoint2D& p) {
      return std::vector<int>{p.x, p.y, p.cx, p.cy, p.angle, p.offset};
    };
    if (fields(a[i]) != fields(b[i]) || !sameFloats({a[i].weight}, {b[i].weight})) {
      return ::testing::AssertionFailure()
             << "point " << i << " is " << ::testing::PrintToString(fields(a[i])) << " of "
             << a[i].weight << " and " << ::testing::PrintToString(fields(b[i])) << " of "
             << b[i].weight;
    }
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult sameCones(const std::vector<voting::Cone2D>& a,
                                            const std::vector<voting::Cone2D>& b) {
  if (a.size() != b.size()) {
    return ::testing::AssertionFailure() << a.size() << " and " << b.size() << " cones";
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!sameFloats({a[i].dx, a[i].dy}, {b[i].dx, b[i].dy}) ||
        a[i].planes.size() != b[i].planes.size()) {
      return ::testing::AssertionFailure()
             << "direction or number of planes of cone " << i << " differ";
    }
    for (std::size_t p = 0; p < a[i].planes.size(); ++p) {
      const auto& cells = a[i].planes[p].points;
      const auto& others = b[i].planes[p].points;
      if (cells.size() != others.size() ||
          (!cells.empty() &&
           std::memcmp(cells.data(), others.data(), cells.size() * sizeof cells[0]) != 0)) {
        return ::testing::AssertionFailure() << "cells of cone " << i << ", plane " << p;
      }
    }
  }
  return ::testing::AssertionSuccess();
}

// Compares the whole state after a first computation.
inline void expectSameVoting(Probe& probe, const reference::Voting& expected) {
  EXPECT_EQ(coordinates(probe.centers()), coordinates(expected.centers));
  EXPECT_TRUE(sameFloats(probe.center_weights(), expected.weights));
  EXPECT_TRUE(sameImage(probe.votingImage(), expected.votingImage));
  EXPECT_TRUE(sameImage(probe.acc_, expected.acc));
  EXPECT_TRUE(sameImage(probe.prevAcc_, expected.prevAcc));
  EXPECT_TRUE(samePoints(probe.points_, expected.points));
  EXPECT_TRUE(sameCones(probe.cones_, expected.cones));
  EXPECT_EQ(probe.margin_, expected.margin);
}

}  // namespace orva::test

#endif
