// With ORVA_TEST_RUNNERS set, the library runs under another runner in each iteration of
// --gtest_repeat, and cuts small images, too: one thread that shuffles the tasks, then pools of 1,
// 2, 3, 7 and 16 threads.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include "orva/util/parallel_for.h"
#include "tests/support/runners.h"

namespace orva::test {
namespace {

class RunnerListener : public ::testing::EmptyTestEventListener {
 public:
  void OnTestIterationStart(const ::testing::UnitTest& /*test*/, int iteration) override {
    constexpr std::array<int, 6> kThreads{0, 1, 2, 3, 7, 16};
    constexpr std::ptrdiff_t kMaxPartSize = 5;
    setMaxPartSize(kMaxPartSize);
    const int threads = kThreads[static_cast<std::size_t>(iteration) % kThreads.size()];
    if (threads == 0) {
      shuffled_ = std::make_unique<ShuffledTasks>();
      scope_ = std::make_unique<ParallelScope>(ShuffledTasks::run, shuffled_.get());
    } else {
      pool_ = std::make_unique<ThreadPool>(threads);
      scope_ = std::make_unique<ParallelScope>(ThreadPool::run, pool_.get());
    }
  }
  void OnTestIterationEnd(const ::testing::UnitTest& /*test*/, int /*iteration*/) override {
    scope_.reset();
    pool_.reset();
    shuffled_.reset();
  }

 private:
  std::unique_ptr<ShuffledTasks> shuffled_;
  std::unique_ptr<ThreadPool> pool_;
  std::unique_ptr<ParallelScope> scope_;
};

[[maybe_unused]] const bool kIsListening = [] {
  if (std::getenv("ORVA_TEST_RUNNERS") == nullptr) return false;
  // The listeners own it.
  ::testing::UnitTest::GetInstance()->listeners().Append(new RunnerListener);
  return true;
}();

}  // namespace
}  // namespace orva::test
