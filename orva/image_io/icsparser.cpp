#include "orva/image_io/icsparser.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <new>
#include <string>
#include <string_view>

#include "orva/image/bad_alloc.h"
#include "orva/util/ascii.h"

namespace {

using orva::equalIgnoringCase;

// The order line may list five dimensions behind the pixel size.
constexpr int kDimensions = 5;

struct Dimension {
  const char* name;
  int size;
  int loc = 0;  // its position in the order line, from 1; 0 when not listed
};

// What the scanner has found so far.
struct Header {
  std::int64_t ndataset = 0;
  std::string dataset;
  std::int64_t norder = 0;
  int num_bits = 0;
  std::int64_t nsizes = 0;
  int pix_size = 0;
  std::array<Dimension, kDimensions> dimensions{{{"x", 0}, {"y", 0}, {"z", 1}, {"c", 0}, {"t", 0}}};
  std::int64_t nformat = 0;
  std::string format;
  std::int64_t nbyte_order = 0;
  bool is_big_endian = true;
};

// As atoi: 0 for a text without a number.
int numberIn(const std::string& token) {
  return static_cast<int>(std::strtol(token.c_str(), nullptr, 10));
}

// One action a keyword, for each of its values.

void takeDataset(Header& h, const std::string& token) {
  if (h.ndataset++ == 0) h.dataset = token;
}

void takeOrder(Header& h, const std::string& token) {
  const std::int64_t position = h.norder++;
  if (position == 0) {
    if (equalIgnoringCase(token, "bits")) h.num_bits = 1;
    if (equalIgnoringCase(token, "bytes")) h.num_bits = 8;
  } else if (position <= kDimensions) {
    for (Dimension& d : h.dimensions) {
      if (equalIgnoringCase(token, d.name)) d.loc = static_cast<int>(position);
    }
  }
}

void takeSize(Header& h, const std::string& token) {
  const std::int64_t position = h.nsizes++;
  if (position == 0) {
    h.pix_size = numberIn(token);
    return;
  }
  for (Dimension& d : h.dimensions) {
    if (d.loc == position) d.size = numberIn(token);
  }
}

void takeFormat(Header& h, const std::string& token) {
  if (h.nformat++ == 0) h.format = token;
}

void takeByteOrder(Header& h, const std::string& token) {
  if (h.nbyte_order++ == 0) h.is_big_endian = numberIn(token) > 1;
}

// A keyword, a blank standing for one or more blanks and tabs, and the state that it starts.
struct Keyword {
  std::string_view text;
  void (*takeValue)(Header&, const std::string&);
};

constexpr std::array<Keyword, 5> kKeywords{{{"filename", takeDataset},
                                            {"layout order", takeOrder},
                                            {"layout sizes", takeSize},
                                            {"representation format", takeFormat},
                                            {"representation byte_order", takeByteOrder}}};

// Reads a header character by character: looks for a keyword, then takes values to the end of the
// line.
class Scanner {
 public:
  void take(char c) {
    if (keyword_ == nullptr) {
      seekKeyword(c);
    } else if (c == ' ' || c == '\t' || c == '\n') {
      endValue();
      if (c == '\n') keyword_ = nullptr;
    } else {
      text_ += c;
    }
  }

  Header finish() {
    if (keyword_ != nullptr) endValue();
    return header_;
  }

 private:
  // Keeps in text_ the longest end of what was read that may begin a keyword.
  void seekKeyword(char c) {
    if (c == '\t') c = ' ';
    if (c == ' ' && !text_.empty() && text_.back() == ' ') return;
    text_ += c;
    const auto begins = [this](const Keyword& k) { return k.text.starts_with(text_); };
    while (std::none_of(kKeywords.begin(), kKeywords.end(), begins)) text_.erase(0, 1);
    for (const Keyword& k : kKeywords) {
      if (k.text != text_) continue;
      keyword_ = &k;
      text_.clear();
      return;
    }
  }

  void endValue() {
    if (text_.empty()) return;
    // A C string: a value ends at a zero byte.
    keyword_->takeValue(header_, text_.substr(0, text_.find('\0')));
    text_.clear();
  }

  Header header_;
  const Keyword* keyword_ = nullptr;
  std::string text_;  // the value, or the start of a keyword
};

// The name of the pixel type, or null.
const char* typeNameOf(const Header& h) {
  const auto is = [&h](const char* word) { return equalIgnoringCase(h.format, word); };
  const std::int64_t bytes = (std::int64_t{h.num_bits} * h.pix_size) >> 3;
  if (is("rgb")) return "RGB";
  if (is("irgb")) return "INTRGB";
  if (is("srgb")) return "SHORTRGB";
  if (is("frgb")) return "FLOATRGB";
  if (is("rgba")) return "RGBA";
  // Intended: one byte is BYTE before the words for unsigned samples are looked at.
  if (bytes == 1 && !is("float")) return "BYTE";
  if (is("unshort")) return "USHORT";
  if (bytes == 2 && !is("float")) return "SHORT";
  if (is("unint")) return "UINT";
  if (bytes == 4) return is("float") ? "FLOAT" : "INT";
  return nullptr;
}

template <class T>
void store(T* result, T value) {
  if (result != nullptr) *result = value;
}

void storeCopy(char** result, const char* text) {
  if (result == nullptr) return;
  *result = strdup(text);
  if (*result == nullptr) throw std::bad_alloc();
}

int parsed(const char* filename, char** dataset, char** type, int* x, int* y, int* z, int* c,
           int* t, int* bigEndian) {
  const std::array<int*, kDimensions> sizes{x, y, z, c, t};
  const Header empty;
  store(dataset, static_cast<char*>(nullptr));
  store(type, static_cast<char*>(nullptr));
  for (std::size_t i = 0; i < sizes.size(); ++i) store(sizes[i], empty.dimensions[i].size);

  std::ifstream in(filename == nullptr ? "" : filename);
  Scanner scanner;
  for (char next = 0; in.get(next);) scanner.take(next);
  if (!in.is_open() || in.bad()) {  // a directory opens and cannot be read
    std::cerr << "In parse_ics_header_file: \n"
              << "could not open " << (filename == nullptr ? "" : filename) << '\n';
    return 0;
  }
  const Header header = scanner.finish();

  if (header.ndataset > 0) storeCopy(dataset, header.dataset.c_str());
  for (std::size_t i = 0; i < sizes.size(); ++i) store(sizes[i], header.dimensions[i].size);
  store(bigEndian, header.is_big_endian ? 1 : 0);

  const char* name = typeNameOf(header);
  if (name == nullptr) return 0;
  storeCopy(type, name);
  return 1;
}

}  // namespace

int parse_ics_header_file(const char* filename, char** dataset, char** type, int* x, int* y, int* z,
                          int* c, int* t, int* bigEndian) {
  return orva::exitOnBadAlloc(
      [&] { return parsed(filename, dataset, type, x, y, z, c, t, bigEndian); });
}
