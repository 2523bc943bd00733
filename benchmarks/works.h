#ifndef ORVA_BENCHMARKS_WORKS_H
#define ORVA_BENCHMARKS_WORKS_H

namespace orva_benchmark {

// Names what the program measures; each program has its own.
void registerWorks();

}  // namespace orva_benchmark

#endif
