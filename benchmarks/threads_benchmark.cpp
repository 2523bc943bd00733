// Times operations with one thread and with two, and simulates more.
//
//   orva_threads_benchmark SIDE REPETITIONS [FILTER]
//
// prints a line of CSV per operation whose name contains FILTER: its name; the median CPU time
// without a runner, and the medians outside tasks and in tasks with a runner of one thread; the
// median wall-clock time without a runner and with two threads, and the median of their ratios; the
// ratio that the simulation gives for 2, 4 and 16 threads; and the longest time without a report of
// the progress, for which a request to stop would wait. Times are in milliseconds.
//
// The simulation gives the tasks of each job, as long as they took on one thread, to the first
// thread that is free, in their order, and adds what runs outside tasks. It ignores the time to
// wake threads, and memory and clock rates that threads share. It is made of CPU times, on which
// other load on the machine has little effect.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/cpu_clock.h"
#include "benchmarks/test_images.h"
#include "orva/bip/bip.h"
#include "orva/detect/detect.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"
#include "orva/image_io/image_io.h"
#include "orva/image_math/image_math.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/parallel.h"
#include "orva/voting/circularvoting.h"
#include "tests/support/runners.h"

namespace {

using orva::voting::CircularVoting;
using orva_benchmark::Bytes;
using Clock = std::chrono::steady_clock;
using Call = std::function<void()>;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Runs the tasks one after the other and notes how long they take.
struct TimingRunner {
  std::vector<std::vector<double>> jobs;

  static int run(void* runner, orva::ParallelTask task, void* job, std::size_t count) {
    std::vector<double> times(count);
    for (std::size_t i = 0; i < count; ++i) {
      const double start = orva_benchmark::cpuSeconds();
      task(job, i);
      times[i] = 1000 * (orva_benchmark::cpuSeconds() - start);
    }
    static_cast<TimingRunner*>(runner)->jobs.push_back(std::move(times));
    return 0;
  }

  // The time of all jobs on so many threads.
  double simulated(std::size_t threads) const {
    double all = 0;
    for (const std::vector<double>& tasks : jobs) {
      std::vector<double> ends(threads);
      for (const double t : tasks) *std::min_element(ends.begin(), ends.end()) += t;
      all += *std::max_element(ends.begin(), ends.end());
    }
    return all;
  }
};

// Notes the longest CPU time between two reports of the progress, or an end of the call.
struct Silence {
  double last = orva_benchmark::cpuSeconds();
  double longest = 0;

  void end() {
    const double now = orva_benchmark::cpuSeconds();
    longest = std::max(longest, now - last);
    last = now;
  }
  static int report(void* silence, const char* /*step*/, double /*share*/) {
    static_cast<Silence*>(silence)->end();
    return 0;
  }
};

double longestSilence(const Call& call) {
  Silence silence;
  {
    const orva::ProgressScope scope(Silence::report, &silence);
    call();
  }
  silence.end();
  return 1000 * silence.longest;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

struct Times {
  double cpu;
  double wall;
};

Times timesOf(const Call& call) {
  const auto start = Clock::now();
  const double cpu = orva_benchmark::cpuSeconds();
  call();
  const double seconds = orva_benchmark::cpuSeconds() - cpu;
  return {1000 * seconds, millisecondsSince(start)};
}

void measure(const std::string& name, const Call& call, int repetitions) {
  static orva::test::ThreadPool pool(2);
  constexpr std::size_t kColumns = 10;
  std::vector<std::vector<double>> columns(kColumns);
  call();
  for (int i = 0; i < repetitions; ++i) {
    const Times alone = timesOf(call);
    Times together{};
    {
      const orva::ParallelScope scope(orva::test::ThreadPool::run, &pool);
      together = timesOf(call);
    }
    const double silence = longestSilence(call);
    TimingRunner timing;
    const orva::ParallelScope scope(TimingRunner::run, &timing);
    const double all = timesOf(call).cpu;
    const double inTasks = timing.simulated(1);
    const double outside = std::max(0.0, all - inTasks);
    std::size_t k = 0;
    for (const double v :
         {alone.cpu, outside, inTasks, alone.wall, together.wall, alone.wall / together.wall,
          alone.cpu / (outside + timing.simulated(2)), alone.cpu / (outside + timing.simulated(4)),
          alone.cpu / (outside + timing.simulated(16)), silence}) {
      columns[k++].push_back(v);
    }
  }
  std::printf("%s", name.c_str());
  for (const std::vector<double>& column : columns) std::printf(",%.4g", median(column));
  std::printf("\n");
  std::fflush(stdout);
}

Call voting(const Bytes& img, int radius, int width, CircularVoting::RegionType type) {
  return [=] {
    CircularVoting voting;
    voting.setParams(type, 1, radius, width, 2.0F, 0.3F, 2.0F, CircularVoting::Power, 0.5F, false,
                     false);
    voting.compute(img);
  };
}

// A call on a copy of `input`, which it changes. The copy counts.
template <class T, class F>
Call inPlace(const orva::image<T>& input, const F& operation) {
  return [=] {
    orva::image<T> copy = input.duplicate();
    operation(copy);
  };
}

std::vector<std::pair<std::string, Call>> operationsOn(int side) {
  namespace scale = orva::scalespace;
  namespace bip = orva::bip;
  namespace detect = orva::detect;
  const Bytes img = orva_benchmark::discs(side, 50);
  const Bytes mask = orva_benchmark::discMask(side);
  const orva::image<short> labels = bip::regions(mask);
  const orva::image<float> floats = orva::image_io::convertToFloatImage(img);
  const std::vector<detect::Object> objects = detect::findObjects(img, {}).objects;
  const orva::image<int> segments = detect::segmentObjects(img, objects, {}).labels;
  return {
      {"voting R 20 w 5 bright", voting(img, 20, 5, CircularVoting::Bright)},
      {"voting R 20 w 5 both", voting(img, 20, 5, CircularVoting::Both)},
      {"voting R 40 w 10 bright", voting(img, 40, 10, CircularVoting::Bright)},
      {"dX byte sigma 1", [=] { scale::dX(img, 1); }},
      {"dX byte sigma 2", [=] { scale::dX(img, 2); }},
      {"dX byte sigma 5", [=] { scale::dX(img, 5); }},
      {"dX float sigma 2", [=] { scale::dX(floats, 2); }},
      {"smooth byte sigma 2", [=] { scale::smooth(img, 2, 1); }},
      {"gradient byte sigma 2", [=] { scale::gradient(img, 2, 1); }},
      {"laplacian byte sigma 2", [=] { scale::laplacian(img, 2); }},
      {"hessian maximum sigma 2", [=] { scale::features(img, 2, orva::HESSIAN_MAXIMUM, 1); }},
      {"laplacian negative sigma 2", [=] { scale::features(img, 2, orva::LAPLACIAN_NEGATIVE, 1); }},
      {"harmonicCut sigma 2", [=] { scale::harmonicCut(img, 2, true, 1); }},
      {"direction of two", [=] { scale::direction(floats, floats); }},
      {"reduce by 0.5", [=] { delete scale::reduce(img, 0.5F, 2); }},
      {"regions 4", [=] { bip::regions(mask); }},
      {"regions of labels", [=] { bip::regions(labels); }},
      {"regionFeatures", [=] { bip::regionFeatures(labels); }},
      {"regionFeatures with brightness", [=] { bip::regionFeatures(labels, img); }},
      {"fchamfer", [=] { bip::fchamfer(mask); }},
      {"fchamfer of labels", [=] { bip::fchamfer(labels); }},
      {"propagate", inPlace(labels, [](orva::image<short>& l) { bip::propagate(l, 20); })},
      {"erode", inPlace(mask, [](Bytes& m) { bip::erode(m); })},
      {"dilate", inPlace(mask, [](Bytes& m) { bip::dilate(m); })},
      {"erode labels", inPlace(labels, [](orva::image<short>& l) { bip::erode(l); })},
      {"edge of labels", [=] { bip::edge(labels); }},
      {"convexHull", inPlace(labels, [](orva::image<short>& l) { bip::convexHull(l, 20); })},
      {"removeInternalStructures",
       inPlace(mask, [](Bytes& m) { bip::removeInternalStructures(m); })},
      {"threshold of floats", [=] { bip::threshold(floats, 100); }},
      {"computeThreshold sigma 2", [=] { bip::computeThreshold(img, 2); }},
      {"findZeros", [=] { orva::image_math::findZeros(floats); }},
      {"meanOfTopByPercentage", [=] { orva::image_math::meanOfTopByPercentage(floats, 0.1F); }},
      {"max of floats", [=] { floats.max(); }},
      {"convertToFloatImage", [=] { orva::image_io::convertToFloatImage(img); }},
      {"convertToByteImage stretched", [=] { orva::image_io::convertToByteImage(floats, true); }},
      {"convertToShortImage", [=] { orva::image_io::convertToShortImage(floats); }},
      {"toRgbImage", [=] { orva::toRgbImage(img); }},
      {"findObjects", [=] { detect::findObjects(img, {}); }},
      {"segmentObjects", [=] { detect::segmentObjects(img, objects, {}); }},
      {"segmentImage", [=] { detect::segmentImage(img, {}, {}); }},
      {"measureObjects", [=] { detect::measureObjects(segments, img); }},
  };
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: orva_threads_benchmark SIDE REPETITIONS [FILTER]\n", stderr);
    return 2;
  }
  const std::string filter = argc > 3 ? argv[3] : "";
  for (const auto& [name, call] : operationsOn(std::atoi(argv[1]))) {
    if (name.find(filter) != std::string::npos) measure(name, call, std::atoi(argv[2]));
  }
}
