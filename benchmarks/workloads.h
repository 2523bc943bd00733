// What each benchmark program defines.
#ifndef ORVA_BENCHMARKS_WORKLOADS_H
#define ORVA_BENCHMARKS_WORKLOADS_H

namespace orva_benchmark {

// Registers the workloads of the program.
void registerWorkloads();

}  // namespace orva_benchmark

#endif
