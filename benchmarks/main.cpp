// The main function of all benchmark programs, which differ in the workloads that they register.
#include <benchmark/benchmark.h>

#include "benchmarks/workloads.h"

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  orva_benchmark::registerWorkloads();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
