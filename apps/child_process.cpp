#include "apps/child_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>

#include "apps/subcommand.h"
#include "formats/file_error.h"
#include "formats/temporary.h"

namespace orva::apps {
namespace {

// The first character of the child's answer.
constexpr char kResult = '+';
constexpr char kFailure = '-';
constexpr int kMaxAnswer = 1 << 20;  // bytes

[[noreturn]] void answer(const std::function<std::string()>& work, int pipe) {
  std::string text;
  try {
    text = kResult + work();
  } catch (const std::exception& error) {
    text = std::string(1, kFailure) + reasonOf(error);
  }
  // The buffer of the pipe holds the whole text, or the write does not wait.
  const bool told = ::write(pipe, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  std::exit(told ? 0 : 1);
}

// Waits for the end of the child and returns its status. A termination signal is passed on to the
// child, and `ending` becomes its number. The termination signals and SIGCHLD must be blocked.
int waitFor(pid_t child, int& ending) {
  sigset_t signals{};
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGCHLD);
  for (const int signal : kTerminationSignals) ::sigaddset(&signals, signal);
  for (int status = 0;;) {
    int signal = 0;
    if (::sigwait(&signals, &signal) != 0) continue;
    if (signal != SIGCHLD) {
      ending = signal;
      ::kill(child, signal);
    } else if (::waitpid(child, &status, WNOHANG) == child) {
      return status;
    }
  }
}

std::string allOf(int pipe) {
  std::string text;
  std::array<char, 4096> piece{};
  for (ssize_t n = 0; (n = ::read(pipe, piece.data(), piece.size())) > 0;) {
    text.append(piece.data(), static_cast<std::size_t>(n));
  }
  return text;
}

}  // namespace

std::string inChildProcess(const std::function<std::string()>& work) {
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) return work();
  ::fcntl(pipe[1], F_SETPIPE_SZ, kMaxAnswer);
  std::cout.flush();              // else the child has the same text to write
  std::signal(SIGCHLD, SIG_DFL);  // a child whose end is ignored could not be waited for
  std::optional<SignalBlock> pause(std::in_place, SIGCHLD);
  const pid_t child = ::fork();
  if (child == 0) {
    pause.reset();
    answer(work, pipe[1]);
  }
  ::close(pipe[1]);
  int ending = 0;
  const int status = child > 0 ? waitFor(child, ending) : 0;
  pause.reset();
  const std::string text = allOf(pipe[0]);
  ::close(pipe[0]);
  if (child < 0) return work();
  if (ending != 0) ::raise(ending);  // does not come back, unless it is ignored
  if (text.starts_with(kResult)) return text.substr(1);
  if (text.starts_with(kFailure)) throw FileError(text.substr(1));
  const std::string unfinished = "could not be finished";
  throw FileError(WIFSIGNALED(status) ? unfinished + ": " + ::strsignal(WTERMSIG(status))
                                      : unfinished);
}

}  // namespace orva::apps
