// Threads for orva::ParallelScope. Header only, so that the library's own tests use the same pool.
#ifndef ORVA_FORMATS_THREAD_POOL_H
#define ORVA_FORMATS_THREAD_POOL_H

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "formats/termination_signals.h"
#include "orva/util/parallel.h"

namespace orva::formats {

// As many threads as this process may use at the same time, at least 1.
inline int coreCount() {
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

// The calling thread and others that take the tasks of one job at a time:
//
//   ThreadPool pool(4);
//   const ParallelScope scope(ThreadPool::run, &pool);
//
// The other threads start with the first job, so that an idle pool costs nothing and outlives a
// fork. Where the system refuses a thread, there are fewer. One job at a time: a pool serves one
// calling thread.
class ThreadPool {
 public:
  // `threads` counts the calling one; 1 or less starts none.
  explicit ThreadPool(int threads) : threads_(threads) {}
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  ~ThreadPool() {
    {
      const std::lock_guard lock(mutex_);
      isClosing_ = true;
    }
    hasJob_.notify_all();
    for (std::thread& worker : workers_) worker.join();
  }

  // The runner; `pool` points to a ThreadPool.
  static int run(void* pool, ParallelTask task, void* job, std::size_t count) {
    static_cast<ThreadPool*>(pool)->runJob(task, job, count);
    return 0;
  }

 private:
  void runJob(ParallelTask task, void* job, std::size_t count) {
    startWorkers();
    {
      const std::lock_guard lock(mutex_);
      task_ = task;
      job_ = job;
      count_ = count;
      next_ = 0;
      ++round_;
      busy_ = workers_.size();
    }
    hasJob_.notify_all();
    work();
    std::unique_lock lock(mutex_);
    isDone_.wait(lock, [this] { return busy_ == 0; });
  }

  void startWorkers() {
    if (isStarted_) return;
    isStarted_ = true;
    const SignalBlock none;  // a signal then interrupts the thread that expects it
    try {
      for (int i = 1; i < threads_; ++i) workers_.emplace_back([this] { serve(); });
    } catch (const std::system_error&) {
      // Those that there are do all the work.
    }
  }

  void work() {
    for (std::size_t i = next_++; i < count_; i = next_++) task_(job_, i);
  }

  void serve() {
    for (std::size_t seen = 0;;) {
      {
        std::unique_lock lock(mutex_);
        hasJob_.wait(lock, [&] { return isClosing_ || round_ != seen; });
        if (isClosing_) return;
        seen = round_;
      }
      work();
      const std::lock_guard lock(mutex_);
      if (--busy_ == 0) isDone_.notify_one();
    }
  }

  int threads_;
  bool isStarted_ = false;
  std::mutex mutex_;
  std::condition_variable hasJob_;
  std::condition_variable isDone_;
  ParallelTask task_ = nullptr;
  void* job_ = nullptr;
  std::size_t count_ = 0;
  std::atomic<std::size_t> next_ = 0;
  std::size_t round_ = 0;
  std::size_t busy_ = 0;  // workers that have not finished the round
  bool isClosing_ = false;
  std::vector<std::thread> workers_;
};

}  // namespace orva::formats

#endif
