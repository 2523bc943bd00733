// ZIP archives in memory.
#ifndef ORVA_FORMATS_ZIP_ARCHIVE_H
#define ORVA_FORMATS_ZIP_ARCHIVE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace orva::formats {

// An archive that depends on its files only: each has the first time that the format can state.
class ZipArchive {
 public:
  ZipArchive();
  ZipArchive(const ZipArchive&) = delete;
  ZipArchive& operator=(const ZipArchive&) = delete;
  ~ZipArchive();

  // Adds a file, compressed. Throws FileError for lack of memory.
  void add(const std::string& name, std::string_view content);

  // Ends the archive and returns its bytes. Throws as add().
  std::string finished();

 private:
  friend struct ZipMemory;  // what the library for the format calls

  std::string bytes_;
  std::size_t position_ = 0;
  std::size_t files_ = 0;
  void* archive_ = nullptr;
};

}  // namespace orva::formats

#endif
