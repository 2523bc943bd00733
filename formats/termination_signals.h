// The signals by which a process is ended.
#ifndef ORVA_FORMATS_TERMINATION_SIGNALS_H
#define ORVA_FORMATS_TERMINATION_SIGNALS_H

#include <array>
#include <csignal>

namespace orva::formats {

// The signals by which a user ends a process, and SIGPIPE.
inline constexpr std::array kTerminationSignals{SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM};

inline sigset_t terminationSignals() {
  sigset_t signals{};
  ::sigemptyset(&signals);
  for (const int signal : kTerminationSignals) ::sigaddset(&signals, signal);
  return signals;
}

// Blocks them in the calling thread, and in those that it starts, to the end of the scope.
class SignalBlock {
 public:
  SignalBlock() {
    const sigset_t signals = terminationSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, &before_);
  }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;
  ~SignalBlock() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_{};
};

}  // namespace orva::formats

#endif
