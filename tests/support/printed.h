// Captures what the library prints on the standard streams, in memory rather than in a file.
#ifndef ORVA_TESTS_SUPPORT_PRINTED_H
#define ORVA_TESTS_SUPPORT_PRINTED_H

#include <iostream>
#include <sstream>
#include <string>

namespace orva::test {

// The text that call() writes to std::cout and std::cerr, in order.
template <class Call>
std::string printedBy(Call call) {
  std::stringbuf text;
  std::streambuf* out = std::cout.rdbuf(&text);
  std::streambuf* err = std::cerr.rdbuf(&text);
  call();
  std::cout.rdbuf(out);
  std::cerr.rdbuf(err);
  return text.str();
}

}  // namespace orva::test

#endif
