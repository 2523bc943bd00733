// Which of several images is at work, on a terminal.
#ifndef ORVA_APPS_PROGRESS_H
#define ORVA_APPS_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

#include "orva/util/parallel.h"

namespace orva::apps {

// One line on standard error that is written anew for each image; nothing where standard error is
// no terminal.
class Progress {
 public:
  Progress(std::size_t count, bool quiet);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { clear(); }

  void show(std::size_t index, const std::string& name) const;

  // What show() writes.
  std::string label(std::size_t index, const std::string& name) const;

  // Removes the line, before a message.
  void clear() const;

 private:
  std::size_t count_;
  bool shown_;
};

// One line on standard error that names the step of the library's operations on this thread, with
// the share of it that is done, after a second; nothing where standard error is no terminal.
class StepLine {
 public:
  // The line begins with `label`.
  StepLine(std::string label, bool quiet);
  StepLine(const StepLine&) = delete;
  StepLine& operator=(const StepLine&) = delete;
  ~StepLine() { clear(); }

  // Removes the line, before a message.
  void clear();

 private:
  static int report(void* line, const char* step, double share);

  std::string label_;
  bool isShown_;
  bool isWritten_ = false;
  std::chrono::steady_clock::time_point next_;
  ProgressScope scope_;
};

}  // namespace orva::apps

#endif
