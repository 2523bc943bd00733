// returnStackCount() on any file.
#include "orva/image_io/image_io.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/reference/image_io.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content = orva_fuzz::textOf(data, size);
  const reference::StackCount expected = reference::stackCount(std::string(content));
  const orva_fuzz::ContentFile file(content);
  const orva_fuzz::Captured captured;
  const int count = orva::image_io::returnStackCount(file.name());
  orva_fuzz::require(count == expected.count, "the count of the reference");
  orva_fuzz::require(captured.printed() == expected.printed, "the lines of the reference");
  return 0;
}
