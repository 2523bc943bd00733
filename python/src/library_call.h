// Calls of the library from Python: threads, progress, Ctrl-C and a lack of memory.
#ifndef ORVA_PYTHON_LIBRARY_CALL_H
#define ORVA_PYTHON_LIBRARY_CALL_H

#include <pybind11/pybind11.h>

#include <chrono>
#include <exception>

#include "formats/thread_pool.h"
#include "orva/image/bad_alloc.h"
#include "orva/util/parallel.h"

namespace orva_python {

namespace py = pybind11;

// How the library's functions run on this Python thread.
struct CallSettings {
  int threads = 0;               // 0 is one per processor core
  PyObject* progress = nullptr;  // called with the step and the share that is done; may be null
};

CallSettings& callSettings();

// The interpreter lock released, threads lent, and the interpreter asked now and then whether to go
// on. While it lives, a lack of memory is a std::bad_alloc, which becomes MemoryError.
class LibraryCall {
 public:
  LibraryCall();
  LibraryCall(const LibraryCall&) = delete;
  LibraryCall& operator=(const LibraryCall&) = delete;

  // What to throw instead of orva::Cancelled: an exception that Python has raised, such as
  // KeyboardInterrupt.
  [[noreturn]] void throwCause() const;

 private:
  static int goesOn(void* call, const char* step, double share);

  std::exception_ptr cause_;
  std::chrono::steady_clock::time_point next_;
  PyObject* progress_;
  orva::formats::ThreadPool pool_;
  orva::ParallelScope threads_;
  orva::ProgressScope steps_;
  orva::BadAllocScope memory_;
};

// Returns work(), called without the interpreter lock; work() must not touch Python objects.
template <class Work>
auto unlocked(const Work& work) {
  LibraryCall call;
  try {
    const py::gil_scoped_release release;
    return work();
  } catch (const orva::Cancelled&) {
    call.throwCause();
  }
}

}  // namespace orva_python

#endif
