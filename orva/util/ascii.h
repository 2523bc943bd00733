// Locale-independent comparison of ASCII text. For the library's own sources; not installed.
#ifndef ORVA_UTIL_ASCII_H
#define ORVA_UTIL_ASCII_H

#include <algorithm>
#include <string_view>

namespace orva {

// Whether two texts are equal up to the case of the letters A to Z.
inline bool equalIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char p, char q) { return lower(p) == lower(q); });
}

}  // namespace orva

#endif
