// Floating-point numbers as decimal text and back, through the C library, whose locale is "C" in
// WebAssembly: as std::to_chars and std::from_chars define it. Of float and double.
#ifndef ORVA_WEB_NATIVE_DECIMAL_TEXT_H
#define ORVA_WEB_NATIVE_DECIMAL_TEXT_H

#include <charconv>

namespace orva::web {

// The shortest text that reads back as `v`, the nearest to it among several; scientific where that
// is shorter than a whole or decimal number.
template <class Number>
std::to_chars_result writeShortest(char* first, char* last, Number v);

// The same in one form, fixed or scientific.
template <class Number>
std::to_chars_result writeShortest(char* first, char* last, Number v, std::chars_format format);

// With `precision` decimals, fixed or scientific.
template <class Number>
std::to_chars_result writeRounded(char* first, char* last, Number v, std::chars_format format,
                                  int precision);

// The longest number at `first`, without a plus sign and in decimal digits; `v` stays as it is
// where there is none and where it is too large. A number that is too small is 0.
template <class Number>
std::from_chars_result readNumber(const char* first, const char* last, Number& v);

}  // namespace orva::web

#endif
