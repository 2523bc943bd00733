// Work that may end the process it runs in.
#ifndef ORVA_APPS_CHILD_PROCESS_H
#define ORVA_APPS_CHILD_PROCESS_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace orva::apps {

// What work in a child process has come to.
struct Outcome {
  std::optional<std::string> text;  // that it returned
  std::string error;                // else the words of what it threw, or how the process ended
};

// Calls work(i) for i = 0 .. count - 1, each in a copy of this process, of which up to `atOnce`
// run at the same time, and hands each outcome to ended(i, outcome) in this process, in ascending
// order. begun(i) is called here before work(i). A copy may end without a text: the library ends
// the process on a lack of memory, and the system ends one that takes too much. Where no copy can
// be made, work(i) runs here. A termination signal is passed on to the copies, and ends this
// process when they have ended.
void inChildProcesses(std::size_t count, std::size_t atOnce,
                      const std::function<void(std::size_t)>& begun,
                      const std::function<std::string(std::size_t)>& work,
                      const std::function<void(std::size_t, const Outcome&)>& ended);

}  // namespace orva::apps

#endif
