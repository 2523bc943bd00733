#include <benchmark/benchmark.h>

#include "benchmarks/discs.h"
#include "orva/scalespace/scalespace.h"

namespace {

void derivative(benchmark::State& state) {
  const auto img = orva_benchmark::discs(static_cast<int>(state.range(0)));
  const auto sigma = static_cast<float>(state.range(1));
  for (auto _ : state) benchmark::DoNotOptimize(orva::scalespace::dX(img, sigma).pixels());
  state.SetItemsProcessed(state.iterations() * img.npix());
}
BENCHMARK(derivative)->ArgsProduct({{1024}, {1, 2, 5}})->Unit(benchmark::kMillisecond);

void smoothing(benchmark::State& state) {
  const auto img = orva_benchmark::discs(static_cast<int>(state.range(0)));
  const auto sigma = static_cast<float>(state.range(1));
  for (auto _ : state) benchmark::DoNotOptimize(orva::scalespace::smooth(img, sigma, 1).pixels());
  state.SetItemsProcessed(state.iterations() * img.npix());
}
BENCHMARK(smoothing)->ArgsProduct({{1024}, {1, 2, 5}})->Unit(benchmark::kMillisecond);

void featureMask(benchmark::State& state) {
  const auto img = orva_benchmark::discs(1024);
  const auto type = static_cast<orva::FeatureType>(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(orva::scalespace::features(img, 2, type, 1).pixels());
  }
  state.SetItemsProcessed(state.iterations() * img.npix());
}
BENCHMARK(featureMask)
    ->Arg(orva::LAPLACIAN_NEGATIVE)
    ->Arg(orva::HESSIAN_MAXIMUM)
    ->Unit(benchmark::kMillisecond);

}  // namespace
