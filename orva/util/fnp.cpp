#include "orva/util/fnp.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <string_view>

namespace orva::fnp {
namespace {

constexpr auto kNone = std::string_view::npos;

std::string_view viewOf(const char* s) { return s == nullptr ? std::string_view() : s; }

// The position of the dot before the extension of the last path component, or kNone.
std::size_t extensionDot(std::string_view s) {
  const std::size_t at = s.find_last_of("./");
  return at != kNone && s[at] == '.' ? at : kNone;
}

}  // namespace

bool exists(const char* path) { return path != nullptr && access(path, F_OK) == 0; }

bool exists(const std::string& path) { return exists(path.c_str()); }

std::string clean(const char* s) {
  std::string_view text = viewOf(s);
  if (!text.empty() && text.back() == '/') text.remove_suffix(1);
  return std::string(text);
}

std::string clean(const std::string& s) { return clean(s.c_str()); }

std::string fullname(const char* dir, const char* name) {
  const std::string d = clean(dir);
  const std::string n = clean(name);
  if (!n.empty() && n.front() == '/') {
    std::cerr << "Warning in fnp::fullname\n"
              << "Invalid (relative) filename, return empty string\n";  // intended: the word
    return {};
  }
  return d.empty() || d == "." ? n : d + "/" + n;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the name comes by value
std::string fullname(const std::string& dir, std::string name) {
  return fullname(dir.c_str(), name.c_str());
}

std::string extension(const char* s) {
  const std::string_view text = viewOf(s);
  const std::size_t dot = extensionDot(text);
  return dot == kNone ? std::string() : std::string(text.substr(dot + 1));
}

std::string extension(const std::string& s) { return extension(s.c_str()); }

std::string root(const char* s) {
  const std::string_view text = viewOf(s);
  return std::string(text.substr(0, extensionDot(text)));
}

std::string root(const std::string& s) { return root(s.c_str()); }

std::string head(const char* s) {
  const std::string_view text = viewOf(s);
  const std::size_t slash = text.rfind('/');
  return slash == kNone ? std::string() : std::string(text.substr(0, slash));
}

std::string head(const std::string& s) { return head(s.c_str()); }

std::string tail(const char* s) {
  const std::string_view text = viewOf(s);
  return std::string(text.substr(text.rfind('/') + 1));  // kNone + 1 is 0
}

std::string tail(const std::string& s) { return tail(s.c_str()); }

std::string copySubString(const std::string& s, int from, int to) {
  const auto start = static_cast<std::size_t>(std::max(from, 0));
  const std::size_t end = to == -1 ? s.size() : static_cast<std::size_t>(std::max(to, 0));
  return end > start && start < s.size() ? s.substr(start, end - start) : std::string();
}

std::vector<std::string> parseLine(const std::string& line, const char* delimiters) {
  const std::string separators = delimiters == nullptr ? "" : delimiters;
  std::vector<std::string> words;
  std::size_t start = line.find_first_not_of(separators);
  while (start != std::string::npos) {
    const std::size_t end = line.find_first_of(separators, start);
    words.push_back(line.substr(start, end - start));
    start = line.find_first_not_of(separators, end);
  }
  return words;
}

std::vector<std::vector<std::string>> parseTextFile(const std::string& filename,
                                                    const char* delimiters) {
  std::ifstream in(filename);
  if (!in) {
    std::cerr << "Cannot open file: " << filename << '\n';
    return {};
  }
  std::vector<std::vector<std::string>> lines;
  std::array<char, 1024> buffer{};
  while (in.getline(buffer.data(), buffer.size())) {
    std::vector<std::string> words = parseLine(buffer.data(), delimiters);
    if (!words.empty()) lines.push_back(std::move(words));
  }
  return lines;
}

}  // namespace orva::fnp
