// The raw formats: every byte written, every file read back, damaged files.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

// Both formats, so that what holds for the two is tested once.
struct Format {
  std::string name;
  std::function<Image*(const std::string&)> read;
  std::function<reference::RawRead(const std::string&)> expected;
  std::size_t headerSize;
  // The header of an image of these sizes and this format code.
  std::function<std::string(int width, int height, int planes, int format)> header;

  std::string badSizes(const std::string& file) const {
    return "In image_io::read" + name + "\nError: invalid image size in " + file + "\n";
  }
};

std::string headerUIF(int width, int height, int planes, int format) {
  return reference::int32Bytes(width) + reference::int32Bytes(height) +
         reference::int32Bytes(planes) + reference::int32Bytes(4) + reference::int32Bytes(format);
}

// Fields that a reader passes over hold numbers of no use.
std::string headerIHT(int width, int height, int planes, int format) {
  return reference::int32Bytes(height) + reference::int32Bytes(width) + reference::int32Bytes(-7) +
         reference::int32Bytes(99) + reference::int32Bytes(12345) + reference::int32Bytes(-1) +
         reference::int32Bytes(format) + reference::int32Bytes(planes) + reference::int32Bytes(-3) +
         reference::int32Bytes(0x7FFFFFFF);
}

const std::vector<Format>& formats() {
  static const std::vector<Format> both = {
      {"UIF", image_io::readUIF, reference::readUIF, 20, headerUIF},
      {"IHT", image_io::readIHT, reference::readIHT, 40, headerIHT}};
  return both;
}

class Raw : public testing::Test {
 protected:
  std::string file() const { return dir_.file("some.raw"); }

  // Reads a file with this content and compares with the definition, messages included.
  void expectAsDefined(const Format& format, const std::string& content) const {
    writeFile(file(), content);
    const reference::RawRead expected = format.expected(content);
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const std::unique_ptr<Image> img(format.read(file()));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              expected.badSizes ? format.badSizes(file()) : "");
    ASSERT_EQ(img == nullptr, expected.img == nullptr) << format.name;
    if (img == nullptr) return;
    EXPECT_TRUE(sameImage(*img, *expected.img)) << format.name;
  }

  const TempDir& dir() const { return dir_; }

 private:
  TempDir dir_;
};

template <class T>
class RawOf : public Raw {};
TYPED_TEST_SUITE(RawOf, PixelTypes);

template <class T>
class RawMatchesReferenceAtEveryWidth : public Raw {};
TYPED_TEST_SUITE(RawMatchesReferenceAtEveryWidth, PixelTypes);

TYPED_TEST(RawMatchesReferenceAtEveryWidth, WhenWrittenAsUif) {
  Random random(321);
  for (const Shape& s : oddShapesAndWidths()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    image_io::writeUIF(this->file(), img);
    EXPECT_EQ(readFile(this->file()), reference::fileUIF(img));
  }
}

TYPED_TEST(RawMatchesReferenceAtEveryWidth, WhenWrittenAsIht) {
  Random random(322);
  for (const Shape& s : oddShapesAndWidths()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    image_io::writeIHT(this->file(), img);
    std::string content = readFile(this->file());
    ASSERT_GE(content.size(), 40U);
    content.replace(36, 4, 4, '\0');  // any address will do
    EXPECT_EQ(content, reference::fileIHT(img));
  }
}

// As the image with all frames as planes.
template <class T>
image<T> asStack(const image<T>& img) {
  image<T> stack(img.nx(), img.ny(), img.nframes(), 1, 1);
  for (int i = 0; i < img.npix(); ++i) stack.pixels()[i] = img.pixels()[i];
  return stack;
}

TYPED_TEST(RawOf, UifComesBackAsBytesAsIsIntended) {
  Random random(323);
  for (const Shape& s : oddShapesAndWidths()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    image_io::writeUIF(this->file(), img);
    const std::unique_ptr<Image> back(image_io::readUIF(this->file()));
    if constexpr (std::is_same_v<TypeParam, unsigned int> || std::is_same_v<TypeParam, Rgb>) {
      EXPECT_EQ(back, nullptr);
    } else {
      ASSERT_NE(back, nullptr);
      EXPECT_EQ(back->format(), BYTE);
      EXPECT_TRUE(isWhole(*back, {s.nx, s.ny, s.nz * s.nc * s.nt, 1, 1}));
      const auto count = static_cast<std::size_t>(img.npix());
      EXPECT_EQ(reference::pixelBytes(*back), reference::pixelBytes(img).substr(0, count));
    }
  }
}

TYPED_TEST(RawOf, IhtComesBackAsItWas) {
  Random random(324);
  for (const Shape& s : oddShapesAndWidths()) {
    const image<TypeParam> img = randomImage<TypeParam>(random, s);
    image_io::writeIHT(this->file(), img);
    const std::unique_ptr<Image> back(image_io::readIHT(this->file()));
    if constexpr (std::is_same_v<TypeParam, unsigned int> || std::is_same_v<TypeParam, Rgb>) {
      EXPECT_EQ(back, nullptr);
    } else {
      ASSERT_NE(back, nullptr);
      EXPECT_TRUE(sameImage(*back, asStack(img)));
    }
  }
}

TYPED_TEST(RawOf, NullImagesAreAHeaderAlone) {
  for (const Shape& s : {Shape{0, 1}, Shape{5, 4, 0}, Shape{0, 0, 0, 0, 0}, Shape{3, 0, 2, 1, 1}}) {
    const image<TypeParam> none = blank<TypeParam>(s);
    image_io::writeUIF(this->file(), none);
    EXPECT_EQ(readFile(this->file()), reference::fileUIF(none));
    this->expectAsDefined(formats()[0], readFile(this->file()));
    image_io::writeIHT(this->file(), none);
    EXPECT_EQ(readFile(this->file()).size(), 40U);
    this->expectAsDefined(formats()[1], readFile(this->file()));
  }
}

TEST_F(Raw, FormatsWithoutAnImageClassAreWrittenToo) {
  const RawImage img({2, 1}, FLOATRGB, std::vector<float>{1, 2, 3, 4, 5, 6}, {0, 0});
  image_io::writeUIF(file(), img);
  EXPECT_EQ(readFile(file()), reference::int32Bytes(2) + reference::int32Bytes(1) +
                                  reference::int32Bytes(1) + reference::int32Bytes(12) +
                                  reference::int32Bytes(9) + reference::pixelBytes(img));
  image_io::writeIHT(file(), img);
  EXPECT_EQ(readFile(file()).substr(40), reference::pixelBytes(img));
}

TEST_F(Raw, WritersReplaceAFile) {
  const image<unsigned char> img(2, 2, 1, 1, 1);
  for (const auto write : {image_io::writeUIF, image_io::writeIHT}) {
    writeFile(file(), std::string(1000, 'x'));
    write(file(), img);
    EXPECT_LT(readFile(file()).size(), 50U);
  }
}

TEST_F(Raw, OnlyFourFormatCodesAreRead) {
  for (int code = -2; code <= 12; ++code) {
    for (const Format& f : formats()) {
      const std::string content = f.header(2, 3, 1, code) + "abcdefghijklmnopqrstuvwxyz";
      writeFile(file(), content);
      const std::unique_ptr<Image> img(f.read(file()));
      const bool isRead = code == 0 || code == 1 || code == 3 || code == 4;
      ASSERT_EQ(img != nullptr, isRead) << f.name << code;
      expectAsDefined(f, content);
      if (!isRead) continue;
      EXPECT_EQ(img->format(), f.name == "UIF" ? 0 : code);
    }
  }
}

TEST_F(Raw, UnusedFieldsAreIgnored) {
  // The stored pixel size of a UIF file is one of them; the IHT header above holds the others.
  for (const int pixelSize : {-1, 0, 1, 8, 0x7FFFFFFF}) {
    writeFile(file(), reference::int32Bytes(2) + reference::int32Bytes(1) +
                          reference::int32Bytes(1) + reference::int32Bytes(pixelSize) +
                          reference::int32Bytes(0) + "ab");
    const std::unique_ptr<Image> img(image_io::readUIF(file()));
    ASSERT_NE(img, nullptr);
    EXPECT_EQ(reference::pixelBytes(*img), "ab");
  }
}

TEST_F(Raw, FilesCutAtEveryLengthReadAsZeroBehindTheCut) {
  for (const Format& f : formats()) {
    for (const int code : {0, 1, 3, 4, 5}) {
      const std::string whole = f.header(3, 2, 2, code) + std::string(12 * 4, 'p');
      for (std::size_t length = 0; length <= whole.size(); ++length) {
        expectAsDefined(f, whole.substr(0, length));
      }
    }
  }
}

TEST_F(Raw, WhatFollowsThePixelsIsNotRead) {
  for (const Format& f : formats()) {
    expectAsDefined(f, f.header(1, 2, 1, 0) + "ab" + std::string(5000, 'x'));
  }
}

TEST_F(Raw, SizesThatNoImageMayHaveAreRefused) {
  constexpr int kMax = 0x7FFFFFFF;
  struct Row {
    int width, height, planes;
  };
  const std::vector<Row> rows = {
      {-1, 1, 1},
      {1, -1, 1},
      {1, 1, -1},
      {-1, -1, 1},
      {-5, 0, 1},
      {0, -5, 1},
      {0, 0, -5},
      {-kMax - 1, 1, 1},
      {-kMax - 1, -kMax - 1, 0},
      {32768, 65536, 1},
      {1, 32768, 65536},
      {32768, 1, 65536},
      {65536, 65536, 1},
      {65536, 65536, 2},
      {65537, 65535, 1},
      {kMax, 2, 1},
      {2, 1, kMax},
      {1, kMax, 2},
      {kMax, kMax, 1},
      {kMax, kMax, kMax},
      {1 << 22, 1 << 22, 1 << 22},  // 2^66, of which the low 64 bits are 0
      {1 << 30, 1 << 30, 16}};      // 2^64
  for (const Format& f : formats()) {
    for (const Row& row : rows) {
      for (const int code : {0, 1, 3, 4, 5, 6}) {
        const std::string content = f.header(row.width, row.height, row.planes, code) + "pixels";
        ASSERT_TRUE(f.expected(content).badSizes);
        expectAsDefined(f, content);
      }
    }
  }
}

TEST_F(Raw, TheLargestSizesPassTheCheck) {
  // Of a format that is not read, so that no memory is asked for: null without a message.
  for (const Format& f : formats()) {
    expectAsDefined(f, f.header(0x7FFFFFFF, 1, 1, 5));
    expectAsDefined(f, f.header(1, 0x7FFFFFFF, 1, 5));
    expectAsDefined(f, f.header(1, 1, 0x7FFFFFFF, 5));
    expectAsDefined(f, f.header(7, 306783378, 1, 5));  // 2^31 - 2
    expectAsDefined(f, f.header(1 << 15, (1 << 16) - 1, 1, 5));
  }
}

TEST_F(Raw, SizesWithAZeroGiveANullImage) {
  constexpr int kMax = 0x7FFFFFFF;
  for (const Format& f : formats()) {
    for (const int code : {0, 1, 3, 4}) {
      for (const Shape& s : {Shape{0, 0, 0}, Shape{0, kMax, kMax}, Shape{kMax, 0, kMax},
                             Shape{kMax, kMax, 0}, Shape{4, 3, 0}, Shape{0, 1, 1}}) {
        const std::string content = f.header(s.nx, s.ny, s.nz, code) + "pixels";
        writeFile(file(), content);
        const std::unique_ptr<Image> img(f.read(file()));
        ASSERT_NE(img, nullptr);
        EXPECT_TRUE(img->isNull());
        EXPECT_EQ(sizesOf(*img), (std::vector<int>{s.nx, s.ny, s.nz, 1, 1}));
        expectAsDefined(f, content);
      }
    }
  }
}

class RawMatchesReference : public Raw {};

TEST_F(RawMatchesReference, ForRandomBytes) {
  Random random(325);
  for (int round = 0; round < 4000; ++round) {
    const Format& f = formats()[static_cast<std::size_t>(round % 2)];
    const auto size = [&] {
      const int kind = randomInt(random, 0, 19);
      return kind == 0 ? -randomInt(random, 1, 0x7FFFFFFF) : randomInt(random, 0, 12);
    };
    const int width = size();
    const int height = size();
    const int planes = size();
    std::string content = f.header(width, height, planes, randomInt(random, -1, 6));
    for (int n = randomInt(random, 0, 700); n > 0; --n) {
      content += static_cast<char>(randomInt(random, 0, 255));
    }
    // Some of the time cut short. Not with a negative size: cut, it is a very large one.
    const bool mayBeCut = width >= 0 && height >= 0 && planes >= 0;
    if (mayBeCut && randomInt(random, 0, 9) == 0) {
      content.resize(static_cast<std::size_t>(randomInt(random, 0, 45)));
    }
    expectAsDefined(f, content);
  }
}

TEST_F(Raw, FilesThatCannotBeOpenedAreReportedAndEndTheCall) {
  const std::string nowhere = dir().file("missing/some.raw");
  const image<unsigned char> img(2, 2, 1, 1, 1);
  const auto messages = [](const std::function<void()>& call) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    call();
    const std::string out = testing::internal::GetCapturedStdout();
    return "out:" + out + "err:" + testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(messages([&] { image_io::writeUIF(nowhere, img); }),
            "out:err:In image_io::writeUIF\nCan not open file" + nowhere + "\nIgnored.\n");
  EXPECT_EQ(messages([&] { image_io::writeIHT(nowhere, img); }),
            "out:Can not open file" + nowhere + "\nerr:");
  EXPECT_EQ(messages([&] { EXPECT_EQ(image_io::readUIF(nowhere), nullptr); }),
            "out:Can not open the file " + nowhere + "\nerr:In image_io::readUIF\n");
  EXPECT_EQ(messages([&] { EXPECT_EQ(image_io::readIHT(nowhere), nullptr); }),
            "out:Can not open the file " + nowhere + "\nerr:");
  EXPECT_TRUE(dir().names().empty());
}

TEST_F(Raw, AFileThatCannotBeWrittenWholeIsReported) {
  const image<unsigned char> img(100, 100, 1, 1, 1);
  testing::internal::CaptureStderr();
  image_io::writeUIF("/dev/full", img);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "In image_io::writeUIF\nError in writing /dev/full\n");
  testing::internal::CaptureStderr();
  image_io::writeIHT("/dev/full", img);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "In image_io::writeIHT\nError in writing /dev/full\n");
}

}  // namespace
}  // namespace orva::test
