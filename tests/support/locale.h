// A locale whose number format fits no file format.
#ifndef ORVA_TESTS_SUPPORT_LOCALE_H
#define ORVA_TESTS_SUPPORT_LOCALE_H

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <locale>
#include <string>

#include "tests/support/files.h"

namespace orva::test {

// Digits in groups of three with '.' between them, and a decimal comma.
class ForeignDigits : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  char do_decimal_point() const override { return ','; }
};

// Sets an environment variable to another value to the end of the scope.
class Environment {
 public:
  Environment(const char* name, const std::string& value) : name_(name) {
    const char* before = std::getenv(name);
    wasSet_ = before != nullptr;
    if (wasSet_) before_ = before;
    ::setenv(name, value.c_str(), 1);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() {
    if (wasSet_) {
      ::setenv(name_, before_.c_str(), 1);
    } else {
      ::unsetenv(name_);
    }
  }

 private:
  const char* name_;
  bool wasSet_ = false;
  std::string before_;
};

// A locale with a decimal comma for the C functions of this process and its children: a copy of
// C.UTF-8 with the decimal point changed, since the machine may have no such locale installed.
class CommaLocale {
 public:
  static constexpr const char* kName = "xx_XX.utf8";

  CommaLocale() : path_("LOCPATH", folder_.file("")) {
    namespace fs = std::filesystem;
    const fs::path copy = folder_.file(kName);
    std::error_code missing;
    fs::copy("/usr/lib/locale/C.utf8", copy, fs::copy_options::recursive, missing);
    if (missing) return;
    const std::string file = copy / "LC_NUMERIC";
    std::string numeric = readFile(file);
    std::replace(numeric.begin(), numeric.end(), '.', ',');
    fs::remove(file);
    writeFile(file, numeric);
  }

 private:
  TempDir folder_;
  Environment path_;
};

// Makes all new streams and the C functions use these digits to the end of the scope.
class ForeignLocale {
 public:
  ForeignLocale()
      : previous_(std::locale::global(std::locale(std::locale::classic(), new ForeignDigits))),
        previousC_(std::setlocale(LC_ALL, nullptr)) {
    std::setlocale(LC_ALL, CommaLocale::kName);
  }
  ForeignLocale(const ForeignLocale&) = delete;
  ForeignLocale& operator=(const ForeignLocale&) = delete;
  ~ForeignLocale() {
    std::locale::global(previous_);
    std::setlocale(LC_ALL, previousC_.c_str());
  }

 private:
  CommaLocale comma_;
  std::locale previous_;
  std::string previousC_;
};

}  // namespace orva::test

#endif
