// Each thread has its own class-wide widths, so threads may vote on images of different sizes.
#include <gtest/gtest.h>

#include <thread>
#include <utility>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

struct Result {
  std::vector<std::pair<int, int>> centers;
  std::vector<float> weights;
  std::vector<float> votes;
};

// Each call has its own image: images that share pixels belong to one thread.
Result resultOf(const Shape& shape) {
  VotingParams params;
  params.regionType = 2;
  params.centerThreshold = 0.3F;
  Probe probe(params);
  probe.compute(discImage<unsigned char>(shape, {{10, 9, 5}, {24, 17, 7}}, 190, 25));
  return {coordinates(probe.centers()), probe.center_weights(), pixelsOf(probe.acc_)};
}

TEST(Threads, VotingAtDifferentSizesGetTheResultsOfOneThread) {
  const std::vector<Shape> shapes = {{40, 30}, {71, 55}};
  constexpr int rounds = 8;
  std::vector<std::vector<Result>> together(shapes.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    threads.emplace_back([&shapes, &together, i] {
      for (int round = 0; round < rounds; ++round) together[i].push_back(resultOf(shapes[i]));
    });
  }
  for (std::thread& thread : threads) thread.join();
  // Not before, so that what is decided once a process is decided by two threads, too.
  std::vector<Result> alone;
  for (const Shape& shape : shapes) alone.push_back(resultOf(shape));
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    EXPECT_FALSE(alone[i].centers.empty());
    for (const Result& result : together[i]) {
      EXPECT_EQ(result.centers, alone[i].centers);
      EXPECT_TRUE(sameFloats(result.weights, alone[i].weights));
      EXPECT_TRUE(sameFloats(result.votes, alone[i].votes));
    }
  }
}

TEST(Threads, HaveTheirOwnWidthsAndHeights) {
  const std::vector<int*> mine = {&voting::WPoint2D::nx,    &voting::WPoint2D::ny,
                                  &voting::ConePlane2D::nx, &voting::ConePlane2D::ny,
                                  &voting::Cone2D::nx,      &voting::Cone2D::ny};
  for (int* size : mine) *size = 123;
  std::vector<int*> theirs;
  std::thread([&theirs] {
    theirs = {&voting::WPoint2D::nx,    &voting::WPoint2D::ny, &voting::ConePlane2D::nx,
              &voting::ConePlane2D::ny, &voting::Cone2D::nx,   &voting::Cone2D::ny};
    for (int* size : theirs) *size = 456;
  }).join();
  for (std::size_t i = 0; i < mine.size(); ++i) {
    EXPECT_NE(mine[i], theirs[i]);
    EXPECT_EQ(*mine[i], 123);
  }
}

}  // namespace
}  // namespace orva::test
