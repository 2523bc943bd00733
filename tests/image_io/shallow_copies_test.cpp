// Bytes are reversed in the pixels that an image shares: every shallow copy shows it.
#include <gtest/gtest.h>

#include "orva/image_io/image_io.h"
#include "tests/support/images.h"

namespace orva::test {
namespace {

TEST(ReversedBytes, AreSeenThroughShallowCopies) {
  image<short> img = imageOf<short>({2, 1}, {1, 0x1234});
  const image<short> copy(img);
  image_io::reverse_byte_order(img);
  EXPECT_TRUE(sameImage(copy, imageOf<short>({2, 1}, {256, 0x3412})));
  image_io::adjust_byte_order_for_read(img, false);
  EXPECT_TRUE(sameImage(copy, imageOf<short>({2, 1}, {1, 0x1234})));
}

}  // namespace
}  // namespace orva::test
