// Finding, segmenting and measuring under runners, and stopped at any moment.
#include "orva/util/parallel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/detect/measure.h"
#include "orva/detect/order_statistic.h"
#include "orva/detect/segment.h"
#include "orva/util/parallel_for.h"
#include "tests/detect/scenes.h"
#include "tests/support/images.h"
#include "tests/support/runners.h"

namespace orva::test {
namespace {

using detect::FindResult;

// Discs of several sizes, some of which touch.
const image<float>& crowd() {
  static const image<float> img = [] {
    std::vector<Ellipse> discs = discGrid(330, 250, 6, 14, 1);
    discs.push_back(disc(60, 60, 20));
    discs.push_back(disc(75, 66, 9));
    image<float> drawing = drawn(330, 250, discs);
    addNoise(drawing, 6, 3);
    return drawing;
  }();
  return img;
}

struct Result {
  FindResult found;
  detect::Segmentation segmentation;
  std::vector<detect::ObjectMeasures> measures;
};

Result resultOf(const Image& img) {
  Result r{detect::findObjects(img, {}), {image<int>(0, 1, 1, 1, 1), {}}, {}};
  r.segmentation = detect::segmentObjects(img, r.found.objects, {});
  r.measures = detect::measureObjects(r.segmentation.labels, img);
  return r;
}

void expectSame(const Result& a, const Result& b) {
  ASSERT_EQ(a.found.objects.size(), b.found.objects.size());
  for (std::size_t i = 0; i < a.found.objects.size(); ++i) {
    const detect::Object& o = a.found.objects[i];
    const detect::Object& p = b.found.objects[i];
    EXPECT_TRUE(o.x == p.x && o.y == p.y && o.radius == p.radius && o.score == p.score &&
                o.coverage == p.coverage)
        << i;
  }
  EXPECT_EQ(a.found.used.radius, b.found.used.radius);
  EXPECT_EQ(a.found.used.confidence, b.found.used.confidence);
  EXPECT_TRUE(sameImage(a.segmentation.labels, b.segmentation.labels));
  EXPECT_EQ(a.segmentation.kept, b.segmentation.kept);
  ASSERT_EQ(a.measures.size(), b.measures.size());
  for (std::size_t i = 0; i < a.measures.size(); ++i) {
    for (const detect::MeasureColumn& column : detect::measureColumns()) {
      EXPECT_EQ(column.of(a.measures[i]), column.of(b.measures[i])) << i;
    }
  }
}

class Detection : public ::testing::Test {
 protected:
  Detection() { setMaxPartSize(5); }
  ~Detection() override { setMaxPartSize(std::numeric_limits<std::ptrdiff_t>::max()); }
  Detection(const Detection&) = delete;
  Detection& operator=(const Detection&) = delete;
};

TEST_F(Detection, IsTheSameWithAnyRunner) {
  const Result expected = resultOf(crowd());
  ASSERT_GT(expected.found.objects.size(), 20U);
  ASSERT_GT(expected.measures.size(), 20U);
  {
    ShuffledTasks shuffled;
    const ParallelScope scope(ShuffledTasks::run, &shuffled);
    expectSame(resultOf(crowd()), expected);
  }
  for (const int threads : {1, 2, 3, 7, 16}) {
    ThreadPool pool(threads);
    const ParallelScope scope(ThreadPool::run, &pool);
    expectSame(resultOf(crowd()), expected);
  }
}

// Counts the calls, and stops at one of them.
struct Moment {
  std::size_t calls = 0;
  std::size_t stopped = std::numeric_limits<std::size_t>::max();
  double share = 0;

  static int pass(void* moment, const char* /*step*/, double share) {
    auto& self = *static_cast<Moment*>(moment);
    EXPECT_TRUE(share >= self.share || self.calls == 0);
    EXPECT_LE(share, 1.0);
    self.share = share;
    return self.calls++ == self.stopped ? 1 : 0;
  }
};

TEST_F(Detection, StopsAtAnyMoment) {
  const FindResult found = detect::findObjects(crowd(), {});
  const std::vector<std::function<void()>> operations = {
      [] { detect::findObjects(crowd(), {}); },
      [&] { detect::segmentObjects(crowd(), found.objects, {}); },
  };
  for (const std::function<void()>& operation : operations) {
    Moment whole;
    {
      const ProgressScope scope(Moment::pass, &whole);
      operation();
    }
    ASSERT_GT(whole.calls, 50U);
    Random random(5);
    for (int round = 0; round < 15; ++round) {
      Moment moment;
      moment.stopped =
          static_cast<std::size_t>(randomInt(random, 0, static_cast<int>(whole.calls) - 1));
      const ProgressScope scope(Moment::pass, &moment);
      EXPECT_THROW(operation(), Cancelled) << moment.stopped;
    }
  }
  EXPECT_EQ(detect::findObjects(crowd(), {}).objects.size(), found.objects.size());
}

TEST(OrderStatistic, IsTheValueAtItsRank) {
  Random random(9);
  for (const std::size_t n : {1U, 2U, 7U, 100U, 1000U}) {
    std::vector<float> values(n);
    for (float& v : values) v = 0.25F * static_cast<float>(randomInt(random, -600, 600));
    values.front() = std::numeric_limits<float>::infinity();
    values.back() = -3e-39F;
    std::vector<float> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t rank = 0; rank < n; ++rank) {
      EXPECT_EQ(detect::orderStatistic(values, rank), sorted[rank]);
    }
  }
}

}  // namespace
}  // namespace orva::test
