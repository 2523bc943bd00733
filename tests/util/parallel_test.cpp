// The scopes of orva/util/parallel.h, and how the library's loops use what they lend.
#include "orva/util/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <limits>
#include <new>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "orva/util/parallel_for.h"
#include "tests/support/runners.h"

namespace orva::test {
namespace {

// Runs the tasks in descending order, each twice.
int runTwiceBackwards(void* /*opaque*/, ParallelTask task, void* job, std::size_t count) {
  for (std::size_t i = count; i-- > 0;) {
    task(job, i);
    task(job, i);
  }
  task(job, count);  // no such task
  task(job, std::numeric_limits<std::size_t>::max());
  return 0;
}

int runEverySecond(void* /*opaque*/, ParallelTask task, void* job, std::size_t count) {
  for (std::size_t i = 0; i < count; i += 2) task(job, i);
  return 0;
}

// Counts its jobs, and stops the job whose number it holds.
struct StoppingRunner {
  int jobs = 0;
  int stopped = -1;

  static int run(void* runner, ParallelTask task, void* job, std::size_t count) {
    auto& self = *static_cast<StoppingRunner*>(runner);
    const bool stops = self.jobs++ == self.stopped;
    for (std::size_t i = 0; i < (stops ? count / 2 : count); ++i) task(job, i);
    return stops ? 1 : 0;
  }
};

std::vector<int> callsOf(std::size_t count, Interruption interruption = Interruption::Allowed) {
  std::vector<int> calls(count);
  parallelFor(
      count, [&](std::size_t i) { ++calls[i]; }, interruption);
  return calls;
}

TEST(ParallelFor, CallsEachBodyOnceWithAnyRunner) {
  for (const std::size_t count : {0U, 1U, 2U, 100U, 1024U, 1025U, 5000U}) {
    const std::vector<int> once(count, 1);
    EXPECT_EQ(callsOf(count), once);
    for (const ParallelRunner runner : {runTwiceBackwards, runEverySecond}) {
      const ParallelScope scope(runner);
      EXPECT_EQ(callsOf(count), once) << count;
    }
    for (const int threads : {1, 2, 3, 7, 16}) {
      ThreadPool pool(threads);
      const ParallelScope scope(ThreadPool::run, &pool);
      EXPECT_EQ(callsOf(count), once) << count << " on " << threads;
    }
  }
}

TEST(ParallelFor, RunsInOrderWithoutARunner) {
  std::vector<std::size_t> order;
  parallelFor(100, [&](std::size_t i) { order.push_back(i); });
  std::vector<std::size_t> expected(100);
  std::iota(expected.begin(), expected.end(), std::size_t{0});
  EXPECT_EQ(order, expected);
}

TEST(ParallelFor, ThrowsWhatTheFirstOfTheBodiesThrew) {
  const auto throwing = [](std::size_t i) {
    if (i >= 30 && i % 7 == 0) throw std::runtime_error(std::to_string(i));
  };
  const auto thrown = [&] {
    try {
      parallelFor(500, throwing);
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
    return std::string("nothing");
  };
  EXPECT_EQ(thrown(), "35");
  for (const ParallelRunner runner : {runTwiceBackwards, runEverySecond}) {
    const ParallelScope scope(runner);
    EXPECT_EQ(thrown(), "35");
  }
  ThreadPool pool(7);
  const ParallelScope scope(ThreadPool::run, &pool);
  for (int round = 0; round < 50; ++round) EXPECT_EQ(thrown(), "35");
}

TEST(ParallelFor, PassesLackOfMemoryOn) {
  ThreadPool pool(3);
  const ParallelScope scope(ThreadPool::run, &pool);
  const auto failing = [](std::size_t i) {
    if (i == 9) throw std::bad_alloc();
  };
  EXPECT_THROW(parallelFor(20, failing), std::bad_alloc);
}

TEST(ParallelFor, ThrowsCancelledWhenTheRunnerStops) {
  StoppingRunner runner;
  runner.stopped = 1;
  const ParallelScope scope(StoppingRunner::run, &runner);
  EXPECT_EQ(callsOf(8), std::vector<int>(8, 1));
  EXPECT_THROW(callsOf(8), Cancelled);
  EXPECT_EQ(callsOf(8), std::vector<int>(8, 1));
}

TEST(ParallelFor, CompletesWhatMayNotBeInterrupted) {
  StoppingRunner runner;
  runner.stopped = 0;
  const ParallelScope scope(StoppingRunner::run, &runner);
  EXPECT_EQ(callsOf(9, Interruption::Off), std::vector<int>(9, 1));
  const ProgressScope progress([](void*, const char*, double) { return 1; });
  EXPECT_EQ(callsOf(9, Interruption::Off), std::vector<int>(9, 1));
}

TEST(ParallelFor, HasNoRunnerInsideATask) {
  StoppingRunner runner;
  const ParallelScope scope(StoppingRunner::run, &runner);
  EXPECT_TRUE(hasRunner());
  std::atomic<int> calls = 0;
  parallelFor(4, [&](std::size_t) {
    EXPECT_FALSE(hasRunner());
    parallelFor(4, [&](std::size_t) { ++calls; });
  });
  EXPECT_EQ(calls, 16);
  EXPECT_EQ(runner.jobs, 1);
  EXPECT_TRUE(hasRunner());
}

TEST(ParallelScope, NestsAndEndsWithTheScope) {
  StoppingRunner outer;
  StoppingRunner inner;
  EXPECT_FALSE(hasRunner());
  {
    const ParallelScope scope(StoppingRunner::run, &outer);
    {
      const ParallelScope nested(StoppingRunner::run, &inner);
      callsOf(3);
      const ParallelScope none(nullptr);
      EXPECT_FALSE(hasRunner());
      callsOf(3);
    }
    EXPECT_EQ(outer.jobs, 0);
    callsOf(3);
  }
  EXPECT_EQ(inner.jobs, 1);
  EXPECT_EQ(outer.jobs, 1);
  EXPECT_FALSE(hasRunner());
}

TEST(ParallelScope, BelongsToItsThread) {
  StoppingRunner runner;
  const ParallelScope scope(StoppingRunner::run, &runner);
  bool others = true;
  std::thread([&] { others = hasRunner(); }).join();
  EXPECT_FALSE(others);
  EXPECT_TRUE(hasRunner());
}

// What a progress callback was told, and the number of the call at which it stops the operation.
struct Progress {
  std::vector<std::string> steps;
  std::vector<double> shares;
  std::size_t stopped = std::numeric_limits<std::size_t>::max();
  std::atomic<int> calls = 0;
  std::thread::id thread = std::this_thread::get_id();

  static int note(void* opaque, const char* step, double share) {
    auto& self = *static_cast<Progress*>(opaque);
    EXPECT_EQ(std::this_thread::get_id(), self.thread);
    self.steps.emplace_back(step);
    self.shares.push_back(share);
    ++self.calls;
    return self.shares.size() > self.stopped ? 1 : 0;
  }
};

TEST(ProgressScope, ReportsTheSharesOfSteps) {
  Progress progress;
  const ProgressScope scope(Progress::note, &progress);
  {
    const Step first("first", 0, 0.5);
    const Step inner("inner", 0.5, 1);
    parallelFor(2, [](std::size_t) {});
  }
  {
    const Step second("second", 0.5, 1);
    checkpoint(1, 4);
    checkpoint();
  }
  EXPECT_EQ(progress.steps, (std::vector<std::string>{"first", "first", "second", "second"}));
  EXPECT_EQ(progress.shares, (std::vector<double>{0.25, 0.375, 0.625, 0.625}));
}

TEST(ProgressScope, BeginsAgainWithTheNextOperation) {
  Progress progress;
  const ProgressScope scope(Progress::note, &progress);
  for (int operation = 0; operation < 2; ++operation) {
    const Step step("step", 0, 1);
    checkpoint(1, 2);
    checkpoint(0, 2);  // an estimate that goes back
  }
  EXPECT_EQ(progress.shares, (std::vector<double>{0.5, 0.5, 0.5, 0.5}));
}

TEST(ProgressScope, StopsLoopsWithAndWithoutARunner) {
  for (const bool hasPool : {false, true}) {
    ThreadPool pool(3);
    const ParallelScope parallel(hasPool ? ThreadPool::run : nullptr, &pool);
    Progress progress;
    progress.stopped = 0;
    const ProgressScope scope(Progress::note, &progress);
    EXPECT_THROW(checkpoint(), Cancelled);
    std::atomic<int> calls = 0;
    // Other threads wait until the calling one has run a task.
    EXPECT_THROW(parallelFor(1000,
                             [&](std::size_t) {
                               ++calls;
                               while (hasPool && progress.calls < 2) {
                                 std::this_thread::yield();
                               }
                               checkpoint();
                             }),
                 Cancelled);
    EXPECT_LT(calls, 1000);
  }
}

TEST(ProgressScope, IsCalledOnItsThreadOnly) {
  ThreadPool pool(7);
  const ParallelScope parallel(ThreadPool::run, &pool);
  Progress progress;
  const ProgressScope scope(Progress::note, &progress);
  parallelFor(1000, [](std::size_t) { checkpoint(); });
  EXPECT_GT(progress.shares.size(), 0U);
}

TEST(Parts, CoverTheRangeOnce) {
  for (const std::ptrdiff_t n : {0, 1, 7, 64, 100}) {
    for (const std::ptrdiff_t size : {1, 3, 7, 200}) {
      for (const std::ptrdiff_t unit : {1, 4}) {
        const Parts parts(n, size, unit);
        std::ptrdiff_t end = 0;
        for (std::size_t i = 0; i < parts.count(); ++i) {
          EXPECT_EQ(parts.begin(i), end);
          EXPECT_EQ(parts.begin(i) % unit, 0);
          EXPECT_GT(parts.end(i), parts.begin(i));
          end = parts.end(i);
        }
        EXPECT_EQ(end, n);
      }
    }
  }
}

TEST(Workspaces, AreUsedAgain) {
  Workspaces<int> workspaces;
  int made = 0;
  const auto make = [&] { return std::make_unique<int>(made++); };
  { EXPECT_EQ(*workspaces.take(make), 0); }
  {
    const auto first = workspaces.take(make);
    const auto second = workspaces.take(make);
    EXPECT_EQ(*first, 0);
    EXPECT_EQ(*second, 1);
  }
  EXPECT_EQ(made, 2);
}

TEST(Cancelled, SaysSo) {
  const Cancelled cancelled;
  EXPECT_STREQ(cancelled.what(), "cancelled");
}

}  // namespace
}  // namespace orva::test
