#include "formats/gzip.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <utility>

namespace orva::formats {

struct GzipEncoder::Stream {
  z_stream z{};
};

GzipEncoder::GzipEncoder(Append append)
    : append_(std::move(append)), stream_(std::make_unique<Stream>()) {
  constexpr int kGzipWindow = 15 + 16;
  constexpr int kMemory = 8;
  if (deflateInit2(&stream_->z, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzipWindow, kMemory,
                   Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
}

GzipEncoder::~GzipEncoder() { deflateEnd(&stream_->z); }

void GzipEncoder::append(std::string_view text) { deflate(text, Z_NO_FLUSH); }

void GzipEncoder::finish() { deflate("", Z_FINISH); }

void GzipEncoder::deflate(std::string_view text, int flush) {
  constexpr std::size_t kMaxInput = std::size_t{1} << 20U;  // the counter of zlib is narrow
  z_stream& z = stream_->z;
  std::array<char, 65536> piece{};
  do {
    const std::string_view part = text.substr(0, kMaxInput);
    text.remove_prefix(part.size());
    z.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(part.data()));
    z.avail_in = static_cast<uInt>(part.size());
    do {
      z.next_out = reinterpret_cast<Bytef*>(piece.data());
      z.avail_out = static_cast<uInt>(piece.size());
      ::deflate(&z, flush);
      const std::size_t made = piece.size() - z.avail_out;
      if (made > 0) append_({piece.data(), made});
    } while (z.avail_out == 0);
  } while (!text.empty());
}

std::string gzipped(const std::string& text) {
  std::string file;
  GzipEncoder encoder([&](std::string_view piece) { file += piece; });
  encoder.append(text);
  encoder.finish();
  return file;
}

}  // namespace orva::formats
