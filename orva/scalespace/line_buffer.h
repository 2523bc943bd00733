// Float buffers of the filters, whose allocation failure ends the process. For the library's own
// sources; not installed.
#ifndef ORVA_SCALESPACE_LINE_BUFFER_H
#define ORVA_SCALESPACE_LINE_BUFFER_H

#include <cstddef>
#include <memory>
#include <new>

namespace orva::scalespace {

// Writes "Out of memory" to standard error and ends the process with status 1.
[[noreturn]] void exitOutOfBufferMemory();

// `count` uninitialized floats.
inline std::unique_ptr<float[]> newLineBuffer(std::size_t count) {
  std::unique_ptr<float[]> line(new (std::nothrow) float[count]);
  if (!line) exitOutOfBufferMemory();
  return line;
}

}  // namespace orva::scalespace

#endif
