#include "orva/image/points.h"

#include <cstdlib>
#include <iostream>

namespace orva {

void dividedByZero() {
  std::cerr << "Warning: divided by 0\n";
  std::exit(1);
}

}  // namespace orva
