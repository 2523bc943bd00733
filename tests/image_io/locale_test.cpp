// Image files hold the same bytes in every locale.
#include "tests/support/locale.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "orva/image_io/icsparser.h"
#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"

namespace orva::test {
namespace {

// Numbers that a locale would group: a width of 2000, a height of 1001.
image<unsigned char> wide() {
  Random random(121);
  return randomImage<unsigned char>(random, {2000, 1001});
}

class FilesInAForeignLocale : public testing::Test {
 protected:
  // What write(name) leaves in the files of the given endings must not depend on the locale.
  template <class Write>
  void expectSame(Write write, const std::vector<std::string>& endings) const {
    write(dir_.file("classic/b"));
    {
      const ForeignLocale foreign;
      write(dir_.file("foreign/b"));
    }
    for (const std::string& ending : endings) {
      EXPECT_TRUE(readFile(dir_.file("classic/b" + ending)) ==
                  readFile(dir_.file("foreign/b" + ending)))
          << ending;
    }
  }

  void SetUp() override {
    for (const char* name : {"classic", "foreign"}) {
      std::filesystem::create_directory(dir_.file(name));
    }
  }

  const TempDir& dir() const { return dir_; }

 private:
  TempDir dir_;
};

TEST_F(FilesInAForeignLocale, OfPpmAreTheSame) {
  const image<unsigned char> img = wide();
  expectSame([&](const std::string& name) { image_io::writePPM(name + ".ppm", img); }, {".ppm"});
  EXPECT_EQ(readFile(dir().file("foreign/b.ppm")).substr(0, 17), "P6\n2000 1001\n255\n");
}

TEST_F(FilesInAForeignLocale, OfIcsAreTheSame) {
  const image<unsigned char> img = wide();
  expectSame([&](const std::string& name) { image_io::writeICS(name, img); }, {".ics", ".ids"});
  EXPECT_NE(readFile(dir().file("foreign/b.ics")).find("\t2000\t1001\t"), std::string::npos);
}

template <class Info>
Info filled(const std::string& name) {
  Info info(name);
  info.setWithChannelInfo("488", "20", 'g');
  info.setScope("scope");
  info.setSample("a", "b", "c", 1234.5F, 0.25F, "d");
  return info;
}

TEST_F(FilesInAForeignLocale, OfIcsWithARecordAreTheSame) {
  const image<unsigned char> img = wide();
  expectSame(
      [&](const std::string& name) { image_io::writeICS(filled<image_io::IcsInfo>(name), img); },
      {"_g.ics", "_g.ids"});
  expectSame(
      [&](const std::string& name) {
        image_io::writeICS(filled<image_io::MultiChannelIcsInfo>(name), img);
      },
      {".ics", ".ids"});
  for (const char* name : {"foreign/b_g.ics", "foreign/b.ics"}) {
    const std::string text = readFile(dir().file(name));
    EXPECT_NE(text.find("\t1001\t2000\n"), std::string::npos) << name;
    EXPECT_NE(text.find("\t1234.500000\t0.250000\t"), std::string::npos) << name;
  }
}

TEST_F(FilesInAForeignLocale, OfPgmAreReadTheSame) {
  const image<unsigned char> img = wide();
  const std::string pixels(reinterpret_cast<const char*>(img.pixels()),
                           static_cast<std::size_t>(img.npix()));
  writeFile(dir().file("b.pgm"), "P5\n2000 1001\n255\n" + pixels);
  const ForeignLocale foreign;
  const std::unique_ptr<image<unsigned char>> read(image_io::readPGM(dir().file("b.pgm")));
  ASSERT_NE(read, nullptr);
  EXPECT_TRUE(sameImage(*read, img));
}

TEST_F(FilesInAForeignLocale, OfIcsAreParsedTheSame) {
  image_io::writeICS(dir().file("b"), wide());
  const ForeignLocale foreign;
  char* dataset = nullptr;
  char* type = nullptr;
  std::array<int, 6> v{};
  ASSERT_NE(parse_ics_header_file(dir().file("b.ics").c_str(), &dataset, &type, &v[0], &v[1], &v[2],
                                  &v[3], &v[4], &v[5]),
            0);
  EXPECT_STREQ(dataset, "b");
  EXPECT_EQ(v, (std::array<int, 6>{2000, 1001, 1, 1, 1, 1}));
  std::free(dataset);
  std::free(type);
}

TEST_F(FilesInAForeignLocale, OfUifAndIhtAreTheSame) {
  const image<unsigned char> img = wide();
  expectSame(
      [&](const std::string& name) {
        image_io::writeUIF(name + ".uif", img);
        image_io::writeIHT(name + ".iht", img);
      },
      {".uif", ".iht"});
  const ForeignLocale foreign;
  const std::unique_ptr<Image> read(image_io::readIHT(dir().file("foreign/b.iht")));
  ASSERT_NE(read, nullptr);
  EXPECT_TRUE(sameImage(*read, img));
}

template <class Info>
class RecordInAForeignLocale : public testing::Test {};
using RecordTypes = testing::Types<image_io::IcsInfo, image_io::MultiChannelIcsInfo>;
TYPED_TEST_SUITE(RecordInAForeignLocale, RecordTypes);

// The stream a record is written to is the caller's, so only what the record itself made is fixed.
TYPED_TEST(RecordInAForeignLocale, HoldsTheSampleWithDecimalPoints) {
  const auto written = [] {
    std::ostringstream out;
    out << filled<TypeParam>("d");
    return out.str();
  };
  const std::string classic = written();
  const ForeignLocale foreign;
  EXPECT_EQ(written(), classic);
}

}  // namespace
}  // namespace orva::test
