// What `orva info` shows of files of every format.
#include <bit>
#include <fstream>
#include <limits>
#include <sstream>

#include "tests/apps/conversions.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

class InfoCommand : public ::testing::Test {
 protected:
  void expectInfo(const std::string& name, const std::string& lines) const {
    const Outcome outcome = box.run({"info", name});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "file: " + name + '\n' + lines);
  }

  Sandbox box;
};

TEST_F(InfoCommand, FlatFormats) {
  box.write("in.pgm", "P5 3 2 255\n\x07\x09\xf0\x08\x08\x08");
  expectInfo("in.pgm",
             "format: PGM\nwidth: 3\nheight: 2\nplanes: 1\npixel type: BYTE\nrange: 7 to 240\n");
  // The range is that of all components, and not that of the brightness.
  box.write("in.ppm", "P6 1 2 255\nabczyx");
  expectInfo("in.ppm",
             "format: PPM\nwidth: 1\nheight: 2\nplanes: 1\npixel type: RGB\nrange: 97 to 122\n");
  writeContent(box / "in.png", {BYTE, 2, 1, 1, {0, 255}});
  expectInfo("in.png",
             "format: PNG\nwidth: 2\nheight: 1\nplanes: 1\npixel type: BYTE\nrange: 0 to 255\n");
  writeContent(box / "in.png", {USHORT, 2, 1, 1, {3, 65535}});
  expectInfo("in.png",
             "format: PNG\nwidth: 2\nheight: 1\nplanes: 1\npixel type: INT\nrange: 3 to 65535\n");
  writeContent(box / "in.png", {RGB, 1, 1, 1, {5, 1, 9}});
  expectInfo("in.png",
             "format: PNG\nwidth: 1\nheight: 1\nplanes: 1\npixel type: RGB\nrange: 1 to 9\n");
}

TEST_F(InfoCommand, RawFormats) {
  writeContent(box / "in.iht", {SHORT, 2, 1, 3, {-5, 300, 2, 3, 4, 5}});
  expectInfo("in.iht",
             "format: IHT\nwidth: 2\nheight: 1\nplanes: 3\npixel type: SHORT\nrange: -5 to 300\n");
  writeContent(box / "in.iht", {FLOAT, 1, 2, 1, {-0.25, 1e10F}});
  expectInfo("in.iht",
             "format: IHT\nwidth: 1\nheight: 2\nplanes: 1\npixel type: FLOAT\n"
             "range: -0.25 to 1e+10\n");
  writeContent(box / "in.iht", {INT, 1, 1, 1, {-7}});
  expectInfo("in.iht",
             "format: IHT\nwidth: 1\nheight: 1\nplanes: 1\npixel type: INT\nrange: -7 to -7\n");
  writeContent(box / "in.uif", {BYTE, 2, 1, 2, {4, 5, 6, 200}});
  expectInfo("in.uif",
             "format: UIF\nwidth: 2\nheight: 1\nplanes: 2\npixel type: BYTE\nrange: 4 to 200\n");
}

TEST_F(InfoCommand, EveryPixelTypeOfTiffFiles) {
  const std::vector<std::pair<Content, std::string>> cases{
      {{BYTE, 2, 1, 1, {1, 255}}, "BYTE\nrange: 1 to 255"},
      {{USHORT, 2, 1, 1, {65535, 1}}, "INT\nrange: 1 to 65535"},
      {{SHORT, 2, 1, 1, {-32768, 32767}}, "SHORT\nrange: -32768 to 32767"},
      {{INT, 2, 1, 1, {-2147483648.0, 2147483647}}, "INT\nrange: -2147483648 to 2147483647"},
      {{INT, 2, 1, 1, {100000, 16777217}}, "INT\nrange: 100000 to 16777217"},
      {{UINT, 2, 1, 1, {4294967295.0, 16777217}}, "UINT\nrange: 16777217 to 4294967295"},
      {{FLOAT, 2, 1, 1, {0.5, -1.5}}, "FLOAT\nrange: -1.5 to 0.5"},
      {{FLOAT, 2, 1, 1, {0.5, 0.75}}, "FLOAT\nrange: 0.5 to 0.75"},
      {{FLOAT, 2, 1, 1, {0.75, 0.5}}, "FLOAT\nrange: 0.5 to 0.75"},
      {{RGB, 1, 1, 1, {3, 1, 2}}, "RGB\nrange: 1 to 3"},
  };
  for (const auto& [content, words] : cases) {
    writeContent(box / "in.tif", content);
    expectInfo("in.tif", "format: TIFF\npages: 1\nwidth: " + std::to_string(content.width) +
                             "\nheight: 1\npixel type: " + words + '\n');
  }
}

// Sizes and type are those of the first page, the range that of all.
TEST_F(InfoCommand, PagesMayDiffer) {
  {
    TiffFile file(box / "in.tif");
    file.page({3, 2, 1, {9, 8, 7, 6, 5, 9}});
    file.page({1, 1, 1, {60000}}, {.bits = 16});
    file.page({2, 1, 3, {4, 5, 6, 7, 8, 9}}, {.photometric = PHOTOMETRIC_RGB});
    file.page({1, 1, 1, {70000}}, {.bits = 32, .compression = COMPRESSION_LZW});
  }
  expectInfo("in.tif",
             "format: TIFF\npages: 4\nwidth: 3\nheight: 2\npixel type: BYTE\nrange: 4 to 70000\n");
}

// Colour that cannot be kept shows as brightness.
TEST_F(InfoCommand, WideColourCountsAsBrightness) {
  TiffFile(box / "in.tif")
      .page({2, 1, 3, {500, 500, 500, 1000, 1000, 1000}},
            {.bits = 16, .photometric = PHOTOMETRIC_RGB});
  expectInfo("in.tif",
             "format: TIFF\npages: 1\nwidth: 2\nheight: 1\npixel type: FLOAT\n"
             "range: 500 to 1000\n");
}

TEST_F(InfoCommand, PixelsThatAreNoNumbersHaveNoPartInTheRange) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const std::string start = "format: IHT\nwidth: 3\nheight: 1\nplanes: 1\npixel type: FLOAT\n";
  writeContent(box / "in.iht", {FLOAT, 3, 1, 1, {nan, 2, 1}});
  expectInfo("in.iht", start + "range: 1 to 2\n");
  writeContent(box / "in.iht", {FLOAT, 3, 1, 1, {2, nan, nan}});
  expectInfo("in.iht", start + "range: 2 to 2\n");
  writeContent(box / "in.iht", {FLOAT, 3, 1, 1, {nan, nan, nan}});
  expectInfo("in.iht", start + "range: none\n");
  writeContent(box / "in.iht", {FLOAT, 3, 1, 1, {-inf, 0, inf}});
  expectInfo("in.iht", start + "range: -inf to inf\n");
}

TEST_F(InfoCommand, IcsHeadersThatTheCommandWrote) {
  struct Case {
    Content content;
    const char* depthAndType;
  };
  for (const Case& c :
       {Case{{BYTE, 2, 3, 1, {1, 2, 3, 4, 5, 6}}, "depth: 1\n%pixel type: BYTE\n"},
        Case{{SHORT, 2, 3, 1, {1, 2, 3, 4, 5, 6}}, "depth: 1\n%pixel type: SHORT\n"},
        Case{{INT, 2, 3, 1, {1, 2, 3, 4, 5, 6}}, "depth: 1\n%pixel type: INT\n"},
        Case{{UINT, 2, 3, 1, {1, 2, 3, 4, 5, 6}}, "depth: 1\n%pixel type: UINT\n"},
        Case{{FLOAT, 2, 3, 1, {1, 2, 3, 4, 5, 6}}, "depth: 1\n%pixel type: FLOAT\n"},
        Case{{BYTE, 2, 3, 2, {1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 6}},
             "depth: 2\n%pixel type: BYTE\n"}}) {
    writeContent(box / "in.tif", c.content);
    ASSERT_TRUE(succeeded(box.run({"convert", "in.tif", "pair.ics"})));
    std::string text = c.depthAndType;
    text.replace(text.find('%'), 1, "channels: 1\ntime points: 1\n");
    expectInfo("pair.ics", "format: ICS\nwidth: 2\nheight: 3\n" + text + "byte order: " +
                               (std::endian::native == std::endian::little ? "little" : "big") +
                               "-endian\ndata file: pair.ids\n");
  }
}

// As the parser takes them; channels, time points and the data file may be left out.
TEST_F(InfoCommand, IcsHeadersOfOthers) {
  box.write("in.ics",
            "ics_version 1.0\nfilename cells\nlayout order bits x y z c t\n"
            "layout sizes 16 10 20 5 3 2\nrepresentation format integer\n"
            "representation byte_order 1 2\n");
  expectInfo("in.ics",
             "format: ICS\nwidth: 10\nheight: 20\ndepth: 5\nchannels: 3\n"
             "time points: 2\npixel type: SHORT\nbyte order: little-endian\n"
             "data file: cells.ids\n");
  box.write(
      "IN.ICS",
      "layout\torder\tbits\ty\tx\nlayout\tsizes\t32\t20\t10\nrepresentation\tformat\tfloat\n");
  expectInfo("IN.ICS",
             "format: ICS\nwidth: 10\nheight: 20\ndepth: 1\npixel type: FLOAT\n"
             "byte order: big-endian\n");
}

TEST_F(InfoCommand, WhatIsNoIcsHeaderFails) {
  for (const std::string content :
       {"", "\n", "P5 1 1 255\nx", "layout order bits x y\nlayout sizes 64 3 3\n",
        "filename a\nlayout order bits x y\nlayout sizes 64 3 3\nrepresentation format "
        "integer\n"}) {
    SCOPED_TRACE(content);
    box.write("in.ics", content);
    EXPECT_TRUE(failedWithOneLine(box.run({"info", "in.ics"}), "in.ics",
                                  "is no ICS header, or its pixel type is unknown\n"));
  }
}

// IHT, UIF and ICS are recognised by name, all others by content.
TEST_F(InfoCommand, TheFormatIsThatOfTheContentOrTheName) {
  const Content c{BYTE, 2, 1, 1, {5, 6}};
  for (const std::string extension : {".pgm", ".png", ".tif"}) {
    writeContent(box / ("in" + extension), c);
    std::filesystem::rename(box / ("in" + extension), box / "any.name");
    std::string format = extension == ".pgm" ? "PGM" : extension == ".png" ? "PNG" : "TIFF";
    const Outcome outcome = box.run({"info", "any.name"});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_TRUE(outcome.out.starts_with("file: any.name\nformat: " + format + '\n'));
  }
  writeContent(box / "in.iht", c);
  std::filesystem::rename(box / "in.iht", box / "CAPITALS.IHT");
  EXPECT_TRUE(succeeded(box.run({"info", "CAPITALS.IHT"})));
  box.write("picture.iht", "P5 2 1 255\nab");
  EXPECT_TRUE(failedWithOneLine(box.run({"info", "picture.iht"}), "picture.iht",
                                "is a damaged IHT file: "));
}

TEST_F(InfoCommand, SampleImagesHaveTheSizesOfTheirIndex) {
  std::ifstream index(ORVA_DATA "/index.csv");
  std::string line;
  ASSERT_TRUE(std::getline(index, line));
  ASSERT_TRUE(line.starts_with("name,width,height,")) << line;
  int count = 0;
  while (std::getline(index, line)) {
    std::istringstream row(line);
    std::string name;
    std::string width;
    std::string height;
    std::getline(std::getline(std::getline(row, name, ','), width, ','), height, ',');
    const std::string file = ORVA_DATA "/images/" + name + ".pgm";
    const Outcome outcome = box.run({"info", file});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_TRUE(outcome.out.starts_with("file: " + file + "\nformat: PGM\nwidth: " + width +
                                        "\nheight: " + height +
                                        "\nplanes: 1\npixel type: BYTE\nrange: "));
    ++count;
  }
  EXPECT_EQ(count, 4);
}

TEST_F(InfoCommand, WrongDescriptionHidesNothing) {
  const std::string one =
      "<Image><Pixels DimensionOrder=\"XYCZT\" SizeX=\"2\" SizeY=\"1\" SizeC=\"1\" SizeZ=\"1\" "
      "SizeT=\"1\"><TiffData IFD=\"0\"/></Pixels></Image>";
  const auto infoOf = [&](const std::string& images) {
    {
      TiffFile file(box / "a.tif");
      file.page({2, 1, 1, {3, 7}}, {.description = "<OME>" + images + "</OME>"});
    }
    const Outcome outcome = box.run({"info", "a.tif"});
    EXPECT_TRUE(succeeded(outcome));
    const std::string range = "range: 3 to 7\n";
    const std::size_t at = outcome.out.find(range);
    return at == std::string::npos ? outcome.out : outcome.out.substr(at + range.size());
  };
  EXPECT_EQ(infoOf("<Image/>"),
            "description: is an OME-TIFF file whose OME-XML is wrong: its image has no Pixels\n");
  EXPECT_EQ(infoOf(one + "<Image/>"),
            "images: 2\nimage 0: 2 x 1\ndescription: OME\nchannels: 1\nslices: 1\ntimes: 1\n"
            "image 1: is an OME-TIFF file whose OME-XML is wrong: its image has no Pixels\n");
}

}  // namespace
}  // namespace orva::test
