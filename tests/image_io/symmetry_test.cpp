// Conversions and files treat every pixel alike: an image with its pixels rearranged gives the
// result, rearranged.
//
// Exceptions: readUIF() gives the first bytes of wider pixels, so that only bytes keep their
// places; readICS() reads nothing; the count of a TIFF stack is no matter of pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/shapes.h"
#include "tests/support/symmetries.h"

namespace orva::test {
namespace {

template <class T>
class Rearranged : public testing::Test {};
TYPED_TEST_SUITE(Rearranged, PixelTypes);

TYPED_TEST(Rearranged, PixelsAreConvertedAlike) {
  Random random(701);
  for (const Shape& shape : oddShapes()) {
    const auto img = randomImage<TypeParam>(random, shape);
    const auto order = shuffledFrames(random, img);
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
      const auto turned = volumeSymmetries<TypeParam>()[t](img);
      EXPECT_TRUE(sameImage(image_io::convertToShortImage(turned),
                            volumeSymmetries<short>()[t](image_io::convertToShortImage(img))));
      EXPECT_TRUE(
          sameImage(image_io::convertToByteImage(turned, true),
                    volumeSymmetries<unsigned char>()[t](image_io::convertToByteImage(img, true))));
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

// The bytes behind a header are the pixels, frame after frame. A header does not depend on them.
TYPED_TEST(Rearranged, FramesAreWrittenInTheirNewOrder) {
  Random random(703);
  const TempDir dir;
  const image_io::IcsInfo info(dir.file("one"));
  const image_io::MultiChannelIcsInfo channels(dir.file("many"));
  const std::string plain = dir.file("plain");
  struct Format {
    std::string header;
    std::string pixels;
    std::function<void(const Image&)> write;
  };
  const std::vector<Format> formats = {
      {plain + ".uif", plain + ".uif",
       [&](const auto& i) { image_io::writeUIF(plain + ".uif", i); }},
      {plain + ".iht", plain + ".iht",
       [&](const auto& i) { image_io::writeIHT(plain + ".iht", i); }},
      {plain + ".ics", plain + ".ids", [&](const auto& i) { image_io::writeICS(plain, i); }},
      {info.datasetName() + ".ics", info.datasetName() + ".ids",
       [&](const auto& i) { image_io::writeICS(info, i); }},
      {channels.datasetName() + ".ics", channels.datasetName() + ".ids",
       [&](const auto& i) { image_io::writeICS(channels, i); }}};
  const auto img = randomImage<TypeParam>(random, {4, 3, 2, 2, 2});
  const auto order = shuffledFrames(random, img);
  for (const auto& some : {reordered(img, order), flipped(img), upsideDown(img)}) {
    const std::string expected = reference::pixelBytes(some);
    for (const Format& format : formats) {
      SCOPED_TRACE(format.header);
      const auto written = [&format](const Image& i) {
        format.write(i);
        // Both files of a pair, or twice the same.
        return std::pair(readFile(format.header), readFile(format.pixels));
      };
      const auto [headerBefore, before] = written(img);
      const auto [headerAfter, after] = written(some);
      ASSERT_GE(before.size(), expected.size());
      ASSERT_EQ(after.size(), before.size());
      const std::size_t start = before.size() - expected.size();
      EXPECT_EQ(after.substr(start), expected);
      EXPECT_EQ(after.substr(0, start), before.substr(0, start));
      if (format.header != format.pixels) {
        EXPECT_EQ(headerAfter, headerBefore);
      }
    }
  }
}

// Components stand side by side for every pixel: frames in another order give the components in
// that order, and a turned image the turned pixels.
TEST(RearrangedPixels, AreWrittenAsRearrangedPpm) {
  Random random(704);
  const TempDir dir;
  const std::string name = dir.file("image.ppm");
  // As frames of the components, behind the header "P6\nX Y\n255\n".
  const auto written = [&name](const image<unsigned char>& img) {
    image_io::writePPM(name, img);
    const std::string bytes = readFile(name);
    const auto pixels = static_cast<std::size_t>(3 * img.frameSize());
    EXPECT_EQ(bytes.size(), 11 + pixels);
    return composed<unsigned char>({img.nx(), img.ny(), 3}, [&](int x, int y, int c) {
      return static_cast<unsigned char>(
          bytes.at(11 + static_cast<std::size_t>(3 * (x + img.nx() * y) + c)));
    });
  };
  const auto colour = randomImage<unsigned char>(random, {7, 5, 3});
  const auto grey = randomImage<unsigned char>(random, {7, 5});
  std::vector<int> order = {0, 1, 2};
  do {
    EXPECT_TRUE(sameImage(written(reordered(colour, order)), reordered(written(colour), order)));
    EXPECT_TRUE(sameImage(reordered(written(grey), order), written(grey)));
  } while (std::next_permutation(order.begin(), order.end()));
  for (const auto turn : planeSymmetries<unsigned char>()) {
    EXPECT_TRUE(sameImage(written(turn(colour)), turn(written(colour))));
    EXPECT_TRUE(sameImage(written(turn(grey)), turn(written(grey))));
  }
}

template <class T>
class RearrangedFiles : public testing::Test {};
using ReadTypes = testing::Types<unsigned char, short, int, float>;
TYPED_TEST_SUITE(RearrangedFiles, ReadTypes);

// What was written rearranged is read rearranged.
TYPED_TEST(RearrangedFiles, AreReadAsRearrangedPixels) {
  Random random(705);
  const TempDir dir;
  const auto img = randomImage<TypeParam>(random, {4, 3, 2, 2, 2});
  const auto order = shuffledFrames(random, img);
  const auto throughIht = [&dir](const Image& i) {
    image_io::writeIHT(dir.file("image.iht"), i);
    const std::unique_ptr<Image> back(image_io::readIHT(dir.file("image.iht")));
    return dynamic_cast<const image<TypeParam>&>(*back);
  };
  const auto whole = throughIht(img);
  EXPECT_TRUE(sameImage(throughIht(reordered(img, order)), reordered(whole, order)));
  for (const auto turn : volumeSymmetries<TypeParam>()) {
    EXPECT_TRUE(sameImage(throughIht(turn(img)), turn(whole)));
  }
}

TEST(RearrangedByteFiles, AreReadAsRearrangedPixels) {
  Random random(706);
  const TempDir dir;
  const auto img = randomImage<unsigned char>(random, {6, 4});
  const auto throughUif = [&dir](const image<unsigned char>& i) {
    image_io::writeUIF(dir.file("image.uif"), i);
    const std::unique_ptr<Image> back(image_io::readUIF(dir.file("image.uif")));
    return dynamic_cast<const image<unsigned char>&>(*back);
  };
  const auto throughPgm = [&dir](const image<unsigned char>& i) {
    writeFile(dir.file("image.pgm"), "P5\n" + std::to_string(i.nx()) + " " +
                                         std::to_string(i.ny()) + "\n255\n" +
                                         reference::pixelBytes(i));
    const std::unique_ptr<image<unsigned char>> back(image_io::readPGM(dir.file("image.pgm")));
    return *back;
  };
  for (const auto turn : planeSymmetries<unsigned char>()) {
    EXPECT_TRUE(sameImage(throughUif(turn(img)), turn(throughUif(img))));
    EXPECT_TRUE(sameImage(throughPgm(turn(img)), turn(throughPgm(img))));
  }
  const auto stack = randomImage<unsigned char>(random, {6, 4, 5});
  const auto order = shuffledFrames(random, stack);
  EXPECT_TRUE(sameImage(throughUif(reordered(stack, order)), reordered(throughUif(stack), order)));
}

}  // namespace
}  // namespace orva::test
