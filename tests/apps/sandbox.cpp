#include "tests/apps/sandbox.h"

#include <fcntl.h>
#include <spawn.h>
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

#include "tests/support/resource_limit.h"

namespace orva::test {
namespace {

// Takes what a call of the C library returned; a negative number is its failure.
int checked(int result, const char* call) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), call);
  return result;
}

// What the child writes into a stream.
class Capture {
 public:
  enum class Into {
    kFile,  // so that no writer waits for a reader
    kPipe,  // for few words, where files cannot grow
    kTerminal,
    kNothing,  // a pipe without a reader
  };

  explicit Capture(Into into) {
    switch (into) {
      case Into::kFile: {
        std::FILE* file = std::tmpfile();
        own_ = checked(file == nullptr ? -1 : ::dup(::fileno(file)), "tmpfile");
        std::fclose(file);
        child_ = own_;
        break;
      }
      case Into::kPipe:
      case Into::kNothing: {
        std::array<int, 2> ends{};
        checked(::pipe2(ends.data(), O_CLOEXEC), "pipe2");
        own_ = ends[0];
        child_ = ends[1];
        if (into == Into::kNothing) closeOwn();
        break;
      }
      case Into::kTerminal:
        own_ = checked(::posix_openpt(O_RDWR | O_NOCTTY), "posix_openpt");
        checked(::grantpt(own_), "grantpt");
        checked(::unlockpt(own_), "unlockpt");
        child_ = checked(::open(::ptsname(own_), O_RDWR | O_NOCTTY), "open");
    }
  }
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture() {
    closeChild();
    closeOwn();
  }

  int forChild() const { return child_; }

  // After the child's end; once.
  std::string text() {
    if (own_ < 0) return "";
    if (own_ == child_) {
      ::lseek(own_, 0, SEEK_SET);
    } else {
      closeChild();  // else a terminal or a pipe has no end
    }
    std::string all;
    std::array<char, 4096> piece{};
    for (ssize_t n = 0; (n = ::read(own_, piece.data(), piece.size())) > 0;) {
      all.append(piece.data(), static_cast<std::size_t>(n));
    }
    return all;
  }

 private:
  void closeOwn() {
    if (own_ >= 0) ::close(own_);
    own_ = -1;
  }
  void closeChild() {
    if (child_ >= 0 && child_ != own_) ::close(child_);
    child_ = -1;
  }

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

// Signals do in the child what they do in a command of a shell, whatever they do here.
class Attributes {
 public:
  explicit Attributes(int ignored) {
    ::posix_spawnattr_init(&attributes_);
    sigset_t usual{};
    ::sigemptyset(&usual);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) {
      if (signal != ignored) ::sigaddset(&usual, signal);
    }
    ::posix_spawnattr_setsigdefault(&attributes_, &usual);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
    if (ignored != 0) before_ = std::signal(ignored, SIG_IGN);
    ignored_ = ignored;
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() {
    ::posix_spawnattr_destroy(&attributes_);
    if (ignored_ != 0) std::signal(ignored_, before_);
  }

  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
  int ignored_ = 0;
  void (*before_)(int) = SIG_DFL;
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

struct Running::Captures {
  explicit Captures(const Streams& streams)
      : out(streams.noReader            ? Capture::Into::kNothing
            : streams.maxFileBytes >= 0 ? Capture::Into::kPipe
                                        : Capture::Into::kFile),
        err(streams.terminal            ? Capture::Into::kTerminal
            : streams.maxFileBytes >= 0 ? Capture::Into::kPipe
                                        : Capture::Into::kFile) {}

  Capture out;
  Capture err;
};

Running::Running(int child, std::unique_ptr<Captures> captures)
    : child_(child), captures_(std::move(captures)) {}

Running::~Running() {
  if (child_ == 0) return;
  ::kill(child_, SIGKILL);
  ::waitpid(child_, nullptr, 0);
}

void Running::send(int signal) const { checked(::kill(child_, signal), "kill"); }

Outcome Running::outcome() {
  int status = 0;
  checked(::waitpid(child_, &status, 0), "waitpid");
  child_ = 0;
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), captures_->out.text(),
          captures_->err.text()};
}

Running Sandbox::start(const std::vector<std::string>& arguments, const Streams& streams) const {
  auto captures = std::make_unique<Running::Captures>(streams);
  FileActions actions;
  ::posix_spawn_file_actions_addchdir_np(actions.get(), path_.c_str());
  ::posix_spawn_file_actions_addopen(actions.get(), STDIN_FILENO, streams.in, O_RDONLY, 0);
  if (streams.out != nullptr) {
    ::posix_spawn_file_actions_addopen(actions.get(), STDOUT_FILENO, streams.out, O_WRONLY, 0);
  } else {
    ::posix_spawn_file_actions_adddup2(actions.get(), captures->out.forChild(), STDOUT_FILENO);
  }
  ::posix_spawn_file_actions_adddup2(actions.get(), captures->err.forChild(), STDERR_FILENO);

  std::vector<std::string> words{"orva"};
  const char* program = ORVA_COMMAND;
  if (streams.maxMemory >= 0) {
    // A small process sets the limit: this one may have more memory already.
    program = "/bin/sh";
    words = {"sh", "-c",
             "ulimit -v " + std::to_string(streams.maxMemory / 1024) + " && exec \"$@\"", "sh",
             ORVA_COMMAND};
  }
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  pid_t child = 0;
  int error = 0;
  {
    const Attributes attributes(streams.ignored);
    const ResourceLimit files(RLIMIT_FSIZE, streams.maxFileBytes);
    error = ::posix_spawn(&child, program, actions.get(), attributes.get(), argv.data(), ::environ);
  }
  if (error != 0) throw std::system_error(error, std::generic_category(), ORVA_COMMAND);
  return {child, std::move(captures)};
}

Outcome Sandbox::run(const std::vector<std::string>& arguments, const Streams& streams) const {
  return start(arguments, streams).outcome();
}

void Sandbox::write(std::string_view name, std::string_view content) const {
  std::ofstream file(path_ / name, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + std::string(name));
}

std::string Sandbox::read(std::string_view name) const {
  std::ifstream file(path_ / name, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + std::string(name));
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

std::vector<std::pair<std::string, std::string>> Sandbox::state() const {
  std::vector<std::pair<std::string, std::string>> result;
  for (const std::string& name : names()) {
    result.emplace_back(name, fs::is_regular_file(path_ / name) ? read(name) : "");
  }
  return result;
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

}  // namespace orva::test
