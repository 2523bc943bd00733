// Captures what the library prints on the standard streams, in memory rather than in a file.
#ifndef ORVA_TESTS_SUPPORT_PRINTED_H
#define ORVA_TESTS_SUPPORT_PRINTED_H

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

// Where the sanitizers' runtime is linked: sends its reports elsewhere than to standard error.
extern "C" void __sanitizer_set_report_fd(void* descriptor) __attribute__((weak));  // NOLINT

namespace orva::test {

// Standard error as it was at the start, for faults found while it is captured; sanitizers report
// there.
inline const int uncapturedError = [] {
  const int copy = ::dup(STDERR_FILENO);
  if (__sanitizer_set_report_fd != nullptr) {
    __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<std::intptr_t>(copy)));
  }
  return copy;
}();

// A pipe that stands in for descriptors, such as those of standard output and error, until the
// object is destroyed. It holds a mebibyte; no limit of the sizes of files applies to it.
class CapturedDescriptors {
 public:
  explicit CapturedDescriptors(std::array<int, 2> descriptors) : descriptors_(descriptors) {
    if (::pipe2(pipe_.data(), O_CLOEXEC | O_NONBLOCK) != 0) std::abort();
    ::fcntl(pipe_[1], F_SETPIPE_SZ, 1 << 20);
    // In order: neither stream holds text back.
    std::fflush(stdout);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    for (std::size_t i = 0; i < saved_.size(); ++i) {
      saved_[i] = ::dup(descriptors_[i]);
      ::dup2(pipe_[1], descriptors_[i]);
    }
  }
  explicit CapturedDescriptors(int descriptor)
      : CapturedDescriptors(std::array<int, 2>{descriptor, descriptor}) {}
  CapturedDescriptors(const CapturedDescriptors&) = delete;
  CapturedDescriptors& operator=(const CapturedDescriptors&) = delete;
  ~CapturedDescriptors() {
    std::cout.flush();
    for (std::size_t i = saved_.size(); i-- > 0;) {
      ::dup2(saved_[i], descriptors_[i]);
      ::close(saved_[i]);
    }
    for (const int end : pipe_) ::close(end);
  }

  // What was written since the last call.
  std::string text() const {
    std::cout.flush();
    std::string text;
    std::array<char, 4096> piece{};
    for (ssize_t count = 0; (count = ::read(pipe_[0], piece.data(), piece.size())) > 0;) {
      text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  std::array<int, 2> pipe_{};
  std::array<int, 2> descriptors_;
  std::array<int, 2> saved_{};
};

// The text that call() writes to std::cout and std::cerr, in order.
template <class Call>
std::string printedBy(Call call) {
  const CapturedDescriptors captured({STDOUT_FILENO, STDERR_FILENO});
  call();
  return captured.text();
}

}  // namespace orva::test

#endif
