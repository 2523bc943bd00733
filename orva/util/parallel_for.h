// Work cut into tasks for the runner of the calling thread, and its progress. For the library's own
// sources; not installed.
//
//   const Step step("votes", 0.2, 0.9);
//   parallelParts(ny, 64, [&](std::ptrdiff_t first, std::ptrdiff_t end) { ... });
//
// Tasks write to places of their own, so that the results do not depend on their order. The cut
// depends on the size of the work alone, never on the number of threads.
#ifndef ORVA_UTIL_PARALLEL_FOR_H
#define ORVA_UTIL_PARALLEL_FOR_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "orva/util/parallel.h"

namespace orva {

// Whether the calling thread has a runner. False in tasks.
bool hasRunner();

// Whether checkpoint() may throw.
bool isCancellable();

// Calls the progress callback, if this thread has one. Throws Cancelled where the operation is to
// stop. Long loops call it every few milliseconds.
void checkpoint();

// The same, with `done` of `all` parts of the innermost step done.
void checkpoint(std::ptrdiff_t done, std::ptrdiff_t all);

// A step of an operation: the work from the share `begin` to `end` of the step around it. The
// outermost step names what the callback is told. Inside tasks it does nothing.
class Step {
 public:
  Step(const char* name, double begin, double end);
  ~Step();
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

 private:
  const char* name_;  // these of the step around it
  double begin_;
  double end_;
};

enum class Interruption {
  Allowed,  // the tasks may be stopped, with Cancelled, and should then have changed no result
  Off       // all tasks run in any case
};

// body(i) of every i in 0 .. count - 1; see parallelFor().
void runTasks(std::size_t count, void (*body)(const void* object, std::size_t i),
              const void* object, Interruption interruption);

// Calls body(i) for every i in 0 .. count - 1: in ascending order without a runner, else in any
// order and at the same time. What a body throws, if several do that of the smallest i, is thrown
// again when no body runs any more.
template <class Body>
void parallelFor(std::size_t count, const Body& body,
                 Interruption interruption = Interruption::Allowed) {
  runTasks(
      count, [](const void* object, std::size_t i) { (*static_cast<const Body*>(object))(i); },
      &body, interruption);
}

// The range 0 .. n - 1 cut into parts of equal size, but for the last.
class Parts {
 public:
  // Parts of `size` elements, rounded up to a multiple of `unit`.
  Parts(std::ptrdiff_t n, std::ptrdiff_t size, std::ptrdiff_t unit = 1);

  std::size_t count() const { return static_cast<std::size_t>((n_ + size_ - 1) / size_); }
  std::ptrdiff_t begin(std::size_t i) const { return static_cast<std::ptrdiff_t>(i) * size_; }
  std::ptrdiff_t end(std::size_t i) const { return std::min(begin(i) + size_, n_); }

 private:
  std::ptrdiff_t n_;
  std::ptrdiff_t size_;
};

// Parts have at most so many units from now on, in all threads, so that tests cut small images,
// too. Not to be called while an operation runs.
void setMaxPartSize(std::ptrdiff_t units);

// Calls body(begin, end) for every part.
template <class Body>
void parallelParts(const Parts& parts, const Body& body,
                   Interruption interruption = Interruption::Allowed) {
  parallelFor(
      parts.count(), [&](std::size_t i) { body(parts.begin(i), parts.end(i)); }, interruption);
}

// Pixels of a task that computes them one by one.
inline constexpr std::ptrdiff_t kPixelsPerTask = std::ptrdiff_t{1} << 17U;

// Whole rows for such tasks.
inline Parts rowParts(std::ptrdiff_t nx, std::ptrdiff_t rows) {
  return {rows, kPixelsPerTask / std::max<std::ptrdiff_t>(nx, 1) + 1};
}

// Calls body(begin, end) for parts of n pixels that are computed one by one.
template <class Body>
void parallelPixels(std::ptrdiff_t n, const Body& body,
                    Interruption interruption = Interruption::Allowed) {
  parallelParts(Parts(n, kPixelsPerTask, 64), body, interruption);
}

// Working memory of tasks: as many objects as tasks run at the same time, each made when needed.
template <class T>
class Workspaces {
 public:
  // A workspace that belongs to the holder until it is destroyed.
  class Lease {
   public:
    Lease(Workspaces& owner, std::unique_ptr<T> object)
        : owner_(owner), object_(std::move(object)) {}
    ~Lease() { owner_.giveBack(std::move(object_)); }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    T& operator*() const { return *object_; }
    T* operator->() const { return object_.get(); }

   private:
    Workspaces& owner_;
    std::unique_ptr<T> object_;
  };

  // One that another task has given back, or else make(), a std::unique_ptr<T>.
  template <class Make>
  Lease take(const Make& make) {
    {
      const std::lock_guard lock(mutex_);
      if (!free_.empty()) {
        std::unique_ptr<T> object = std::move(free_.back());
        free_.pop_back();
        return Lease(*this, std::move(object));
      }
      free_.reserve(++made_);  // so that giveBack() allocates nothing
    }
    return Lease(*this, make());
  }
  Lease take() {
    return take([] { return std::make_unique<T>(); });
  }

 private:
  void giveBack(std::unique_ptr<T> object) {
    const std::lock_guard lock(mutex_);
    free_.push_back(std::move(object));
  }

  std::mutex mutex_;
  std::vector<std::unique_ptr<T>> free_;
  std::size_t made_ = 0;
};

}  // namespace orva

#endif
