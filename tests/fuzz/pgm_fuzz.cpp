// readPGM() behind the check that the command makes first, on any file that begins like a PGM file.
// A file that the check lets pass must not end the process, and gives the image of the reference
// implementation.
#include "formats/image_file.h"
#include "tests/fuzz/command_read.h"

namespace orva::test {

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string content = "P5" + std::string(textOf(data, size));
  const ContentFile file(content);
  const auto read = commandRead([&] { return formats::readPgmFile(file.name()); });
  requireSamePnm(read, readPnm(content, 1), BYTE);
  return 0;
}

}  // namespace orva::test
