#include "orva/util/cpu_path.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace orva::test {
namespace {

TEST(CpuPath, FollowsTheEnvironmentAndTheMachine) {
  const char* wanted = std::getenv("ORVA_CPU_PATH");
  if (wanted != nullptr && std::string(wanted) == "baseline") {
    EXPECT_EQ(cpuPath(), CpuPath::Baseline);
    return;
  }
#if defined(__x86_64__)
  EXPECT_EQ(cpuPath(), __builtin_cpu_supports("avx2") != 0 ? CpuPath::Avx2 : CpuPath::Baseline);
#else
  EXPECT_EQ(cpuPath(), CpuPath::Baseline);
#endif
}

TEST(CpuPath, RunsTheBodyOnce) {
  int runs = 0;
  onWidestPath([&runs] { ++runs; });
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace orva::test
