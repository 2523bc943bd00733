// Operations that are stopped at any moment release everything and leave their results as they
// were, and so does the next call.
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image_io/image_io.h"
#include "orva/image_math/image_math.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/parallel.h"
#include "orva/util/parallel_for.h"
#include "tests/support/images.h"
#include "tests/support/runners.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

// Counts the calls of a progress callback, and stops the operation at one of them.
struct Moment {
  std::size_t calls = 0;
  std::size_t stopped = std::numeric_limits<std::size_t>::max();

  static int pass(void* moment, const char* /*step*/, double share) {
    auto& self = *static_cast<Moment*>(moment);
    EXPECT_GE(share, 0.0);
    EXPECT_LE(share, 1.0);
    return self.calls++ == self.stopped ? 1 : 0;
  }
};

// The number of moments at which `operation` can be stopped.
std::size_t momentsOf(const std::function<void()>& operation) {
  Moment moment;
  const ProgressScope scope(Moment::pass, &moment);
  operation();
  return moment.calls;
}

// Whether `operation` is stopped at the moment with this number.
bool isStopped(const std::function<void()>& operation, std::size_t at) {
  Moment moment;
  moment.stopped = at;
  const ProgressScope scope(Moment::pass, &moment);
  try {
    operation();
  } catch (const Cancelled&) {
    return true;
  }
  return false;
}

// Cuts small images, too.
class Cancel : public ::testing::Test {
 protected:
  Cancel() { setMaxPartSize(5); }
  ~Cancel() override { setMaxPartSize(std::numeric_limits<std::ptrdiff_t>::max()); }
  Cancel(const Cancel&) = delete;
  Cancel& operator=(const Cancel&) = delete;

  // What `operation` makes of a copy of `input`, stopped at random moments.
  template <class T>
  void expectUntouched(const image<T>& input, const std::function<void(image<T>&)>& operation) {
    image<T> expected = input.duplicate();
    operation(expected);
    image<T> img = input.duplicate();
    const auto call = [&] { operation(img); };
    image<T> once = input.duplicate();
    const std::size_t moments = momentsOf([&] { operation(once); });
    for (int round = 0; round < 10; ++round) {
      const int last = static_cast<int>(moments) - 1;
      if (last < 0) break;
      if (!isStopped(call, static_cast<std::size_t>(randomInt(random_, 0, last)))) {
        img = input.duplicate();
      }
      ASSERT_TRUE(sameImage(img, input));
    }
    operation(img);
    EXPECT_TRUE(sameImage(img, expected));
  }

  Random random_{7};
};

const image<unsigned char>& scene() {
  static const auto img =
      discImage<unsigned char>({90, 70}, {{20, 20, 9}, {60, 30, 11}, {35, 52, 8}}, 200, 30);
  return img;
}

VotingParams sceneParams() {
  VotingParams params;
  params.maxRadius = 14;
  params.coneWidth = 7;
  params.useEdges = true;
  params.centerThreshold = 0.3F;
  return params;
}

TEST_F(Cancel, VotingAtRandomMomentsKeepsTheResults) {
  const VotingParams params = sceneParams();
  Probe expected = computed(params, scene());
  ASSERT_FALSE(expected.centers().empty());
  const image<unsigned char> other = discImage<unsigned char>({50, 40}, {{20, 20, 9}}, 200, 30);
  for (const int threads : {0, 1, 3}) {
    ThreadPool pool(std::max(threads, 1));
    const ParallelScope parallel(threads > 0 ? ThreadPool::run : nullptr, &pool);
    const std::size_t moments = momentsOf([&] { computed(params, scene()); });
    ASSERT_GT(moments, 100U);
    int stopped = 0;
    for (int round = 0; round < 70; ++round) {
      Probe probe = computed(params, other);
      const Coordinates before = coordinates(probe.centers());
      const std::vector<float> weights = probe.center_weights();
      const image<float> votes = probe.votingImage().duplicate();
      const auto at = randomInt(random_, 0, static_cast<int>(moments) - 1);
      // Other threads may do all tasks, so that the calling one is asked less often.
      if (!isStopped([&] { probe.compute(scene()); }, static_cast<std::size_t>(at))) continue;
      ++stopped;
      ASSERT_EQ(coordinates(probe.centers()), before);
      ASSERT_TRUE(sameFloats(probe.center_weights(), weights));
      ASSERT_TRUE(sameImage(probe.votingImage(), votes));
      if (round % 10 != 0) continue;
      probe.centers_.clear();
      probe.compute(scene());
      EXPECT_EQ(coordinates(probe.centers()), coordinates(expected.centers()));
      EXPECT_TRUE(sameFloats(probe.center_weights(), expected.center_weights()));
      EXPECT_TRUE(sameImage(probe.acc_, expected.acc_));
    }
    EXPECT_GE(stopped, threads > 1 ? 20 : 70) << threads;
  }
}

TEST_F(Cancel, KeepsImagesThatAreChangedInPlace) {
  const image<unsigned char> mask = randomMask(random_, {60, 50}, 0.6);
  const image<short> labels = bip::regions(mask);
  for (const bool hasPool : {false, true}) {
    ThreadPool pool(2);
    const ParallelScope parallel(hasPool ? ThreadPool::run : nullptr, &pool);
    expectUntouched<short>(labels, [](image<short>& l) { bip::propagate(l, 5.0F); });
    expectUntouched<short>(labels, [](image<short>& l) { bip::convexHull(l, 4); });
    expectUntouched<short>(labels, [](image<short>& l) { bip::erode(l); });
    expectUntouched<short>(labels, [](image<short>& l) { bip::relabel(l); });
    expectUntouched<unsigned char>(mask, [](auto& m) { bip::removeInternalStructures(m); });
    expectUntouched<unsigned char>(mask, [](auto& m) { bip::dilate(m); });
    expectUntouched<unsigned char>(mask, [](auto& m) { bip::reverse(m); });
    expectUntouched<unsigned char>(mask, [](auto& m) { bip::selectRegionsBySize(m, 3, 40); });
    expectUntouched<float>(toFloatImage(mask),
                           [&](image<float>& f) { scalespace::laplaceEquation(f, mask); });
  }
}

TEST_F(Cancel, StopsEveryLongOperation) {
  const image<unsigned char>& img = scene();
  const image<float> floats = toFloatImage(img);
  const image<short> labels = bip::regions(bip::threshold(img, 100));
  const std::vector<std::pair<std::string, std::function<void()>>> operations = {
      {"dX", [&] { scalespace::dX(img, 2); }},
      {"smooth", [&] { scalespace::smooth(img, 2, 1); }},
      {"gradient", [&] { scalespace::gradient(img, 2, 1); }},
      {"features", [&] { scalespace::features(img, 2, HESSIAN_MAXIMUM, 1); }},
      {"harmonicCut", [&] { scalespace::harmonicCut(img, 2, true, 1); }},
      {"direction", [&] { scalespace::direction(floats, floats); }},
      {"regions", [&] { bip::regions(img); }},
      {"regions of labels", [&] { bip::regions(labels); }},
      {"regionFeatures", [&] { bip::regionFeatures(labels, img); }},
      {"fchamfer", [&] { bip::fchamfer(img); }},
      {"fchamfer of labels", [&] { bip::fchamfer(labels); }},
      {"edge", [&] { bip::edge(labels); }},
      {"threshold", [&] { bip::threshold(floats, 30); }},
      {"computeThreshold", [&] { bip::computeThreshold(img, 2); }},
      {"findZeros", [&] { image_math::findZeros(floats); }},
      {"toFloatImage", [&] { toFloatImage(img); }},
      {"toByteImage", [&] { toByteImage(floats, true); }},
      {"convertToShortImage", [&] { image_io::convertToShortImage(img); }},
      {"reduce", [&] { std::unique_ptr<Image>(scalespace::reduce(img, 0.5F, 2)); }},
  };
  for (const bool hasPool : {false, true}) {
    ThreadPool pool(3);
    const ParallelScope parallel(hasPool ? ThreadPool::run : nullptr, &pool);
    for (const auto& [name, operation] : operations) {
      EXPECT_TRUE(isStopped(operation, 0)) << name;
      EXPECT_FALSE(isStopped(operation, std::numeric_limits<std::size_t>::max())) << name;
    }
  }
}

TEST_F(Cancel, ByTheRunnerEndsTheOperation) {
  const ParallelRunner stop = [](void*, ParallelTask, void*, std::size_t) { return 1; };
  const VotingParams params = sceneParams();
  {
    const ParallelScope scope(stop);
    Probe probe(params);
    EXPECT_THROW(probe.compute(scene()), Cancelled);
    EXPECT_TRUE(probe.centers().empty());
  }
  EXPECT_FALSE(computed(params, scene()).centers().empty());
}

}  // namespace
}  // namespace orva::test
