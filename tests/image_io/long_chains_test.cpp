// Files that are longer than a reader might foresee: comments of thousands of digits, chains of
// hundreds of directories.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/printed.h"

namespace orva::test {
namespace {

std::pair<int, int> sizesOfPgm(const std::string& content) {
  const TempDir dir;
  writeFile(dir.file("b.pgm"), content);
  const std::unique_ptr<Image> img(image_io::readPGM(dir.file("b.pgm")));
  return {img->nx(), img->ny()};
}

// "4 2 255" and more pixels than any of the sizes below asks for.
const std::string kBehind = "\n4 2 255 " + std::string(3000, 'x');

TEST(PgmComments, OfUpTo9000DigitsAreDropped) {
  for (const std::size_t digits : {1U, 8998U, 8999U, 9000U}) {
    EXPECT_EQ(sizesOfPgm("P5\n#" + std::string(digits, '7') + kBehind), std::make_pair(4, 2))
        << digits;
  }
}

// One read of a comment takes 9000 characters; this is intended.
TEST(PgmComments, LoseTheirDigitsFromThe9001stOn) {
  EXPECT_EQ(sizesOfPgm("P5\n#" + std::string(9001, '7') + kBehind), std::make_pair(7, 4));
  EXPECT_EQ(sizesOfPgm("P5\n#" + std::string(9002, '7') + kBehind), std::make_pair(77, 4));
  EXPECT_EQ(sizesOfPgm("P5 3 #" + std::string(9001, '7') + kBehind), std::make_pair(3, 7));
}

std::string littleEndian(unsigned v, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(v >> (8 * i) & 0xFFU);
  return text;
}

TEST(StackCountOfLongChains, FollowsEveryDirectory) {
  constexpr unsigned kDirectories = 1500;
  constexpr unsigned kSize = 2 + 12 + 4;  // of a directory of one entry
  std::string content = "II" + littleEndian(42, 2) + littleEndian(8, 4);
  std::string pages = "lsb1\n";
  for (unsigned k = 0; k < kDirectories; ++k) {
    const bool isLast = k + 1 == kDirectories;
    content += littleEndian(1, 2) + littleEndian(33629, 2) + littleEndian(4, 2) +
               littleEndian(k + 1, 4) + littleEndian(0, 4) +
               littleEndian(isLast ? 0 : 8 + (k + 1) * kSize, 4);
    pages += std::to_string(k) + "\n";
  }
  const TempDir dir;
  writeFile(dir.file("b.tif"), content);
  int count = 0;
  EXPECT_EQ(printedBy([&] { count = image_io::returnStackCount(dir.file("b.tif")); }), pages);
  EXPECT_EQ(count, static_cast<int>(kDirectories));
}

}  // namespace
}  // namespace orva::test
