// readIHT() on any file.
#include "orva/image_io/image_io.h"
#include "tests/fuzz/raw_images_fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content = orva_fuzz::textOf(data, size);
  if (orva_fuzz::isLarge(content, {0, 1, 7})) return 0;
  orva_fuzz::compareWithReference(content, orva::image_io::readIHT,
                                  reference::readIHT(std::string(content)));
  return 0;
}
