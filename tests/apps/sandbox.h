// The orva command, run in a fresh directory.
#ifndef ORVA_TESTS_APPS_SANDBOX_H
#define ORVA_TESTS_APPS_SANDBOX_H

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orva::test {

namespace fs = std::filesystem;

using Arguments = std::vector<std::string>;

// The result of a run of the command.
struct Outcome {
  int status;  // 128 and the signal's number for a crash
  std::string out;
  std::string err;
};

// Where the streams of a run go, by default to buffers that are read back, and its limits.
struct Streams {
  const char* in = "/dev/null";  // a file or a device to read
  const char* out = nullptr;     // a file or a device instead
  bool terminal = false;         // standard error is a terminal
  bool noReader = false;         // standard output is a pipe without a reader
  long maxFileBytes = -1;        // no file grows past these bytes, as on a full disk
  long maxMemory = -1;           // no more bytes of address space than these
  int ignored = 0;               // a signal that is ignored
};

// A run of the command that has not ended yet.
class Running {
 public:
  ~Running();  // ends it if that has not happened

  void send(int signal) const;
  // Waits for the end; call it once.
  Outcome outcome();

 private:
  friend class Sandbox;
  struct Captures;

  Running(int child, std::unique_ptr<Captures> captures);

  int child_;
  std::unique_ptr<Captures> captures_;
};

// A fresh directory, removed with its content at the end of the scope.
class Sandbox {
 public:
  Sandbox();
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;
  ~Sandbox();

  fs::path operator/(std::string_view name) const { return path_ / name; }

  // Runs the command here with these arguments.
  Outcome run(const Arguments& arguments, const Streams& streams = {}) const;
  Running start(const Arguments& arguments, const Streams& streams = {}) const;

  void write(std::string_view name, std::string_view content) const;
  std::string read(std::string_view name) const;
  // All files and directories, hidden ones too, as sorted relative names.
  std::vector<std::string> names() const;
  // The same with the contents of the regular ones.
  std::vector<std::pair<std::string, std::string>> state() const;

 private:
  fs::path path_;
};

// Status 0 and nothing on standard error.
::testing::AssertionResult succeeded(const Outcome& outcome);

// Status 1, nothing on standard output and one line "orva: NAME: ..." on standard error that holds
// `words`.
::testing::AssertionResult failedWithOneLine(const Outcome& outcome, const std::string& name,
                                             const std::string& words = "");

// Status 2, nothing on standard output and `words` on standard error.
::testing::AssertionResult refused(const Outcome& outcome, const std::string& words);

}  // namespace orva::test

#endif
