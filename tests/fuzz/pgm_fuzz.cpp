// readPGM() behind the check that the command makes first, on any file that begins like a PGM file.
// A file that the check lets pass must not end the process.
#include "apps/file_error.h"
#include "apps/image_file.h"
#include "tests/fuzz/fuzz_target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string content = "P5" + std::string(orva_fuzz::textOf(data, size));
  const orva_fuzz::ContentFile file(content);
  try {
    const auto img = orva_app::readPgmFile(file.name());
    const std::string_view pixels(static_cast<const char*>(img->data()),
                                  static_cast<std::size_t>(img->npix()));
    orva_fuzz::require(content.find(pixels) != std::string::npos, "pixels as the file holds them");
  } catch (const orva_app::FileError&) {
    return 0;
  }
  return 0;
}
