#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <set>
#include <vector>

#include "orva/image_io/image_io.h"

namespace orva::image_io {
namespace {

constexpr int kLeastFirst = 1;  // the flag for this byte order; any other is most significant first

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
  return byteOrder == kLeastFirst ? littleEndian(bytes, count) : bigEndian(bytes, count);
}

bool read(std::istream& in, unsigned char* bytes, std::size_t count) {
  return static_cast<bool>(
      in.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count)));
}

// One directory of a TIFF file: its entries, and the offset of the next one.
struct Directory {
  static constexpr std::size_t kEntrySize = 12;

  std::vector<unsigned char> entries;
  std::uint32_t next = 0;

  // False when the file ends early.
  bool readFrom(std::istream& in, std::uint32_t offset, int byteOrder) {
    std::array<unsigned char, 4> bytes{};
    if (!in.seekg(offset) || !read(in, bytes.data(), 2)) return false;
    entries.resize(number(bytes.data(), 2, byteOrder) * kEntrySize);
    if (!read(in, entries.data(), entries.size()) || !read(in, bytes.data(), 4)) return false;
    next = number(bytes.data(), 4, byteOrder);
    return true;
  }
};

}  // namespace

void extractShortDataFromBuffer(const unsigned char* buffer, int byteOrder, int offset,
                                short& result) {
  const unsigned char* bytes = buffer + offset;
  // Intended: the other order takes the last two bytes of a slot of four.
  result = static_cast<short>(byteOrder == kLeastFirst ? littleEndian(bytes, 2)
                                                       : bigEndian(bytes + 2, 2));
}

void extractLongDataFromBuffer(const unsigned char* buffer, int byteOrder, int offset,
                               int& result) {
  result = static_cast<int>(number(buffer + offset, 4, byteOrder));
}

int returnStackCount(const std::string& filename) {
  constexpr std::uint32_t kStackTag = 33629;
  std::ifstream in(filename, std::ios::binary);
  std::array<unsigned char, 8> header{};
  const bool whole = read(in, header.data(), header.size());
  const int byteOrder = header[0] == 'I' ? kLeastFirst : 0;
  std::cout << "lsb" << byteOrder << '\n';

  short result = -1;
  std::set<std::uint32_t> visited;
  std::uint32_t offset = number(header.data() + 4, 4, byteOrder);
  Directory directory;
  for (int page = 0; whole && visited.insert(offset).second; ++page) {
    if (!directory.readFrom(in, offset, byteOrder)) break;
    for (std::size_t i = 0; i < directory.entries.size(); i += Directory::kEntrySize) {
      const unsigned char* entry = directory.entries.data() + i;
      if (number(entry, 2, byteOrder) == kStackTag) {
        extractShortDataFromBuffer(entry, byteOrder, 4, result);
      }
    }
    std::cout << page << '\n';
    if (directory.next == 0) break;
    offset = directory.next;
  }
  return result;
}

}  // namespace orva::image_io
