// Included before every source of the WebAssembly build: what the C++ standard library of the
// toolchain lacks of C++20. std::bit_cast, and the conversions of <charconv> between floating-point
// numbers and text, with the same characters and values as those of other standard libraries.
// A newer toolchain uses its own.
#ifndef ORVA_WEB_NATIVE_STANDARD_LIBRARY_H
#define ORVA_WEB_NATIVE_STANDARD_LIBRARY_H

#include <bit>
#include <charconv>
#include <type_traits>

#include "web/native/decimal_text.h"

// The names are those of the standard.
// NOLINTBEGIN(cert-dcl58-cpp,readability-identifier-naming)
namespace std {

#if !defined(__cpp_lib_bit_cast)
template <class To, class From>
requires(sizeof(To) == sizeof(From) && is_trivially_copyable_v<To> &&
         is_trivially_copyable_v<From>) constexpr To bit_cast(const From& from) noexcept {
  return __builtin_bit_cast(To, from);
}
#endif

#if !defined(__cpp_lib_to_chars)
template <class Number>
requires is_floating_point_v<Number> to_chars_result to_chars(char* first, char* last, Number v) {
  return orva::web::writeShortest(first, last, v);
}

template <class Number>
requires is_floating_point_v<Number> to_chars_result to_chars(char* first, char* last, Number v,
                                                              chars_format format) {
  return orva::web::writeShortest(first, last, v, format);
}

template <class Number>
requires is_floating_point_v<Number> to_chars_result to_chars(char* first, char* last, Number v,
                                                              chars_format format, int precision) {
  return orva::web::writeRounded(first, last, v, format, precision);
}

template <class Number>
requires is_floating_point_v<Number> from_chars_result from_chars(const char* first,
                                                                  const char* last, Number& v) {
  return orva::web::readNumber(first, last, v);
}
#endif

}  // namespace std
// NOLINTEND(cert-dcl58-cpp,readability-identifier-naming)

#endif
