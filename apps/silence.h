// Library calls without the library's own lines on the standard streams.
#ifndef ORVA_APPS_SILENCE_H
#define ORVA_APPS_SILENCE_H

#include <iostream>
#include <streambuf>

namespace orva_app {

// Keeps std::cout and std::cerr quiet; the command reports in its own words. Where the library ends
// the process meanwhile, its last line is shown after all.
class Silence {
 public:
  Silence();
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence();

 private:
  // Keeps the last line and nothing else, in no memory of its own.
  class LastLine : public std::streambuf {
   public:
    const char* text() const { return text_; }

   protected:
    int_type overflow(int_type c) override;

   private:
    char text_[200] = "";
    int length_ = 0;
    bool isWhole_ = false;
  };

  static void showLastLine();

  static Silence* current_;
  LastLine errors_;
  std::streambuf* out_;
  std::streambuf* err_;
};

}  // namespace orva_app

#endif
