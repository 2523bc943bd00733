// The writer of raw PGM files, which only its own source file sees. The source is part of this
// file; its public operation gets another name here, next to that of the library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/shapes.h"

#define readPGM readPGMOfThisFile
#include "orva/image_io/pgm.cpp"  // NOLINT(bugprone-suspicious-include)

#undef readPGM

namespace orva::test {
namespace {

class PutImage : public testing::Test {
 protected:
  TempDir dir_;
  std::string file_ = dir_.file("some.pgm");
};

TEST_F(PutImage, WritesHeaderAndPixels) {
  const std::vector<unsigned char> pixels = {'a', 0, '\n', 255, '\r', 26};
  image_io::put_image(file_, pixels.data(), 3, 2);
  EXPECT_EQ(readFile(file_), std::string("P5\n3 2\n255\na\0\n\377\r\32", 17));
}

TEST_F(PutImage, IsReadBackByReadPgm) {
  Random random(351);
  forEveryWidth([&](int width) {
    const auto img = randomImage<unsigned char>(random, {width, 1 + width % 7});
    image_io::put_image(file_, img.pixels(), img.nx(), img.ny());
    const std::unique_ptr<image<unsigned char>> back(image_io::readPGM(file_));
    EXPECT_TRUE(sameImage(*back, img));
  });
}

TEST_F(PutImage, ReplacesAFile) {
  writeFile(file_, std::string(1000, 'x'));
  const unsigned char pixel = 'p';
  image_io::put_image(file_, &pixel, 1, 1);
  EXPECT_EQ(readFile(file_), "P5\n1 1\n255\np");
}

TEST_F(PutImage, WritesAHeaderAloneForNoPixels) {
  const unsigned char none = 0;
  image_io::put_image(file_, &none, 0, 5);
  EXPECT_EQ(readFile(file_), "P5\n0 5\n255\n");
  image_io::put_image(file_, &none, 7, 0);
  EXPECT_EQ(readFile(file_), "P5\n7 0\n255\n");
}

TEST_F(PutImage, EndsTheProcessWhenTheFileCannotBeOpened) {
  const std::string nowhere = dir_.file("missing/some.pgm");
  const unsigned char pixel = 0;
  // No blank stands before the name; this is intended.
  EXPECT_EXIT(image_io::put_image(nowhere, &pixel, 1, 1), testing::ExitedWithCode(1),
              testing::Eq("Can't output image" + nowhere + ".\n"));
}

TEST_F(PutImage, EndsTheProcessWhenTheFileCannotBeWrittenWhole) {
  const std::vector<unsigned char> pixels(100000);
  const testing::Matcher<const std::string&> message =
      testing::Eq("Can't write image /dev/full.\n");
  EXPECT_EXIT(image_io::put_image("/dev/full", pixels.data(), 1000, 100),
              testing::ExitedWithCode(1), message);
  // So few bytes that they only leave when the file is closed.
  EXPECT_EXIT(image_io::put_image("/dev/full", pixels.data(), 1, 1), testing::ExitedWithCode(1),
              message);
}

// The second copy of the source reads what it writes, as the library does.
TEST_F(PutImage, StandsInTheSameSourceAsTheLibrarysReader) {
  Random random(352);
  const auto img = randomImage<unsigned char>(random, {9, 4});
  image_io::put_image(file_, img.pixels(), 9, 4);
  const std::unique_ptr<image<unsigned char>> back(image_io::readPGMOfThisFile(file_));
  EXPECT_TRUE(sameImage(*back, img));
}

}  // namespace
}  // namespace orva::test
