// What a lack of memory does. For the library's own sources and formats/; not installed.
#ifndef ORVA_IMAGE_BAD_ALLOC_H
#define ORVA_IMAGE_BAD_ALLOC_H

#include <new>

#include "orva/image/image.h"

namespace orva {

// Until the end of the scope, out_of_memory() throws std::bad_alloc instead of ending the process,
// on this thread and in the tasks that it hands to a runner.
class BadAllocScope {
 public:
  explicit BadAllocScope(bool throws = true);
  BadAllocScope(const BadAllocScope&) = delete;
  BadAllocScope& operator=(const BadAllocScope&) = delete;
  ~BadAllocScope();

 private:
  bool before_;
};

// Whether the calling thread is in such a scope.
bool throwsBadAlloc();

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
