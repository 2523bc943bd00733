#include "python/src/library_call.h"

#include <pybind11/stl.h>

#include <optional>
#include <stdexcept>

#include "python/src/arrays.h"

namespace orva_python {
namespace {

constexpr std::chrono::milliseconds kBetweenChecks(50);

// Sets the settings, but for threads that are None, and returns those before.
py::tuple setCallSettings(const std::optional<int>& threads, const py::object& progress) {
  CallSettings& settings = callSettings();
  const py::object before = settings.progress != nullptr
                                ? py::reinterpret_steal<py::object>(settings.progress)
                                : py::object(py::none());
  py::tuple old = py::make_tuple(settings.threads, before);
  if (threads) settings.threads = *threads;
  settings.progress = progress.is_none() ? nullptr : progress.inc_ref().ptr();
  return old;
}

}  // namespace

CallSettings& callSettings() {
  thread_local CallSettings settings;
  return settings;
}

LibraryCall::LibraryCall()
    : next_(std::chrono::steady_clock::now() + kBetweenChecks),
      progress_(callSettings().progress),
      pool_(callSettings().threads > 0 ? callSettings().threads : orva::formats::coreCount()),
      threads_(orva::formats::ThreadPool::run, &pool_),
      steps_(goesOn, this) {}

void LibraryCall::throwCause() const {
  if (cause_) std::rethrow_exception(cause_);
  throw std::runtime_error("stopped");
}

int LibraryCall::goesOn(void* call, const char* step, double share) {
  auto& self = *static_cast<LibraryCall*>(call);
  const auto now = std::chrono::steady_clock::now();
  if (now < self.next_) return 0;
  const py::gil_scoped_acquire acquire;
  try {
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    if (self.progress_ != nullptr) {
      py::reinterpret_borrow<py::object>(self.progress_)(step, share);
    }
  } catch (...) {
    self.cause_ = std::current_exception();
    return 1;
  }
  self.next_ = std::chrono::steady_clock::now() + kBetweenChecks;
  return 0;
}

void addCallSettings(py::module_& module) { module.def("set_call_settings", setCallSettings); }

}  // namespace orva_python
