#include "orva/util/parallel.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <exception>
#include <limits>
#include <mutex>

#include "orva/image/bad_alloc.h"
#include "orva/util/parallel_for.h"

namespace orva {
namespace {

// What the scopes of a thread, and the task that it runs, have set.
struct Context {
  ParallelRunner runner = nullptr;
  void* runnerOpaque = nullptr;
  ProgressCallback progress = nullptr;
  void* progressOpaque = nullptr;
  const char* step = nullptr;  // name of the outermost step
  double begin = 0;            // shares of the operation at which the innermost step begins
  double end = 1;              // and ends
  double share = 0;            // reported last
  bool inTask = false;
  const std::atomic<bool>* stop = nullptr;  // set when the job of the task is to stop
};

constinit thread_local Context context;

void report(double share) {
  // Estimates may go back where a step has several loops.
  context.share = share > context.share ? share : context.share;
  const char* step = context.step != nullptr ? context.step : "work";
  if (context.progress(context.progressOpaque, step, context.share) != 0) throw Cancelled();
}

void reportPart(double done) {
  if (context.inTask) return report(context.share);
  report(context.begin + (context.end - context.begin) * done);
}

// The tasks that the runner is given: each does `perTask` bodies.
constexpr std::size_t kMaxTasks = 1024;

class Job {
 public:
  Job(std::size_t bodies, void (*body)(const void*, std::size_t), const void* object,
      Interruption interruption)
      : bodies_(bodies),
        perTask_((bodies + kMaxTasks - 1) / kMaxTasks),
        count_((bodies + perTask_ - 1) / perTask_),
        body_(body),
        object_(object),
        isInterruptible_(interruption == Interruption::Allowed),
        throwsBadAlloc_(throwsBadAlloc()),
        caller_(&context) {}

  void run() {
    const int status = context.runner(context.runnerOpaque, task, this, count_);
    const bool isStopped = isInterruptible_ && (status != 0 || stop_);
    if (!isStopped) {
      for (std::size_t i = 0; i < count_; ++i) doTask(i);  // those that the runner left out
    }
    if (error_) std::rethrow_exception(error_);
    if (isStopped || (isInterruptible_ && stop_)) throw Cancelled();
    // The other threads may have run all tasks.
    if (isInterruptible_ && context.progress != nullptr) reportPart(1);
  }

 private:
  static void task(void* job, std::size_t i) { static_cast<Job*>(job)->doTask(i); }

  void doTask(std::size_t i) noexcept {
    if (i >= count_ || hasBegun_[i].exchange(true)) return;
    if (i > failed_ || stop_) return;
    const Context before = context;
    const bool isCaller = &context == caller_;
    context.runner = nullptr;
    context.inTask = true;
    context.stop = &stop_;
    const BadAllocScope memory(throwsBadAlloc_);
    if (!isCaller || !isInterruptible_) context.progress = nullptr;
    try {
      if (context.progress != nullptr) {
        const double done = static_cast<double>(finished_) / static_cast<double>(count_);
        report(before.begin + (before.end - before.begin) * done);
      }
      const std::size_t first = i * perTask_;
      for (std::size_t k = first; k < first + perTask_ && k < bodies_; ++k) body_(object_, k);
    } catch (...) {
      fail(i, std::current_exception());
    }
    const double share = context.share;
    context = before;
    if (isCaller) context.share = share;
    ++finished_;
  }

  void fail(std::size_t i, const std::exception_ptr& error) noexcept {
    try {
      std::rethrow_exception(error);
    } catch (const Cancelled&) {
      stop_ = true;
      return;
    } catch (...) {
    }
    const std::lock_guard lock(mutex_);
    if (i > failed_) return;
    failed_ = i;
    error_ = error;
  }

  std::size_t bodies_;
  std::size_t perTask_;
  std::size_t count_;
  void (*body_)(const void*, std::size_t);
  const void* object_;
  bool isInterruptible_;
  bool throwsBadAlloc_;
  const Context* caller_;
  std::array<std::atomic<bool>, kMaxTasks> hasBegun_{};
  std::atomic<std::size_t> finished_ = 0;
  std::atomic<std::size_t> failed_ = std::numeric_limits<std::size_t>::max();  // the smallest
  std::atomic<bool> stop_ = false;
  std::mutex mutex_;
  std::exception_ptr error_;  // of task failed_
};

std::atomic<std::ptrdiff_t> maxPartSize = std::numeric_limits<std::ptrdiff_t>::max();

}  // namespace

Cancelled::~Cancelled() = default;

const char* Cancelled::what() const noexcept { return "cancelled"; }

ParallelScope::ParallelScope(ParallelRunner runner, void* opaque) noexcept
    : runner_(context.runner), opaque_(context.runnerOpaque) {
  context.runner = runner;
  context.runnerOpaque = opaque;
}

ParallelScope::~ParallelScope() {
  context.runner = runner_;
  context.runnerOpaque = opaque_;
}

ProgressScope::ProgressScope(ProgressCallback callback, void* opaque) noexcept
    : callback_(context.progress),
      opaque_(context.progressOpaque),
      step_(context.step),
      begin_(context.begin),
      end_(context.end),
      share_(context.share) {
  context.progress = callback;
  context.progressOpaque = opaque;
  context.step = nullptr;
  context.begin = 0;
  context.end = 1;
  context.share = 0;
}

ProgressScope::~ProgressScope() {
  context.progress = callback_;
  context.progressOpaque = opaque_;
  context.step = step_;
  context.begin = begin_;
  context.end = end_;
  context.share = share_;
}

bool hasRunner() { return context.runner != nullptr; }

bool isCancellable() {
  return context.runner != nullptr || context.progress != nullptr || context.stop != nullptr;
}

void checkpoint() {
  if (context.stop != nullptr && context.stop->load(std::memory_order_relaxed)) throw Cancelled();
  if (context.progress != nullptr) report(context.share);
}

void checkpoint(std::ptrdiff_t done, std::ptrdiff_t all) {
  if (context.progress != nullptr && !context.inTask) {
    reportPart(static_cast<double>(done) / static_cast<double>(all > 0 ? all : 1));
  } else {
    checkpoint();
  }
}

Step::Step(const char* name, double begin, double end)
    : name_(context.step), begin_(context.begin), end_(context.end) {
  if (context.inTask) return;
  if (context.step == nullptr) {
    context.step = name;
    context.share = begin < context.share ? 0 : context.share;  // a new operation
  }
  const double all = context.end - context.begin;
  context.end = context.begin + all * end;
  context.begin += all * begin;
}

Step::~Step() {
  if (context.inTask) return;
  context.step = name_;
  context.begin = begin_;
  context.end = end_;
}

void runTasks(std::size_t count, void (*body)(const void* object, std::size_t i),
              const void* object, Interruption interruption) {
  if (count == 0) return;
  if (context.runner != nullptr && count > 1) return Job(count, body, object, interruption).run();
  const bool polls = interruption == Interruption::Allowed;
  for (std::size_t i = 0; i < count; ++i) {
    if (polls) checkpoint(static_cast<std::ptrdiff_t>(i), static_cast<std::ptrdiff_t>(count));
    body(object, i);
  }
}

Parts::Parts(std::ptrdiff_t n, std::ptrdiff_t size, std::ptrdiff_t unit) : n_(n) {
  const std::ptrdiff_t units = std::min((size + unit - 1) / unit, maxPartSize.load());
  size_ = std::max<std::ptrdiff_t>(1, units) * unit;
}

void setMaxPartSize(std::ptrdiff_t units) { maxPartSize = units; }

}  // namespace orva
