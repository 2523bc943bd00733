// What the functions for files read of an image of another class: pixel(i) or the samples behind
// data(). The two disagree here, so that only one of them gives the result.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/raw_image.h"

namespace orva::test {
namespace {

RawImage foreign() {
  return {Shape{3, 1}, SHORT, std::vector<short>{258, 2, 3}, {10.5F, 20.0F, 300.0F}};
}
const std::string kSamples("\x02\x01\x02\x00\x03\x00", 6);

TEST(ForeignFiles, ConvertPixelByPixel) {
  const RawImage img = foreign();
  EXPECT_TRUE(sameImage(image_io::convertToByteImage(img, true),
                        imageOf<unsigned char>({3, 1}, {0, 8, 255})));
  EXPECT_TRUE(sameImage(image_io::convertToShortImage(img), imageOf<short>({3, 1}, {10, 20, 300})));
  EXPECT_TRUE(sameImage(image_io::convertToIntImage(img), imageOf<int>({3, 1}, {10, 20, 300})));
  EXPECT_TRUE(
      sameImage(image_io::convertToUIntImage(img), imageOf<unsigned>({3, 1}, {10, 20, 300})));
  EXPECT_TRUE(
      sameImage(image_io::convertToFloatImage(img), imageOf<float>({3, 1}, {10.5F, 20, 300})));
}

TEST(ForeignFiles, HoldTheSamples) {
  const TempDir dir;
  const auto endOf = [&dir](const std::string& name) {
    const std::string content = readFile(dir.file(name));
    return content.substr(content.size() - kSamples.size());
  };
  image_io::writeUIF(dir.file("b.uif"), foreign());
  image_io::writeIHT(dir.file("b.iht"), foreign());
  image_io::writeICS(dir.file("b"), foreign());
  image_io::writeICS(image_io::IcsInfo(dir.file("c")), foreign());
  image_io::writeICS(image_io::MultiChannelIcsInfo(dir.file("d")), foreign());
  for (const char* name : {"b.uif", "b.iht", "b.ids", "c.ids", "d.ids"}) {
    EXPECT_EQ(endOf(name), kSamples) << name;
  }
}

TEST(ForeignFiles, ReverseTheSamples) {
  RawImage img = foreign();
  image_io::reverse_byte_order(img);
  const std::string bytes(static_cast<const char*>(img.data()), kSamples.size());
  EXPECT_EQ(bytes, std::string("\x01\x02\x00\x02\x00\x03", 6));
  EXPECT_EQ(img.pixel(0), 10.5F);
}

}  // namespace
}  // namespace orva::test
