#include "web/native/decimal_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace orva::web {
namespace {

using Buffer = std::array<char, 1200>;  // for the largest double and 800 decimals

template <class Number>
Number parsed(const char* text, char** end = nullptr) {
  if constexpr (std::is_same_v<Number, float>) {
    return std::strtof(text, end);
  } else {
    return std::strtod(text, end);
  }
}

std::string printed(const char* format, int precision, double v) {
  Buffer text{};
  const int n = std::snprintf(text.data(), text.size(), format, precision, v);
  return {text.data(), static_cast<std::size_t>(n)};
}

std::to_chars_result put(char* first, char* last, std::string_view text) {
  if (static_cast<std::size_t>(last - first) < text.size()) {
    return {last, std::errc::value_too_large};
  }
  return {std::copy(text.begin(), text.end(), first), std::errc()};
}

// Without a sign: 0.D1D2D3... times ten to the power `exponent`.
struct Digits {
  std::string digits;
  int exponent;
};

Digits digitsOf(const std::string& scientific) {
  const std::size_t e = scientific.find('e');
  Digits d{scientific.substr(0, 1), std::atoi(scientific.c_str() + e + 1) + 1};
  if (e > 2) d.digits += scientific.substr(2, e - 2);
  return d;
}

// The digits in the next place of `d` upwards.
Digits above(Digits d) {
  for (std::size_t i = d.digits.size(); i-- > 0;) {
    if (d.digits[i] != '9') {
      ++d.digits[i];
      return d;
    }
    d.digits[i] = '0';
  }
  d.digits.insert(d.digits.begin(), '1');
  d.digits.pop_back();
  ++d.exponent;
  return d;
}

template <class Number>
bool readsBack(const Digits& d, Number v) {
  const std::string text = "0." + d.digits + 'e' + std::to_string(d.exponent);
  return parsed<Number>(text.c_str()) == v;
}

// The fewest digits that read back as `v`, a finite number above 0.
template <class Number>
Digits shortestDigits(Number v) {
  for (int decimals = 0; decimals < std::numeric_limits<Number>::max_digits10; ++decimals) {
    Digits nearest = digitsOf(printed("%.*e", decimals, static_cast<double>(v)));
    if (readsBack(nearest, v)) return nearest;
    // Powers of two read back from farther above than from below.
    Digits next = above(nearest);
    if (readsBack(next, v)) return next;
  }
  return {};
}

std::string scientificText(const Digits& d) {
  std::string text = d.digits.substr(0, 1);
  if (d.digits.size() > 1) text += '.' + d.digits.substr(1);
  const int exponent = d.exponent - 1;
  const std::string number = std::to_string(std::abs(exponent));
  return text + (exponent < 0 ? "e-" : "e+") + (number.size() < 2 ? "0" : "") + number;
}

// A number without a fraction has all of its digits.
template <class Number>
std::string fixedText(const Digits& d, Number v) {
  if (d.exponent <= 0) {
    return "0." + std::string(static_cast<std::size_t>(-d.exponent), '0') + d.digits;
  }
  const auto whole = static_cast<std::size_t>(d.exponent);
  if (whole >= d.digits.size()) return printed("%.*f", 0, static_cast<double>(v));
  return d.digits.substr(0, whole) + '.' + d.digits.substr(whole);
}

// What has no digits or the digit 0, "" for others.
template <class Number>
std::string specialText(Number magnitude, bool isScientific) {
  if (std::isnan(magnitude)) return "nan";
  if (std::isinf(magnitude)) return "inf";
  if (magnitude == 0) return isScientific ? "0e+00" : "0";
  return "";
}

template <class Number>
std::string signOf(Number v) {
  return std::signbit(v) ? "-" : "";
}

}  // namespace

template <class Number>
std::to_chars_result writeShortest(char* first, char* last, Number v) {
  const Number magnitude = std::fabs(v);
  std::string text = specialText(magnitude, false);
  if (text.empty()) {
    const Digits d = shortestDigits(magnitude);
    text = fixedText(d, magnitude);
    const std::string other = scientificText(d);
    if (other.size() < text.size()) text = other;
  }
  return put(first, last, signOf(v) + text);
}

template <class Number>
std::to_chars_result writeShortest(char* first, char* last, Number v, std::chars_format format) {
  const Number magnitude = std::fabs(v);
  const bool isScientific = format == std::chars_format::scientific;
  std::string text = specialText(magnitude, isScientific);
  if (text.empty()) {
    const Digits d = shortestDigits(magnitude);
    text = isScientific ? scientificText(d) : fixedText(d, magnitude);
  }
  return put(first, last, signOf(v) + text);
}

template <class Number>
std::to_chars_result writeRounded(char* first, char* last, Number v, std::chars_format format,
                                  int precision) {
  const bool isScientific = format == std::chars_format::scientific;
  return put(first, last,
             printed(isScientific ? "%.*e" : "%.*f", precision, static_cast<double>(v)));
}

template <class Number>
std::from_chars_result readNumber(const char* first, const char* last, Number& v) {
  // Without what only the C library reads: blanks, a plus sign, hexadecimal digits.
  const char* digits = first != last && *first == '-' ? first + 1 : first;
  constexpr std::string_view kStarts = "0123456789.iInN";
  if (digits == last || kStarts.find(*digits) == std::string_view::npos) {
    return {first, std::errc::invalid_argument};
  }
  const char* x = digits + 1;
  if (*digits == '0' && x != last && (*x == 'x' || *x == 'X')) last = x;
  const std::string text(first, last);
  char* end = nullptr;
  const auto value = parsed<Number>(text.c_str(), &end);
  const char* const next = first + (end - text.c_str());
  if (next == first) return {first, std::errc::invalid_argument};
  const bool isNumber = *digits == '.' || (*digits >= '0' && *digits <= '9');
  if (isNumber && std::isinf(value)) return {next, std::errc::result_out_of_range};
  v = value;
  return {next, std::errc()};
}

template std::to_chars_result writeShortest(char*, char*, float);
template std::to_chars_result writeShortest(char*, char*, double);
template std::to_chars_result writeShortest(char*, char*, float, std::chars_format);
template std::to_chars_result writeShortest(char*, char*, double, std::chars_format);
template std::to_chars_result writeRounded(char*, char*, float, std::chars_format, int);
template std::to_chars_result writeRounded(char*, char*, double, std::chars_format, int);
template std::from_chars_result readNumber(const char*, const char*, float&);
template std::from_chars_result readNumber(const char*, const char*, double&);

}  // namespace orva::web
