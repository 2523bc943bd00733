// Temporary files and directories, which do not outlive the process.
#ifndef ORVA_FORMATS_TEMPORARY_H
#define ORVA_FORMATS_TEMPORARY_H

#include <filesystem>
#include <string>

namespace orva::formats {

// From now on these signals and std::exit() first remove all temporary files and directories. A
// signal that is ignored stays ignored. To be called once.
void removeTemporariesAtExit();

// A new file or directory .orva-XXXXXX, removed with this object; a directory with the files in it.
class Temporary {
 public:
  enum class Kind { kFile, kDirectory };

  // Creates it in `parent`; "" is the current directory.
  Temporary(const std::filesystem::path& parent, Kind kind);
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;
  ~Temporary();

  // The error number if it could not be created, else 0.
  int error() const { return error_; }
  const std::string& name() const { return name_; }
  // A file is open for writing; the caller closes it.
  int file() const { return file_; }

  // Renames a file to `target`, replacing a file of that name. Returns 0 or an error number.
  int moveTo(const std::filesystem::path& target);

  // Removes the files and directories of all objects. A signal handler may call it.
  static void removeAll();

 private:
  void remove() const;
  void forget();

  std::string name_;
  Kind kind_;
  int file_ = -1;
  int error_ = 0;
  bool isListed_ = false;
  Temporary* next_ = nullptr;
};

}  // namespace orva::formats

#endif
