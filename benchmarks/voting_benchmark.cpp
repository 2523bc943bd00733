#include <benchmark/benchmark.h>

#include "benchmarks/discs.h"
#include "orva/voting/circularvoting.h"

namespace {

using orva::voting::CircularVoting;

void voting(benchmark::State& state) {
  const auto img = orva_benchmark::discs(static_cast<int>(state.range(0)));
  const int radius = static_cast<int>(state.range(1));
  for (auto _ : state) {
    CircularVoting engine;
    engine.setParams(CircularVoting::Bright, 1, radius, radius / 4, 2.0F, 0.3F, 2.0F,
                     CircularVoting::Power, 0.5F, false, false);
    engine.compute(img);
    benchmark::DoNotOptimize(engine.centers().data());
  }
  state.SetItemsProcessed(state.iterations() * img.npix());
}
BENCHMARK(voting)->Args({512, 20})->Args({1024, 20})->Unit(benchmark::kMillisecond);

}  // namespace
