// Numbers and fields as text.
#ifndef ORVA_FORMATS_TEXT_H
#define ORVA_FORMATS_TEXT_H

#include <charconv>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace orva::formats {

// Takes the next piece of a text.
using Append = std::function<void(std::string_view)>;

// The shortest decimal text that reads back as `v`.
std::string shortestDecimal(float v);
// The same; whole numbers of up to 15 digits without an exponent.
std::string shortestDecimal(double v);

// `v` with this number of decimals.
std::string fixed(float v, int decimals);

// `v` with three decimals at most, without zeros at their end.
std::string trimmedDecimal(double v);

// The number that a decimal text begins with; 0 for other texts.
double parsedDecimal(const std::string& text);

// The number that is all of a text, in the range of its type.
template <class Number>
std::optional<Number> parsedNumber(std::string_view text) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

// Whether a text is UTF-8.
bool isUtf8(std::string_view text);

// UTF-8 that XML and JSON can hold: U+FFFD stands for each byte that is no part of a character, and
// for each control character.
std::string printableUtf8(std::string_view text);

// The first characters of a UTF-8 text, `count` at most.
std::string firstCharacters(std::string_view text, std::size_t count);

// ' "NAME"', cut where it is long, or "" for no name.
std::string quotedName(std::string_view name);

// "0A, 1B, 2C", with textOf(i) behind each number, of the first 20.
std::string numberedList(std::size_t count, const std::function<std::string(std::size_t)>& textOf);

// The numbers below a count of at least 1, as the end of a message: "there are 0 to 4".
std::string numbersBelow(int count);

// One field of a CSV row, in quotes where its characters need them.
std::string csvField(const std::string& text);

// The extension of a file's name with its dot, in lower case.
std::string extensionOf(const std::string& path);

// Whether the name of a file ends in .ome.EXTENSION, in any case.
bool isOmeName(const std::string& path);

}  // namespace orva::formats

#endif
