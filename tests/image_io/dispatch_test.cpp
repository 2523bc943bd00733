// Files read and written by the extension of their names.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

using Names = std::set<std::string>;

class Dispatch : public testing::Test {
 protected:
  const TempDir& dir() const { return dir_; }

  // Reads without a message.
  std::unique_ptr<Image> read(const std::string& name) const {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    std::unique_ptr<Image> img(image_io::readImage(dir_.file(name)));
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "")
        << name;
    return img;
  }

  // Writes without a message.
  void write(const std::string& name, const Image& img) const {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    image_io::writeImage(dir_.file(name), img);
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "")
        << name;
  }

 private:
  TempDir dir_;
};

const std::string kPgm = "P5\n2 1\n255\nab";

TEST_F(Dispatch, ReadsPgmInAnyLetterCase) {
  for (const char* name : {"a.pgm", "a.PGM", "a.PgM", "a.b.pgm", ".pgm"}) {
    writeFile(dir().file(name), kPgm);
    const auto img = read(name);
    ASSERT_NE(img, nullptr) << name;
    EXPECT_EQ(reference::pixelBytes(*img), "ab");
  }
}

TEST_F(Dispatch, ReadsIhtInAnyLetterCase) {
  Random random(341);
  const auto pixels = randomImage<short>(random, {3, 2, 2});
  for (const char* name : {"a.iht", "a.IHT", "a.iHt"}) {
    writeFile(dir().file(name), reference::fileIHT(pixels));
    const auto img = read(name);
    ASSERT_NE(img, nullptr) << name;
    EXPECT_TRUE(sameImage(*img, pixels));
  }
}

TEST_F(Dispatch, ReadsNoIcsAsIsIntended) {
  image_io::writeICS(dir().file("a"), image<unsigned char>(2, 1, 1, 1, 1));
  EXPECT_EQ(read("a.ics"), nullptr);
  writeFile(dir().file("b.ICS"), kPgm);
  EXPECT_EQ(read("b.ICS"), nullptr);
  EXPECT_EQ(read("missing.ics"), nullptr);
}

TEST_F(Dispatch, ReadsNothingElseAsIsIntended) {
  const image<unsigned char> img(2, 1, 1, 1, 1);
  for (const char* name : {"a.uif", "a.ppm", "a.tif", "a.pg", "a.pgmx", "pgm", "iht", "a."}) {
    writeFile(dir().file(name), kPgm);
    EXPECT_EQ(read(name), nullptr) << name;
    writeFile(dir().file(name), reference::fileIHT(img));
    EXPECT_EQ(read(name), nullptr) << name;
  }
  EXPECT_EQ(read("missing.xyz"), nullptr);
  EXPECT_EQ(image_io::readImage(""), nullptr);
}

TEST_F(Dispatch, TakesTheExtensionOfTheLastComponentWhenReading) {
  writeFile(dir().file("a.pgm"), kPgm);
  // Unlike a name that is written, one that is read keeps its slash, and so has no extension.
  EXPECT_EQ(read("a.pgm/"), nullptr);
  EXPECT_EQ(read("a.pgm/b"), nullptr);
}

TEST_F(Dispatch, GivesTheMessagesOfTheFormatsForMissingFiles) {
  EXPECT_EXIT(delete image_io::readImage("/missing/a.pgm"), testing::ExitedWithCode(1),
              "^Can't input image /missing/a.pgm.\n$");
  testing::internal::CaptureStdout();
  EXPECT_EQ(image_io::readImage("/missing/a.iht"), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Can not open the file /missing/a.iht\n");
}

template <class T>
class DispatchOf : public Dispatch {};
TYPED_TEST_SUITE(DispatchOf, PixelTypes);

TYPED_TEST(DispatchOf, WritesIhtInAnyLetterCase) {
  Random random(342);
  for (const Shape& s : oddShapes()) {
    const auto img = randomImage<TypeParam>(random, s);
    for (const char* name : {"a.iht", "b.IHT", "c.Iht"}) {
      this->write(name, img);
      std::string content = readFile(this->dir().file(name));
      ASSERT_GE(content.size(), 40U);
      content.replace(36, 4, 4, '\0');
      EXPECT_EQ(content, reference::fileIHT(img));
    }
  }
  EXPECT_EQ(this->dir().names(), (Names{"a.iht", "b.IHT", "c.Iht"}));
}

TYPED_TEST(DispatchOf, WritesIcsInSmallLettersOnlyAsIsIntended) {
  Random random(343);
  const auto img = randomImage<TypeParam>(random, {5, 4, 2, 1, 2});
  this->write("a.ICS", img);
  this->write("a.Ics", img);
  EXPECT_EQ(this->dir().names(), Names{});
  this->write("a.ics", img);
  EXPECT_EQ(this->dir().names(), (Names{"a.ics", "a.ids"}));
  const std::string header = readFile(this->dir().file("a.ics"));
  EXPECT_EQ(readFile(this->dir().file("a.ids")), reference::pixelBytes(img));
  // The plain form, not one with a record.
  image_io::writeICS(this->dir().file("a.ics"), img);
  EXPECT_EQ(readFile(this->dir().file("a.ics")), header);
}

TEST_F(Dispatch, WritesNothingElseAsIsIntended) {
  const image<unsigned char> img(3, 3, 1, 1, 1);
  for (const char* name :
       {"a.pgm", "a.ppm", "a.uif", "a.tif", "a", "a.", "ics", "iht", "a.ids", "a.icsx", "a.ih"}) {
    write(name, img);
    EXPECT_EQ(dir().names(), Names{}) << name;
  }
  image_io::writeImage("", img);
}

TEST_F(Dispatch, PassesOverATrailingSlashWhenWriting) {
  const image<unsigned char> img(3, 3, 1, 1, 1);
  write("a.ics/", img);
  EXPECT_EQ(dir().names(), (Names{"a.ics", "a.ids"}));
  write("b.ics//", img);  // cleaned of one slash only, and so without an extension
  EXPECT_EQ(dir().names(), (Names{"a.ics", "a.ids"}));
}

TEST_F(Dispatch, HandsIhtTheNameUnchanged) {
  const image<unsigned char> img(3, 3, 1, 1, 1);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  image_io::writeImage(dir().file("a.iht/"), img);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Can not open file" + dir().file("a.iht/") + "\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(dir().names(), Names{});
}

TEST_F(Dispatch, ReadsBackWhatItWrote) {
  Random random(344);
  for (const Shape& s : oddShapesAndWidths()) {
    const auto img = randomImage<float>(random, {s.nx, s.ny, s.nz * s.nc * s.nt});
    write("a.iht", img);
    const auto same = read("a.iht");
    ASSERT_NE(same, nullptr);
    EXPECT_TRUE(sameImage(*same, img));
  }
}

}  // namespace
}  // namespace orva::test
