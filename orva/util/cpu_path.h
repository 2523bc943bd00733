// The one place that decides which instruction set a loop uses; not installed.
//
//   onWidestPath([&] { addRows(out, in, n); });
//
// compiles the body once for each instruction set, with everything it calls inlined, and runs the
// widest that the machine has. All give the same bits, but for those of a NaN: a wider set only
// takes more elements at once.
#ifndef ORVA_UTIL_CPU_PATH_H
#define ORVA_UTIL_CPU_PATH_H

namespace orva {

enum class CpuPath {
  Baseline,  // what the compiler may assume of every machine of its kind
  Avx2       // x86-64 with 256-bit vectors
};

// The widest of this machine, or Baseline where the environment variable ORVA_CPU_PATH is
// "baseline". Decided at the first call.
CpuPath cpuPath();

#if defined(__x86_64__)
#define ORVA_TARGET_AVX2 [[gnu::target("avx2"), gnu::flatten, gnu::noinline]]
#else
#define ORVA_TARGET_AVX2
#endif

// Stands before a loop that writes nothing which a later turn of it reads, so that its turns may be
// taken together. Clang has no such mark that is silent where it changes nothing.
#if defined(__clang__)
#define ORVA_INDEPENDENT
#else
#define ORVA_INDEPENDENT _Pragma("GCC ivdep")
#endif

template <class Body>
[[gnu::flatten, gnu::noinline]] void runOnBaseline(Body body) {
  body();
}

template <class Body>
ORVA_TARGET_AVX2 void runOnAvx2(Body body) {
  body();
}

template <class Body>
void onWidestPath(const Body& body) {
  if (cpuPath() == CpuPath::Avx2) {
    runOnAvx2(body);
  } else {
    runOnBaseline(body);
  }
}

}  // namespace orva

#endif
