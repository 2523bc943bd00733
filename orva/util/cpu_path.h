// The one place that decides which instruction set a loop uses; not installed.
//
//   onWidestPath([&] { addRows(out, in, n); });
//
// compiles the body and everything it calls, inlined, once for each instruction set and runs the
// widest version that the machine supports. All versions give the same bits, NaN payloads excepted:
// a wider set only computes more outputs per instruction.
#ifndef ORVA_UTIL_CPU_PATH_H
#define ORVA_UTIL_CPU_PATH_H

namespace orva {

enum class CpuPath {
  Baseline,  // the minimum instruction set of the architecture
  Avx2       // x86-64 with 256-bit vectors
};

// The widest path that this machine supports, or Baseline if the environment variable ORVA_CPU_PATH
// is "baseline". Decided at the first call.
CpuPath cpuPath();

#if defined(__x86_64__)
#define ORVA_TARGET_AVX2 [[gnu::target("avx2"), gnu::flatten, gnu::noinline]]
#else
#define ORVA_TARGET_AVX2
#endif

// Placed before a loop without loop-carried dependences through memory, so that GCC vectorises it
// without run-time checks for overlap. Clang has no equivalent that stays silent where it changes
// nothing.
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
