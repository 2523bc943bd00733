// Maps std::bad_alloc to out_of_memory(). For the library's own sources; not installed.
#ifndef ORVA_IMAGE_BAD_ALLOC_H
#define ORVA_IMAGE_BAD_ALLOC_H

#include <new>

#include "orva/image/image.h"

namespace orva {

// Returns work(). If that throws std::bad_alloc, the process ends in out_of_memory().
template <class Work>
auto exitOnBadAlloc(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    out_of_memory();
  }
}

}  // namespace orva

#endif
