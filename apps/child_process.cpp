#include "apps/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>
#include <optional>
#include <utility>
#include <vector>

#include "apps/subcommand.h"
#include "formats/termination_signals.h"

namespace orva::apps {
namespace {

// The first character of the child's answer.
constexpr char kResult = '+';
constexpr char kFailure = '-';

[[noreturn]] void answer(const std::function<std::string()>& work, int pipe) {
  std::string text;
  try {
    text = kResult + work();
  } catch (const std::exception& error) {
    text = std::string(1, kFailure) + reasonOf(error);
  }
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t n = ::write(pipe, text.data() + written, text.size() - written);
    if (n < 0 && errno != EINTR) break;
    written += static_cast<std::size_t>(std::max<ssize_t>(n, 0));
  }
  std::exit(written == text.size() ? 0 : 1);
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

// The child processes that run. While there is one, the termination signals are blocked.
class Children {
 public:
  bool areRunning() const { return !running_.empty(); }
  std::size_t number() const { return running_.size(); }

  // False where no copy of the process can be made.
  bool start(std::size_t i, const std::function<std::string()>& work) {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) return false;
    running_.reserve(running_.size() + 1);
    std::cout.flush();              // else the child has the same text to write
    std::signal(SIGCHLD, SIG_DFL);  // a child whose end is ignored could not be waited for
    if (!pause_) pause_.emplace();
    const pid_t child = ::fork();
    if (child == 0) {
      pause_.reset();
      answer(work, pipe[1]);
    }
    ::close(pipe[1]);
    if (child > 0) {
      running_.push_back({i, child, pipe[0], ""});
      return true;
    }
    ::close(pipe[0]);
    if (running_.empty()) pause_.reset();
    return false;
  }

  // Waits until one or more have ended, and sets their outcomes.
  void wait(std::vector<std::optional<Outcome>>& outcomes) {
    const std::size_t before = running_.size();
    while (running_.size() == before) {
      passSignalOn();
      std::vector<pollfd> pipes;
      for (const Child& child : running_) pipes.push_back({child.pipe, POLLIN, 0});
      if (::poll(pipes.data(), pipes.size(), kSignalInterval) <= 0) continue;
      for (std::size_t k = running_.size(); k-- > 0;) {
        if (pipes[k].revents != 0 && !hasMore(running_[k])) end(k, outcomes);
      }
    }
    if (!running_.empty()) return;
    pause_.reset();
    if (ending_ != 0) ::raise(ending_);  // does not come back, unless it is ignored
    ending_ = 0;
  }

  // Whether a termination signal has come.
  bool areEnding() const { return ending_ != 0; }

 private:
  static constexpr int kSignalInterval = 50;  // milliseconds after which a signal is passed on

  struct Child {
    std::size_t i;
    pid_t id;
    int pipe;
    std::string answer;  // so far
  };

  void passSignalOn() {
    const sigset_t signals = terminationSignals();
    const timespec now{};
    const int signal = ::sigtimedwait(&signals, nullptr, &now);
    if (signal <= 0) return;
    ending_ = signal;
    for (const Child& child : running_) ::kill(child.id, signal);
  }

  // Takes what the child has written. False at the end, which its own end brings.
  static bool hasMore(Child& child) {
    std::array<char, 1 << 16> piece{};
    const ssize_t n = ::read(child.pipe, piece.data(), piece.size());
    if (n > 0) child.answer.append(piece.data(), static_cast<std::size_t>(n));
    return n > 0 || (n < 0 && errno == EINTR);
  }

  void end(std::size_t k, std::vector<std::optional<Outcome>>& outcomes) {
    const Child& child = running_[k];
    int status = 0;
    while (::waitpid(child.id, &status, 0) < 0 && errno == EINTR) {
    }
    outcomes[child.i] = outcomeOf(child.answer, status);
    ::close(child.pipe);
    running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(k));
  }

  std::vector<Child> running_;
  std::optional<SignalBlock> pause_;
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
