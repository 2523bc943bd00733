// What the library says on the standard streams, without a file that would have to grow.
#ifndef ORVA_TESTS_SUPPORT_HEARD_H
#define ORVA_TESTS_SUPPORT_HEARD_H

#include <iostream>
#include <sstream>
#include <string>

namespace orva::test {

// The text that call() puts into std::cout and std::cerr, in its order.
template <class Call>
std::string heardFrom(Call call) {
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
