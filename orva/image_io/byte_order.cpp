#include <algorithm>
#include <cstddef>

#include "orva/image_io/image_io.h"

namespace orva::image_io {
namespace {

// Reverses each of `count` groups of `size` bytes.
void reverseGroups(unsigned char* bytes, std::ptrdiff_t count, std::ptrdiff_t size) {
  for (unsigned char* end = bytes + count * size; bytes != end; bytes += size) {
    std::reverse(bytes, bytes + size);
  }
}

}  // namespace

void reverse_byte_order(Image& img) {
  auto* bytes = static_cast<unsigned char*>(img.data());
  if (bytes == nullptr || img.npix() < 0) return;
  const std::ptrdiff_t count = img.npix();
  switch (img.format()) {
    case INT:
    case FLOAT:
    case UINT:
      reverseGroups(bytes, count, 4);
      return;
    case USHORT:
    case SHORT:
      reverseGroups(bytes, count, 2);
      return;
    case SHORTRGB:
      reverseGroups(bytes, 3 * count, 2);
      return;
    case INTRGB:
    case FLOATRGB:
      reverseGroups(bytes, 3 * count, 4);
      return;
    default:
      return;
  }
}

void adjust_byte_order_for_read(Image& img, bool inOrder) {
  if (!inOrder) reverse_byte_order(img);
}

void adjust_byte_order_for_write(Image& /*img*/) {}

}  // namespace orva::image_io
