#include <strings.h>

#include <cstdint>
#include <cstdlib>

#include "tests/support/reference/image_io.h"

namespace orva::reference {
namespace {

enum class State { initial, filename, order, sizes, format, byteOrder };

struct Rule {
  const char* first;
  const char* second;  // null for a keyword of one word
  State state;
};

constexpr Rule kRules[] = {{"filename", nullptr, State::filename},
                           {"layout", "order", State::order},
                           {"layout", "sizes", State::sizes},
                           {"representation", "format", State::format},
                           {"representation", "byte_order", State::byteOrder}};

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// Where the keyword that begins at position i ends, or 0.
std::size_t endOf(const Rule& rule, const std::string& text, std::size_t i) {
  const std::string first = rule.first;
  if (text.compare(i, first.size(), first) != 0) return 0;
  i += first.size();
  if (rule.second == nullptr) return i;
  const std::size_t blanks = i;
  while (i < text.size() && isBlank(text[i])) ++i;
  if (i == blanks) return 0;
  const std::string second = rule.second;
  return text.compare(i, second.size(), second) == 0 ? i + second.size() : 0;
}

struct Variables {
  int ndataset = 0;
  std::string dataset;
  int norder = 0;
  int num_bits = 0;
  int nsizes = 0;
  int pix_size = 0;
  int size[5] = {0, 0, 1, 0, 0};
  int loc[5] = {0, 0, 0, 0, 0};
  int nformat = 0;
  std::string format;
  int nbyte_order = 0;
  int is_big_endian = 1;
};

bool equal(const std::string& token, const char* word) {
  return strcasecmp(token.c_str(), word) == 0;
}

void take(Variables& v, State state, const std::string& token) {
  static const char* const names[5] = {"x", "y", "z", "c", "t"};
  switch (state) {
    case State::filename:
      if (v.ndataset == 0) v.dataset = token.c_str();
      ++v.ndataset;
      break;
    case State::order:
      if (v.norder == 0 && equal(token, "bits")) v.num_bits = 1;
      if (v.norder == 0 && equal(token, "bytes")) v.num_bits = 8;
      if (v.norder >= 1 && v.norder <= 5) {
        for (int d = 0; d < 5; ++d) {
          if (equal(token, names[d])) v.loc[d] = v.norder;
        }
      }
      ++v.norder;
      break;
    case State::sizes:
      if (v.nsizes == 0) v.pix_size = std::atoi(token.c_str());
      if (v.nsizes >= 1 && v.nsizes <= 5) {
        for (int d = 0; d < 5; ++d) {
          if (v.loc[d] == v.nsizes) v.size[d] = std::atoi(token.c_str());
        }
      }
      ++v.nsizes;
      break;
    case State::format:
      if (v.nformat == 0) v.format = token;
      ++v.nformat;
      break;
    case State::byteOrder:
      if (v.nbyte_order == 0) v.is_big_endian = std::atoi(token.c_str()) > 1 ? 1 : 0;
      ++v.nbyte_order;
      break;
    case State::initial:
      break;
  }
}

Variables scan(const std::string& text) {
  Variables v;
  State state = State::initial;
  std::size_t i = 0;
  while (i < text.size()) {
    if (state == State::initial) {
      std::size_t next = i + 1;
      for (const Rule& rule : kRules) {
        const std::size_t end = endOf(rule, text, i);
        if (end == 0) continue;
        state = rule.state;
        next = end;
      }
      i = next;
    } else if (text[i] == '\n') {
      state = State::initial;
      ++i;
    } else if (isBlank(text[i])) {
      ++i;
    } else {
      std::string token;
      while (i < text.size() && text[i] != '\n' && !isBlank(text[i])) token += text[i++];
      take(v, state, token);
    }
  }
  return v;
}

std::optional<std::string> typeOf(const Variables& v) {
  const std::int64_t product = std::int64_t{v.num_bits} * v.pix_size;
  const bool isFloat = equal(v.format, "float");
  const auto bytes = [&](std::int64_t n) { return product >= 8 * n && product < 8 * n + 8; };
  if (equal(v.format, "rgb")) return "RGB";
  if (equal(v.format, "irgb")) return "INTRGB";
  if (equal(v.format, "srgb")) return "SHORTRGB";
  if (equal(v.format, "frgb")) return "FLOATRGB";
  if (equal(v.format, "rgba")) return "RGBA";
  if (bytes(1) && !isFloat) return "BYTE";
  if (equal(v.format, "unshort")) return "USHORT";
  if (bytes(2) && !isFloat) return "SHORT";
  if (equal(v.format, "unint")) return "UINT";
  if (bytes(4) && !isFloat) return "INT";
  if (bytes(4) && isFloat) return "FLOAT";
  return std::nullopt;
}

}  // namespace

IcsHeader icsHeader(const std::string& content) {
  const Variables v = scan(content);
  IcsHeader h;
  if (v.ndataset > 0) h.dataset = v.dataset;
  h.x = v.size[0];
  h.y = v.size[1];
  h.z = v.size[2];
  h.c = v.size[3];
  h.t = v.size[4];
  h.bigEndian = v.is_big_endian;
  h.type = typeOf(v);
  h.result = h.type ? 1 : 0;
  return h;
}

}  // namespace orva::reference
