// readUIF() on any file.
#include "orva/image_io/image_io.h"
#include "tests/fuzz/raw_images_fuzz.h"

namespace orva::test {

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content = textOf(data, size);
  if (isLarge(content, {0, 1, 2})) return 0;
  compareWithReference(content, image_io::readUIF, reference::readUIF(std::string(content)));
  return 0;
}

}  // namespace orva::test
