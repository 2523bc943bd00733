// Shared by the targets of the raw formats.
#ifndef ORVA_TESTS_FUZZ_RAW_IMAGES_FUZZ_H
#define ORVA_TESTS_FUZZ_RAW_IMAGES_FUZZ_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "orva/image/image.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/reference/image_io.h"

namespace orva::test {

// Whether the sizes at these offsets of the header declare so many pixels that an input only takes
// long.
inline bool isLarge(std::string_view content, const std::array<std::size_t, 3>& fields) {
  std::int64_t product = 1;
  for (const std::size_t field : fields) {
    const std::string_view bytes = content.substr(std::min(4 * field, content.size()), 4);
    std::int32_t size = 0;
    std::memcpy(&size, bytes.data(), bytes.size());
    if (size <= 0) return false;
    if ((product *= size) > 1 << 14) return true;
  }
  return false;
}

// A reader and its reference implementation agree on the content of a file.
template <class Read>
void compareWithReference(std::string_view content, const Read& read,
                          const reference::RawRead& expected) {
  const ContentFile file(content);
  std::unique_ptr<Image> img;
  std::string reported;
  {
    const Captured captured;
    img.reset(read(file.name()));
    reported = captured.reported();
  }
  require((img == nullptr) == (expected.img == nullptr), "an image where the reference has one");
  require(reported.empty() != expected.badSizes, "a message for impossible sizes only");
  if (!img) return;
  require(img->format() == expected.img->format(), "the pixel type of the reference");
  require(img->equalSize(*expected.img), "the size of the reference");
  require(reference::pixelBytes(*img) == reference::pixelBytes(*expected.img), "its pixels");
}

}  // namespace orva::test

#endif
