#include "web/native/deflate.h"

#include <array>
#include <cstddef>

// Compresses and keeps the result; returns its size. copyDeflated() writes it to memory and forgets
// it.
extern "C" {
[[clang::import_module("host"), clang::import_name("deflate")]] std::size_t deflateInHost(
    const char* bytes, std::size_t size, int windowBits, int strategy);
[[clang::import_module("host"), clang::import_name("copyDeflated")]] void copyDeflated(char* to);
}

namespace orva::web {
namespace {

constexpr std::array<std::uint32_t, 256> crcTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t n = 0; n < table.size(); ++n) {
    std::uint32_t c = n;
    for (int bit = 0; bit < 8; ++bit) c = (c & 1U) != 0 ? 0xedb88320U ^ (c >> 1U) : c >> 1U;
    table[n] = c;
  }
  return table;
}

}  // namespace

std::string deflated(std::string_view bytes, int windowBits, Strategy strategy) {
  std::string result(
      deflateInHost(bytes.data(), bytes.size(), windowBits, static_cast<int>(strategy)), '\0');
  copyDeflated(result.data());
  return result;
}

std::uint32_t crc32(std::string_view bytes, std::uint32_t start) {
  static constexpr auto kTable = crcTable();
  std::uint32_t c = ~start;
  for (const char b : bytes) {
    c = kTable[(c ^ static_cast<unsigned char>(b)) & 0xffU] ^ (c >> 8U);
  }
  return ~c;
}

}  // namespace orva::web
