// Result files that are written whole or not at all.
#ifndef ORVA_FORMATS_OUTPUT_FILE_H
#define ORVA_FORMATS_OUTPUT_FILE_H

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/temporary.h"
#include "formats/text.h"

namespace orva::formats {

// Writes `content` to `path` through a temporary file beside it, so that a failure, or a signal
// that ends the process, leaves what was there before. Links are followed: the file behind them is
// replaced, or made where there is none. A path that is no regular file (a pipe, a device), or that
// a standard stream goes to, is written to directly. Throws FileError, with the path in its text.
void writeFile(const std::filesystem::path& path, std::string_view content);

// The absolute path of a file without links, whether or not it exists: equal for two names of one
// file. A path that cannot be resolved is only normalized.
std::filesystem::path resolvedPath(const std::filesystem::path& path);

// True when `path` names the file that standard output goes to, under whatever name.
bool isStandardOutput(const std::filesystem::path& path);

// Writes all of `content` to an open file. Returns 0 or the error number.
int writeAll(int file, std::string_view content);

struct FileContent {
  std::filesystem::path path;
  std::string content;
  // Hands on the content piece by piece instead, where it is set. May be called several times.
  std::function<void(const Append&)> pieces{};

  void forEachPiece(const Append& append) const {
    if (pieces) {
      pieces(append);
    } else {
      append(content);
    }
  }
};

// As writeFile(), for files that belong together: none is put into its place before all are
// complete, and a signal ends the process before the first or after the last. Only an error in just
// that moment, or the loss of the machine, leaves some new and some old. Of what is no regular file
// some may have been written when another fails.
void writeFiles(const std::vector<FileContent>& files);

// A directory beside a result, for files that a library call writes by name. It is removed with
// this object or at the end of the process, with all that has not been moved out. Throws FileError
// with the result's path.
class WorkDirectory {
 public:
  explicit WorkDirectory(const std::filesystem::path& result);

  std::filesystem::path path() const { return directory_.name(); }

 private:
  Temporary directory_;
};

}  // namespace orva::formats

#endif
