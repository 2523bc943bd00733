// Library calls without the library's own lines on the standard streams.
#ifndef ORVA_FORMATS_SILENCE_H
#define ORVA_FORMATS_SILENCE_H

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <streambuf>
#include <string>

namespace orva::formats {

// Keeps std::cout and std::cerr quiet in this thread; the caller reports in its own words. Other
// threads speak on. Only when the library ends the process meanwhile, what it said before comes
// out. One object lives at a time in a thread.
class Silence {
 public:
  Silence() {
    prepare();
    current_ = &heard_;
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() { current_ = nullptr; }

  // What was said so far. The library's writers speak of every failure, and of nothing else.
  std::string heard() const { return heard_.str(); }

  // Puts the switches that tell the threads apart before the streams' buffers, where they stay. The
  // first object does so, too, but then no other thread may write at that moment.
  static void prepare() {
    static const bool done = [] {
      switches().insert();
      std::atexit(breakAtTheEnd);
      return true;
    }();
    static_cast<void>(done);
  }

 private:
  // Hands everything on, to the silence of the thread or to the buffer that was there before.
  class Switch : public std::streambuf {
   public:
    explicit Switch(std::ostream& stream) : stream_(stream) {}
    void insert() { before_ = stream_.rdbuf(this); }

   protected:
    int_type overflow(int_type c) override {
      if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
      return target().sputc(traits_type::to_char_type(c));
    }
    std::streamsize xsputn(const char* text, std::streamsize count) override {
      return target().sputn(text, count);
    }
    int sync() override { return target().pubsync(); }

   private:
    std::streambuf& target() { return current_ != nullptr ? *current_ : *before_; }

    std::ostream& stream_;
    std::streambuf* before_ = nullptr;
  };

  struct Switches {
    Switch out{std::cout};
    Switch err{std::cerr};
    void insert() {
      out.insert();
      err.insert();
    }
  };

  // Never released: the streams are flushed when everything else is gone.
  static Switches& switches() {
    static auto* const both = new Switches;
    return *both;
  }

  static void breakAtTheEnd() {
    const std::stringbuf* silenced = current_;
    current_ = nullptr;
    if (silenced != nullptr) std::cerr << silenced->str();
  }

  inline static thread_local std::stringbuf* current_ = nullptr;

  std::stringbuf heard_;
};

}  // namespace orva::formats

#endif
