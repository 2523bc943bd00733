// Calls one key operation, for what a benchmark of many repetitions cannot show: growth with the
// image size, instruction counts and memory.
//
//   orva_single_call time OPERATION SIDE REPETITIONS
//       prints the median CPU time of REPETITIONS calls in milliseconds
//   orva_single_call once OPERATION SIDE
//       calls the operation once, inside orva_measured_call(), to count its instructions
//   orva_single_call memory SIDE CELL
//       votes once and prints the number of voting points and the peak memory of the process in
//       bytes before and after the call
//
// OPERATION is derivative, regions, chamfer or voting. The image is SIDE pixels square; CELL is the
// distance between its discs in pixels.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "benchmarks/cpu_clock.h"
#include "benchmarks/test_images.h"
#include "orva/bip/bip.h"
#include "orva/scalespace/scalespace.h"
#include "orva/voting/circularvoting.h"

using orva::voting::CircularVoting;
using orva_benchmark::Bytes;

// Callgrind counts the instructions inside this function; it finds it by its name.
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

// The operation on a test image, which is made here. Exits if there is no such operation.
Call prepare(const std::string& operation, int side) {
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
    std::fprintf(stderr, "unknown operation %s\n", operation.c_str());
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

// Peak resident memory. getrusage() would include that of the parent at the time of the fork.
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
    const Call call = prepare(words[1], std::stoi(words[2]));
    std::printf("%.6f\n", medianMilliseconds(call, std::stoi(words[3])));
    return 0;
  }
  if (words.size() == 3 && words[0] == "once") {
    orva_measured_call(prepare(words[1], std::stoi(words[2])));
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
      "usage: orva_single_call time OPERATION SIDE REPETITIONS\n"
      "       orva_single_call once OPERATION SIDE\n"
      "       orva_single_call memory SIDE CELL\n"
      "OPERATION is derivative, regions, chamfer or voting.\n",
      stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) { return run({argv + 1, argv + argc}); }
