// How work ends that can not have the memory it asks for; not installed.
#ifndef ORVA_IMAGE_WITH_MEMORY_H
#define ORVA_IMAGE_WITH_MEMORY_H

#include <new>

#include "orva/image/image.h"

namespace orva {

// What work() returns. A lack of memory ends the process, as it does for pixels.
template <class Work>
auto withMemory(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    out_of_memory();
  }
}

}  // namespace orva

#endif
