// Measures one workload done in several ways: by the library ("ours"), by its reference
// implementation and by other programs. Each way is a benchmark named WORKLOAD/WAY; scripts/bench
// sets those of one workload side by side.
//
//   compare("threshold byte 2048", [] { return discs(2048); })
//       .ours([](const auto& img) { return orva::bip::threshold(img, 128); })
//       .reference([](const auto& img) { return reference::threshold(img, 128); });
//
// Times are those that the thread spends on the CPU, so that other programs on the machine count
// little. The result is new in every call, and freeing it is part of the time.
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
// outside the time.
template <class MakeInput, bool kInPlace>
class Comparison {
 public:
  Comparison(std::string workload, MakeInput make)
      : workload_(std::move(workload)), input_(std::make_shared<Lazy>(std::move(make))) {}

  template <class Operation>
  Comparison& ours(Operation operation) {
    return way("ours", operation);
  }

  template <class Operation>
  Comparison& reference(Operation operation) {
    return way("reference", operation);
  }

  // `agrees` takes the input and tells whether this way runs the same workload.
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

  // Made at the first use, so that a run of one workload makes no other inputs.
  class Lazy {
   public:
    explicit Lazy(MakeInput make) : make_(std::move(make)) {}
    Input& get() {
      if (!value_) value_.emplace(make_());
      return *value_;
    }

   private:
    MakeInput make_;
    std::optional<Input> value_;
  };

  template <class Argument, class Operation>
  static double timed(Argument& argument, const Operation& operation) {
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
        Input own = input.duplicate();
        state.SetIterationTime(timed(own, operation));
      } else {
        const Input& fixed = input;
        state.SetIterationTime(timed(fixed, operation));
      }
    }
  }

  template <class Operation>
  Comparison& way(const char* name, Operation operation) {
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
  std::shared_ptr<Lazy> input_;
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
