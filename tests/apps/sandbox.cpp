#include "tests/apps/sandbox.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace orva_test {
namespace {

namespace fs = std::filesystem;

// Takes what a call of the C library returned; a negative number is its failure.
int checked(int result, const char* call) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), call);
  return result;
}

// What the child writes into a stream. A file rather than a pipe, so that nobody waits for a
// reader; or a terminal, where that is asked for.
class Capture {
 public:
  explicit Capture(bool terminal) {
    if (!terminal) {
      file_ = std::tmpfile();
      own_ = child_ = checked(file_ == nullptr ? -1 : ::fileno(file_), "tmpfile");
      return;
    }
    own_ = checked(::posix_openpt(O_RDWR | O_NOCTTY), "posix_openpt");
    checked(::grantpt(own_), "grantpt");
    checked(::unlockpt(own_), "unlockpt");
    child_ = checked(::open(::ptsname(own_), O_RDWR | O_NOCTTY), "open");
  }
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture() {
    if (file_ != nullptr) {
      std::fclose(file_);
    } else {
      ::close(own_);
    }
  }

  int forChild() const { return child_; }

  // After the child's end; once.
  std::string text() const {
    if (file_ != nullptr) {
      ::lseek(own_, 0, SEEK_SET);
    } else {
      ::close(child_);  // else the terminal has no end
    }
    std::string all;
    std::array<char, 4096> piece{};
    for (ssize_t n = 0; (n = ::read(own_, piece.data(), piece.size())) > 0;) {
      all.append(piece.data(), static_cast<std::size_t>(n));
    }
    return all;
  }

 private:
  std::FILE* file_ = nullptr;
  int own_ = -1;
  int child_ = -1;
};

// Owns the list of what the child does with its files.
class FileActions {
 public:
  FileActions() { ::posix_spawn_file_actions_init(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }

  posix_spawn_file_actions_t* get() { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

// Holds what a child of this process has of a resource below `most`, unless that is negative.
class Limit {
 public:
  Limit(__rlimit_resource resource, long most) : resource_(resource), isSet_(most >= 0) {
    if (!isSet_) return;
    checked(::getrlimit(resource_, &before_), "getrlimit");
    set(static_cast<rlim_t>(most));
  }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;
  ~Limit() {
    if (isSet_) set(before_.rlim_cur);
  }

 private:
  void set(rlim_t most) const {
    const rlimit limit{most, before_.rlim_max};
    ::setrlimit(resource_, &limit);
  }

  __rlimit_resource resource_;
  bool isSet_;
  rlimit before_{};
};

// The same for the size of files. Writing more is an error and no signal.
class FileLimit {
 public:
  explicit FileLimit(long most) : limit_(RLIMIT_FSIZE, most), isSet_(most >= 0) {
    if (isSet_) action_ = std::signal(SIGXFSZ, SIG_IGN);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;
  ~FileLimit() {
    if (isSet_) std::signal(SIGXFSZ, action_);
  }

 private:
  Limit limit_;
  bool isSet_;
  void (*action_)(int) = SIG_DFL;
};

}  // namespace

Sandbox::Sandbox() {
  std::string name = ::testing::TempDir() + "orva-apps-XXXXXX";
  checked(::mkdtemp(name.data()) == nullptr ? -1 : 0, "mkdtemp");
  path_ = name;
}

Sandbox::~Sandbox() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

Outcome Sandbox::run(const std::vector<std::string>& arguments, const Streams& streams) const {
  const Capture out(false);
  const Capture err(streams.terminal);
  FileActions actions;
  ::posix_spawn_file_actions_addchdir_np(actions.get(), path_.c_str());
  ::posix_spawn_file_actions_addopen(actions.get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  if (streams.out != nullptr) {
    ::posix_spawn_file_actions_addopen(actions.get(), STDOUT_FILENO, streams.out, O_WRONLY, 0);
  } else {
    ::posix_spawn_file_actions_adddup2(actions.get(), out.forChild(), STDOUT_FILENO);
  }
  ::posix_spawn_file_actions_adddup2(actions.get(), err.forChild(), STDERR_FILENO);

  std::vector<std::string> words{"orva"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  pid_t child = 0;
  int error = 0;
  {
    const FileLimit files(streams.largestFile);
    const Limit memory(RLIMIT_AS, streams.mostMemory);
    error = ::posix_spawn(&child, ORVA_COMMAND, actions.get(), nullptr, argv.data(), ::environ);
  }
  if (error != 0) throw std::system_error(error, std::generic_category(), ORVA_COMMAND);
  int status = 0;
  checked(::waitpid(child, &status, 0), "waitpid");
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), out.text(), err.text()};
}

void Sandbox::write(std::string_view name, std::string_view content) const {
  std::ofstream file(path_ / name, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) throw std::runtime_error("can not write " + std::string(name));
}

std::string Sandbox::read(std::string_view name) const {
  std::ifstream file(path_ / name, std::ios::binary);
  if (!file) throw std::runtime_error("can not read " + std::string(name));
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> Sandbox::names() const {
  std::vector<std::string> found;
  for (const auto& entry : fs::recursive_directory_iterator(path_)) {
    found.push_back(entry.path().lexically_relative(path_).string());
  }
  std::sort(found.begin(), found.end());
  return found;
}

namespace {

::testing::AssertionResult unless(bool good, const Outcome& outcome, const char* expected) {
  if (good) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "expected " << expected << "; status " << outcome.status << "\nstandard output:\n"
         << outcome.out << "\nstandard error:\n"
         << outcome.err;
}

bool holds(const std::string& text, const std::string& words) {
  return text.find(words) != std::string::npos;
}

}  // namespace

::testing::AssertionResult succeeded(const Outcome& outcome) {
  return unless(outcome.status == 0 && outcome.err.empty(), outcome, "success");
}

::testing::AssertionResult failedWithOneLine(const Outcome& outcome, const std::string& name,
                                             const std::string& words) {
  const std::string& err = outcome.err;
  const std::string start = "orva: " + name + ": ";
  const bool oneLine = err.size() > start.size() + 1 && err.find('\n') == err.size() - 1;
  return unless(outcome.status == 1 && outcome.out.empty() && oneLine && err.starts_with(start) &&
                    holds(err, words),
                outcome, ("status 1 and one line " + start + "... " + words).c_str());
}

::testing::AssertionResult refused(const Outcome& outcome, const std::string& words) {
  return unless(outcome.status == 2 && outcome.out.empty() && holds(outcome.err, words), outcome,
                ("status 2 and words " + words).c_str());
}

}  // namespace orva_test
