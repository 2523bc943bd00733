#include "formats/kept_type.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "formats/file_error.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

using ImagePointer = std::unique_ptr<orva::Image>;

template <class Held, class Pixel = Held>
ImagePointer rounded(const image<float>& values, const char* type) {
  auto result = std::make_unique<image<Pixel>>(values.nx(), values.ny(), values.nframes(), 1, 1);
  for (int i = 0; i < values.npix(); ++i) {
    const double v = std::round(double{values.pixels()[i]});
    if (!(v >= double{std::numeric_limits<Held>::min()} &&
          v <= double{std::numeric_limits<Held>::max()})) {
      throw FileError("has a result of " + shortestDecimal(values.pixels()[i]) +
                      ", which its pixel type, " + type +
                      ", does not hold; leave out --keep-type for floats");
    }
    result->pixels()[i] = static_cast<Pixel>(v);
  }
  return result;
}

}  // namespace

ImagePointer inTypeOf(const orva::Image& like, const image<float>& values, bool isUnsigned16) {
  switch (like.format()) {
    case BYTE:
      return rounded<unsigned char>(values, "unsigned 8-bit");
    case SHORT:
      return rounded<short>(values, "signed 16-bit");
    case INT:
      return isUnsigned16 ? rounded<std::uint16_t, int>(values, "unsigned 16-bit")
                          : rounded<int>(values, "signed 32-bit");
    case UINT:
      return rounded<unsigned int>(values, "unsigned 32-bit");
    default:
      return std::make_unique<image<float>>(values);  // shares the pixels
  }
}

}  // namespace orva::formats
