// Reference implementation of the command's readers of PGM and PPM: the content of a file or a
// message, byte by byte.
#ifndef ORVA_TESTS_FUZZ_PNM_REFERENCE_H
#define ORVA_TESTS_FUZZ_PNM_REFERENCE_H

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace orva::test {

struct PnmReference {
  int width = 0;
  int height = 0;
  std::string samples;  // rows from the top, one sample or three a pixel
  std::string failure;  // empty for an image
};

// A decimal number of the header from place `at` on, which ends behind the character after the
// number. What is no number and no comment is skipped. None where the text ends or `isTooLong` is
// set, for a comment of more than 9000 characters.
inline std::optional<std::uint64_t> pnmNumber(const std::string& content, std::size_t& at,
                                              bool& isTooLong) {
  const auto isDigit = [&] { return content[at] >= '0' && content[at] <= '9'; };
  while (at < content.size() && !isDigit()) {
    if (content[at] == '#') {
      const std::size_t start = at + 1;
      while (at < content.size() && content[at] != '\n') ++at;
      const std::size_t length = at > start ? at - start : 0;
      isTooLong = length > 9000;
      if (isTooLong) return std::nullopt;
    }
    ++at;
  }
  if (at >= content.size()) return std::nullopt;
  std::uint64_t value = 0;
  // Saturates above the largest size of an image.
  for (; at < content.size() && isDigit(); ++at) {
    if (value <= std::numeric_limits<std::uint32_t>::max()) {
      value = 10 * value + static_cast<std::uint64_t>(content[at] - '0');
    }
  }
  ++at;
  return value;
}

// The content begins with "P5", and `channels` is 1, or with "P6", and it is 3.
inline PnmReference readPnm(const std::string& content, std::size_t channels) {
  const std::string kind = channels == 1 ? "PGM" : "PPM";
  const auto failed = [](const std::string& why) { return PnmReference{0, 0, "", why}; };
  const std::string damaged = "is a damaged " + kind + " file: ";
  std::size_t at = 2;
  std::vector<std::uint64_t> numbers;
  while (numbers.size() < 3) {
    bool isTooLong = false;
    const auto number = pnmNumber(content, at, isTooLong);
    if (isTooLong) return failed(damaged + "a comment is longer than 9000 characters");
    if (!number) return failed(damaged + "the header is cut off");
    numbers.push_back(*number);
  }
  if (numbers[2] > 255) return failed("is a 16-bit " + kind + " file; only 8-bit ones are read");
  if (numbers[0] == 0 || numbers[1] == 0) return failed("the image has no pixels");
  constexpr std::uint64_t kMax = std::numeric_limits<std::int32_t>::max();
  if (numbers[0] > kMax || numbers[1] > kMax || numbers[0] * numbers[1] > kMax) {
    return failed("the image is too large");
  }
  const std::uint64_t bytes = numbers[0] * numbers[1] * channels;
  const std::uint64_t left = at < content.size() ? content.size() - at : 0;
  if (left < bytes) return failed(damaged + "pixels are missing");
  return {static_cast<int>(numbers[0]), static_cast<int>(numbers[1]), content.substr(at, bytes),
          ""};
}

}  // namespace orva::test

#endif
