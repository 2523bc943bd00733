// The command's readers on any file: PGM behind its check, PPM, PNG and TIFF, told apart by their
// first bytes.
#include "apps/file_error.h"
#include "apps/image_file.h"
#include "apps/silence.h"
#include "tests/fuzz/fuzz_target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orva_fuzz::Input input(data, size);
  const bool oneFrame = input.take<std::uint8_t>() % 2 == 1;
  const orva_fuzz::ContentFile file(input.rest());
  const orva_app::Silence silence;
  try {
    const auto img = orva_app::readImageFile(
        file.name(), oneFrame ? std::optional<int>(0) : std::nullopt, orva_app::ColourUse::kKept);
    orva_fuzz::require(img != nullptr, "an image or an error");
    orva_fuzz::require((img->data() == nullptr) == (img->npix() == 0), "memory for its pixels");
  } catch (const orva_app::FileError&) {
    return 0;
  }
  return 0;
}
