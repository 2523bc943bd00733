// IHT, UIF and PPM files that are cut or lie about themselves.
#include <sys/stat.h>

#include <limits>

#include "tests/apps/conversions.h"

namespace orva::test {
namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

// The whole of them is good, so that the cut is what fails.
class DamagedFiles : public Conversion {
 protected:
  void expectEveryCutFails(const std::string& name, const std::string& whole, std::size_t shortest,
                           const std::string& words) {
    box.write("old.tif", "an old result");
    for (std::size_t size = shortest; size < whole.size(); ++size) {
      SCOPED_TRACE(size);
      box.write(name, whole.substr(0, size));
      expectFailure(name, words);
    }
    box.write(name, whole);
    EXPECT_TRUE(succeeded(convert(name, "out.png")));
    EXPECT_TRUE(succeeded(box.run({"info", name})));
  }

  // Of every subcommand that reads images, without a trace left.
  void expectFailure(const std::string& name, const std::string& words) const {
    const std::vector<std::string> before = box.names();
    EXPECT_TRUE(failedWithOneLine(convert(name, "old.tif"), name, words));
    EXPECT_TRUE(failedWithOneLine(box.run({"info", name}), name, words));
    EXPECT_TRUE(failedWithOneLine(
        box.run({"measure", name, "--threshold", "1", "--table", "old.tif"}), name, words));
    EXPECT_TRUE(failedWithOneLine(
        box.run({"filter", name, "--op", "dx", "--sigma", "1", "--output", "old.tif"}), name,
        words));
    EXPECT_EQ(box.names(), before);
    EXPECT_EQ(box.read("old.tif"), "an old result");
  }
};

TEST_F(DamagedFiles, EveryCutIhtFileFails) {
  expectEveryCutFails("in.iht", iht(randomContent(SHORT, {3, 2, 1}, 0, 300, 3)), 0,
                      "is a damaged IHT file: ");
}

TEST_F(DamagedFiles, EveryCutUifFileFails) {
  expectEveryCutFails("in.uif", uif(randomContent(BYTE, {4, 3, 1}, 0, 255, 3)), 0,
                      "is a damaged UIF file: ");
}

TEST_F(DamagedFiles, EveryCutPpmFileFails) {
  const std::string whole = ppm(randomContent(RGB, {3, 2, 1}, 0, 255, 3));
  expectEveryCutFails("in.ppm", whole, 2, "is a damaged PPM file: ");
  for (const std::size_t size : {0U, 1U}) {
    box.write("in.ppm", whole.substr(0, size));
    EXPECT_TRUE(failedWithOneLine(convert("in.ppm", "out.tif"), "in.ppm",
                                  "is not a PGM, PPM, PNG or TIFF image, nor named .iht or .uif"));
  }
}

// Two pages, of which a cut must not leave one.
TEST_F(DamagedFiles, EveryCutPgmPngAndTiffFileFails) {
  struct Case {
    std::string name;
    std::size_t magic;  // bytes that identify the format
    int planes;
  };
  box.write("old.iht", "an old result");
  for (const Case& c : {Case{"in.pgm", 2, 1}, Case{"in.png", 8, 1}, Case{"in.tif", 4, 2}}) {
    writeContent(box / c.name, randomContent(BYTE, {4, 3, c.planes}, 0, 255, 3));
    const std::string whole = box.read(c.name);
    for (std::size_t size = 0; size < whole.size(); ++size) {
      SCOPED_TRACE(c.name + ' ' + std::to_string(size));
      box.write(c.name, whole.substr(0, size));
      const std::string words = size < c.magic ? "is not a PGM, " : "is a damaged ";
      EXPECT_TRUE(failedWithOneLine(convert(c.name, "old.iht"), c.name, words));
      EXPECT_TRUE(failedWithOneLine(box.run({"info", c.name}), c.name, words));
    }
    box.write(c.name, whole);
    EXPECT_TRUE(succeeded(box.run({"info", c.name})));
    EXPECT_EQ(box.read("old.iht"), "an old result");
  }
}

TEST_F(DamagedFiles, TheMessageDistinguishesHeaderAndPixels) {
  box.write("old.tif", "an old result");
  box.write("in.iht", std::string(39, '\0'));
  expectFailure("in.iht", "is a damaged IHT file: the header is cut off\n");
  box.write("in.iht", fieldsAnd({1, 1, 0, 0, 1, 1, BYTE, 1, 1, 0}, ""));
  expectFailure("in.iht", "is a damaged IHT file: pixels are missing\n");
  box.write("in.uif", std::string(19, '\0'));
  expectFailure("in.uif", "is a damaged UIF file: the header is cut off\n");
  box.write("in.uif", fieldsAnd({1, 1, 1, 1, BYTE}, ""));
  expectFailure("in.uif", "is a damaged UIF file: pixels are missing\n");
}

TEST_F(DamagedFiles, BytesBehindThePixelsAreIgnored) {
  const Content c = randomContent(BYTE, {3, 2, 2}, 0, 255, 3);
  box.write("in.iht", iht(c) + "more");
  box.write("in.uif", uif(c) + "more");
  for (const std::string name : {"in.iht", "in.uif"}) {
    EXPECT_TRUE(succeeded(convert(name, "out.tif")));
    EXPECT_EQ(readContent(box / "out.tif"), c);
  }
  box.write("in.ppm", "P6 1 1 255\nabcdefg");
  EXPECT_TRUE(succeeded(convert("in.ppm", "out.tif")));
  EXPECT_EQ(readContent(box / "out.tif"), (Content{RGB, 1, 1, 1, {'a', 'b', 'c'}}));
}

// What the sizes and the format code of the header may not be.
TEST_F(DamagedFiles, WildHeadersOfRawFilesFail) {
  struct Case {
    std::int32_t width;
    std::int32_t height;
    std::int32_t planes;
    std::int32_t format;
    const char* words;
  };
  const std::vector<Case> cases{
      {0, 3, 1, BYTE, "the image has no pixels"},
      {3, 0, 1, BYTE, "the image has no pixels"},
      {3, 3, 0, BYTE, "the image has no pixels"},
      {-3, 3, 1, BYTE, "a size is negative"},
      {3, -3, 1, BYTE, "a size is negative"},
      {3, 3, -1, BYTE, "a size is negative"},
      {-3, -3, 1, BYTE, "a size is negative"},
      {-3, 1, -3, BYTE, "a size is negative"},
      {kMin, kMin, kMin, BYTE, "a size is negative"},
      {kMax, kMax, kMax, BYTE, "its sizes are too large"},
      {kMax, kMax, 1, BYTE, "its sizes are too large"},
      {1, kMax, 2, BYTE, "its sizes are too large"},
      {65536, 65536, 1, BYTE, "its sizes are too large"},
      {65536, 65536, 65536, BYTE, "its sizes are too large"},
      {1 << 30, 1 << 30, 16, BYTE, "its sizes are too large"},  // 0 in 64 bits
      {1 << 30, 16, 1 << 30, BYTE, "its sizes are too large"},
      {65536, 32768, 1, BYTE, "its sizes are too large"},
      {32768, 32768, 2, BYTE, "its sizes are too large"},
      {kMax, 1, 1, BYTE, "pixels are missing"},
      {1, 1, kMax, FLOAT, "pixels are missing"},
      {46340, 46340, 1, INT, "pixels are missing"},
      {10, 10, 2, BYTE, "pixels are missing"},
      {3, 3, 1, USHORT, "its pixel type is unknown"},
      {3, 3, 1, UINT, "its pixel type is unknown"},
      {3, 3, 1, RGB, "its pixel type is unknown"},
      {3, 3, 1, 11, "its pixel type is unknown"},
      {3, 3, 1, -1, "its pixel type is unknown"},
      {3, 3, 1, kMax, "its pixel type is unknown"},
      {3, 3, 1, kMin, "its pixel type is unknown"},
  };
  box.write("old.tif", "an old result");
  const std::string pixels(199, 'x');
  for (const Case& c : cases) {
    SCOPED_TRACE(
        ::testing::PrintToString(std::vector<std::int32_t>{c.width, c.height, c.planes, c.format}));
    box.write(
        "in.iht",
        fieldsAnd({c.height, c.width, 0, 0, c.height, c.width, c.format, c.planes, 0, 0}, pixels));
    expectFailure("in.iht", c.words);
    box.write("in.uif", fieldsAnd({c.width, c.height, c.planes, 1, c.format}, pixels));
    expectFailure("in.uif", c.words);
  }
}

// Of the fields that are written twice the first ones count.
TEST_F(DamagedFiles, OtherFieldsOfAnIhtHeaderAreNotUsed) {
  box.write("in.iht", fieldsAnd({2, 3, 9, -9, kMax, kMin, BYTE, 1, -1, 77}, "abcdef"));
  EXPECT_TRUE(succeeded(convert("in.iht", "out.pgm")));
  EXPECT_EQ(box.read("out.pgm"), "P5\n3 2\n255\nabcdef");
}

TEST_F(DamagedFiles, WidePixelsOfAUifFileAreRefused) {
  box.write("old.tif", "an old result");
  for (const auto format : {SHORT, INT, FLOAT}) {
    box.write("in.uif", fieldsAnd({2, 2, 1, 1, format}, std::string(16, 'x')));
    expectFailure("in.uif", "is a UIF file of wide pixels; only 8-bit ones are read\n");
  }
}

TEST_F(DamagedFiles, BadHeadersOfPpmFilesFail) {
  const std::string many(2000, 'x');
  const std::vector<std::pair<std::string, std::string>> cases{
      {"P6 20 20 65535\n" + many, "is a 16-bit PPM file; only 8-bit ones are read\n"},
      {"P6 20 20 256\n" + many, "is a 16-bit PPM file; only 8-bit ones are read\n"},
      {"P6 0 20 255\n" + many, "the image has no pixels\n"},
      {"P6 20 0 255\n" + many, "the image has no pixels\n"},
      {"P6 46341 46341 255\n" + many, "the image is too large\n"},
      {"P6 2147483647 2 255\n" + many, "the image is too large\n"},
      {"P6 4294967297 1 255\n" + many, "the image is too large"},
      {"P6 99999999999999999999999 1 255\n" + many, "the image is too large"},
      {"P6 32767 32767 255\n" + many, "is a damaged PPM file: pixels are missing\n"},
      {"P6 20 34 255\n" + many, "is a damaged PPM file: pixels are missing\n"},
      {"P6 # no end of this", "is a damaged PPM file: the header is cut off\n"},
      {"P6 a b c", "is a damaged PPM file: the header is cut off\n"},
      {"P6\n#" + std::string(9001, '7') + "\n1 1 255\nabc",
       "is a damaged PPM file: a comment is longer than 9000 characters\n"},
  };
  box.write("old.tif", "an old result");
  for (const auto& [content, words] : cases) {
    SCOPED_TRACE(content.substr(0, 40));
    box.write("in.ppm", content);
    expectFailure("in.ppm", words);
  }
}

TEST_F(DamagedFiles, HeadersOfPpmFilesMayHoldCommentsAndAnyBlanks) {
  const Content expected{RGB, 2, 1, 1, {'a', 'b', 'c', 'd', 'e', 'f'}};
  for (const std::string header :
       {"P6 2 1 255 ", "P6\n# 3 of 4\n2 1\n255\n", "P6\n2\n#\n# 12\n1\n255\n", "P6\t2\r\n1\r255\t",
        "P6\n2 1\n9\n", "P6 02 001 255\n"}) {
    SCOPED_TRACE(header);
    box.write("in.ppm", header + "abcdef");
    EXPECT_TRUE(succeeded(convert("in.ppm", "out.tif")));
    EXPECT_EQ(readContent(box / "out.tif"), expected);
  }
  box.write("in.ppm", "P6\n#" + std::string(9000, '7') + "\n2 1\n255\nabcdef");
  EXPECT_TRUE(succeeded(convert("in.ppm", "out.tif")));
  EXPECT_EQ(readContent(box / "out.tif"), expected);
}

TEST_F(DamagedFiles, WhatIsNoImageFails) {
  box.write("old.tif", "an old result");
  box.write("empty.pgm", "");
  box.write("text.tif", "This is not an image.\n");
  box.write("pair.ics", "");
  std::filesystem::create_directory(box / "folder.iht");
  std::filesystem::create_symlink("nowhere", box / "link.uif");
  ASSERT_EQ(::mkfifo((box / "pipe.pgm").c_str(), 0600), 0);
  ASSERT_EQ(::mkfifo((box / "pipe.iht").c_str(), 0600), 0);
  const std::vector<std::pair<std::string, std::string>> cases{
      {"missing.pgm", "can not be opened: No such file or directory\n"},
      {"missing.iht", "can not be opened: No such file or directory\n"},
      {"missing.uif", "can not be opened: No such file or directory\n"},
      {"missing.ics", "can not be opened: No such file or directory\n"},
      {"link.uif", "can not be opened: No such file or directory\n"},
      {"old.tif/in.iht", "can not be opened: Not a directory\n"},
      {"", "can not be opened: No such file or directory\n"},
      {"folder.iht", "is a directory\n"},
      {"/dev/null", "is not a regular file\n"},
      {"pipe.pgm", "is not a regular file\n"},
      {"pipe.iht", "is not a regular file\n"},
      {"empty.pgm", "is not a PGM, PPM, PNG or TIFF image, nor named .iht or .uif\n"},
      {"text.tif", "is not a PGM, PPM, PNG or TIFF image, nor named .iht or .uif\n"},
  };
  for (const auto& [name, words] : cases) {
    SCOPED_TRACE(name);
    expectFailure(name, words);
  }
  const Outcome outcome = convert("pair.ics", "old.tif");
  EXPECT_TRUE(
      failedWithOneLine(outcome, "pair.ics", "is an ICS file, which is written but not read\n"));
}

// Whatever byte is wrong, the command ends in order.
TEST_F(DamagedFiles, AFlippedByteIsNeverACrash) {
  const Content grey = randomContent(BYTE, {5, 4, 2}, 0, 255, 9);
  const std::vector<std::pair<std::string, std::string>> files{
      {"in.iht", iht(grey)},
      {"in.uif", uif(grey)},
      {"in.ppm", ppm(randomContent(RGB, {5, 4, 1}, 0, 255, 9))}};
  for (const auto& [name, whole] : files) {
    for (std::size_t at = 0; at < whole.size() && at < 45; ++at) {
      for (const int mask : {1, 0x80, 0xff}) {
        SCOPED_TRACE(name + ' ' + std::to_string(at));
        std::string flipped = whole;
        flipped[at] = static_cast<char>(flipped[at] ^ mask);
        box.write(name, flipped);
        const Outcome outcome = convert(name, "out.tif");
        if (outcome.status == 0) {
          EXPECT_TRUE(succeeded(outcome));
        } else {
          EXPECT_TRUE(failedWithOneLine(outcome, name));
        }
      }
    }
  }
}

}  // namespace
}  // namespace orva::test
