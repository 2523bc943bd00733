// What `orva convert` keeps of a file beside its pixels.
#include <gtest/gtest.h>

#include <string>

#include "tests/apps/image_files.h"
#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

std::string omeOf(const std::string& sizes, const std::string& content) {
  return "<?xml version=\"1.0\"?><OME xmlns=\"http://www.openmicroscopy.org/Schemas/OME/2016-06\">"
         "<Image ID=\"Image:0\"><Pixels DimensionOrder=\"XYCZT\" Type=\"uint16\" SizeX=\"3\" "
         "SizeY=\"2\" " +
         sizes + ">" + content + "</Pixels></Image></OME>";
}

const Picture kPlane{3, 2, 1, {0, 1, 2, 300, 4000, 4095}};

struct KeptAxes : ::testing::Test {
  void writePages(int count, const std::string& description, float perCentimetre = 0) const {
    TiffFile file(box / "in.tif");
    TiffForm form{.bits = 16, .description = description, .perCentimetre = perCentimetre};
    for (int i = 0; i < count; ++i) {
      file.page(kPlane, form);
      form.description.clear();
    }
  }

  // The lines that `orva info` prints of the axes.
  std::string infoOf(const std::string& out, Arguments options = {}) const {
    options.insert(options.begin(), "convert");
    options.insert(options.end(), {"in.tif", out});
    EXPECT_TRUE(succeeded(box.run(options)));
    const std::string text = box.run({"info", out}).out;
    const std::string range = "range: 0 to 4095\n";
    const std::size_t at = text.find(range);
    return at == std::string::npos ? text : text.substr(at + range.size());
  }

  Sandbox box;
};

TEST_F(KeptAxes, OfAFrame) {
  const std::string sizes = "SizeC=\"2\" SizeZ=\"1\" SizeT=\"1\" PhysicalSizeX=\"0.65\" ";
  writePages(2, omeOf(sizes + "PhysicalSizeY=\"0.65\"", "<Channel/><Channel/><TiffData/>"));
  EXPECT_EQ(infoOf("out.tif", {"--frame", "1"}),
            "description: ImageJ\nchannels: 1\nslices: 1\ntimes: 1\npixel size: 0.65 x 0.65 um\n");
  EXPECT_EQ(readContent(box / "out.tif"), (Content{USHORT, 3, 2, 1, kPlane.values}));
  // The description is wrong, which does not matter for a page by its number.
  writePages(1, omeOf("SizeC=\"7\"", ""));
  EXPECT_EQ(infoOf("out.tif", {"--frame", "0"}), "");
  EXPECT_EQ(readContent(box / "out.tif").type, USHORT);
}

TEST_F(KeptAxes, FramesOfWideColourStayWide) {
  {
    TiffFile file(box / "in.tif");
    file.page({1, 1, 3, {1, 2, 3}}, {.bits = 16, .photometric = PHOTOMETRIC_RGB});
    file.page({1, 1, 3, {4, 500, 4095}}, {.bits = 16, .photometric = PHOTOMETRIC_RGB});
  }
  EXPECT_TRUE(succeeded(box.run({"convert", "--frame", "1", "in.tif", "out.png"})));
  EXPECT_TRUE(succeeded(box.run({"convert", "out.png", "out.iht"})));
  EXPECT_TRUE(succeeded(box.run({"convert", "--frame", "1", "in.tif", "expected.iht"})));
  EXPECT_EQ(box.read("out.iht"), box.read("expected.iht"));
}

TEST_F(KeptAxes, OfPagesOfUnknownMeaningAreTheirSize) {
  writePages(3, "", 20000);
  for (const std::string out : {"out.tif", "out.ome.tif"}) {
    EXPECT_EQ(infoOf(out), "pixel size: 0.5 x 0.5 um\n") << out;
  }
}

TEST_F(KeptAxes, BitDepthIsWrittenInOme) {
  const std::string sizes = "SignificantBits=\"12\" SizeC=\"1\" SizeZ=\"2\" SizeT=\"1\"";
  writePages(2, omeOf(sizes, "<Channel Name=\"488\"/><TiffData/>"));
  const std::string start = "description: OME\nchannels: 1\nslices: ";
  const std::string name = "times: 1\nchannel names: 0 488\n";
  EXPECT_EQ(infoOf("out.ome.tif"), start + "2\n" + name + "bit depth: 12\n");
  EXPECT_EQ(infoOf("out.ome.tif", {"--z", "max"}), start + "1\n" + name + "bit depth: 12\n");
  EXPECT_EQ(infoOf("out.ome.tif", {"--z", "mean"}), start + "1\n" + name);
  EXPECT_EQ(infoOf("out.ome.tif", {"--stretch"}).find("bit depth"), std::string::npos);
}

TEST_F(KeptAxes, ProjectionsHaveNoSizeAlongZ) {
  const std::string sizes = "SizeC=\"1\" SizeZ=\"2\" SizeT=\"1\" PhysicalSizeX=\"0.5\" ";
  writePages(2, omeOf(sizes + "PhysicalSizeY=\"0.5\" PhysicalSizeZ=\"2\"", "<TiffData/>"));
  for (const std::string out : {"out.tif", "out.ome.tif"}) {
    EXPECT_NE(infoOf(out).find("pixel size: 0.5 x 0.5 x 2 um\n"), std::string::npos);
    for (const std::string z : {"max", "mean"}) {
      EXPECT_NE(infoOf(out, {"--z", z}).find("pixel size: 0.5 x 0.5 um\n"), std::string::npos) << z;
    }
  }
}

TEST_F(KeptAxes, WhatContradictsThePagesIsRefused) {
  writePages(1, omeOf("SizeC=\"3\" SizeZ=\"1\" SizeT=\"1\"",
                      "<Channel SamplesPerPixel=\"3\"/><TiffData/>"));
  EXPECT_TRUE(failedWithOneLine(box.run({"find", "in.tif"}), "in.tif",
                                "it states 3 samples per pixel, and page 0 has 1"));
}

TEST_F(KeptAxes, MissingPlanesAreReported) {
  {
    TiffFile file(box / "in.tif");
    TiffForm form{.bits = 16, .photometric = PHOTOMETRIC_RGB};
    form.description = omeOf("SizeC=\"3\" SizeZ=\"2\" SizeT=\"1\"",
                             "<Channel SamplesPerPixel=\"3\"/><TiffData IFD=\"0\"/>");
    file.page({3, 2, 3, std::vector<double>(18, 7)}, form);
  }
  EXPECT_TRUE(failedWithOneLine(box.run({"convert", "in.tif", "out.tif"}), "in.tif",
                                "lacks the plane of channel 0, slice 1 and time 0"));
}

// The array behind one page, as tifffile writes it when told to truncate.
TEST_F(KeptAxes, StacksBehindOnePageAreRefused) {
  const auto write = [&](const std::string& description, std::size_t pixels) {
    const auto length = static_cast<std::uint32_t>(description.size() + 1);
    const std::string file = rawTiff({{TIFFTAG_IMAGEWIDTH, 8},
                                      {TIFFTAG_IMAGELENGTH, 6},
                                      {TIFFTAG_BITSPERSAMPLE, 8},
                                      {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK},
                                      {TIFFTAG_IMAGEDESCRIPTION, 300, TIFF_ASCII, length},
                                      {TIFFTAG_STRIPOFFSETS, 512},
                                      {TIFFTAG_ROWSPERSTRIP, 6},
                                      {TIFFTAG_STRIPBYTECOUNTS, 48}},
                                     std::string(pixels, '\5'));
    std::string whole = file;
    box.write("in.tif", whole.replace(300, description.size(), description));
  };
  for (const std::string description :
       {R"({"shape": [3, 6, 8]})", R"({"axes": "ZYX", "shape": [3, 6, 8]})"}) {
    write(description, 144);
    EXPECT_TRUE(
        failedWithOneLine(box.run({"convert", "in.tif", "out.png"}), "in.tif",
                          "with 3 planes in one page, as tifffile writes truncated stacks"));
    // One page of a stack, saved by itself.
    write(description, 48);
    EXPECT_TRUE(succeeded(box.run({"convert", "in.tif", "out.png"})));
  }
  for (const std::string description :
       {R"({"shape": [6, 8]})", R"({"shape": [6, )", R"({"shape": []})"}) {
    write(description, 144);
    EXPECT_TRUE(succeeded(box.run({"convert", "in.tif", "out.png"}))) << description;
  }
}

}  // namespace
}  // namespace orva::test
