/// @file
/// Threads lent by the caller, progress, and cancelling.
///
/// The library starts no threads. A caller who has some lends them for a scope: until the end of
/// the scope, the operations that this thread calls cut their work into tasks and hand these to the
/// caller's runner. The results are the same bit for bit with every runner and without one.
///
/// A runner of two threads:
///
/// @code
/// #include <atomic>
/// #include <thread>
/// #include "orva/util/parallel.h"
///
/// int runOnTwo(void*, orva::ParallelTask task, void* job, std::size_t count) {
///   std::atomic<std::size_t> next = 0;
///   const auto work = [&] {
///     for (std::size_t i = next++; i < count; i = next++) task(job, i);
///   };
///   std::thread other(work);
///   work();
///   other.join();
///   return 0;
/// }
///
/// const orva::ParallelScope scope(runOnTwo);
/// voting.compute(img);
/// @endcode
///
/// That one starts a thread for every job, and an operation has several; a pool that keeps its
/// threads is faster.
#ifndef ORVA_UTIL_PARALLEL_H
#define ORVA_UTIL_PARALLEL_H

#include <cstddef>
#include <exception>

#include "orva/util/export.h"

namespace orva {

extern "C" {

/// Does task @p i of @p job. Throws nothing. May be called on any thread; tasks of a job may run at
/// the same time and in any order, and never wait for each other. A number that is not below the
/// count of the job is ignored, and so is one that was given before.
using ParallelTask = void (*)(void* job, std::size_t i);

/// Calls @p task(@p job, i) once for each i in 0 .. @p count - 1, on any threads and in any order,
/// and returns 0 when the last call has returned. Tasks that it leaves out are run by the library
/// on the calling thread.
///
/// To stop the operation it calls no further tasks, waits for those that run, and returns another
/// number; the operation then throws Cancelled. It must not throw, and must not return while a task
/// runs or may still be called: the job ends with it.
///
/// The library calls it on the thread of the scope. A task runs on one thread from its beginning to
/// its end and calls no runner.
///
/// @param opaque the pointer given to ParallelScope
using ParallelRunner = int (*)(void* opaque, ParallelTask task, void* job, std::size_t count);

/// Takes note of the progress of an operation. Returns 0 to go on; another number ends the
/// operation with Cancelled. Called on the thread of the scope only, at most every few milliseconds
/// of work apart in general and 0.1 seconds apart at the most; while a runner has a job, from the
/// tasks that run on this thread. A runner whose calling thread runs no tasks should therefore poll
/// by itself whether to stop.
///
/// @param opaque the pointer given to ProgressScope
/// @param step what is being done, in a word or two of English, as "gradient"; a string literal
/// @param share of the work of the operation that is done, 0 to 1, an estimate; grows until the
///        next operation begins
using ProgressCallback = int (*)(void* opaque, const char* step, double share);

}  // extern "C"

/// Thrown by an operation that a ProgressCallback or a ParallelRunner has stopped. Everything that
/// the operation allocated is released, and its results are as they were before the call: an image
/// that it changes in place, the results of the object that it belongs to. The next call is not
/// affected. Short operations may complete instead.
class ORVA_EXPORT Cancelled : public std::exception {
 public:
  Cancelled() = default;
  Cancelled(const Cancelled&) = default;             ///< Copies.
  Cancelled& operator=(const Cancelled&) = default;  ///< Copies.
  ~Cancelled() override;
  /// "cancelled"
  const char* what() const noexcept override;
};

/// Lends a runner to the operations that this thread calls until the end of the scope.
///
/// Scopes nest: the innermost counts, and its end restores the one around it. They end in the
/// reverse order of their beginning, on the thread on which they began. Other threads are not
/// affected.
class ORVA_EXPORT ParallelScope {
 public:
  /// @param runner null for none: the operations run on this thread alone
  /// @param opaque handed to every call of @p runner
  explicit ParallelScope(ParallelRunner runner, void* opaque = nullptr) noexcept;
  ~ParallelScope();
  ParallelScope(const ParallelScope&) = delete;
  ParallelScope& operator=(const ParallelScope&) = delete;

 private:
  ParallelRunner runner_;  // of the scope around this one
  void* opaque_;
};

/// Reports the progress of the operations that this thread calls until the end of the scope, and
/// lets the callback stop them. Scopes nest as those of ParallelScope.
///
/// @code
/// const orva::ProgressScope scope(
///     [](void*, const char* step, double share) {
///       std::printf("%s %.0f %%\n", step, 100 * share);
///       return stopRequested ? 1 : 0;
///     });
/// @endcode
class ORVA_EXPORT ProgressScope {
 public:
  /// @param callback null for none
  /// @param opaque handed to every call of @p callback
  explicit ProgressScope(ProgressCallback callback, void* opaque = nullptr) noexcept;
  ~ProgressScope();
  ProgressScope(const ProgressScope&) = delete;
  ProgressScope& operator=(const ProgressScope&) = delete;

 private:
  ProgressCallback callback_;  // of the scope around this one
  void* opaque_;
  const char* step_;
  double begin_;
  double end_;
  double share_;
};

}  // namespace orva

#endif
