#include "formats/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>

namespace orva::formats {
namespace {

// A character at the start of a text.
struct Character {
  std::size_t bytes;  // 0 where none begins there
  char32_t code;
};

Character characterAt(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  if (lead < 0x80U) return {1, lead};
  const std::size_t bytes = lead < 0xC2U   ? 0
                            : lead < 0xE0U ? 2
                            : lead < 0xF0U ? 3
                            : lead < 0xF5U ? 4
                                           : 0;
  if (bytes == 0 || text.size() < bytes) return {0, 0};
  char32_t code = lead & (0xFFU >> (bytes + 1));
  for (std::size_t i = 1; i < bytes; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return {0, 0};
    code = code << 6U | (byte(i) & 0x3FU);
  }
  constexpr std::array<char32_t, 5> kMin{0, 0, 0x80, 0x800, 0x10000};  // of as many bytes
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kMin.at(bytes) || code > 0x10FFFF || isSurrogate) return {0, 0};
  return {bytes, code};
}

}  // namespace

std::string shortestDecimal(float v) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), v).ptr};
}

std::string shortestDecimal(double v) {
  if (std::isnan(v)) return "nan";  // with either sign, which differs between processors
  std::array<char, 32> text{};
  char* const end = text.data() + text.size();
  const bool isWhole = std::fabs(v) < 1e15 && v == std::trunc(v);
  return {text.data(), isWhole ? std::to_chars(text.data(), end, v, std::chars_format::fixed).ptr
                               : std::to_chars(text.data(), end, v).ptr};
}

std::string fixed(float v, int decimals) {
  std::array<char, 64> text{};
  const auto written =
      std::to_chars(text.data(), text.data() + text.size(), v, std::chars_format::fixed, decimals);
  return {text.data(), written.ptr};
}

std::string trimmedDecimal(double v) {
  std::array<char, 400> text{};  // for the largest double
  const auto written =
      std::to_chars(text.data(), text.data() + text.size(), v, std::chars_format::fixed, 3);
  std::string trimmed(text.data(), written.ptr);
  if (!std::isfinite(v)) return trimmed;
  trimmed.erase(trimmed.find_last_not_of('0') + 1);
  if (trimmed.back() == '.') trimmed.pop_back();
  return trimmed == "-0" ? "0" : trimmed;
}

double parsedDecimal(const std::string& text) {
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t bytes = characterAt(text).bytes;
    if (bytes == 0) return false;
    text.remove_prefix(bytes);
  }
  return true;
}

std::string printableUtf8(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto [bytes, code] = characterAt(text);
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool isNone = bytes == 0 || code == 0xFFFE || code == 0xFFFF;
    if (isControl || isNone) {
      result += "\uFFFD";
    } else {
      result += text.substr(0, bytes);
    }
    text.remove_prefix(std::max<std::size_t>(bytes, 1));
  }
  return result;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
  std::size_t end = 0;
  for (; end < text.size() && count > 0; --count) {
    end += std::max<std::size_t>(characterAt(text.substr(end)).bytes, 1);
  }
  return std::string(text.substr(0, end));
}

std::string quotedName(std::string_view name) {
  constexpr std::size_t kShown = 60;
  return name.empty() ? "" : " \"" + firstCharacters(name, kShown) + '"';
}

std::string numberedList(std::size_t count, const std::function<std::string(std::size_t)>& textOf) {
  constexpr std::size_t kListed = 20;
  std::string list;
  for (std::size_t i = 0; i < std::min(count, kListed); ++i) {
    list += (i == 0 ? "" : ", ") + std::to_string(i) + textOf(i);
  }
  return list + (count > kListed ? ", ..." : "");
}

std::string numbersBelow(int count) {
  return count == 1 ? "there is only 0" : "there are 0 to " + std::to_string(count - 1);
}

std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\n\r") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + '"';
}

std::string extensionOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return extension;
}

bool isOmeName(const std::string& path) {
  return extensionOf(std::filesystem::path(path).stem().string()) == ".ome";
}

}  // namespace orva::formats
