#include <benchmark/benchmark.h>

#include "benchmarks/discs.h"
#include "orva/bip/bip.h"

namespace {

constexpr int kSide = 2048;

void labelling(benchmark::State& state) {
  const auto mask = orva_benchmark::discMask(kSide);
  const auto type = static_cast<orva::NeighborhoodType>(state.range(0));
  for (auto _ : state) {
    int n = 0;
    benchmark::DoNotOptimize(orva::bip::regions(mask, n, 255, 1, type).pixels());
  }
  state.SetItemsProcessed(state.iterations() * mask.npix());
}
BENCHMARK(labelling)
    ->Arg(orva::NEIGHBORHOOD_4)
    ->Arg(orva::NEIGHBORHOOD_8)
    ->Unit(benchmark::kMillisecond);

void measuring(benchmark::State& state) {
  const auto img = orva_benchmark::discs(kSide);
  const auto labels = orva::bip::regions(orva_benchmark::discMask(kSide));
  for (auto _ : state) benchmark::DoNotOptimize(orva::bip::regionFeatures(labels, img).data());
  state.SetItemsProcessed(state.iterations() * img.npix());
}
BENCHMARK(measuring)->Unit(benchmark::kMillisecond);

void erosion(benchmark::State& state) {
  const auto mask = orva_benchmark::discMask(kSide);
  for (auto _ : state) {
    auto eroded = mask.duplicate();
    orva::bip::erode(eroded);
    benchmark::DoNotOptimize(eroded.pixels());
  }
  state.SetItemsProcessed(state.iterations() * mask.npix());
}
BENCHMARK(erosion)->Unit(benchmark::kMillisecond);

}  // namespace
