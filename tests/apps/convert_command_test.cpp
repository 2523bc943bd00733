// Frames, pages, stretched ranges and names of `orva convert`.
#include <limits>

#include "tests/apps/conversions.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

using ConvertCommand = Conversion;

TEST_F(ConvertCommand, AFrameIsWrittenAlone) {
  const Content c = randomContent(BYTE, {6, 3, 4}, 0, 255, 5);
  for (const std::string from : {".tif", ".iht", ".uif"}) {
    writeContent(box / ("in" + from), c);
    for (const std::string& to : kOutputs) {
      SCOPED_TRACE(from + " to " + to);
      for (int k = 0; k < c.planes; ++k) {
        EXPECT_TRUE(succeeded(convert("in" + from, "out" + to, {"--frame", std::to_string(k)})));
        EXPECT_EQ(readContent(box / ("out" + to)), *expectedIn(to, c.plane(k)));
      }
      const std::string last = box.read("out" + to);
      for (const std::string k : {"4", "65534"}) {
        EXPECT_TRUE(failedWithOneLine(convert("in" + from, "out" + to, {"--frame", k}), "in" + from,
                                      "there is no frame " + k));
      }
      EXPECT_EQ(box.read("out" + to), last);
    }
  }
}

TEST_F(ConvertCommand, AFlatFormatHasFrameZeroOnly) {
  writeContent(box / "in.pgm", randomContent(BYTE, {6, 3, 1}, 0, 255, 5));
  writeContent(box / "in.ppm", randomContent(RGB, {6, 3, 1}, 0, 255, 5));
  writeContent(box / "in.png", randomContent(USHORT, {6, 3, 1}, 0, 65535, 5));
  for (const std::string from : {"in.pgm", "in.ppm", "in.png"}) {
    EXPECT_TRUE(
        failedWithOneLine(convert(from, "out.tif", {"--frame", "1"}), from, "there is no frame 1"));
    EXPECT_FALSE(std::filesystem::exists(box / "out.tif"));
    EXPECT_TRUE(succeeded(convert(from, "out.tif", {"--frame", "0"})));
    std::filesystem::remove(box / "out.tif");
  }
}

// The darkest and the brightest pixel of all planes.
TEST_F(ConvertCommand, AStackIsStretchedAsAWhole) {
  writeContent(box / "in.iht", {SHORT, 2, 1, 3, {-100, 0, 155, 20, -50, 100}});
  const Content expected{BYTE, 2, 1, 3, {0, 100, 255, 120, 50, 200}};
  for (const std::string to : {".tif", ".iht", ".uif", ".ics"}) {
    SCOPED_TRACE(to);
    EXPECT_TRUE(succeeded(convert("in.iht", "out" + to, {"--stretch"})));
    EXPECT_EQ(readContent(box / ("out" + to)), expected);
  }
  EXPECT_TRUE(succeeded(convert("in.iht", "out.pgm", {"--stretch", "--frame", "0"})));
  EXPECT_EQ(readContent(box / "out.pgm"), (Content{BYTE, 2, 1, 1, {0, 255}}));
}

// 255 keeps its place and is no range of its own.
TEST_F(ConvertCommand, StretchingChangesBytesToo) {
  writeContent(box / "in.pgm", {BYTE, 3, 1, 1, {10, 20, 61}});
  EXPECT_TRUE(succeeded(convert("in.pgm", "out.pgm", {"--stretch"})));
  EXPECT_EQ(readContent(box / "out.pgm").values, (std::vector<double>{0, 50, 255}));
}

TEST_F(ConvertCommand, ColourStaysOrItsLuminanceIsStretched) {
  const Content c{RGB, 3, 1, 1, {10, 20, 30, 200, 100, 50, 90, 90, 90}};
  writeContent(box / "in.ppm", c);
  for (const std::string to : {".ppm", ".png", ".tif", ".ics"}) {
    SCOPED_TRACE(to);
    EXPECT_TRUE(succeeded(convert("in.ppm", "out" + to, {"--stretch"})));
    EXPECT_EQ(readContent(box / ("out" + to)), c);
  }
  const Content grey = *asBytes(c);
  ASSERT_EQ(grey.values, (std::vector<double>{19, 118, 90}));
  for (const std::string to : {".pgm", ".iht", ".uif"}) {
    SCOPED_TRACE(to);
    EXPECT_TRUE(succeeded(convert("in.ppm", "out" + to, {"--stretch"})));
    EXPECT_EQ(readContent(box / ("out" + to)),
              (Content{BYTE, 3, 1, 1, {0, 255, 182}}));  // 71 * 255 / 99
  }
}

TEST_F(ConvertCommand, PixelsThatAreNoNumbersFitFloatFormatsOnly) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (const double bad : {nan, inf, -inf}) {
    SCOPED_TRACE(bad);
    const Content c{FLOAT, 3, 1, 1, {1, bad, 2}};
    writeContent(box / "in.iht", c);
    for (const std::string to : {".pgm", ".ppm", ".png", ".uif"}) {
      EXPECT_TRUE(failedWithOneLine(convert("in.iht", "out" + to), "in.iht", reasonOf(to, c)));
      EXPECT_TRUE(succeeded(convert("in.iht", "stretched" + to, {"--stretch"})));
    }
    EXPECT_TRUE(succeeded(convert("in.iht", "out.tif")));
    EXPECT_TRUE(succeeded(convert("out.tif", "back.iht")));
    EXPECT_EQ(box.read("back.iht"), box.read("in.iht"));
    EXPECT_TRUE(succeeded(convert("in.iht", "out.ics")));
    EXPECT_EQ(box.read("out.ids"), box.read("in.iht").substr(40));
  }
}

// Bits that the formats have and the library has not.
TEST_F(ConvertCommand, OtherTiffPixelsComeInTheNextWiderType) {
  const Picture picture{3, 2, 1, {0, 1, 2, 100, 127, 3}};
  TiffFile(box / "signed.tif").page(scaled(picture, -1), {.format = SAMPLEFORMAT_INT});
  EXPECT_TRUE(succeeded(convert("signed.tif", "out.iht")));
  EXPECT_EQ(readContent(box / "out.iht"), (Content{SHORT, 3, 2, 1, {0, -1, -2, -100, -127, -3}}));
  TiffFile(box / "white.tif").page(picture, {.photometric = PHOTOMETRIC_MINISWHITE});
  EXPECT_TRUE(succeeded(convert("white.tif", "out.pgm")));
  EXPECT_EQ(readContent(box / "out.pgm").values,
            (std::vector<double>{255, 254, 253, 155, 128, 252}));
}

// The largest numbers would be the smallest below 0.
TEST_F(ConvertCommand, NumbersTooLargeForIhtFail) {
  for (const double large : {2147483648.0, 4294967295.0}) {
    writeContent(box / "in.tif", {UINT, 2, 1, 1, {1, large}});
    EXPECT_TRUE(failedWithOneLine(convert("in.tif", "out.iht"), "in.tif",
                                  "has pixels above 2147483647, too large for IHT\n"));
  }
  writeContent(box / "in.tif", {UINT, 2, 1, 1, {1, 2147483647}});
  EXPECT_TRUE(succeeded(convert("in.tif", "out.iht")));
  EXPECT_EQ(readContent(box / "out.iht"), (Content{INT, 2, 1, 1, {1, 2147483647}}));
}

TEST_F(ConvertCommand, WideColourIsKeptByPngAndTiffAlone) {
  const Picture picture{2, 1, 3, {1, 2, 300, 4, 5, 65535}};
  TiffFile(box / "wide.tif").page(picture, {.bits = 16, .photometric = PHOTOMETRIC_RGB});
  for (const std::string to : {".ppm", ".ics"}) {
    EXPECT_TRUE(failedWithOneLine(convert("wide.tif", "out" + to), "wide.tif",
                                  "has colour of other samples than bytes"));
  }
  EXPECT_EQ(box.names(), std::vector<std::string>{"wide.tif"});
  std::vector<std::string> backs;
  for (const std::string to : {"out.png", "out.tif"}) {
    EXPECT_TRUE(succeeded(convert("wide.tif", to)));
    EXPECT_TRUE(succeeded(convert(to, "back.tif")));
    backs.push_back(box.read("back.tif"));
  }
  EXPECT_EQ(backs[0], backs[1]);
  EXPECT_EQ(backs[0], box.read("out.tif"));
  const std::string png = box.read("out.png");
  EXPECT_EQ(png[24], 16);  // bits
  EXPECT_EQ(png[25], 2);   // red, green and blue
  // Signed samples are kept by none.
  TiffFile(box / "signed.tif")
      .page(picture, {.bits = 16, .format = SAMPLEFORMAT_INT, .photometric = PHOTOMETRIC_RGB});
  EXPECT_TRUE(failedWithOneLine(convert("signed.tif", "out.tif"), "signed.tif",
                                "has colour of other samples than bytes"));
}

TEST_F(ConvertCommand, AFrameKeeps16Bits) {
  const Content c = randomContent(USHORT, {6, 3, 4}, 0, 65535, 78);
  writeContent(box / "in.tif", c);
  for (const std::string to : {"out.tif", "out.png"}) {
    EXPECT_TRUE(succeeded(convert("in.tif", to, {"--frame", "2"})));
    EXPECT_EQ(readContent(box / to), c.plane(2));
  }
  const Picture colour{2, 1, 3, {1, 2, 300, 4, 5, 65535}};
  TiffFile(box / "wide.tif").page(colour, {.bits = 16, .photometric = PHOTOMETRIC_RGB});
  for (const std::string to : {"out.tif", "out.png"}) {
    EXPECT_TRUE(succeeded(convert("wide.tif", "all" + to)));
    EXPECT_TRUE(succeeded(convert("wide.tif", to, {"--frame", "0"})));
    EXPECT_EQ(box.read(to), box.read("all" + to));
  }
}

TEST_F(ConvertCommand, KeepTypeGivesPng16Bits) {
  for (const double high : {200.0, 255.0, 256.0}) {
    const Content wide = randomContent(USHORT, {6, 3, 1}, 0, high, 79);
    writeContent(box / "in.tif", wide);
    for (const auto& options : {Arguments{}, Arguments{"--frame", "0"}}) {
      Arguments kept = options;
      kept.emplace_back("--keep-type");
      EXPECT_TRUE(succeeded(convert("in.tif", "kept.png", kept)));
      EXPECT_EQ(readContent(box / "kept.png"), wide);
      EXPECT_TRUE(succeeded(convert("in.tif", "plain.png", options)));
      const Content plain = readContent(box / "plain.png");
      EXPECT_EQ(plain.type, high > 255 ? USHORT : BYTE);
      EXPECT_EQ(plain.values, wide.values);
      // From PNG to PNG, too.
      EXPECT_TRUE(succeeded(convert("kept.png", "again.png", kept)));
      EXPECT_EQ(readContent(box / "again.png"), wide);
    }
    std::filesystem::remove(box / "in.tif");
  }
  writeContent(box / "in.tif", randomContent(BYTE, {6, 3, 1}, 0, 255, 79));
  EXPECT_TRUE(succeeded(convert("in.tif", "kept.png", {"--keep-type"})));
  EXPECT_EQ(readContent(box / "kept.png").type, BYTE);
}

TEST_F(ConvertCommand, WideColourBecomesLuminanceWhereThereIsNoColour) {
  const Picture picture{2, 1, 3, {1, 2, 300, 4, 5, 65535}};
  TiffFile(box / "wide.tif").page(picture, {.bits = 16, .photometric = PHOTOMETRIC_RGB});
  EXPECT_TRUE(succeeded(convert("wide.tif", "out.iht")));
  const auto brightness = [](double red, double green, double blue) {
    return static_cast<double>(
        static_cast<float>(0.212671 * red + 0.71516 * green + 0.072169 * blue));
  };
  const Content result = readContent(box / "out.iht");
  EXPECT_EQ(result.type, FLOAT);
  ASSERT_EQ(result.values.size(), 2U);
  EXPECT_FLOAT_EQ(static_cast<float>(result.values[0]), static_cast<float>(brightness(1, 2, 300)));
  EXPECT_FLOAT_EQ(static_cast<float>(result.values[1]),
                  static_cast<float>(brightness(4, 5, 65535)));
  EXPECT_TRUE(succeeded(convert("wide.tif", "out.pgm", {"--stretch"})));
  EXPECT_EQ(readContent(box / "out.pgm").values, (std::vector<double>{0, 255}));
}

TEST_F(ConvertCommand, PagesThatDifferFailUnlessOneIsChosen) {
  const Picture small{2, 2, 1, {1, 2, 3, 4}};
  const Picture wide{3, 2, 1, {1, 2, 3, 4, 5, 6}};
  const Picture high{2, 3, 1, {1, 2, 3, 4, 5, 6}};
  const Picture colour{2, 2, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}};
  struct Case {
    const char* name;
    Picture picture;
    TiffForm form;
  };
  for (const Case& c :
       {Case{"wider", wide, {}}, Case{"higher", high, {}}, Case{"of 16 bits", small, {.bits = 16}},
        Case{"in colour", colour, {.photometric = PHOTOMETRIC_RGB}}}) {
    for (const bool isFirst : {false, true}) {
      SCOPED_TRACE(c.name);
      {
        TiffFile file(box / "pages.tif");
        if (isFirst) file.page(c.picture, c.form);
        file.page(small);
        if (!isFirst) file.page(c.picture, c.form);
      }
      for (const std::string& to : kOutputs) {
        EXPECT_TRUE(
            failedWithOneLine(convert("pages.tif", "out" + to), "pages.tif",
                              "its pages differ in size or pixel type; choose one with --frame"));
      }
      EXPECT_EQ(box.names(), std::vector<std::string>{"pages.tif"});
      EXPECT_TRUE(succeeded(convert("pages.tif", "out.tif", {"--frame", isFirst ? "0" : "1"})));
      EXPECT_EQ(readContent(box / "out.tif").values, c.picture.values);
      EXPECT_TRUE(succeeded(convert("pages.tif", "out.tif", {"--frame", isFirst ? "1" : "0"})));
      EXPECT_EQ(readContent(box / "out.tif").values, small.values);
      std::filesystem::remove(box / "out.tif");
    }
  }
}

TEST_F(ConvertCommand, PagesOfOtherLayoutsAreOneStack) {
  const Picture first{3, 2, 1, {1, 2, 3, 4, 5, 6}};
  {
    TiffFile file(box / "pages.tif");
    file.page(first);
    file.page(scaled(first, 2), {.compression = COMPRESSION_LZW});
    file.page(scaled(first, 3), {.tileWidth = 16, .tileHeight = 16});
    file.page(scaled(first, -1, 255), {.photometric = PHOTOMETRIC_MINISWHITE});
  }
  EXPECT_TRUE(succeeded(convert("pages.tif", "out.uif")));
  Content expected{BYTE, 3, 2, 4, {}};
  for (const double factor : {1, 2, 3, 1}) {
    for (const double v : first.values) expected.values.push_back(factor * v);
  }
  EXPECT_EQ(readContent(box / "out.uif"), expected);
}

TEST_F(ConvertCommand, AStackOfColourIsKeptPageByPage) {
  const Content c = randomContent(RGB, {5, 3, 3}, 0, 255, 77);
  writeContent(box / "in.tif", c);
  for (const std::string to : {".tif", ".iht", ".uif", ".ics"}) {
    SCOPED_TRACE(to);
    EXPECT_TRUE(succeeded(convert("in.tif", "out" + to)));
    EXPECT_EQ(readContent(box / ("out" + to)), *expectedIn(to, c));
  }
}

// Names decide what is written, in small letters or capitals; ICS names in small letters only.
TEST_F(ConvertCommand, TheNameDecidesWhatIsWritten) {
  writeContent(box / "in.pgm", {BYTE, 3, 1, 1, {1, 2, 3}});
  for (const std::string extension : {"pgm", "ppm", "png", "tif", "iht", "uif"}) {
    std::string capitals = extension;
    for (char& c : capitals) c = static_cast<char>(c - 'a' + 'A');
    EXPECT_TRUE(succeeded(convert("in.pgm", "small." + extension)));
    EXPECT_TRUE(succeeded(convert("in.pgm", "large." + capitals)));
    EXPECT_EQ(box.read("small." + extension), box.read("large." + capitals));
  }
  EXPECT_TRUE(succeeded(convert("in.pgm", "long.tiff")));
  EXPECT_EQ(box.read("long.tiff"), box.read("small.tif"));
  for (const std::string name : {"out.ICS", "out.Ics", "out", "out.jpg", "out.ids", ".tif", "tif",
                                 "out.tif.", "out.tif/", "", "out.pgm.gz"}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(refused(convert("in.pgm", name), "has none of the extensions that can be written"));
  }
}

TEST_F(ConvertCommand, IcsPairsHaveTheNamesThatTheirHeadersTell) {
  const Content c{SHORT, 3, 1, 1, {-1, 2, 3}};
  writeContent(box / "in.tif", c);
  std::filesystem::create_directory(box / "deep.er");
  for (const std::string name : {"a.ics", "a.b.ics", "deep.er/c.ics", "two..ics", "x.tif.ics"}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(succeeded(convert("in.tif", name)));
    EXPECT_EQ(readContent(box / name), c);
  }
}

}  // namespace
}  // namespace orva::test
