// The value at a rank of many floats.
#ifndef ORVA_DETECT_ORDER_STATISTIC_H
#define ORVA_DETECT_ORDER_STATISTIC_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orva/util/parallel_for.h"

namespace orva::detect {

// An integer that is in the order of its number, which is not NaN; -0 comes before 0.
inline std::uint32_t orderedBits(float v) {
  const auto bits = std::bit_cast<std::uint32_t>(v);
  constexpr std::uint32_t kSign = 0x80000000U;
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

// The value that has `rank` others before it in ascending order. The sign of a zero is undefined.
//
// The bits of the result are found 10 or 11 at a time, from the highest on: each pass counts the
// next bits of the values that begin as the result does.
inline float orderStatistic(const std::vector<float>& values, std::size_t rank) {
  constexpr std::uint32_t kDigits = 2048;
  using Counts = std::array<std::uint32_t, kDigits>;
  const Parts parts(static_cast<std::ptrdiff_t>(values.size()), kPixelsPerTask, 64);
  std::vector<Counts> counts(parts.count());
  std::uint32_t result = 0;
  std::uint32_t known = 0;  // a mask of its bits so far
  for (const std::uint32_t shift : {22U, 11U, 0U}) {
    parallelFor(parts.count(), [&](std::size_t k) {
      counts[k] = {};
      for (std::ptrdiff_t i = parts.begin(k); i < parts.end(k); ++i) {
        const std::uint32_t bits = orderedBits(values[static_cast<std::size_t>(i)]);
        if ((bits & known) == result) ++counts[k][bits >> shift & (kDigits - 1)];
      }
    });
    for (std::uint32_t digit = 0; digit < kDigits; ++digit) {
      std::size_t inDigit = 0;
      for (const Counts& part : counts) inDigit += part[digit];
      if (rank < inDigit) {
        result |= digit << shift;
        break;
      }
      rank -= inDigit;
    }
    known |= (kDigits - 1) << shift;
  }
  constexpr std::uint32_t kSign = 0x80000000U;
  return std::bit_cast<float>((result & kSign) != 0 ? result ^ kSign : ~result);
}

}  // namespace orva::detect

#endif
