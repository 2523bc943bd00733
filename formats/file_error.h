// The exception for a file that cannot be read or written, with a message for the user.
#ifndef ORVA_FORMATS_FILE_ERROR_H
#define ORVA_FORMATS_FILE_ERROR_H

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace orva::formats {

class FileError : public std::runtime_error {
 public:
  explicit FileError(const std::string& what) : std::runtime_error(what) {}

  // "what: " and the text of the C library's last error.
  static FileError fromErrno(const std::string& what) {
    return FileError(what + ": " + std::strerror(errno));
  }
};

}  // namespace orva::formats

#endif
