// The memory of pixels; not installed.
#ifndef ORVA_IMAGE_PIXEL_MEMORY_H
#define ORVA_IMAGE_PIXEL_MEMORY_H

#include <cstddef>

namespace orva {

// `bytes` bytes, zeros when `zero` is set; null where there is no memory for them.
unsigned char* newPixelMemory(std::size_t bytes, bool zero);

// Releases what newPixelMemory() gave; nothing for null.
void deletePixelMemory(unsigned char* block);

}  // namespace orva

#endif
