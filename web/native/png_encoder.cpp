// formats/png_encoder.h without libpng, with the same bytes.
#include "formats/png_encoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "web/native/deflate.h"

namespace orva::formats {
namespace {

using Row = std::vector<unsigned char>;

enum Colour : unsigned char { kGrey = 0, kRgb = 2 };

std::string bigEndian(std::uint32_t v) {
  return {static_cast<char>(v >> 24U), static_cast<char>(v >> 16U), static_cast<char>(v >> 8U),
          static_cast<char>(v)};
}

void appendChunk(std::string& file, std::string_view type, std::string_view content) {
  std::string chunk(type);
  chunk += content;
  file +=
      bigEndian(static_cast<std::uint32_t>(content.size())) + chunk + bigEndian(web::crc32(chunk));
}

unsigned char paeth(int left, int up, int upLeft) {
  const int p = left + up - upLeft;
  const int a = std::abs(p - left);
  const int b = std::abs(p - up);
  const int c = std::abs(p - upLeft);
  return static_cast<unsigned char>(a <= b && a <= c ? left : b <= c ? up : upLeft);
}

// What a filter predicts of a byte from its neighbours.
int predicted(int filter, int left, int up, int upLeft) {
  switch (filter) {
    case 1:
      return left;
    case 2:
      return up;
    case 3:
      return (left + up) / 2;
    case 4:
      return paeth(left, up, upLeft);
    default:
      return 0;
  }
}

// Filters rows one after the other, each by the filter of the smallest sum of differences.
class RowFilter {
 public:
  RowFilter(std::size_t rowBytes, std::size_t pixelBytes, std::size_t rows)
      : pixelBytes_(pixelBytes),
        isSingleRow_(rows == 1),
        isSinglePixel_(rowBytes == pixelBytes),
        previous_(rowBytes),
        trial_(rowBytes),
        best_(rowBytes) {}

  // Appends the row with the number of its filter.
  void append(const Row& row, std::string& to) {
    std::size_t lowest = std::numeric_limits<std::size_t>::max();
    int chosen = 0;
    for (int filter = 0; filter <= 4; ++filter) {
      // Where there is no neighbour on the left, none of the filters with one is tried.
      if (isSingleRow_ && filter >= 2) continue;
      if (isSinglePixel_ && filter != 0 && filter != 2) continue;
      const std::size_t sum = tried(filter, row);
      if (sum >= lowest) continue;
      lowest = sum;
      chosen = filter;
      std::swap(trial_, best_);
    }
    previous_ = row;
    to += static_cast<char>(chosen);
    to.append(reinterpret_cast<const char*>(best_.data()), best_.size());
  }

 private:
  // The row by a filter, in trial_; the sum of its bytes as differences.
  std::size_t tried(int filter, const Row& row) {
    std::size_t sum = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const bool isFirst = i < pixelBytes_;
      const int left = isFirst ? 0 : row[i - pixelBytes_];
      const int upLeft = isFirst ? 0 : previous_[i - pixelBytes_];
      const auto v =
          static_cast<unsigned char>(row[i] - predicted(filter, left, previous_[i], upLeft));
      trial_[i] = v;
      sum += v < 128 ? v : 256U - v;
    }
    return sum;
  }

  std::size_t pixelBytes_;
  bool isSingleRow_;
  bool isSinglePixel_;
  Row previous_;
  Row trial_;
  Row best_;
};

// Small pictures need a small window.
std::string compressed(const std::string& rows) {
  constexpr std::size_t kSmall = 16384;
  constexpr std::size_t kReserve = 262;  // that deflate keeps of its window
  constexpr int kMaxBits = 15;
  constexpr int kMinBits = 8;
  const auto smallestBits = [&](std::size_t reserve) {
    int bits = kMaxBits;
    if (rows.size() > kSmall) return bits;
    while (bits > kMinBits && rows.size() + reserve <= std::size_t{1} << (bits - 1)) --bits;
    return bits;
  };
  std::string stream = web::deflated(rows, smallestBits(kReserve), web::Strategy::kFiltered);
  // The header states what it takes to read the stream.
  const auto method = static_cast<unsigned>(8 + ((smallestBits(0) - 8) << 4));
  unsigned flags = static_cast<unsigned char>(stream[1]) & 0xe0U;
  flags += 31 - (method * 256 + flags) % 31;
  stream[0] = static_cast<char>(method);
  stream[1] = static_cast<char>(flags);
  return stream;
}

std::string encode(int width, int height, std::size_t pixelBytes, unsigned char bits, Colour colour,
                   const auto& rowAt) {
  std::string header =
      bigEndian(static_cast<std::uint32_t>(width)) + bigEndian(static_cast<std::uint32_t>(height));
  for (const int v : {int{bits}, int{colour}, 0, 0, 0}) header += static_cast<char>(v);
  std::string file = "\x89PNG\r\n\x1a\n";
  appendChunk(file, "IHDR", header);

  const std::size_t rowBytes = static_cast<std::size_t>(width) * pixelBytes;
  RowFilter filter(rowBytes, pixelBytes, static_cast<std::size_t>(height));
  std::string rows;
  rows.reserve((rowBytes + 1) * static_cast<std::size_t>(height));
  Row row(rowBytes);
  for (int y = 0; y < height; ++y) {
    rowAt(static_cast<std::size_t>(y), row);
    filter.append(row, rows);
  }
  const std::string stream = compressed(rows);
  constexpr std::size_t kPiece = 8192;
  for (std::size_t at = 0; at < stream.size(); at += kPiece) {
    appendChunk(file, "IDAT", std::string_view(stream).substr(at, kPiece));
  }
  appendChunk(file, "IEND", "");
  return file;
}

std::string encodeBytes(const void* pixels, int width, int height, std::size_t pixelBytes,
                        Colour colour) {
  const std::size_t rowBytes = static_cast<std::size_t>(width) * pixelBytes;
  return encode(width, height, pixelBytes, 8, colour, [&](std::size_t y, Row& row) {
    std::copy_n(static_cast<const unsigned char*>(pixels) + y * rowBytes, rowBytes, row.begin());
  });
}

std::string encodeSamples16(const void* pixels, int width, int height, std::size_t pixelBytes,
                            Colour colour) {
  const std::size_t samples = static_cast<std::size_t>(width) * pixelBytes / 2;
  return encode(width, height, pixelBytes, 16, colour, [&](std::size_t y, Row& row) {
    const std::uint16_t* from = static_cast<const std::uint16_t*>(pixels) + y * samples;
    for (std::size_t i = 0; i < samples; ++i) {
      row[2 * i] = static_cast<unsigned char>(from[i] >> 8U);
      row[2 * i + 1] = static_cast<unsigned char>(from[i]);
    }
  });
}

}  // namespace

std::string encodePng(const unsigned char* pixels, int width, int height) {
  return encodeBytes(pixels, width, height, 1, kGrey);
}

std::string encodePng(const std::uint16_t* pixels, int width, int height) {
  return encodeSamples16(pixels, width, height, 2, kGrey);
}

std::string encodePng(const orva::GenericRgb<unsigned char>* pixels, int width, int height) {
  return encodeBytes(pixels, width, height, 3, kRgb);
}

std::string encodePng(const orva::GenericRgb<std::uint16_t>* pixels, int width, int height) {
  return encodeSamples16(pixels, width, height, 6, kRgb);
}

}  // namespace orva::formats
