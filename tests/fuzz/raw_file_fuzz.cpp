// The command's readers of IHT and UIF, which check what the library's take as it is. The first
// byte of an input chooses one of them.
#include <array>
#include <cstdint>
#include <cstring>

#include "formats/image_file.h"
#include "tests/fuzz/command_read.h"

namespace orva::test {
namespace {

// Places of the numbers in a header.
struct Format {
  const char* name;
  std::size_t headerBytes;
  std::array<std::size_t, 3> sizes;
  std::size_t type;
};
constexpr Format iht{"IHT", 40, {1, 0, 7}, 6};
constexpr Format uif{"UIF", 20, {0, 1, 2}, 4};

std::int32_t fieldOf(const std::string& content, std::size_t field) {
  std::int32_t value = 0;
  std::memcpy(&value, content.data() + 4 * field, sizeof value);
  return value;
}

// What is wrong with a file, or nothing.
std::string failureOf(const std::string& content, const Format& format) {
  const std::string damaged = std::string("is a damaged ") + format.name + " file: ";
  if (content.size() < format.headerBytes) return damaged + "the header is cut off";
  const std::int32_t type = fieldOf(content, format.type);
  if (type != 0 && type != 1 && type != 3 && type != 4)
    return damaged + "its pixel type is unknown";
  const std::int64_t pixelBytes = type == 0 ? 1 : type == 3 ? 2 : 4;
  bool isNegative = false;
  bool isEmpty = false;
  for (const std::size_t field : format.sizes) {
    isNegative = isNegative || fieldOf(content, field) < 0;
    isEmpty = isEmpty || fieldOf(content, field) == 0;
  }
  if (isNegative) return damaged + "a size is negative";
  if (isEmpty) return "the image has no pixels";
  std::int64_t pixels = 1;
  for (const std::size_t field : format.sizes) {
    pixels *= fieldOf(content, field);
    if (pixels > 2147483647) return damaged + "its sizes are too large";
  }
  if (static_cast<std::int64_t>(content.size() - format.headerBytes) < pixels * pixelBytes) {
    return damaged + "pixels are missing";
  }
  const bool isRead = format.type == iht.type || type == 0;
  return isRead ? "" : "is a UIF file of wide pixels; only 8-bit ones are read";
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const bool isUif = input.take<std::uint8_t>() % 2 == 1;
  const std::string content(input.rest());
  const ContentFile file(content);
  const CommandRead read = commandRead([&] {
    return isUif ? formats::readUifFile(file.name()) : formats::readIhtFile(file.name());
  });
  require(read.failure == failureOf(content, isUif ? uif : iht), "the failure of the reference");
  if (!read.img) return 0;
  const reference::RawRead expected =
      isUif ? reference::readUIF(content) : reference::readIHT(content);
  require(expected.img != nullptr, "an image where the reference has one");
  requireSameImage(*read.img, *expected.img, "the image of the reference");
  return 0;
}

}  // namespace orva::test
