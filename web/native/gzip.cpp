// formats/gzip.h without zlib, with the same bytes.
#include "formats/gzip.h"

#include <cstddef>

#include "web/native/deflate.h"

namespace orva::formats {

std::string gzipped(const std::string& text) {
  constexpr int kBareWindow = -15;
  std::string file("\x1f\x8b\x08\0\0\0\0\0\0\3", 10);  // deflated, no name or time, Unix
  file += web::deflated(text, kBareWindow, web::Strategy::kDefault);
  for (const std::size_t number : {std::size_t{web::crc32(text)}, text.size()}) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
      file += static_cast<char>((number >> shift) & 0xffU);
    }
  }
  return file;
}

}  // namespace orva::formats
