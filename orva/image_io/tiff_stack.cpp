#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <set>

#include "orva/image_io/image_io.h"
#include "orva/util/global.h"

namespace orva::image_io {
namespace {

constexpr int kEntrySize = 12;    // bytes of an entry in a directory
constexpr int kLittleEndian = 1;  // byte order as an argument; any other is big-endian

// The number in `count` bytes, the most significant one first.
std::uint32_t bigEndian(const unsigned char* bytes, int count) {
  std::uint32_t value = 0;
  for (int i = 0; i < count; ++i) value = value << 8U | bytes[i];
  return value;
}

std::uint32_t littleEndian(const unsigned char* bytes, int count) {
  std::uint32_t value = 0;
  for (int i = count - 1; i >= 0; --i) value = value << 8U | bytes[i];
  return value;
}

std::uint32_t number(const unsigned char* bytes, int count, int byteOrder) {
  return byteOrder == kLittleEndian ? littleEndian(bytes, count) : bigEndian(bytes, count);
}

bool read(std::istream& in, unsigned char* bytes, std::size_t count) {
  return static_cast<bool>(
      in.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count)));
}

// The number of entries that directories beside each other have room for, and a million more for
// small files, whose directories may overlap.
std::int64_t mostEntries(std::istream& in) {
  constexpr std::int64_t kMore = 1 << 20;
  in.seekg(0, std::ios::end);
  const std::int64_t size = in.tellg();
  return size / kEntrySize + kMore;
}

// Reads the directory at `offset`: sets the stack count at every entry that holds one, and then
// `offset` to that of the next directory. False where the file ends early or `left` entries are
// read; what was found before stays.
bool readDirectory(std::istream& in, int byteOrder, std::uint32_t& offset, std::int64_t& left,
                   short& stackCount) {
  constexpr std::uint32_t kStackTag = 33629;
  std::array<unsigned char, kEntrySize> bytes{};
  if (!in.seekg(offset) || !read(in, bytes.data(), 2)) return false;
  for (std::uint32_t entries = number(bytes.data(), 2, byteOrder); entries > 0; --entries) {
    if (--left < 0 || !read(in, bytes.data(), bytes.size())) return false;
    if (number(bytes.data(), 2, byteOrder) != kStackTag) continue;
    extractShortDataFromBuffer(bytes.data(), byteOrder, 4, stackCount);
  }
  if (!read(in, bytes.data(), 4)) return false;
  offset = number(bytes.data(), 4, byteOrder);
  return true;
}

}  // namespace

void extractShortDataFromBuffer(const unsigned char* buffer, int byteOrder, int offset,
                                short& result) {
  const unsigned char* bytes = buffer + offset;
  // Intended: the other order takes the last two bytes of a slot of four.
  result = static_cast<short>(byteOrder == kLittleEndian ? littleEndian(bytes, 2)
                                                         : bigEndian(bytes + 2, 2));
}

void extractLongDataFromBuffer(const unsigned char* buffer, int byteOrder, int offset,
                               int& result) {
  result = static_cast<int>(number(buffer + offset, 4, byteOrder));
}

int returnStackCount(const std::string& filename) {
  std::ifstream in(filename, std::ios::binary);
  std::array<unsigned char, 8> header{};
  const bool whole = read(in, header.data(), header.size());
  const int byteOrder = header[0] == 'I' ? kLittleEndian : 0;
  std::cout << "lsb" << byteOrder << '\n';

  short result = -1;
  std::int64_t left = whole ? mostEntries(in) : 0;
  std::set<std::uint32_t> visited;
  std::uint32_t offset = number(header.data() + 4, 4, byteOrder);
  for (int page = 0; whole && visited.insert(offset).second; ++page) {
    if (!readDirectory(in, byteOrder, offset, left, result)) break;
    std::cout << toString(page) << '\n';
    if (offset == 0) break;
  }
  return result;
}

}  // namespace orva::image_io
