// Result files that are written whole or not at all.
#ifndef ORVA_APPS_OUTPUT_FILE_H
#define ORVA_APPS_OUTPUT_FILE_H

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace orva_app {

// Puts `content` into `path` through a temporary file beside it, so that a failure leaves what was
// there before. A path that is no regular file (a pipe, a device), or that a standard stream goes
// to, is written to directly. Throws FileError, with the path in its text.
void writeFile(const std::filesystem::path& path, std::string_view content);

// True when `path` names the file that standard output goes to, under whatever name.
bool isStandardOutput(const std::filesystem::path& path);

struct FileContent {
  std::filesystem::path path;
  std::string content;
};

// The same for files that belong together: none is put into its place before all are complete. Of
// what is no regular file some may have been written when another fails.
void writeFiles(const std::vector<FileContent>& files);

// A directory beside a result, for files that a library call writes by name. It goes away with this
// object, and with it what has not been moved out. Throws FileError with the result's path.
class WorkDirectory {
 public:
  explicit WorkDirectory(const std::filesystem::path& result);
  WorkDirectory(const WorkDirectory&) = delete;
  WorkDirectory& operator=(const WorkDirectory&) = delete;
  ~WorkDirectory();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace orva_app

#endif
