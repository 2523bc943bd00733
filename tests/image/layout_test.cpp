// The layout of images in memory that callers compiled against the headers rely on: the order of
// the fields and of the slots of the virtual table.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "tests/support/images.h"
#include "tests/support/raw_image.h"

namespace orva::test {
namespace {

// The ints of an object from byte `first` on.
template <std::size_t N, class T>
std::array<int, N> intsOf(const T& object, std::size_t first) {
  std::array<int, N> ints{};
  static_assert(sizeof object >= sizeof ints);
  std::memcpy(ints.data(), reinterpret_cast<const unsigned char*>(&object) + first, sizeof ints);
  return ints;
}

constexpr std::size_t kTablePointer = sizeof(void*);

TEST(ImageLayout, HoldsTenSizesBehindTheTablePointer) {
  static_assert(sizeof(Image) == kTablePointer + 10 * sizeof(int));
  const BareImage img(2, 3, 5, 7, 11);
  const std::array<int, 10> expected{2, 3,  5 * 7 * 11, 2 * 3,     2 * 3 * 5 * 7 * 11,
                                     7, 11, 5,          2 * 3 * 5, 2 * 3 * 5 * 7};
  EXPECT_EQ((intsOf<10>(img, kTablePointer)), expected);
}

TEST(ImageLayout, OfATypedImageAddsSizeOwnerAndPixels) {
  image<short> img(2, 3, 1, 1, 1);
  const std::size_t behind = sizeof(Image);
  EXPECT_EQ((intsOf<1>(img, behind)), (std::array<int, 1>{2}));
  struct Pointers {
    const ArrayData* owner;
    const void* pixels;
  } pointers{};
  constexpr std::size_t kPointers = sizeof(image<short>) - sizeof pointers;
  static_assert(kPointers >= sizeof(Image) + sizeof(int));
  std::memcpy(&pointers, reinterpret_cast<const unsigned char*>(&img) + kPointers, sizeof pointers);
  EXPECT_EQ(pointers.pixels, img.data());
  // The owner: a count, and the block that the image points at.
  const void* block = nullptr;
  std::memcpy(&block, reinterpret_cast<const unsigned char*>(pointers.owner) + sizeof(void*),
              sizeof block);
  EXPECT_EQ(block, img.data());
  EXPECT_EQ((intsOf<1>(*pointers.owner, 0)), (std::array<int, 1>{1}));
  const image<short> copy(img);  // NOLINT: counted
  EXPECT_EQ((intsOf<1>(*pointers.owner, 0)), (std::array<int, 1>{2}));
}

TEST(ImageLayout, OfARectangleAndPointsIsAsListed) {
  static_assert(sizeof(Roi) == 4 * sizeof(int) && sizeof(Point) == 4 && sizeof(Point3D) == 6);
  EXPECT_EQ((intsOf<4>(Roi(1, 2, 3, 4), 0)), (std::array<int, 4>{1, 2, 3, 4}));
  EXPECT_EQ(offsetof(Point, x), 0U);
  EXPECT_EQ(offsetof(Point, y), 2U);
  EXPECT_EQ(offsetof(Point3D, x), 0U);
  EXPECT_EQ(offsetof(Point3D, y), 2U);
  EXPECT_EQ(offsetof(Point3D, z), 4U);
}

// The entry of the virtual table that a pointer to a virtual member function names: such a pointer
// begins with the entry's offset, which is even, and in some of its forms one more.
template <class Member>
int entryOf(Member member) {
  struct Representation {
    std::ptrdiff_t offset;
    std::ptrdiff_t adjustment;
  };
  static_assert(sizeof member == sizeof(Representation));
  const auto r = std::bit_cast<Representation>(member);
  return static_cast<int>(r.offset / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

template <class... Arguments>
int pixelEntry() {
  return entryOf<float (Image::*)(Arguments...) const>(&Image::pixel);
}

template <class... Arguments>
int setPixelEntry() {
  return entryOf<void (Image::*)(Arguments...)>(&Image::setPixel);
}

TEST(ImageLayout, KeepsTheOrderOfVirtualSlots) {
  EXPECT_EQ(entryOf(&Image::copy), 0);
  EXPECT_EQ(entryOf(&Image::roi), 1);
  EXPECT_EQ(entryOf(&Image::clone), 2);
  EXPECT_EQ(entryOf(&Image::frame), 3);
  EXPECT_EQ(entryOf(&Image::channel), 4);
  EXPECT_EQ(entryOf(&Image::timepoint), 5);
  EXPECT_EQ(entryOf(&Image::scale), 6);
  // The destructor has two entries, 7 and 8.
  EXPECT_EQ(entryOf(&Image::data), 9);
  EXPECT_EQ(entryOf(&Image::format), 10);
  EXPECT_EQ(entryOf(&Image::pixelSize), 11);
  EXPECT_EQ((pixelEntry<int, int, int, int, int>()), 12);
  EXPECT_EQ((pixelEntry<int, int, int>()), 13);
  EXPECT_EQ((pixelEntry<int, int>()), 14);
  EXPECT_EQ((pixelEntry<const Point&>()), 15);
  EXPECT_EQ((pixelEntry<int>()), 16);
  EXPECT_EQ((setPixelEntry<int, float>()), 17);
  EXPECT_EQ((setPixelEntry<int, int, float>()), 18);
  EXPECT_EQ((setPixelEntry<int, int, int, float>()), 19);
  EXPECT_EQ((setPixelEntry<int, int, int, int, float>()), 20);
  EXPECT_EQ((setPixelEntry<int, int, int, int, int, float>()), 21);
  EXPECT_EQ(entryOf(&Image::fmin), 22);
  EXPECT_EQ(entryOf(&Image::fmax), 23);
}

}  // namespace
}  // namespace orva::test
