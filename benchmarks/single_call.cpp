// One of the key operations by itself, for what a benchmark of many repetitions can not show.
//
//   orva_single_call time OPERATION SIDE REPETITIONS   prints the median time in milliseconds
//   orva_single_call once OPERATION SIDE               calls orva_measured_call() once
//   orva_single_call points SIDE CELL                  votes on discs that lie CELL pixels apart
//   and
//                                                      prints the number of voting points
//   orva_single_call picture SIDE CELL                 makes the same picture and stops
//
// OPERATION is derivative, regions, chamfer or voting.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "benchmarks/cpu_clock.h"
#include "benchmarks/pictures.h"
#include "orva/bip/bip.h"
#include "orva/scalespace/scalespace.h"
#include "orva/voting/circularvoting.h"

using orva::voting::CircularVoting;
using orva_benchmark::Bytes;

// Instruction counts start and end with this call.
extern "C" __attribute__((noinline, visibility("default"))) void orva_measured_call(
    const std::function<void()>& call) {
  call();
}

namespace {

class Voting : public CircularVoting {
 public:
  Voting() { setParams(Bright, 1, 20, 5, 2.0F, 0.3F, 2.0F, Power, 0.5F, false, false); }
  std::size_t pointCount() const { return points_.size(); }
};

using Call = std::function<void()>;

// The operation on its picture of `side` pixels.
Call prepared(const std::string& operation, int side) {
  static const std::map<std::string, std::function<Call(int)>> operations = {
      {"derivative",
       [](int n) { return [img = orva_benchmark::discs(n)] { orva::scalespace::dX(img, 2); }; }},
      {"regions",
       [](int n) { return [mask = orva_benchmark::discMask(n)] { orva::bip::regions(mask); }; }},
      {"chamfer",
       [](int n) { return [mask = orva_benchmark::discMask(n)] { orva::bip::fchamfer(mask); }; }},
      {"voting",
       [](int n) { return [img = orva_benchmark::discs(n, 50)] { Voting().compute(img); }; }},
  };
  const auto found = operations.find(operation);
  if (found == operations.end()) {
    std::fprintf(stderr, "no operation %s\n", operation.c_str());
    std::exit(2);
  }
  return found->second(side);
}

double medianMilliseconds(const Call& call, int repetitions) {
  std::vector<double> times;
  for (int i = 0; i < std::max(1, repetitions); ++i) {
    const double start = orva_benchmark::cpuSeconds();
    call();
    times.push_back(1000 * (orva_benchmark::cpuSeconds() - start));
  }
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

// Of this process alone: getrusage() counts in what the parent held when it forked.
long long peakBytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  long long kilobytes = 0;
  while (status >> word && word != "VmHWM:") {
  }
  status >> kilobytes;
  return 1024 * kilobytes;
}

int run(const std::vector<std::string>& words) {
  if (words.size() == 4 && words[0] == "time") {
    const Call call = prepared(words[1], std::stoi(words[2]));
    std::printf("%.6f\n", medianMilliseconds(call, std::stoi(words[3])));
    return 0;
  }
  if (words.size() == 3 && words[0] == "once") {
    orva_measured_call(prepared(words[1], std::stoi(words[2])));
    return 0;
  }
  if (words.size() == 3 && words[0] == "memory") {
    const Bytes img = orva_benchmark::discs(std::stoi(words[1]), std::stoi(words[2]));
    const long long before = peakBytes();
    Voting voting;
    voting.compute(img);
    std::printf("%zu %lld %lld\n", voting.pointCount(), before, peakBytes());
    return 0;
  }
  std::fputs(
      "orva_single_call time OPERATION SIDE REPETITIONS | once OPERATION SIDE | memory SIDE CELL\n",
      stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) { return run({argv + 1, argv + argc}); }
