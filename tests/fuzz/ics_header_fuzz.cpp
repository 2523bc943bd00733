// parse_ics_header_file() on any file.
#include <memory>

#include "orva/image_io/icsparser.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/reference/image_io.h"

namespace orva::test {
namespace {

struct Free {
  void operator()(char* text) const { std::free(text); }
};

bool isSame(const char* text, const std::optional<std::string>& expected) {
  return text == nullptr ? !expected : expected == text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content = textOf(data, size);
  const reference::IcsHeader expected = reference::icsHeader(std::string(content));
  const ContentFile file(content);
  const Captured captured;
  char* dataset = nullptr;
  char* type = nullptr;
  int x = 0;
  int y = 0;
  int z = 0;
  int c = 0;
  int t = 0;
  int bigEndian = 0;
  const int result =
      parse_ics_header_file(file.name().c_str(), &dataset, &type, &x, &y, &z, &c, &t, &bigEndian);
  const std::unique_ptr<char, Free> ownedDataset(dataset);
  const std::unique_ptr<char, Free> ownedType(type);
  require(result == expected.result, "the result of the reference");
  require(isSame(dataset, expected.dataset), "its data set");
  require(isSame(type, expected.type), "its pixel type");
  require(x == expected.x && y == expected.y && z == expected.z, "its sizes");
  require(c == expected.c && t == expected.t, "its channels and time points");
  require(bigEndian == expected.bigEndian, "its byte order");
  return 0;
}

}  // namespace orva::test
