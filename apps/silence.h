// Library calls without the library's own lines on the standard streams.
#ifndef ORVA_APPS_SILENCE_H
#define ORVA_APPS_SILENCE_H

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

namespace orva_app {

// Keeps std::cout and std::cerr quiet; the command reports in its own words. Only when the library
// ends the process meanwhile, what it said before comes out. One object lives at a time.
class Silence {
 public:
  Silence() : out_(std::cout.rdbuf(&heard_)), err_(std::cerr.rdbuf(&heard_)) {
    static const int registered = std::atexit(breakAtTheEnd);
    static_cast<void>(registered);
    current_ = this;
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() {
    current_ = nullptr;
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
  }

  // What was said so far. The library's writers speak of every failure, and of nothing else.
  std::string heard() const { return heard_.str(); }

 private:
  static void breakAtTheEnd() {
    if (current_ == nullptr) return;
    std::cerr.rdbuf(current_->err_);
    std::cerr << current_->heard();
  }

  inline static Silence* current_ = nullptr;

  std::stringbuf heard_;
  std::streambuf* out_;
  std::streambuf* err_;
};

}  // namespace orva_app

#endif
