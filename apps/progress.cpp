#include "apps/progress.h"

#include <unistd.h>

#include <iostream>

namespace orva::apps {

Progress::Progress(std::size_t count, bool quiet)
    : count_(count), shown_(!quiet && ::isatty(STDERR_FILENO) != 0) {}

void Progress::show(std::size_t index, const std::string& name) const {
  if (shown_) {
    std::cerr << "\r\033[K[" << index + 1 << '/' << count_ << "] " << name << std::flush;
  }
}

void Progress::clear() const {
  if (shown_) std::cerr << "\r\033[K" << std::flush;
}

}  // namespace orva::apps
