// The runs of a row of pixels. For the library's own sources; not installed.
#ifndef ORVA_BIP_ROW_RUNS_H
#define ORVA_BIP_ROW_RUNS_H

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

#include "orva/util/cpu_path.h"

namespace orva::bip {

// Finds the runs of one row after the other. Run k covers the columns ends()[2k] .. ends()[2k + 1]
// - 1; runs come from left to right. Those of a row make way for the next, unless they are kept.
template <class T>
class RowRuns {
 public:
  // The runs of pixels that equal `value`; returns their number.
  int findValue(const T* row, int nx, T value) {
    used_ = first_;
    onWidestPath([=, this] { markValue(row, nx, value); });
    return static_cast<int>((used_ - first_) / 2);
  }

  // The runs of equal pixels, which cover the row; returns their number.
  int findEqual(const T* row, int nx) {
    used_ = first_;
    onWidestPath([=, this] { markEqual(row, nx); });
    return static_cast<int>((used_ - first_) / 2);
  }

  const int* ends() const { return ends_.data() + first_; }

  // Keeps the ends of the latest row, followed by a run from `stop` to `stop`; returns where they
  // begin in kept().
  std::size_t keep(int stop) {
    int* to = room();
    to[0] = to[1] = stop;
    used_ += 2;
    return std::exchange(first_, used_);
  }
  const int* kept() const { return ends_.data(); }
  void keepNone() { first_ = 0; }

 private:
  static constexpr int kBlock = 64;

  // Bit i tells whether flag i is set; flags are 0 or 1.
  static std::uint64_t bitsOf(const unsigned char* flags) {
    std::uint64_t bits = 0;
    for (int g = 0; g < 8; ++g) {
      std::uint64_t eight;
      std::memcpy(&eight, flags + std::ptrdiff_t{8} * g, sizeof eight);
      if constexpr (std::endian::native == std::endian::big) eight = __builtin_bswap64(eight);
      // The factor brings byte i to bit 56 + i; no two of the products meet.
      bits |= (eight * 0x0102040810204080U >> 56U) << static_cast<unsigned>(8 * g);
    }
    return bits;
  }

  // The places of the bits of every byte, from the lowest on.
  static constexpr auto kPlaces = [] {
    std::array<std::array<unsigned char, 8>, 256> places{};
    for (unsigned byte = 0; byte < 256; ++byte) {
      std::size_t n = 0;
      for (unsigned bit = 0; bit < 8; ++bit) {
        if ((byte >> bit & 1U) != 0) places[byte][n++] = static_cast<unsigned char>(bit);
      }
    }
    return places;
  }();

  // Appends x plus the places of all bits, each kTimes over. Many come eight at a time, with some
  // past the end.
  template <int kTimes>
  static int* appendPlaces(std::uint64_t bits, int x, int* to) {
    constexpr int kMany = 12;
    if (std::popcount(bits) < kMany) {
      for (; bits != 0; bits &= bits - 1, to += kTimes) {
        for (int i = 0; i < kTimes; ++i) to[i] = x + std::countr_zero(bits);
      }
      return to;
    }
    for (; bits != 0; bits >>= 8U, x += 8) {
      const auto byte = static_cast<unsigned char>(bits);
      const unsigned char* places = kPlaces[byte].data();
      for (int k = 0; k < 8 * kTimes; ++k) to[k] = x + places[k / kTimes];
      to += kTimes * std::popcount(byte);
    }
    return to;
  }

  // Room for the ends that a block may have.
  int* room() {
    constexpr std::size_t kMost = 2 * kBlock + 8;
    if (ends_.size() < used_ + kMost) ends_.resize(2 * ends_.size() + kMost);
    return ends_.data() + used_;
  }

  void markValue(const T* row, int nx, T value) {
    std::uint64_t open = 0;  // whether the pixel before the block lies in a run
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
      const int* to = appendPlaces<1>(changes, x, room());
      used_ = static_cast<std::size_t>(to - ends_.data());
    }
    if (used_ % 2 != 0) ends_[used_++] = nx;
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
      const int* to = appendPlaces<2>(changes, x, room());
      used_ = static_cast<std::size_t>(to - ends_.data());
    }
    *room() = nx;
    ++used_;
  }

  std::vector<int> ends_;
  std::size_t first_ = 0;  // where the latest row begins
  std::size_t used_ = 0;
};

}  // namespace orva::bip

#endif
