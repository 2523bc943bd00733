// Runners for orva::ParallelScope: a pool of threads, and one thread that shuffles the tasks.
#ifndef ORVA_TESTS_SUPPORT_RUNNERS_H
#define ORVA_TESTS_SUPPORT_RUNNERS_H

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

#include "orva/util/parallel.h"

namespace orva::test {

// Threads that share the tasks of one job at a time: the calling one and `threads` - 1 others.
class ThreadPool {
 public:
  explicit ThreadPool(int threads) {
    for (int i = 1; i < threads; ++i) workers_.emplace_back([this] { serve(); });
  }
  ~ThreadPool() {
    {
      const std::lock_guard lock(mutex_);
      isClosing_ = true;
    }
    begun_.notify_all();
    for (std::thread& worker : workers_) worker.join();
  }
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  static int run(void* pool, ParallelTask task, void* job, std::size_t count) {
    static_cast<ThreadPool*>(pool)->runJob(task, job, count);
    return 0;
  }

 private:
  void runJob(ParallelTask task, void* job, std::size_t count) {
    {
      const std::lock_guard lock(mutex_);
      task_ = task;
      job_ = job;
      count_ = count;
      next_ = 0;
      ++round_;
      busy_ = workers_.size();
    }
    begun_.notify_all();
    work();
    std::unique_lock lock(mutex_);
    done_.wait(lock, [this] { return busy_ == 0; });
  }

  void work() {
    for (std::size_t i = next_++; i < count_; i = next_++) task_(job_, i);
  }

  void serve() {
    std::size_t seen = 0;
    for (;;) {
      {
        std::unique_lock lock(mutex_);
        begun_.wait(lock, [&] { return isClosing_ || round_ != seen; });
        if (isClosing_) return;
        seen = round_;
      }
      work();
      const std::lock_guard lock(mutex_);
      if (--busy_ == 0) done_.notify_one();
    }
  }

  std::mutex mutex_;
  std::condition_variable begun_;
  std::condition_variable done_;
  ParallelTask task_ = nullptr;
  void* job_ = nullptr;
  std::size_t count_ = 0;
  std::atomic<std::size_t> next_ = 0;
  std::size_t round_ = 0;
  std::size_t busy_ = 0;  // workers that have not finished the round
  bool isClosing_ = false;
  std::vector<std::thread> workers_;
};

// Runs all tasks on the calling thread, in random order.
class ShuffledTasks {
 public:
  static int run(void* runner, ParallelTask task, void* job, std::size_t count) {
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), static_cast<ShuffledTasks*>(runner)->random_);
    for (const std::size_t i : order) task(job, i);
    return 0;
  }

 private:
  std::mt19937 random_;
};

}  // namespace orva::test

#endif
