// The end of ZIP archives of many files.
#ifndef ORVA_FORMATS_ZIP64_H
#define ORVA_FORMATS_ZIP64_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace orva::formats {

// Completes an archive without a comment: the record at its end has 16 bits for the number of
// files, so that of more than these hold is stated in a record of the ZIP64 format before it
// (APPNOTE.TXT, 4.3.14 and 4.3.15).
inline void completeZipEnd(std::string& archive, std::size_t files) {
  constexpr std::size_t kMaxFiles = 0xFFFF;
  constexpr std::size_t kEnd = 22;  // bytes of the record
  if (files < kMaxFiles) return;
  const auto append = [](std::string& to, std::uint64_t value, int bytes) {
    for (; bytes > 0; --bytes, value >>= 8U) to += static_cast<char>(value & 0xffU);
  };
  const std::size_t place = archive.size() - kEnd;
  const std::string sizeAndOffset = archive.substr(place + 12, 8);
  const std::string wide(4, '\0');
  std::string record = "PK\6\6";
  append(record, 44, 8);  // length of what follows
  append(record, 45, 2);  // made by and needs version 4.5
  append(record, 45, 2);
  append(record, 0, 8);  // disks
  append(record, files, 8);
  append(record, files, 8);
  record += sizeAndOffset.substr(0, 4) + wide + sizeAndOffset.substr(4) + wide;
  record += "PK\6\7";
  append(record, 0, 4);  // disk
  append(record, place, 8);
  append(record, 1, 4);  // disks
  archive.replace(place + 8, 4, "\xff\xff\xff\xff");
  archive.insert(place, record);
}

}  // namespace orva::formats

#endif
