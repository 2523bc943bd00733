#include "orva/image/points.h"

#include <csignal>
#include <cstdlib>
#include <iostream>

namespace orva {

void dividedByZero() {
  std::cerr << "Warning: divided by 0\n";
  std::exit(1);
}

void trapDivision() {
  std::raise(SIGFPE);
  std::abort();  // where the signal is ignored
}

}  // namespace orva
