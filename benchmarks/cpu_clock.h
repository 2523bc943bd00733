// CPU time of the calling thread.
#ifndef ORVA_BENCHMARKS_CPU_CLOCK_H
#define ORVA_BENCHMARKS_CPU_CLOCK_H

#include <ctime>

namespace orva_benchmark {

inline double cpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

}  // namespace orva_benchmark

#endif
