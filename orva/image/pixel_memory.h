// Allocation of pixel blocks. For the library's own sources; not installed.
#ifndef ORVA_IMAGE_PIXEL_MEMORY_H
#define ORVA_IMAGE_PIXEL_MEMORY_H

#include <cstddef>

namespace orva {

// `bytes` bytes aligned for SIMD, set to zero if `zero`; null if the allocation fails.
unsigned char* newPixelMemory(std::size_t bytes, bool zero);

// Releases a block of newPixelMemory(); does nothing for null.
void deletePixelMemory(unsigned char* block);

}  // namespace orva

#endif
