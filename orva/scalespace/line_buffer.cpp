#include "orva/scalespace/line_buffer.h"

#include <cstdlib>
#include <iostream>

namespace orva::scalespace {

void exitOutOfBufferMemory() {
  std::cerr << "Out of memory\n";
  std::exit(1);
}

}  // namespace orva::scalespace
