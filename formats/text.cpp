#include "formats/text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>

namespace orva::formats {

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

}  // namespace orva::formats
