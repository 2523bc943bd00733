// Compression by a function of the surrounding JavaScript, whose output is that of zlib.
#ifndef ORVA_WEB_NATIVE_DEFLATE_H
#define ORVA_WEB_NATIVE_DEFLATE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace orva::web {

// The strategies of zlib.
enum class Strategy { kDefault = 0, kFiltered = 1 };

// A zlib stream of level 6 with a window of 2 to the power `windowBits` bytes, 9 to 15; without a
// header and a checksum where `windowBits` is negative.
std::string deflated(std::string_view bytes, int windowBits, Strategy strategy);

// The checksum of ZIP, gzip and PNG files. Of several pieces one after the other, with the result
// so far as `start`.
std::uint32_t crc32(std::string_view bytes, std::uint32_t start = 0);

}  // namespace orva::web

#endif
