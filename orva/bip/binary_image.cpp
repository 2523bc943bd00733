#include <algorithm>
#include <cstddef>

#include "orva/bip/bip.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {

bool isBinaryImage(const Image& img) {
  if (img.format() != BYTE) return false;
  const auto* bytes = static_cast<const unsigned char*>(img.data());
  constexpr std::ptrdiff_t kBlock = 4096;
  for (std::ptrdiff_t i = 0; i < img.npix(); i += kBlock) {
    const std::ptrdiff_t count = std::min(kBlock, img.npix() - i);
    unsigned char others = 0;
    unsigned char* found = &others;
    onWidestPath([=] {
      unsigned char any = 0;
      for (std::ptrdiff_t k = i; k < i + count; ++k) {
        any = static_cast<unsigned char>(any | (static_cast<unsigned char>(bytes[k] + 1) > 1));
      }
      *found = any;
    });
    if (others != 0) return false;
  }
  return true;
}

void reverse(image<unsigned char>& img) {
  unsigned char* pixels = img.pixels();
  parallelPixels(
      img.npix(),
      [=](std::ptrdiff_t begin, std::ptrdiff_t end) {
        onWidestPath([=] {
          ORVA_INDEPENDENT
          for (std::ptrdiff_t i = begin; i < end; ++i) {
            pixels[i] = static_cast<unsigned char>(~pixels[i]);
          }
        });
      },
      Interruption::Off);
}

}  // namespace orva::bip
