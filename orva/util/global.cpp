#include "orva/util/global.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <iostream>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace orva {
namespace {

template <class T>
T fromString(const std::string& s) {
  std::istringstream in(s);
  in.imbue(std::locale::classic());
  T value{};
  in >> value;
  return value;
}

// std::to_chars writes what printf would in the "C" locale, whatever the locale is.
template <class... Format>
std::string formatNumber(Format... format) {
  std::array<char, 64> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), format...).ptr;
  return {text.data(), end};
}

constexpr int kDecimals = 6;

}  // namespace

std::string toString(const std::string& s) { return s; }

std::string toString(const char* s) { return s == nullptr ? std::string() : std::string(s); }

std::string toString(int v) { return formatNumber(v); }

std::string toString(float v) { return formatNumber(v, std::chars_format::fixed, kDecimals); }

std::string toString(double v) { return formatNumber(v, std::chars_format::scientific, kDecimals); }

int toInt(std::string& s) { return fromString<int>(s); }

float toFloat(std::string& s) { return fromString<float>(s); }

std::string getEnv(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  if (value == nullptr) throw std::logic_error("orva::getEnv: " + name + " is not set");
  return value;
}

int execSysCmd(const std::string& cmd) { return std::system(cmd.c_str()); }

void reportBugInfo(const std::string& where) {
  std::cerr << "There is an unexpected bug in " << std::endl
            << "* " << where << " *" << std::endl
            << "Please report this problem to the orva maintainers: bugs@orva.example" << std::endl
            << "Thanks!" << std::endl;
}

}  // namespace orva
