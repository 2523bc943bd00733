#include "formats/temporary.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "formats/termination_signals.h"

namespace orva::formats {
namespace {

// The list of all objects. It is changed only while the signals are blocked, so the handler below
// finds it consistent.
Temporary* first = nullptr;

// Only with calls that a signal handler may make, so not with readdir().
void removeFilesIn(int directory) {
  alignas(dirent64) std::array<char, 4096> entries;
  for (ssize_t bytes = 0; (bytes = ::getdents64(directory, entries.data(), entries.size())) > 0;) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(bytes);) {
      const auto* entry = reinterpret_cast<const dirent64*>(entries.data() + at);
      ::unlinkat(directory, entry->d_name, 0);
      at += entry->d_reclen;
    }
  }
}

// The default action of the signal follows when this returns.
extern "C" void endBySignal(int signal) {
  Temporary::removeAll();
  ::raise(signal);
}

}  // namespace

void removeTemporariesAtExit() {
  std::atexit(Temporary::removeAll);  // the library may end the process, too
  struct sigaction action {};
  action.sa_handler = endBySignal;
  action.sa_mask = terminationSignals();
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : kTerminationSignals) {
    struct sigaction before {};
    if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
      ::sigaction(signal, &action, nullptr);
    }
  }
}

Temporary::Temporary(const std::filesystem::path& parent, Kind kind)
    : name_((parent / ".orva-XXXXXX").string()), kind_(kind) {
  const SignalBlock pause;
  if (kind == Kind::kFile) {
    file_ = ::mkostemp(name_.data(), O_CLOEXEC);
    if (file_ < 0) error_ = errno;
  } else if (::mkdtemp(name_.data()) == nullptr) {
    error_ = errno;
  }
  if (error_ != 0) return;
  next_ = first;
  first = this;
  isListed_ = true;
}

Temporary::~Temporary() {
  if (!isListed_) return;
  const SignalBlock pause;
  remove();
  forget();
}

int Temporary::moveTo(const std::filesystem::path& target) {
  const SignalBlock pause;
  if (std::rename(name_.c_str(), target.c_str()) != 0) return errno;
  forget();
  return 0;
}

void Temporary::removeAll() {
  for (const Temporary* t = first; t != nullptr; t = t->next_) t->remove();
}

void Temporary::remove() const {
  if (kind_ == Kind::kFile) {
    ::unlink(name_.c_str());
    return;
  }
  const int directory = ::open(name_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory >= 0) {
    removeFilesIn(directory);
    ::close(directory);
  }
  ::rmdir(name_.c_str());
}

void Temporary::forget() {
  Temporary** link = &first;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
  isListed_ = false;
}

}  // namespace orva::formats
