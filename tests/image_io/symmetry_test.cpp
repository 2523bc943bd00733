// Conversions and files treat every pixel alike: an image with its pixels rearranged gives the
// result, rearranged.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/shapes.h"
#include "tests/support/turns.h"

namespace {

using orva::image;
using orva_test::flipped;
using orva_test::Random;
using orva_test::randomImage;
using orva_test::reordered;
using orva_test::sameImage;
using orva_test::Shape;
using orva_test::volumeTurns;
namespace image_io = orva::image_io;

template <class T>
class Rearranged : public testing::Test {};
TYPED_TEST_SUITE(Rearranged, orva_test::PixelTypes);

TYPED_TEST(Rearranged, PixelsAreConvertedAlike) {
  Random random(701);
  for (const Shape& shape : orva_test::oddShapes()) {
    const auto img = randomImage<TypeParam>(random, shape);
    const auto order = orva_test::shuffledFrames(random, img);
    const auto some = reordered(img, order);
    EXPECT_TRUE(sameImage(image_io::convertToByteImage(some, true),
                          reordered(image_io::convertToByteImage(img, true), order)));
    EXPECT_TRUE(sameImage(image_io::convertToUIntImage(some),
                          reordered(image_io::convertToUIntImage(img), order)));
    EXPECT_TRUE(sameImage(image_io::convertToIntImage(some),
                          reordered(image_io::convertToIntImage(img), order)));
    EXPECT_TRUE(sameImage(image_io::convertToFloatImage(some),
                          reordered(image_io::convertToFloatImage(img), order)));
    for (std::size_t t = 0; t < 4; ++t) {
      const auto turned = volumeTurns<TypeParam>()[t](img);
      EXPECT_TRUE(sameImage(image_io::convertToShortImage(turned),
                            volumeTurns<short>()[t](image_io::convertToShortImage(img))));
      EXPECT_TRUE(
          sameImage(image_io::convertToByteImage(turned, true),
                    volumeTurns<unsigned char>()[t](image_io::convertToByteImage(img, true))));
    }
  }
}

TYPED_TEST(Rearranged, PixelsHaveTheirBytesReversedAlike) {
  Random random(702);
  const auto img = randomImage<TypeParam>(random, {7, 5, 3});
  auto some = flipped(img);
  auto all = img.duplicate();
  image_io::reverse_byte_order(some);
  image_io::reverse_byte_order(all);
  EXPECT_TRUE(sameImage(some, flipped(all)));
}

// The bytes behind a header are the pixels, frame after frame.
TYPED_TEST(Rearranged, FramesAreWrittenInTheirNewOrder) {
  Random random(703);
  const orva_test::TempDir dir;
  const auto img = randomImage<TypeParam>(random, {4, 3, 2, 2, 2});
  const auto order = orva_test::shuffledFrames(random, img);
  const auto some = reordered(img, order);
  const std::string name = dir.file("image.uif");
  const auto written = [&name](const orva::Image& i) {
    image_io::writeUIF(name, i);
    return orva_test::readFile(name);
  };
  const std::string before = written(img);
  const std::string after = written(some);
  ASSERT_EQ(after.size(), before.size());
  const std::size_t frame = reference::pixelBytes(img).size() / 8;
  const std::size_t header = before.size() - 8 * frame;
  EXPECT_EQ(after.substr(0, header), before.substr(0, header));
  for (std::size_t f = 0; f < 8; ++f) {
    EXPECT_EQ(after.substr(header + f * frame, frame),
              before.substr(header + static_cast<std::size_t>(order[f]) * frame, frame));
  }
}

}  // namespace
