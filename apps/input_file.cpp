#include "apps/input_file.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "formats/file_error.h"
#include "formats/image_file.h"
#include "formats/output_file.h"
#include "formats/text.h"

namespace orva::apps {
namespace {

namespace fs = std::filesystem;
using formats::FileError;

// At the end of standard input nothing.
std::string_view nextOf(std::array<char, 65536>& buffer) {
  ssize_t n = 0;
  do {
    n = ::read(STDIN_FILENO, buffer.data(), buffer.size());
  } while (n < 0 && errno == EINTR);
  if (n < 0) throw FileError::fromErrno("standard input cannot be read");
  return {buffer.data(), static_cast<std::size_t>(n)};
}

// Closes the file of a temporary at the end of the scope.
class OpenFile {
 public:
  explicit OpenFile(int file) : file_(file) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { ::close(file_); }

 private:
  int file_;
};

}  // namespace

bool isStandardStream(const std::string& name) { return name == "-"; }

std::string stemOf(const std::string& image) {
  return isStandardStream(image) ? "stdin" : fs::path(image).stem().string();
}

InputFile::InputFile(const std::string& name) : path_(name) {
  if (!isStandardStream(name)) return;
  copyStandardInput();
  path_ = copy_->name();
  try {
    formats::kindOf(path_);
  } catch (const FileError&) {
    throw FileError(
        "is not a PGM, PPM, PNG or TIFF image; IHT, UIF and ICS files are known by their names and "
        "are not read from standard input");
  }
}

void InputFile::copyStandardInput() {
  std::array<char, 65536> buffer{};
  std::string_view piece = nextOf(buffer);  // before another file takes the number of a closed one
  if (piece.empty()) throw FileError("standard input is empty");
  std::error_code none;
  const fs::path directory = fs::temp_directory_path(none);
  if (none) throw FileError("standard input cannot be copied: TMPDIR names no directory");
  copy_.emplace(directory, formats::Temporary::Kind::kFile);
  const auto fail = [&](int error) {
    errno = error;
    throw FileError::fromErrno("standard input cannot be copied to " + directory.string());
  };
  if (copy_->error() != 0) fail(copy_->error());
  const OpenFile file(copy_->file());
  for (; !piece.empty(); piece = nextOf(buffer)) {
    if (const int error = formats::writeAll(copy_->file(), piece); error != 0) fail(error);
  }
}

fs::path withEnding(const fs::path& path, const std::string& ending) {
  // ".ome.tif" is one extension.
  const bool isOme = formats::isOmeName(path.string());
  fs::path name = isOme ? path.stem().stem() : path.stem();
  name += ending;
  if (isOme) name += path.stem().extension();
  name += path.extension();
  return path.parent_path() / name;
}

InputImages::InputImages(const std::string& name, const PlaneOptions& options, Slices slices)
    : InputFile(name), ChosenImages(InputFile::path(), options.chosen(), slices) {}

}  // namespace orva::apps
