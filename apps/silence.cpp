#include "apps/silence.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace orva_app {

Silence* Silence::current_ = nullptr;

Silence::Silence() : out_(std::cout.rdbuf(nullptr)), err_(std::cerr.rdbuf(&errors_)) {
  [[maybe_unused]] static const int registered = std::atexit(showLastLine);
  current_ = this;
}

Silence::~Silence() {
  current_ = nullptr;
  std::cout.rdbuf(out_);
  std::cerr.rdbuf(err_);
}

// Without memory, and while the streams are still quiet.
void Silence::showLastLine() {
  if (current_ != nullptr) std::fputs(current_->errors_.text(), stderr);
}

Silence::LastLine::int_type Silence::LastLine::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  if (isWhole_) length_ = 0;
  isWhole_ = c == '\n';
  if (length_ + 1 < static_cast<int>(std::size(text_))) {
    text_[length_++] = traits_type::to_char_type(c);
    text_[length_] = '\0';
  }
  return c;
}

}  // namespace orva_app
