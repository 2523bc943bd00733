#include "apps/child_process.h"

#include <sys/mman.h>
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
#include "formats/output_file.h"
#include "formats/temporary.h"

namespace orva::apps {
namespace {

// The first character of the child's answer.
constexpr char kResult = '+';
constexpr char kFailure = '-';

[[noreturn]] void answer(const std::function<std::string()>& work, int file) {
  std::string text;
  try {
    text = kResult + work();
  } catch (const std::exception& error) {
    text = std::string(1, kFailure) + reasonOf(error);
  }
  std::exit(writeAll(file, text) == 0 ? 0 : 1);
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

std::string allOf(int file) {
  ::lseek(file, 0, SEEK_SET);
  std::string text;
  std::array<char, 4096> piece{};
  for (ssize_t n = 0; (n = ::read(file, piece.data(), piece.size())) > 0;) {
    text.append(piece.data(), static_cast<std::size_t>(n));
  }
  return text;
}

}  // namespace

std::string inChildProcess(const std::function<std::string()>& work) {
  // Of any length, unlike the buffer of a pipe.
  const int file = ::memfd_create("answer", MFD_CLOEXEC);
  if (file < 0) return work();
  std::cout.flush();              // else the child has the same text to write
  std::signal(SIGCHLD, SIG_DFL);  // a child whose end is ignored could not be waited for
  std::optional<SignalBlock> pause(std::in_place, SIGCHLD);
  const pid_t child = ::fork();
  if (child == 0) {
    pause.reset();
    answer(work, file);
  }
  int ending = 0;
  const int status = child > 0 ? waitFor(child, ending) : 0;
  pause.reset();
  const std::string text = allOf(file);
  ::close(file);
  if (child < 0) return work();
  if (ending != 0) ::raise(ending);  // does not come back, unless it is ignored
  if (text.starts_with(kResult)) return text.substr(1);
  if (text.starts_with(kFailure)) throw FileError(text.substr(1));
  const std::string unfinished = "could not be finished";
  throw FileError(WIFSIGNALED(status) ? unfinished + ": " + ::strsignal(WTERMSIG(status))
                                      : unfinished);
}

}  // namespace orva::apps
