// formats/zip_archive.h without minizip, with the same bytes.
#include "formats/zip_archive.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "formats/zip64.h"
#include "web/native/deflate.h"

namespace orva::formats {
namespace {

constexpr std::uint16_t kNeededVersion = 20;
constexpr std::uint16_t kDeflated = 8;
constexpr std::uint16_t kFirstDay = (1U << 5U) | 1U;  // 1980-01-01

void append16(std::string& to, std::size_t v) {
  to += static_cast<char>(v & 0xffU);
  to += static_cast<char>((v >> 8U) & 0xffU);
}

void append32(std::string& to, std::size_t v) {
  append16(to, v);
  append16(to, v >> 16U);
}

// A file of the archive, for the directory at its end.
struct Entry {
  std::string name;
  std::uint32_t crc;
  std::size_t compressed;
  std::size_t size;
  std::size_t offset;
};

// What the header before a file and its row in the directory have in common.
void appendFacts(std::string& to, const Entry& e) {
  append16(to, kNeededVersion);
  append16(to, 0);  // flags
  append16(to, kDeflated);
  append16(to, 0);  // time
  append16(to, kFirstDay);
  append32(to, e.crc);
  append32(to, e.compressed);
  append32(to, e.size);
  append16(to, e.name.size());
  append16(to, 0);  // length of further fields
}

using Directory = std::vector<Entry>;

}  // namespace

ZipArchive::ZipArchive() : archive_(new Directory) {}

ZipArchive::~ZipArchive() { delete static_cast<Directory*>(archive_); }

void ZipArchive::add(const std::string& name, std::string_view content) {
  constexpr int kBareWindow = -15;
  const std::string compressed = web::deflated(content, kBareWindow, web::Strategy::kDefault);
  const Entry entry{name, web::crc32(content), compressed.size(), content.size(), bytes_.size()};
  static_cast<Directory*>(archive_)->push_back(entry);
  bytes_ += "PK\3\4";
  appendFacts(bytes_, entry);
  bytes_ += name + compressed;
}

std::string ZipArchive::finished() {
  const Directory& files = *static_cast<Directory*>(archive_);
  const std::size_t start = bytes_.size();
  for (const Entry& e : files) {
    bytes_ += "PK\1\2";
    append16(bytes_, 0);  // made by version 0
    appendFacts(bytes_, e);
    append16(bytes_, 0);  // length of the comment
    append16(bytes_, 0);  // disk
    append16(bytes_, 0);  // kind of content: not text
    append32(bytes_, 0);  // attributes
    append32(bytes_, e.offset);
    bytes_ += e.name;
  }
  const std::size_t size = bytes_.size() - start;
  bytes_ += "PK\5\6";
  append32(bytes_, 0);  // disks
  append16(bytes_, files.size());
  append16(bytes_, files.size());
  append32(bytes_, size);
  append32(bytes_, start);
  append16(bytes_, 0);  // length of the comment
  completeZipEnd(bytes_, files.size());
  return std::move(bytes_);
}

}  // namespace orva::formats
