#include "formats/zip_archive.h"

#include <minizip/zip.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

#include "formats/file_error.h"
#include "formats/zip64.h"

namespace orva::formats {

// A file as the library sees it.
struct ZipMemory {
  static ZipArchive& archive(void* opaque) { return *static_cast<ZipArchive*>(opaque); }

  static voidpf open(voidpf opaque, const void* /*name*/, int /*mode*/) { return opaque; }

  static uLong read(voidpf opaque, voidpf /*stream*/, void* buffer, uLong size) {
    const std::string& bytes = archive(opaque).bytes_;
    std::size_t& position = archive(opaque).position_;
    const std::size_t n = std::min<std::size_t>(size, bytes.size() - position);
    std::copy_n(bytes.data() + position, n, static_cast<char*>(buffer));
    position += n;
    return n;
  }

  static uLong write(voidpf opaque, voidpf /*stream*/, const void* buffer, uLong size) {
    std::string& bytes = archive(opaque).bytes_;
    std::size_t& position = archive(opaque).position_;
    try {
      bytes.resize(std::max<std::size_t>(bytes.size(), position + size));
    } catch (const std::exception&) {
      return 0;  // no exception passes the library
    }
    std::copy_n(static_cast<const char*>(buffer), size, bytes.data() + position);
    position += size;
    return size;
  }

  static ZPOS64_T tell(voidpf opaque, voidpf /*stream*/) { return archive(opaque).position_; }

  static long seek(voidpf opaque, voidpf /*stream*/, ZPOS64_T offset, int origin) {
    const std::size_t size = archive(opaque).bytes_.size();
    std::size_t& position = archive(opaque).position_;
    const std::size_t start = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? position : size;
    if (start + offset > size) return -1;
    position = start + offset;
    return 0;
  }

  static int close(voidpf /*opaque*/, voidpf /*stream*/) { return 0; }
  static int error(voidpf /*opaque*/, voidpf /*stream*/) { return 0; }
};

namespace {

void require(bool good) {
  if (!good) throw FileError("the ZIP archive needs more memory than there is");
}

}  // namespace

ZipArchive::ZipArchive() {
  zlib_filefunc64_def memory{ZipMemory::open, ZipMemory::read,  ZipMemory::write, ZipMemory::tell,
                             ZipMemory::seek, ZipMemory::close, ZipMemory::error, this};
  archive_ = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &memory);
  require(archive_ != nullptr);
}

ZipArchive::~ZipArchive() {
  if (archive_ != nullptr) zipClose(archive_, nullptr);
}

void ZipArchive::add(const std::string& name, std::string_view content) {
  constexpr uLong kFirstDay = ((1UL << 5U) | 1UL) << 16U;  // 1980-01-01 00:00
  zip_fileinfo facts{};
  facts.dosDate = kFirstDay;
  require(zipOpenNewFileInZip(archive_, name.c_str(), &facts, nullptr, 0, nullptr, 0, nullptr,
                              Z_DEFLATED, Z_DEFAULT_COMPRESSION) == ZIP_OK);
  const bool isWritten = zipWriteInFileInZip(archive_, content.data(),
                                             static_cast<unsigned>(content.size())) == ZIP_OK;
  require(zipCloseFileInZip(archive_) == ZIP_OK && isWritten);
  ++files_;
}

std::string ZipArchive::finished() {
  require(zipClose(std::exchange(archive_, nullptr), nullptr) == ZIP_OK);
  completeZipEnd(bytes_, files_);
  return std::move(bytes_);
}

}  // namespace orva::formats
