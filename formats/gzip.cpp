#include "formats/gzip.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>

namespace orva::formats {

std::string gzipped(const std::string& text) {
  constexpr int kGzipWindow = 15 + 16;
  constexpr int kMemory = 8;
  z_stream stream{};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzipWindow, kMemory,
                   Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
  std::string result;
  std::array<char, 65536> piece{};
  std::size_t next = 0;
  int status = Z_OK;
  while (status != Z_STREAM_END) {
    const std::size_t n = std::min(text.size() - next, piece.size());
    stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(text.data() + next));
    stream.avail_in = static_cast<uInt>(n);
    next += n;
    do {
      stream.next_out = reinterpret_cast<Bytef*>(piece.data());
      stream.avail_out = static_cast<uInt>(piece.size());
      status = deflate(&stream, next == text.size() ? Z_FINISH : Z_NO_FLUSH);
      result.append(piece.data(), piece.size() - stream.avail_out);
    } while (stream.avail_out == 0);
  }
  deflateEnd(&stream);
  return result;
}

}  // namespace orva::formats
