#include "formats/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <list>
#include <optional>
#include <string>
#include <system_error>

#include "formats/file_error.h"
#include "formats/termination_signals.h"

namespace orva::formats {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path, int error) {
  errno = error;
  throw FileError::fromErrno(path.string() + " can not be written");
}

// 0, or the error number.
int writePieces(int file, const FileContent& content) {
  int error = 0;
  content.forEachPiece([&](std::string_view piece) {
    if (error == 0) error = writeAll(file, piece);
  });
  return error;
}

// Writes and closes; 0, or the error number.
int finish(int file, const FileContent& content) {
  int error = 0;
  try {
    error = writePieces(file, content);
  } catch (...) {
    ::close(file);
    throw;
  }
  const int closed = ::close(file) == 0 ? 0 : errno;
  return error != 0 ? error : closed;
}

mode_t usualMode() {
  // To ask umask() is to change it, for other threads too.
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    unsigned given = 0;
    if (word == "Umask:" && status >> std::oct >> given) return 0666 & ~given;
  }
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

// That of the file which is replaced, or the usual one.
mode_t modeOf(const fs::path& target) {
  struct stat status {};
  return ::stat(target.c_str(), &status) == 0 ? status.st_mode & 0777 : usualMode();
}

// True when `path` is the file that the open `stream` goes to.
bool isFileOf(int stream, const fs::path& path) {
  struct stat file {};
  struct stat status {};
  return ::stat(path.c_str(), &file) == 0 && ::fstat(stream, &status) == 0 &&
         status.st_dev == file.st_dev && status.st_ino == file.st_ino;
}

// Standard output or error if `path` is the file that it goes to, as /dev/stdout is, or -1. Such a
// file may hold what others wrote, and more may follow.
int standardStream(const fs::path& path) {
  if (isFileOf(STDOUT_FILENO, path)) return STDOUT_FILENO;
  return isFileOf(STDERR_FILENO, path) ? STDERR_FILENO : -1;
}

// Behind the links that `path` is the first of; the last of them may lead to nothing yet.
fs::path behindLinks(fs::path path) {
  constexpr int kMaxLinks = 40;  // as the system has it
  std::error_code none;
  for (int i = 0; i < kMaxLinks && fs::is_symlink(fs::symlink_status(path, none)); ++i) {
    path = path.parent_path() / fs::read_symlink(path, none);
  }
  return path;
}

// A file that is complete under a temporary name beside its own. A path that is no regular file is
// written to at once.
class StagedFile {
 public:
  explicit StagedFile(const FileContent& file) : path_(file.path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(path_, ignored);
    if (fs::is_directory(status)) fail(path_, EISDIR);
    if (const int stream = standardStream(path_); stream >= 0) {
      if (const int error = writePieces(stream, file); error != 0) fail(path_, error);
      return;
    }
    // Through a link the file behind it is replaced, not the link. A file without a name of its
    // own can only be written to.
    std::error_code unnamed;
    target_ = fs::exists(status) ? fs::canonical(path_, unnamed) : behindLinks(path_);
    if (fs::is_symlink(fs::symlink_status(target_, ignored))) fail(path_, ELOOP);
    if (unnamed || (fs::exists(status) && !fs::is_regular_file(status))) {
      writeDirectly(file);
    } else {
      writeBeside(file);
    }
  }

  void putInPlace() {
    if (!temporary_) return;
    if (const int error = temporary_->moveTo(target_); error != 0) fail(path_, error);
  }

 private:
  void writeDirectly(const FileContent& content) const {
    const int file = ::open(path_.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    const int error = file < 0 ? errno : finish(file, content);
    if (error != 0) fail(path_, error);
  }

  void writeBeside(const FileContent& content) {
    // A short name: the target's own may be as long as names can be.
    temporary_.emplace(target_.parent_path(), Temporary::Kind::kFile);
    if (temporary_->error() != 0) fail(path_, temporary_->error());
    const int file = temporary_->file();
    const int error = ::fchmod(file, modeOf(target_)) == 0 ? 0 : errno;
    const int written = finish(file, content);
    if (error != 0 || written != 0) fail(path_, error != 0 ? error : written);
  }

  fs::path path_;
  fs::path target_;
  std::optional<Temporary> temporary_;  // none where it is written directly
};

}  // namespace

fs::path resolvedPath(const fs::path& path) {
  std::error_code error;
  const fs::path whole = fs::absolute(path, error);
  const fs::path place = fs::weakly_canonical(behindLinks(whole), error);
  return error ? whole.lexically_normal() : place;
}

int writeAll(int file, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(file, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

bool isStandardOutput(const fs::path& path) { return isFileOf(STDOUT_FILENO, path); }

void writeFiles(const std::vector<FileContent>& files) {
  std::list<StagedFile> staged;
  for (const FileContent& file : files) staged.emplace_back(file);
  const SignalBlock pause;
  for (StagedFile& file : staged) file.putInPlace();
}

void writeFile(const fs::path& path, std::string_view content) {
  writeFiles({{path, std::string(content)}});
}

WorkDirectory::WorkDirectory(const fs::path& result)
    : directory_(result.has_parent_path() ? result.parent_path() : ".",
                 Temporary::Kind::kDirectory) {
  if (directory_.error() != 0) fail(result, directory_.error());
}

}  // namespace orva::formats
