// Reference implementations of toInt() and toFloat(): character by character.
#ifndef ORVA_TESTS_FUZZ_NUMBER_REFERENCE_H
#define ORVA_TESTS_FUZZ_NUMBER_REFERENCE_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

namespace orva::test {

// Consumes a text from the front; characters past its end are zeros.
class Scanned {
 public:
  explicit Scanned(const std::string& text) : text_(text) {
    while (isOneOf(" \t\n\v\f\r")) ++at_;
  }

  // Takes the next character if it is one of these.
  bool take(const std::string& some) {
    if (!isOneOf(some)) return false;
    taken_ += text_[at_++];
    return true;
  }
  int takeDigits() {
    int count = 0;
    while (take("0123456789")) ++count;
    return count;
  }
  const std::string& taken() const { return taken_; }

 private:
  bool isOneOf(const std::string& some) const {
    return at_ < text_.size() && some.find(text_[at_]) != std::string::npos;
  }

  std::string text_;
  std::size_t at_ = 0;
  std::string taken_;
};

inline int intOf(const std::string& text) {
  Scanned scanned(text);
  scanned.take("+-");
  if (scanned.takeDigits() == 0) return 0;
  std::int64_t value = 0;
  for (const char c : scanned.taken()) {
    if (c < '0' || c > '9') continue;
    value = value * 10 + (c - '0');
    if (value > std::int64_t{1} << 31) value = std::int64_t{1} << 31;
  }
  if (scanned.taken()[0] == '-') return static_cast<int>(-value);
  return static_cast<int>(value == std::int64_t{1} << 31 ? value - 1 : value);
}

inline float floatOf(const std::string& text) {
  Scanned scanned(text);
  scanned.take("+-");
  int digits = scanned.takeDigits();
  if (scanned.take(".")) digits += scanned.takeDigits();
  if (digits == 0) return 0.0F;
  if (scanned.take("eE")) {
    scanned.take("+-");
    if (scanned.takeDigits() == 0) return 0.0F;
  }
  const float value = std::strtof(scanned.taken().c_str(), nullptr);
  constexpr float kMax = std::numeric_limits<float>::max();
  return std::isinf(value) ? std::copysign(kMax, value) : value;
}

}  // namespace orva::test

#endif
