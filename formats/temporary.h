// Temporary files and directories, which do not outlive the process.
#ifndef ORVA_FORMATS_TEMPORARY_H
#define ORVA_FORMATS_TEMPORARY_H

#include <array>
#include <csignal>
#include <filesystem>
#include <string>

namespace orva::formats {

// The signals that end a process at a user's wish or for want of a reader.
inline constexpr std::array kEndingSignals{SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM};

// From now on these signals, and std::exit(), first remove what Temporary objects stand for. A
// signal that is ignored stays so. To be called once.
void removeTemporariesAtTheEnd();

// Holds the ending signals back to the end of the scope, and `another` if one is given.
class SignalPause {
 public:
  explicit SignalPause(int another = 0);
  SignalPause(const SignalPause&) = delete;
  SignalPause& operator=(const SignalPause&) = delete;
  ~SignalPause();

 private:
  sigset_t before_{};
};

// A new file or directory .orva-XXXXXX that goes away with this object; a directory with the files
// in it.
class Temporary {
 public:
  enum class Kind { kFile, kDirectory };

  // Makes it in `parent`, where "" is the current directory, too.
  Temporary(const std::filesystem::path& parent, Kind kind);
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;
  ~Temporary();

  // Why it could not be made: an error number, or 0.
  int error() const { return error_; }
  const std::string& name() const { return name_; }
  // A file is open for writing; the caller closes it.
  int file() const { return file_; }

  // Gives a file its final name, replacing what has it. Returns 0 or an error number.
  int moveTo(const std::filesystem::path& target);

  // Of all objects. A signal handler may call it.
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
