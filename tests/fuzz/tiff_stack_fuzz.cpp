// returnStackCount() on any file.
#include "orva/image_io/image_io.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/reference/image_io.h"

namespace orva::test {

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content = textOf(data, size);
  const reference::StackCount expected = reference::stackCount(std::string(content));
  const ContentFile file(content);
  const Captured captured;
  const int count = image_io::returnStackCount(file.name());
  require(count == expected.count, "the count of the reference");
  require(captured.printed() == expected.printed, "the lines of the reference");
  return 0;
}

}  // namespace orva::test
