// How the filters end when there is no memory for a kernel or a line; not installed.
#ifndef ORVA_SCALESPACE_LINE_MEMORY_H
#define ORVA_SCALESPACE_LINE_MEMORY_H

#include <cstddef>
#include <memory>
#include <new>

namespace orva::scalespace {

// Writes "Out of memory" to standard error and ends the process with status 1.
[[noreturn]] void outOfLineMemory();

// An array of `count` floats, not initialised.
inline std::unique_ptr<float[]> newLine(std::size_t count) {
  std::unique_ptr<float[]> line(new (std::nothrow) float[count]);
  if (!line) outOfLineMemory();
  return line;
}

}  // namespace orva::scalespace

#endif
