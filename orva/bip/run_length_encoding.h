// Run-length encoding of rows of pixels. For the library's own sources; not installed.
#ifndef ORVA_BIP_RUN_LENGTH_ENCODING_H
#define ORVA_BIP_RUN_LENGTH_ENCODING_H

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "orva/util/cpu_path.h"

namespace orva::bip {

// The columns begin .. end - 1 of a row.
struct Run {
  int begin;
  int end;
};

// Finds the runs of one row after the other, from left to right. Those of a row are overwritten by
// the next, unless they are kept.
template <class T, class Allocator = std::allocator<int>>
class RunLengthEncoder {
 public:
  explicit RunLengthEncoder(const Allocator& allocator = Allocator()) : bounds_(allocator) {}

  // Finds the runs of pixels that equal `value` and returns their number.
  int encodeValue(const T* row, int nx, T value) {
    used_ = first_;
    onWidestPath([=, this] { markValue(row, nx, value); });
    return static_cast<int>((used_ - first_) / 2);
  }

  // Finds the runs of equal pixels, which cover the row, and returns their number.
  int encodeEqual(const T* row, int nx) {
    used_ = first_;
    onWidestPath([=, this] { markEqual(row, nx); });
    return static_cast<int>((used_ - first_) / 2);
  }

  // The runs of the latest row, valid until the next is encoded.
  const Run* runs() const { return kept() + first_ / 2; }

  // Keeps the runs of the latest row, followed by the empty run stop .. stop - 1. Returns where
  // they begin in kept(), which is valid until the next row is encoded.
  std::size_t keep(int stop) {
    int* to = room();
    to[0] = to[1] = stop;
    used_ += 2;
    return std::exchange(first_, used_) / 2;
  }
  // A Run is two bounds in a row.
  const Run* kept() const { return reinterpret_cast<const Run*>(bounds_.data()); }
  void discardKept() { first_ = 0; }

 private:
  static constexpr int kBlock = 64;  // pixels whose flags fill a 64-bit word

  // The word whose bit i is flag i, which is 0 or 1.
  static std::uint64_t bitsOf(const unsigned char* flags) {
    std::uint64_t bits = 0;
    for (int g = 0; g < 8; ++g) {
      std::uint64_t eight;
      std::memcpy(&eight, flags + std::ptrdiff_t{8} * g, sizeof eight);
      if constexpr (std::endian::native == std::endian::big) eight = __builtin_bswap64(eight);
      // The factor moves byte i to bit 56 + i without carries between the partial products.
      bits |= (eight * 0x0102040810204080U >> 56U) << static_cast<unsigned>(8 * g);
    }
    return bits;
  }

  // The positions of the set bits of every byte, in ascending order.
  static constexpr auto kBitPositions = [] {
    std::array<std::array<unsigned char, 8>, 256> positions{};
    for (unsigned byte = 0; byte < 256; ++byte) {
      std::size_t n = 0;
      for (unsigned bit = 0; bit < 8; ++bit) {
        if ((byte >> bit & 1U) != 0) positions[byte][n++] = static_cast<unsigned char>(bit);
      }
    }
    return positions;
  }();

  // Appends x plus the position of every set bit, each kTimes over. Where many bits are set, it
  // writes those of a byte with one vector store that also overwrites what follows them.
  template <int kTimes>
  static int* appendPositions(std::uint64_t bits, int x, int* to) {
    constexpr int kMany = 12;
    if (std::popcount(bits) < kMany) {
      for (; bits != 0; bits &= bits - 1, to += kTimes) {
        for (int i = 0; i < kTimes; ++i) to[i] = x + std::countr_zero(bits);
      }
      return to;
    }
    for (; bits != 0; bits >>= 8U, x += 8) {
      const auto byte = static_cast<unsigned char>(bits);
      const unsigned char* positions = kBitPositions[byte].data();
      for (int k = 0; k < 8 * kTimes; ++k) to[k] = x + positions[k / kTimes];
      to += kTimes * std::popcount(byte);
    }
    return to;
  }

  // Room for the bounds that a block may have.
  int* room() {
    constexpr std::size_t kMax = 2 * kBlock + 8;
    if (bounds_.size() < used_ + kMax) bounds_.resize(std::max(2 * bounds_.size(), used_ + kMax));
    return bounds_.data() + used_;
  }

  void markValue(const T* row, int nx, T value) {
    std::uint64_t open = 0;  // 1 if the pixel before the block lies in a run
    for (int x = 0; x < nx; x += kBlock) {
      T last[kBlock];
      const T* block = row + x;
      if (nx - x < kBlock) {
        std::fill(std::copy_n(block, nx - x, last), std::end(last), T{});
        block = last;
      }
      unsigned char flags[kBlock];
      for (int i = 0; i < kBlock; ++i) flags[i] = block[i] == value ? 1 : 0;
      std::uint64_t bits = bitsOf(flags);
      if (nx - x < kBlock) bits &= (std::uint64_t{1} << static_cast<unsigned>(nx - x)) - 1;
      const std::uint64_t changes = bits ^ (bits << 1U | open);
      open = bits >> 63U;
      const int* to = appendPositions<1>(changes, x, room());
      used_ = static_cast<std::size_t>(to - bounds_.data());
    }
    if (used_ % 2 != 0) bounds_[used_++] = nx;
  }

  void markEqual(const T* row, int nx) {
    if (nx < 1) return;
    *room() = 0;
    ++used_;
    for (int x = 1; x < nx; x += kBlock) {
      T last[kBlock + 1];  // with the pixel before the block
      const T* block = row + x - 1;
      const int count = std::min(nx - x, kBlock);
      if (count < kBlock) {
        std::fill(std::copy_n(block, count + 1, last), std::end(last), T{});
        block = last;
      }
      unsigned char flags[kBlock];
      for (int i = 0; i < kBlock; ++i) flags[i] = block[i + 1] != block[i] ? 1 : 0;
      std::uint64_t changes = bitsOf(flags);
      if (count < kBlock) changes &= (std::uint64_t{1} << static_cast<unsigned>(count)) - 1;
      const int* to = appendPositions<2>(changes, x, room());
      used_ = static_cast<std::size_t>(to - bounds_.data());
    }
    *room() = nx;
    ++used_;
  }

  std::vector<int, Allocator> bounds_;  // begin and end of every run, alternating
  std::size_t first_ = 0;               // of the latest row
  std::size_t used_ = 0;
};

}  // namespace orva::bip

#endif
