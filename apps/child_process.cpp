#include "apps/child_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "apps/subcommand.h"
#include "formats/temporary.h"

namespace orva::apps {
namespace {

// The first character of the child's answer.
constexpr char kResult = '+';
constexpr char kFailure = '-';

// A file without a name, through which a child answers: unlike a pipe it takes a text of any length
// while nobody reads.
struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using AnswerFile = std::unique_ptr<std::FILE, FileCloser>;

[[noreturn]] void answer(const std::function<std::string()>& work, std::FILE* file) {
  std::string text;
  try {
    text = kResult + work();
  } catch (const std::exception& error) {
    text = std::string(1, kFailure) + reasonOf(error);
  }
  const bool isTold =
      std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
  std::exit(isTold ? 0 : 1);
}

std::string allOf(std::FILE* file) {
  std::string text;
  std::array<char, 4096> piece{};
  std::rewind(file);
  for (std::size_t n = 0; (n = std::fread(piece.data(), 1, piece.size(), file)) > 0;) {
    text.append(piece.data(), n);
  }
  return text;
}

// An answer counts only if the child says that it is whole.
Outcome outcomeOf(const std::string& answer, int status) {
  if (status == 0 && answer.starts_with(kResult)) return {answer.substr(1), ""};
  if (status == 0 && answer.starts_with(kFailure)) return {std::nullopt, answer.substr(1)};
  const std::string unfinished = "could not be finished";
  return {std::nullopt,
          WIFSIGNALED(status) ? unfinished + ": " + ::strsignal(WTERMSIG(status)) : unfinished};
}

Outcome outcomeHere(const std::function<std::string()>& work) {
  try {
    return {work(), ""};
  } catch (const std::exception& error) {
    return {std::nullopt, reasonOf(error)};
  }
}

// The child processes that run. While there is one, SIGCHLD and the termination signals are
// blocked.
class Children {
 public:
  bool areRunning() const { return !running_.empty(); }
  std::size_t number() const { return running_.size(); }

  // False where no copy of the process can be made.
  bool start(std::size_t i, const std::function<std::string()>& work) {
    AnswerFile file(std::tmpfile());
    if (!file) return false;
    std::cout.flush();              // else the child has the same text to write
    std::signal(SIGCHLD, SIG_DFL);  // a child whose end is ignored could not be waited for
    if (!pause_) pause_.emplace(SIGCHLD);
    const pid_t child = ::fork();
    if (child == 0) {
      pause_.reset();
      answer(work, file.get());
    }
    if (child > 0) {
      running_.push_back({i, child, std::move(file)});
      return true;
    }
    if (running_.empty()) pause_.reset();
    return false;
  }

  // Waits until one or more have ended, and sets their outcomes.
  void wait(std::vector<std::optional<Outcome>>& outcomes) {
    const std::size_t before = running_.size();
    while (running_.size() == before) {
      int signal = 0;
      if (::sigwait(&signals_, &signal) != 0) continue;
      if (signal != SIGCHLD) {
        ending_ = signal;
        for (const Child& child : running_) ::kill(child.id, signal);
      }
      std::erase_if(running_, [&](const Child& child) {
        int status = 0;
        if (::waitpid(child.id, &status, WNOHANG) != child.id) return false;
        outcomes[child.i] = outcomeOf(allOf(child.answer.get()), status);
        return true;
      });
    }
    if (!running_.empty()) return;
    pause_.reset();
    if (ending_ != 0) ::raise(ending_);  // does not come back, unless it is ignored
    ending_ = 0;
  }

  // Whether a termination signal has come.
  bool areEnding() const { return ending_ != 0; }

 private:
  struct Child {
    std::size_t i;
    pid_t id;
    AnswerFile answer;
  };

  static sigset_t awaitedSignals() {
    sigset_t signals{};
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGCHLD);
    for (const int signal : kTerminationSignals) ::sigaddset(&signals, signal);
    return signals;
  }

  std::vector<Child> running_;
  std::optional<SignalBlock> pause_;
  sigset_t signals_ = awaitedSignals();
  int ending_ = 0;
};

}  // namespace

void inChildProcesses(std::size_t count, std::size_t atOnce,
                      const std::function<void(std::size_t)>& begun,
                      const std::function<std::string(std::size_t)>& work,
                      const std::function<void(std::size_t, const Outcome&)>& ended) {
  std::vector<std::optional<Outcome>> outcomes(count);
  Children children;
  std::size_t begin = 0;
  for (std::size_t end = 0; end < count;) {
    while (begin < count && children.number() < atOnce && !children.areEnding()) {
      const std::size_t i = begin++;
      begun(i);
      if (!children.start(i, [&work, i] { return work(i); })) {
        outcomes[i] = outcomeHere([&work, i] { return work(i); });
      }
    }
    if (children.areRunning()) children.wait(outcomes);
    for (; end < begin && outcomes[end]; ++end) ended(end, *outcomes[end]);
  }
}

}  // namespace orva::apps
