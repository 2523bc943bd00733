// A locale that writes numbers as no file format does.
#ifndef ORVA_TESTS_SUPPORT_LOCALE_H
#define ORVA_TESTS_SUPPORT_LOCALE_H

#include <clocale>
#include <locale>
#include <string>

namespace orva_test {

// Digits in groups of three with '.' between them, and a decimal comma.
class ForeignDigits : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  char do_decimal_point() const override { return ','; }
};

// Makes these digits those of all new streams to the end of the scope and, where the machine has a
// locale with a decimal comma, those of the C functions too.
class ForeignLocale {
 public:
  ForeignLocale()
      : previous_(std::locale::global(std::locale(std::locale::classic(), new ForeignDigits))),
        previousC_(std::setlocale(LC_ALL, nullptr)) {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
      if (std::setlocale(LC_ALL, name) != nullptr) break;
    }
  }
  ForeignLocale(const ForeignLocale&) = delete;
  ForeignLocale& operator=(const ForeignLocale&) = delete;
  ~ForeignLocale() {
    std::locale::global(previous_);
    std::setlocale(LC_ALL, previousC_.c_str());
  }

 private:
  std::locale previous_;
  std::string previousC_;
};

}  // namespace orva_test

#endif
