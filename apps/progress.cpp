#include "apps/progress.h"

#include <unistd.h>

#include <iostream>
#include <utility>

namespace orva::apps {
namespace {

constexpr std::chrono::milliseconds kFirstStep(1000);
constexpr std::chrono::milliseconds kBetweenSteps(200);

}  // namespace

Progress::Progress(std::size_t count, bool quiet)
    : count_(count), shown_(!quiet && ::isatty(STDERR_FILENO) != 0) {}

void Progress::show(std::size_t index, const std::string& name) const {
  if (shown_) std::cerr << "\r\033[K" << label(index, name) << std::flush;
}

std::string Progress::label(std::size_t index, const std::string& name) const {
  return '[' + std::to_string(index + 1) + '/' + std::to_string(count_) + "] " + name;
}

void Progress::clear() const {
  if (shown_) std::cerr << "\r\033[K" << std::flush;
}

StepLine::StepLine(std::string label, bool quiet)
    : label_(std::move(label)),
      isShown_(!quiet && ::isatty(STDERR_FILENO) != 0),
      next_(std::chrono::steady_clock::now() + kFirstStep),
      scope_(isShown_ ? report : nullptr, this) {}

void StepLine::clear() {
  if (isWritten_) std::cerr << "\r\033[K" << std::flush;
  isWritten_ = false;
}

int StepLine::report(void* line, const char* step, double share) {
  auto& self = *static_cast<StepLine*>(line);
  const auto now = std::chrono::steady_clock::now();
  if (now < self.next_) return 0;
  self.next_ = now + kBetweenSteps;
  self.isWritten_ = true;
  std::cerr << "\r\033[K" << self.label_ << ": " << step << ' ' << static_cast<int>(100 * share)
            << " %" << std::flush;
  return 0;
}

}  // namespace orva::apps
