// readPGM() behind the check that the command makes first, on any file that begins like a PGM file.
// A file that the check lets pass must not end the process, and gives the image of the reference
// implementation.
#include "formats/image_file.h"
#include "tests/fuzz/command_read.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string content = "P5" + std::string(orva_fuzz::textOf(data, size));
  const orva_fuzz::ContentFile file(content);
  const auto read = orva_fuzz::commandRead([&] { return orva::formats::readPgmFile(file.name()); });
  orva_fuzz::requireSamePnm(read, orva_fuzz::readPnm(content, 1), orva::BYTE);
  return 0;
}
