// Bytes of pixels turned round in place, and numbers read from a buffer.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

template <class T>
class ByteOrder : public testing::Test {};
TYPED_TEST_SUITE(ByteOrder, PixelTypes);

template <class T>
class ByteOrderMatchesReferenceAtEveryWidth : public testing::Test {};
TYPED_TEST_SUITE(ByteOrderMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(ByteOrderMatchesReferenceAtEveryWidth, WhenReversed) {
  Random random(301);
  for (const Shape& s : oddShapesAndWidths()) {
    image<TypeParam> img = randomImage<TypeParam>(random, s);
    const image<TypeParam> before = img.duplicate();
    image_io::reverse_byte_order(img);
    EXPECT_EQ(reference::pixelBytes(img),
              reference::reversedBytes(img.format(), reference::pixelBytes(before)));
    EXPECT_EQ(sizesOf(img), sizesOf(before));
    image_io::reverse_byte_order(img);
    EXPECT_TRUE(sameImage(img, before));
  }
}

TYPED_TEST(ByteOrder, IsAdjustedForReadingOnlyWhenItDiffers) {
  Random random(302);
  image<TypeParam> img = randomImage<TypeParam>(random, {9, 4, 2, 1, 3});
  const image<TypeParam> before = img.duplicate();
  image_io::adjust_byte_order_for_read(img, true);
  EXPECT_TRUE(sameImage(img, before));
  image_io::adjust_byte_order_for_read(img, false);
  EXPECT_EQ(reference::pixelBytes(img),
            reference::reversedBytes(img.format(), reference::pixelBytes(before)));
}

TYPED_TEST(ByteOrder, IsNotAdjustedForWritingAsIsIntended) {
  Random random(303);
  image<TypeParam> img = randomImage<TypeParam>(random, {9, 4, 2, 1, 3});
  const image<TypeParam> before = img.duplicate();
  image_io::adjust_byte_order_for_write(img);
  EXPECT_TRUE(sameImage(img, before));
}

TYPED_TEST(ByteOrder, OfSharedPixelsChangesForAll) {
  Random random(304);
  image<TypeParam> img = randomImage<TypeParam>(random, {7, 3});
  const image<TypeParam> sharing = img;
  image_io::reverse_byte_order(img);
  EXPECT_TRUE(sameImage(sharing, img));
  EXPECT_EQ(sharing.data(), img.data());
}

TYPED_TEST(ByteOrder, OfANullImageIsNothing) {
  for (const Shape& s : {Shape{0, 1}, Shape{5, 5, 0}, Shape{0, 0, 0, 0, 0}}) {
    image<TypeParam> none = blank<TypeParam>(s);
    image_io::reverse_byte_order(none);
    image_io::adjust_byte_order_for_read(none, false);
    image_io::adjust_byte_order_for_write(none);
    EXPECT_TRUE(none.isNull());
    EXPECT_EQ(none.data(), nullptr);
  }
}

TEST(ReverseByteOrder, GoesByTheFormatCode) {
  Random random(305);
  struct Row {
    int format;
    int pixelSize;
  };
  for (const Row& row :
       {Row{0, 1}, Row{1, 4}, Row{2, 2}, Row{3, 2}, Row{4, 4}, Row{5, 4}, Row{6, 3}, Row{7, 6},
        Row{8, 12}, Row{9, 12}, Row{10, 4}, Row{11, 4}, Row{-1, 4}, Row{99, 8}}) {
    for (const Shape& s : {Shape{1, 1}, Shape{5, 3}, Shape{3, 2, 2, 2, 2}}) {
      std::vector<unsigned char> bytes;
      const int npix = s.nx * s.ny * s.nz * s.nc * s.nt;
      for (int i = 0; i < npix * row.pixelSize; ++i) {
        bytes.push_back(randomPixel<unsigned char>(random));
      }
      RawImage img(s, row.format, bytes, std::vector<float>(static_cast<std::size_t>(npix)));
      ASSERT_EQ(img.pixelSize(), row.pixelSize);
      const std::string before = reference::pixelBytes(img);
      image_io::reverse_byte_order(img);
      EXPECT_EQ(reference::pixelBytes(img), reference::reversedBytes(row.format, before))
          << row.format;
    }
  }
}

TEST(ReverseByteOrder, TurnsKnownNumbers) {
  const auto turned = [](auto v) {
    image<decltype(v)> img(1, 1, 1, 1, 1);
    img.pixels()[0] = v;
    image_io::reverse_byte_order(img);
    return img.pixels()[0];
  };
  EXPECT_EQ(turned(short{0x0102}), 0x0201);
  EXPECT_EQ(turned(0x01020304), 0x04030201);
  EXPECT_EQ(turned(0xFF000001U), 0x010000FFU);
  EXPECT_EQ(turned(static_cast<unsigned char>(0x12)), 0x12);
}

TEST(ReverseByteOrder, OfAnImageWithoutMemoryIsNothing) {
  // The pixel count of the second is negative.
  for (const Shape& s : {Shape{0, 4}, Shape{-2, 3}}) {
    class Numbers : public BareImage {
     public:
      using BareImage::BareImage;
      int format() const override { return INT; }
      int pixelSize() const override { return 4; }
    };
    Numbers img(s.nx, s.ny, s.nz, s.nc, s.nt);
    image_io::reverse_byte_order(img);
    EXPECT_EQ(img.npix(), s.nx * s.ny);
  }
}

TEST(ReverseByteOrder, OfANegativePixelCountIsNothing) {
  class Backward : public BareImage {
   public:
    Backward() : BareImage(-1, 2, 1, 1, 1) {}
    int format() const override { return SHORT; }
    int pixelSize() const override { return 2; }
    void* data() const override { return bytes_->data() + 4; }

   private:
    std::unique_ptr<std::array<char, 8>> bytes_ = std::make_unique<std::array<char, 8>>(
        std::array<char, 8>{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'});
  };
  Backward img;
  ASSERT_EQ(img.npix(), -2);
  image_io::reverse_byte_order(img);
  EXPECT_EQ(std::string(static_cast<const char*>(img.data()) - 4, 8), "abcdefgh");
}

constexpr int kLittleEndian = 1;

TEST(ExtractShort, ReadsTheFirstTwoBytesAsLittleEndian) {
  for (int low = 0; low < 256; ++low) {
    for (int high = 0; high < 256; ++high) {
      // Two bytes are enough: the address sanitizer sees a read of more.
      const std::vector<unsigned char> buffer = {static_cast<unsigned char>(low),
                                                 static_cast<unsigned char>(high)};
      short result = 77;
      image_io::extractShortDataFromBuffer(buffer.data(), kLittleEndian, 0, result);
      const int expected = low + 256 * high;
      ASSERT_EQ(result, expected < 32768 ? expected : expected - 65536);
    }
  }
}

TEST(ExtractShort, ReadingTheLastTwoOfFourBytesIsIntended) {
  for (const int flag : {0, 2, -1, 256}) {
    for (int low = 0; low < 256; ++low) {
      for (int high = 0; high < 256; ++high) {
        const std::array<unsigned char, 4> buffer = {0xAB, 0xCD, static_cast<unsigned char>(high),
                                                     static_cast<unsigned char>(low)};
        short result = 77;
        image_io::extractShortDataFromBuffer(buffer.data(), flag, 0, result);
        const int expected = low + 256 * high;
        ASSERT_EQ(result, expected < 32768 ? expected : expected - 65536);
      }
    }
  }
}

TEST(ExtractLong, TakesFourBytesInEitherOrder) {
  Random random(306);
  for (int round = 0; round < 2000; ++round) {
    std::array<unsigned char, 4> b{};
    for (unsigned char& byte : b) byte = randomPixel<unsigned char>(random);
    const std::int64_t leastFirst = b[0] + 256LL * b[1] + 65536LL * b[2] + 16777216LL * b[3];
    const std::int64_t mostFirst = b[3] + 256LL * b[2] + 65536LL * b[1] + 16777216LL * b[0];
    const auto signedOf = [](std::int64_t v) { return v < 2147483648LL ? v : v - 4294967296LL; };
    int result = 77;
    image_io::extractLongDataFromBuffer(b.data(), kLittleEndian, 0, result);
    EXPECT_EQ(result, signedOf(leastFirst));
    for (const int flag : {0, 2, -1, 256}) {
      image_io::extractLongDataFromBuffer(b.data(), flag, 0, result);
      EXPECT_EQ(result, signedOf(mostFirst));
    }
  }
}

TEST(Extract, StartsAtTheOffset) {
  const std::array<unsigned char, 9> buffer = {9, 8, 7, 6, 5, 4, 3, 2, 1};
  short s = 0;
  int v = 0;
  image_io::extractShortDataFromBuffer(buffer.data(), kLittleEndian, 7, s);
  EXPECT_EQ(s, 0x0102);
  image_io::extractShortDataFromBuffer(buffer.data(), 0, 5, s);
  EXPECT_EQ(s, 0x0201);
  image_io::extractLongDataFromBuffer(buffer.data(), kLittleEndian, 5, v);
  EXPECT_EQ(v, 0x01020304);
  image_io::extractLongDataFromBuffer(buffer.data(), 0, 5, v);
  EXPECT_EQ(v, 0x04030201);
  image_io::extractShortDataFromBuffer(buffer.data() + 8, kLittleEndian, -8, s);
  EXPECT_EQ(s, 0x0809);
}

}  // namespace
}  // namespace orva::test
