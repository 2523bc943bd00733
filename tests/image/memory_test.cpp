// Images without enough memory, and sizes that no image can have.
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/images.h"
#include "tests/support/memory_limit.h"

namespace orva::test {
namespace {

const char* const kMessage = "Error: out of memory\n";

template <class Work>
void expect(const char* name, const Work& work) {
  expectMemoryToRunOut(name, {kMessage}, work);
}

void drop(const Image* img) { const std::unique_ptr<const Image> owned(img); }

TEST(ImagesWithoutMemory, EndTheProcess) {
  const auto img = blank<short>({1000, 500, 2, 1, 2});
  expect("constructor", [] { blank<int>({1000, 1000}); });
  expect("clone", [&] { drop(img.clone()); });
  expect("duplicate", [&] { img.duplicate(); });
  expect("timepoint", [&] { drop(img.timepoint(0)); });
  expect("channel", [&] { drop(img.channel(0, 1)); });
  expect("roi", [&] { drop(img.roi({0, 0, 0}, {999, 499, 3})); });
  expect("scale", [&] { drop(img.scale(1200, 1200, 1)); });
  expect("scale of a row", [&] { drop(img.scale(1500000, 1, 1)); });
  expect("toFloatImage", [&] { toFloatImage(img); });
  expect("toRgbImage", [&] { toRgbImage(img); });
  expect("toByteImage", [&] { toByteImage(img, true); });
  expect("interior", [] { Image::interior(4000, 4000, 1); });
}

template <class T>
class Oversized : public testing::Test {};
TYPED_TEST_SUITE(Oversized, PixelTypes);

TYPED_TEST(Oversized, ScaledImagesEndTheProcess) {
  const auto img = blank<TypeParam>({3, 2, 2});
  struct Sizes {
    int x, y, z;
  };
  for (const Sizes& s : {Sizes{65536, 32768, 1}, Sizes{65536, 65536, 1}, Sizes{1 << 20, 1 << 20, 4},
                         Sizes{-1, 1 << 30, 1}, Sizes{-1, -1, 2147483647}}) {
    EXPECT_EXIT(drop(img.scale(s.x, s.y, s.z)), testing::ExitedWithCode(1),
                "^Error: out of memory\n$");
  }
}

}  // namespace
}  // namespace orva::test
