// Library calls without the library's own lines on the standard streams.
#ifndef ORVA_APPS_SILENCE_H
#define ORVA_APPS_SILENCE_H

#include <iostream>

namespace orva_app {

// Keeps std::cout and std::cerr quiet; the command reports in its own words.
class Silence {
 public:
  Silence() : out_(std::cout.rdbuf(nullptr)), err_(std::cerr.rdbuf(nullptr)) {}
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() {
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
  }

 private:
  std::streambuf* out_;
  std::streambuf* err_;
};

}  // namespace orva_app

#endif
