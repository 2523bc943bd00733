// Included before every source of the WebAssembly build: what the C++ standard library of the
// toolchain lacks of C++20, as far as the sources use it. std::bit_cast, std::atomic_ref (the
// module has one thread), std::make_unique_for_overwrite, std::ranges::lower_bound, and the
// conversions of <charconv> between floating-point numbers and text, with the same characters and
// values as those of other standard libraries. A newer toolchain uses its own.
#ifndef ORVA_WEB_NATIVE_STANDARD_LIBRARY_H
#define ORVA_WEB_NATIVE_STANDARD_LIBRARY_H

#include <atomic>
#include <bit>
#include <charconv>
#include <cstddef>
#include <functional>
#include <memory>
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

#if !defined(__cpp_lib_atomic_ref)
template <class T>
class atomic_ref {
 public:
  explicit atomic_ref(T& value) : value_(&value) {}
  T load(memory_order /*order*/) const { return *value_; }
  void store(T value, memory_order /*order*/) const { *value_ = value; }

 private:
  T* value_;
};
#endif

#if !defined(__cpp_lib_smart_ptr_for_overwrite)
template <class Array>
requires is_unbounded_array_v<Array> unique_ptr<Array> make_unique_for_overwrite(size_t n) {
  return unique_ptr<Array>(new remove_extent_t<Array>[n]);
}
#endif

#if !defined(__cpp_lib_ranges)
namespace ranges {

template <class Iterator, class Value, class Less = std::less<>, class Projection>
Iterator lower_bound(Iterator first, Iterator last, const Value& value, Less isLess,
                     Projection projection) {
  auto n = last - first;
  while (n > 0) {
    const Iterator middle = first + n / 2;
    if (isLess(invoke(projection, *middle), value)) {
      n -= middle - first + 1;
      first = middle + 1;
    } else {
      n = middle - first;
    }
  }
  return first;
}

}  // namespace ranges
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
