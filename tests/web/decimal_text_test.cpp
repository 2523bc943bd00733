// The conversions of the WebAssembly build against those of this standard library.
#include "web/native/decimal_text.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

namespace orva::test {
namespace {

using std::chars_format;

std::string textOf(const auto& write) {
  std::array<char, 512> text{};
  const std::to_chars_result result = write(text.data(), text.data() + text.size());
  EXPECT_EQ(result.ec, std::errc());
  return {text.data(), result.ptr};
}

template <class Number>
std::vector<Number> numbers() {
  using Limits = std::numeric_limits<Number>;
  using Bits = std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>;
  std::vector<Number> list{0,
                           -Number{0},
                           1,
                           Number(0.1),
                           Number(0.3),
                           100,
                           99999,
                           100000,
                           1e6,
                           Number(123456790528.0),
                           Number(1e15),
                           Number(1e22),
                           Limits::infinity(),
                           -Limits::infinity(),
                           Limits::max(),
                           Limits::min(),
                           Limits::denorm_min(),
                           Limits::epsilon()};
  for (int e = Limits::min_exponent - Limits::digits; e < Limits::max_exponent; ++e) {
    const Number power = std::ldexp(Number(1), e);
    list.insert(list.end(), {power, -power, std::nextafter(power, Number(0))});
  }
  std::mt19937_64 random(1);
  for (int i = 0; i < 3000; ++i) {
    const auto v = std::bit_cast<Number>(static_cast<Bits>(random()));
    if (!std::isnan(v)) list.push_back(v);
    list.push_back(static_cast<Number>(random() % 1000000) / 1000);
  }
  return list;
}

template <class Number>
class DecimalText : public testing::Test {};
using Numbers = testing::Types<float, double>;
TYPED_TEST_SUITE(DecimalText, Numbers);

TYPED_TEST(DecimalText, ShortestIsThatOfToChars) {
  for (const TypeParam v : numbers<TypeParam>()) {
    EXPECT_EQ(textOf([&](char* a, char* b) { return web::writeShortest(a, b, v); }),
              textOf([&](char* a, char* b) { return std::to_chars(a, b, v); }));
  }
}

TYPED_TEST(DecimalText, FormsAreThoseOfToChars) {
  for (const chars_format format : {chars_format::fixed, chars_format::scientific}) {
    for (const TypeParam v : numbers<TypeParam>()) {
      EXPECT_EQ(textOf([&](char* a, char* b) { return web::writeShortest(a, b, v, format); }),
                textOf([&](char* a, char* b) { return std::to_chars(a, b, v, format); }));
      EXPECT_EQ(textOf([&](char* a, char* b) { return web::writeRounded(a, b, v, format, 3); }),
                textOf([&](char* a, char* b) { return std::to_chars(a, b, v, format, 3); }));
    }
  }
}

TYPED_TEST(DecimalText, LackOfSpaceIsReported) {
  std::array<char, 3> text{};
  const auto result = web::writeShortest(text.data(), text.data() + text.size(), TypeParam(0.25));
  EXPECT_EQ(result.ec, std::errc::value_too_large);
  EXPECT_EQ(result.ptr, text.data() + text.size());
}

TYPED_TEST(DecimalText, ReadingIsThatOfFromChars) {
  for (const std::string text :
       {"1",        "-2.5",  "1e3",    "1.5e-3x", "12,5", ".5",   "-.5e1", "",
        "-",        "+1",    " 1",     "x",       "e5",   "1e",   "0x10",  "0.1",
        "16777217", "1e999", "-1e999", "inf",     "-nan", "0.000"}) {
    TypeParam mine = 7;
    TypeParam theirs = 7;
    const auto a = web::readNumber(text.data(), text.data() + text.size(), mine);
    const auto b = std::from_chars(text.data(), text.data() + text.size(), theirs);
    EXPECT_EQ(a.ec, b.ec) << text;
    EXPECT_EQ(a.ptr, b.ptr) << text;
    if (!std::isnan(theirs)) {
      EXPECT_EQ(mine, theirs) << text;
    }
  }
}

}  // namespace
}  // namespace orva::test
