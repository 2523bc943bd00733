// Binary PGM read, binary PPM written.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

class Pgm : public testing::Test {
 protected:
  const std::string& name() const { return name_; }

  // The image that a file with this content holds.
  std::unique_ptr<image<unsigned char>> read(const std::string& content) const {
    writeFile(name_, content);
    return std::unique_ptr<image<unsigned char>>(image_io::readPGM(name_));
  }

  void expectRead(const std::string& content, const image<unsigned char>& expected) const {
    const auto img = read(content);
    ASSERT_NE(img, nullptr);
    EXPECT_TRUE(sameImage(*img, expected)) << content.substr(0, 60);
  }

  // Reading a file with this content ends the process.
  void expectExit(const std::string& content, const std::string& message) const {
    writeFile(name_, content);
    EXPECT_EXIT(std::unique_ptr<image<unsigned char>>(image_io::readPGM(name_)),
                testing::ExitedWithCode(1), testing::Eq(message))
        << content;
  }

 private:
  TempDir dir_;
  std::string name_ = dir_.file("some.pgm");
};

const std::string kPixels = "\1\2\3\4\5\6\7\377";
const image<unsigned char>& eight() {
  static const image<unsigned char> img =
      imageOf<unsigned char>({4, 2}, {1, 2, 3, 4, 5, 6, 7, 255});
  return img;
}

TEST_F(Pgm, IsReadWithAnySeparators) {
  expectRead("P5 4 2 255 " + kPixels, eight());
  expectRead("P5 4 2 255\n" + kPixels, eight());
  expectRead("P5\n4 2\n255\n" + kPixels, eight());
  expectRead("P54,2;255x" + kPixels, eight());
  expectRead("P5\t\r\n  0004\n\n\n+2 -255\t" + kPixels, eight());
}

TEST_F(Pgm, IsReadWithComments) {
  expectRead("P5\n# 9 9 9 made by hand\n4 # width\n#\n# more\n2\n#255 no\n255\n" + kPixels,
             eight());
  expectRead("P5#9\n4 2 255\n" + kPixels, eight());
}

TEST_F(Pgm, IsReadWithCommentsLongerThanABuffer) {
  for (const std::size_t length : {8990U, 8998U, 8999U, 9000U, 9001U, 20000U}) {
    expectRead("P5\n#" + std::string(length, 'x') + "\n4 2 255\n" + kPixels, eight());
  }
}

TEST_F(Pgm, ReadsOnAfter9000CharactersOfACommentAsIsIntended) {
  expectRead("P5\n#" + std::string(9100, 'x') + " 4 2\n255\n" + kPixels, eight());
}

TEST_F(Pgm, TakesTheCharacterAfterANumberAwayAsIsIntended) {
  // So a "#" right behind a number opens no comment, and the digits after it count.
  expectRead("P5 4#2\n255\n" + kPixels, eight());
  // And of a carriage return with a newline behind the last number, the newline is a pixel.
  expectRead("P5 2 2 255\r\nabcd", imageOf<unsigned char>({2, 2}, {'\n', 'a', 'b', 'c'}));
}

TEST_F(Pgm, IgnoresTheMaximumAsIsIntended) {
  for (const char* maximum : {"0", "1", "15", "254", "65535", "99999"}) {
    expectRead(std::string("P5 4 2 ") + maximum + "\n" + kPixels, eight());
  }
}

TEST_F(Pgm, KeepsEveryByteValue) {
  std::string bytes;
  std::vector<unsigned char> pixels;
  for (int v = 0; v < 256; ++v) {
    bytes += static_cast<char>(v);
    pixels.push_back(static_cast<unsigned char>(v));
  }
  expectRead("P5 32 8 255 " + bytes, imageOf<unsigned char>({32, 8}, pixels));
}

TEST_F(Pgm, IgnoresWhatFollowsThePixels) { expectRead("P5 4 2 255 " + kPixels + "more", eight()); }

TEST_F(Pgm, OfRandomImagesIsReadBack) {
  Random random(111);
  forEveryWidth([&](int width) {
    const auto img = randomImage<unsigned char>(random, {width, 1 + width % 4});
    const std::string bytes(static_cast<const char*>(img.data()),
                            static_cast<std::size_t>(img.npix()));
    expectRead("P5\n" + std::to_string(width) + " " + std::to_string(img.ny()) + "\n255\n" + bytes,
               img);
  });
}

TEST_F(Pgm, WithoutPixelsIsANullImage) {
  const auto img = read("P5 0 3 255 ");
  ASSERT_NE(img, nullptr);
  EXPECT_TRUE(img->isNull());
  EXPECT_EQ(sizesOf(*img), (std::vector<int>{0, 3, 1, 1, 1}));
}

TEST_F(Pgm, ThatDoesNotExistEndsTheProcessAsIsIntended) {
  EXPECT_EXIT(std::unique_ptr<image<unsigned char>>(image_io::readPGM(name() + ".none")),
              testing::ExitedWithCode(1), testing::Eq("Can't input image " + name() + ".none.\n"));
}

TEST_F(Pgm, OfAnotherKindEndsTheProcessAsIsIntended) {
  for (const char* content :
       {"", "P", "P2 1 1 255 7", "P6 1 1 255 abc", "p5 1 1 255 a", " P5", "5P", "GIF89a"}) {
    expectExit(content, "Image " + name() + " does not have binary PGM header.\n");
  }
}

TEST_F(Pgm, NotNamingItselfForACutHeaderIsIntended) {
  for (const char* content : {"P5", "P5\n", "P5 4", "P5 4 2", "P5 4 2 ", "P5 4 2 x",
                              "P5 # no newline 4 2 255", "P5 4 #\n", "P5 4 #"}) {
    expectExit(content, "Image is not binary PGM.\n");
  }
}

TEST_F(Pgm, WithTooFewPixelsEndsTheProcessAsIsIntended) {
  for (const char* content : {"P5 4 2 255 1234567", "P5 4 2 255 ", "P5 4 2 255"}) {
    expectExit(content, "Image " + name() + " is wrong size.\n");
  }
}

TEST_F(Pgm, WithMorePixelsThanAnImageCanHaveEndsTheProcess) {
  for (const char* content : {"P5 65536 65536 255 abc", "P5 100000 100000 255 abc",
                              "P5 65536 32768 255 abc", "P5 99999999999999999999 2 255 abc"}) {
    expectExit(content, "out of memory\n");
  }
}

class Ppm : public testing::Test {
 protected:
  std::string file(const std::string& name) const { return dir_.file(name); }

  // Writes `img`, which must give no message, and returns the file's content.
  std::string written(const image<unsigned char>& img) const {
    testing::internal::CaptureStderr();
    image_io::writePPM(file("some.ppm"), img);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    return readFile(file("some.ppm"));
  }

 private:
  TempDir dir_;
};

TEST_F(Ppm, RepeatsGreyThreeTimes) {
  EXPECT_EQ(written(imageOf<unsigned char>({3, 1}, {7, 'a', 255})),
            "P6\n3 1\n255\n\7\7\7aaa\377\377\377");
}

TEST_F(Ppm, TakesThreePlanesAsRedGreenAndBlue) {
  for (const Shape& s : {Shape{2, 1, 3, 1, 1}, Shape{2, 1, 1, 3, 1}, Shape{2, 1, 1, 1, 3}}) {
    EXPECT_EQ(written(imageOf<unsigned char>(s, {'r', 'R', 'g', 'G', 'b', 'B'})),
              "P6\n2 1\n255\nrgbRGB");
  }
}

TEST_F(Ppm, OfRandomImagesHoldsEveryPixel) {
  Random random(112);
  forEveryWidth([&](int width) {
    const bool colour = width % 2 == 0;
    const auto img = randomImage<unsigned char>(random, {width, 1 + width % 5, colour ? 3 : 1});
    std::string expected =
        "P6\n" + std::to_string(width) + " " + std::to_string(img.ny()) + "\n255\n";
    for (int i = 0; i < img.frameSize(); ++i)
      for (int plane = 0; plane < 3; ++plane) {
        expected += static_cast<char>(img.pixels()[i + (colour ? plane * img.frameSize() : 0)]);
      }
    EXPECT_EQ(written(img), expected);
  });
}

TEST_F(Ppm, ReplacesALongerFile) {
  writeFile(file("some.ppm"), std::string(1000, 'x'));
  EXPECT_EQ(written(imageOf<unsigned char>({1, 1}, {'a'})), "P6\n1 1\n255\naaa");
}

TEST_F(Ppm, OfAnImageWithoutWidthHoldsTheHeader) {
  EXPECT_EQ(written(image<unsigned char>(0, 1, 1, 1, 1)), "P6\n0 1\n255\n");
}

TEST_F(Ppm, OfSmallSizesHoldsThePixelsOfTheSizesShown) {
  for (const Shape& s : smallShapes()) {
    const auto img = blank<unsigned char>(s);
    if (img.nframes() != 1) continue;
    EXPECT_EQ(written(img),
              "P6\n" + std::to_string(img.nx()) + " " + std::to_string(img.ny()) + "\n255\n" +
                  std::string(static_cast<std::size_t>(3 * img.nx() * img.ny()), '\0'));
  }
}

TEST_F(Ppm, RefusesOtherNumbersOfPlanes) {
  for (const Shape& s : {Shape{2, 2, 2}, Shape{2, 2, 1, 2}, Shape{2, 2, 4}, Shape{2, 2, 3, 3},
                         Shape{2, 2, 3, 1, 2}, Shape{2, 2, 0}}) {
    testing::internal::CaptureStderr();
    image_io::writePPM(file("refused.ppm"), blank<unsigned char>(s));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "image_io::writePPM -> img must be a grayscale or color image\n");
    EXPECT_FALSE(std::filesystem::exists(file("refused.ppm")));
  }
}

TEST_F(Ppm, ThatCannotBeOpenedIsReported) {
  testing::internal::CaptureStderr();
  image_io::writePPM(file("none/some.ppm"), image<unsigned char>(2, 2, 1, 1, 1));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Can not open file: " + file("none/some.ppm") + "\n");
}

TEST_F(Ppm, ThatCannotBeWrittenIsReported) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full";
  for (const int width : {2, 40000}) {
    testing::internal::CaptureStderr();
    image_io::writePPM("/dev/full", image<unsigned char>(width, 2, 1, 1, 1));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Can not write file: /dev/full\n");
  }
}

}  // namespace
}  // namespace orva::test
