#ifndef ORVA_BENCHMARKS_WORKLOADS_H
#define ORVA_BENCHMARKS_WORKLOADS_H

namespace orva_benchmark {

// Names what the program measures; each program has its own.
void registerWorkloads();

}  // namespace orva_benchmark

#endif
