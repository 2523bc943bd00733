// Measures one workload in several implementations: the library ("ours"), its reference
// implementation and OpenCV. Each is a benchmark named WORKLOAD/IMPLEMENTATION; scripts/bench
// compares those of one workload.
//
//   compare("threshold byte 2048", [] { return discs(2048); })
//       .ours([](const auto& img) { return orva::bip::threshold(img, 128); })
//       .reference([](const auto& img) { return reference::threshold(img, 128); });
//
// Times are CPU times of the thread, on which other load on the machine has little effect. Every
// call allocates a new result and frees it, both within the measured time.
#ifndef ORVA_BENCHMARKS_COMPARISON_H
#define ORVA_BENCHMARKS_COMPARISON_H

#include <benchmark/benchmark.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "benchmarks/cpu_clock.h"

namespace orva_benchmark {

// With kInPlace the operations change their input: each call gets its own copy, which is made
// outside the measured time.
template <class MakeInput, bool kInPlace>
class Comparison {
 public:
  Comparison(std::string workload, MakeInput make)
      : workload_(std::move(workload)), input_(std::make_shared<LazyInput>(std::move(make))) {}

  template <class Operation>
  Comparison& ours(Operation operation) {
    return implementation("ours", operation);
  }

  template <class Operation>
  Comparison& reference(Operation operation) {
    return implementation("reference", operation);
  }

  // `agrees` takes the input and returns whether the result is that of the library.
  template <class Operation, class Agrees>
  Comparison& opencv(Operation operation, Agrees agrees) {
    const auto input = input_;
    add("opencv", [input, operation, agrees](benchmark::State& state) {
      if (agrees(input->get())) {
        measure(state, input->get(), operation);
      } else {
        state.SkipWithError("results differ");
      }
    });
    return *this;
  }

 private:
  using Input = std::invoke_result_t<MakeInput>;

  // Made at first use, so that a run of one workload makes no inputs of others.
  class LazyInput {
   public:
    explicit LazyInput(MakeInput make) : make_(std::move(make)) {}
    Input& get() {
      if (!value_) value_.emplace(make_());
      return *value_;
    }

   private:
    MakeInput make_;
    std::optional<Input> value_;
  };

  template <class Argument, class Operation>
  static double secondsOf(Argument& argument, const Operation& operation) {
    const double start = cpuSeconds();
    if constexpr (std::is_void_v<std::invoke_result_t<Operation, Argument&>>) {
      operation(argument);
      benchmark::ClobberMemory();
    } else {
      const auto result = operation(argument);
      benchmark::DoNotOptimize(&result);
      benchmark::ClobberMemory();
    }
    return cpuSeconds() - start;
  }

  template <class Operation>
  static void measure(benchmark::State& state, Input& input, const Operation& operation) {
    for ([[maybe_unused]] auto iteration : state) {
      if constexpr (kInPlace) {
        Input copy = input.duplicate();
        state.SetIterationTime(secondsOf(copy, operation));
      } else {
        const Input& fixed = input;
        state.SetIterationTime(secondsOf(fixed, operation));
      }
    }
  }

  template <class Operation>
  Comparison& implementation(const char* name, Operation operation) {
    const auto input = input_;
    add(name,
        [input, operation](benchmark::State& state) { measure(state, input->get(), operation); });
    return *this;
  }

  template <class Body>
  void add(const char* name, Body body) {
    benchmark::RegisterBenchmark((workload_ + "/" + name).c_str(), std::move(body))
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }

  std::string workload_;
  std::shared_ptr<LazyInput> input_;
};

template <class MakeInput>
Comparison<MakeInput, false> compare(std::string workload, MakeInput make) {
  return {std::move(workload), std::move(make)};
}

template <class MakeInput>
Comparison<MakeInput, true> compareInPlace(std::string workload, MakeInput make) {
  return {std::move(workload), std::move(make)};
}

}  // namespace orva_benchmark

#endif
