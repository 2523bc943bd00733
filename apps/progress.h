// Which of several images is at work, on a terminal.
#ifndef ORVA_APPS_PROGRESS_H
#define ORVA_APPS_PROGRESS_H

#include <cstddef>
#include <string>

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

  // Removes the line, before a message.
  void clear() const;

 private:
  std::size_t count_;
  bool shown_;
};

}  // namespace orva::apps

#endif
