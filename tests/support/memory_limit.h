// Runs a function in a process whose memory is limited.
#ifndef ORVA_TESTS_SUPPORT_MEMORY_LIMIT_H
#define ORVA_TESTS_SUPPORT_MEMORY_LIMIT_H

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <string>

#include "tests/support/sanitizer.h"

namespace orva::test {

constexpr long kMebibyte = 1L << 20;

// Limits the address space of this process to its current size and `more` bytes. For child
// processes.
inline void limitMemory(long more) {
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const auto now = static_cast<rlim_t>(pages * sysconf(_SC_PAGESIZE));
  const auto hold = [](rlim_t max) {
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = max;
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(7);
  };
  if (pages == 0) std::_Exit(7);
  hold(now);
  for (std::size_t size = std::size_t{64} << 20; size >= 4096; size /= 2) {
    while (void* kept = std::malloc(size)) asm volatile("" : : "r"(kept));  // not left out
  }
  hold(now + static_cast<rlim_t>(more));
}

struct Ending {
  int status;  // 128 and the signal's number for a crash
  std::string err;
};

// Exit status and standard error of work() in a child process with `more` bytes of memory.
template <class Work>
Ending endingWith(long more, const Work& work) {
  std::FILE* err = std::tmpfile();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(fileno(err), STDERR_FILENO);
    if (std::freopen("/dev/null", "w", stdout) == nullptr) std::_Exit(7);
    const auto run = [&work]() noexcept { work(); };
    limitMemory(more);
    run();
    std::_Exit(0);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  Ending ending{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), ""};
  std::rewind(err);
  for (int c = 0; (c = std::fgetc(err)) != EOF;) ending.err += static_cast<char>(c);
  std::fclose(err);
  return ending;
}

// For amounts of memory from next to none to plenty, work() either ends the process with status 1
// and one of the messages, or succeeds. It fails with the smallest amount and succeeds with the
// largest.
template <class Work>
void expectMemoryToRunOut(const char* name, std::initializer_list<const char*> messages,
                          const Work& work) {
  SCOPED_TRACE(name);
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer answers failed allocations";
  constexpr long kNextToNone = 256L << 10;  // for names and streams
  for (const long mebibytes : {0, 1, 2, 3, 4, 6, 9, 13, 20, 30, 45, 2000}) {
    const Ending ending = endingWith(kNextToNone + mebibytes * kMebibyte, work);
    const bool isDone = ending.status == 0 && ending.err.empty();
    bool isMessage = false;
    for (const char* message : messages) isMessage = isMessage || ending.err == message;
    if (mebibytes == 0) {
      EXPECT_FALSE(isDone) << "without memory";
    }
    if (mebibytes == 2000) {
      EXPECT_TRUE(isDone) << "with plenty of memory";
    }
    EXPECT_TRUE(isDone || (ending.status == 1 && isMessage))
        << mebibytes << " MiB: status " << ending.status << ", " << ending.err;
  }
}

// With `more` bytes of memory work() ends the process with the message of out_of_memory().
template <class Work>
void expectNoMemory(const char* name, const Work& work, long more = kMebibyte) {
  SCOPED_TRACE(name);
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer answers failed allocations";
  const Ending ending = endingWith(more, work);
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.err, "Error: out of memory\n");
}

}  // namespace orva::test

#endif
