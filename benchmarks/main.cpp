// The programs differ in the works that they register.
#include <benchmark/benchmark.h>

#include "benchmarks/works.h"

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  orva_benchmark::registerWorks();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
