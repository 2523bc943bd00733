// Shared by the fuzz targets. A target takes any bytes; it aborts where the library breaks a
// promise, and the sanitizers end it for errors of memory or arithmetic.
#ifndef ORVA_TESTS_FUZZ_FUZZ_TARGET_H
#define ORVA_TESTS_FUZZ_FUZZ_TARGET_H

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "tests/support/printed.h"

namespace orva::test {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Ends the program when a promise does not hold.
inline void require(bool holds, const char* promise) {
  if (holds) return;
  ::dprintf(uncapturedError, "broken: %s\n", promise);
  std::abort();
}

// A file in memory with a name during the lifetime of the object.
class ContentFile {
 public:
  explicit ContentFile(std::string_view content) : file_(memfd_create("fuzz", 0)) {
    require(file_ >= 0, "a file in memory");
    while (!content.empty()) {
      const ssize_t written = write(file_, content.data(), content.size());
      require(written > 0, "bytes in a file in memory");
      content.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  ContentFile(const ContentFile&) = delete;
  ContentFile& operator=(const ContentFile&) = delete;
  ~ContentFile() { close(file_); }

  std::string name() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

// Captures the standard streams during the lifetime of the object.
class Captured {
 public:
  std::string printed() const { return out_.text(); }
  std::string reported() const { return err_.text(); }

 private:
  CapturedDescriptors out_{STDOUT_FILENO};
  CapturedDescriptors err_{STDERR_FILENO};
};

// Consumes an input from the front; bytes past its end are 0.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(textOf(data, size)) {}

  template <class T>
  T take() {
    T value{};
    const std::size_t count = std::min(sizeof value, rest_.size());
    std::memcpy(&value, rest_.data(), count);
    rest_.remove_prefix(count);
    return value;
  }
  // A number in low .. high, from one byte.
  int between(int low, int high) { return low + take<std::uint8_t>() % (high - low + 1); }
  bool isEmpty() const { return rest_.empty(); }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

}  // namespace orva::test

#endif
