#include "orva/image_io/pnm_header.h"

#include <algorithm>
#include <cctype>

namespace orva::image_io {
namespace {

// Skips a comment to the end of its line, or as much of it as is skipped. False when the file ends
// at its first character.
bool skipComment(std::FILE* in, bool& isLong) {
  for (int length = 0; length < kMaxPnmComment; ++length) {
    const int c = std::getc(in);
    if (c == EOF) return length > 0;
    if (c == '\n') return true;
  }
  const int next = std::ungetc(std::getc(in), in);
  if (next != EOF && next != '\n') isLong = true;
  return true;
}

// The next number of a header, or -1 where the file ends before it.
std::int64_t nextNumber(std::FILE* in, bool& hasLongComment) {
  int c = std::getc(in);
  while (std::isdigit(c) == 0) {
    if (c == EOF || (c == '#' && !skipComment(in, hasLongComment))) return -1;
    c = std::getc(in);
  }
  std::int64_t value = 0;
  for (; std::isdigit(c) != 0; c = std::getc(in)) {
    value = std::min(value * 10 + (c - '0'), kMaxPnmNumber);
  }
  return value;
}

}  // namespace

PnmHeader readPnmHeader(std::FILE* in) {
  PnmHeader header;
  for (std::int64_t* number : {&header.width, &header.height, &header.maximum}) {
    *number = nextNumber(in, header.hasLongComment);
    if (*number < 0) return header;
  }
  header.isComplete = true;
  return header;
}

}  // namespace orva::image_io
