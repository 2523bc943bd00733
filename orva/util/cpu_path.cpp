#include "orva/util/cpu_path.h"

#include <cstdlib>
#include <string_view>

namespace orva {
namespace {

CpuPath widest() {
  const char* wanted = std::getenv("ORVA_CPU_PATH");
  if (wanted != nullptr && std::string_view(wanted) == "baseline") return CpuPath::Baseline;
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2") != 0) return CpuPath::Avx2;
#endif
  return CpuPath::Baseline;
}

}  // namespace

CpuPath cpuPath() {
  static const CpuPath path = widest();
  return path;
}

}  // namespace orva
