// The option --level: smaller sizes of the pages of a TIFF file, in their SubIFDs.
#include <gtest/gtest.h>

#include <string>

#include "tests/apps/image_files.h"
#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

std::string omeOf(int width, int height, int slices) {
  return "<?xml version=\"1.0\"?><OME xmlns=\"http://www.openmicroscopy.org/Schemas/OME/2016-06\">"
         "<Image ID=\"Image:0\"><Pixels DimensionOrder=\"XYCZT\" Type=\"uint8\" SizeX=\"" +
         std::to_string(width) + "\" SizeY=\"" + std::to_string(height) +
         "\" SizeC=\"1\" SizeZ=\"" + std::to_string(slices) +
         "\" SizeT=\"1\" PhysicalSizeX=\"0.5\" PhysicalSizeY=\"0.25\" PhysicalSizeZ=\"2\">"
         "<Channel/><TiffData/></Pixels></Image></OME>";
}

Picture flat(int width, int height, double value, int samples = 1) {
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                     static_cast<std::size_t>(samples);
  return {width, height, samples, std::vector<double>(count, value)};
}

constexpr std::uint32_t kReduced = FILETYPE_REDUCEDIMAGE;

struct Levels : ::testing::Test {
  Outcome convert(const std::string& in, const std::string& out, Arguments options) const {
    options.insert(options.begin(), "convert");
    options.insert(options.end(), {in, out});
    return box.run(options);
  }

  std::string sizeOf(const std::string& file) const {
    const std::string text = box.run({"info", file}).out;
    const std::size_t at = text.find("pixel size: ");
    return at == std::string::npos ? "" : text.substr(at, text.find('\n', at) - at);
  }

  Sandbox box;
};

// The levels of the second slice are larger or smaller than those of the first.
TEST_F(Levels, OfOtherSizesInOtherSlicesAreRefused) {
  for (const int width : {200, 20}) {
    {
      TiffFile file(box / "z.tif");
      file.page(flat(300, 200, 1), {.description = omeOf(300, 200, 2), .subIfds = 1});
      file.page(flat(60, 40, 2), {.subfileType = kReduced});
      file.page(flat(300, 200, 3), {.subIfds = 1});
      file.page(flat(width, 2 * width / 3, 4), {.subfileType = kReduced});
    }
    for (const std::string z : {"max", "mean", "all"}) {
      const Outcome outcome = convert("z.tif", "out.tif", {"--level", "1", "--z", z});
      EXPECT_TRUE(failedWithOneLine(outcome, "z.tif", "its pages differ in size")) << z;
    }
    EXPECT_TRUE(succeeded(convert("z.tif", "out.tif", {"--level", "1", "--z", "1"})));
    EXPECT_EQ(readContent(box / "out.tif").width, width);
  }
}

TEST_F(Levels, HaveTheirOwnPixelSize) {
  {
    TiffFile file(box / "a.tif");
    file.page(flat(80, 60, 10), {.description = omeOf(80, 60, 1), .subIfds = 2});
    file.page(flat(40, 20, 20), {.subfileType = kReduced});
    file.page(flat(8, 6, 30), {.subfileType = kReduced});
  }
  for (const auto& [level, size] : {std::pair("0", "pixel size: 0.5 x 0.25 x 2 um"),
                                    std::pair("1", "pixel size: 1 x 0.75 x 2 um"),
                                    std::pair("2", "pixel size: 5 x 2.5 x 2 um")}) {
    EXPECT_TRUE(succeeded(convert("a.tif", "out.ome.tif", {"--level", level})));
    EXPECT_EQ(sizeOf("out.ome.tif"), size);
  }
  EXPECT_EQ(readContent(box / "out.ome.tif"),
            (Content{BYTE, 8, 6, 1, std::vector<double>(48, 30)}));
  EXPECT_TRUE(failedWithOneLine(convert("a.tif", "out.tif", {"--level", "3"}), "a.tif",
                                "has no level 3; there are 0 to 2"));
}

TEST_F(Levels, OfWideColourAreRead) {
  const TiffForm wide{.bits = 16, .photometric = PHOTOMETRIC_RGB};
  {
    TiffFile file(box / "a.tif");
    TiffForm form = wide;
    form.subIfds = 1;
    form.perCentimetre = 20000;
    file.page(flat(8, 6, 1000, 3), form);
    form = wide;
    form.subfileType = kReduced;
    file.page(flat(4, 3, 2000, 3), form);
  }
  EXPECT_TRUE(succeeded(convert("a.tif", "out.tif", {"--level", "1"})));
  EXPECT_EQ(sizeOf("a.tif"), "pixel size: 0.5 x 0.5 um");
  EXPECT_EQ(sizeOf("out.tif"), "pixel size: 1 x 1 um");
  for (const std::string out : {"out.tif", "out.png"}) {
    EXPECT_TRUE(failedWithOneLine(convert("a.tif", out, {"--level", "2"}), "a.tif",
                                  "has no level 2; there are 0 to 1"));
  }
  EXPECT_TRUE(succeeded(convert("a.tif", "wide.png", {})));
  EXPECT_TRUE(failedWithOneLine(convert("wide.png", "out.tif", {"--level", "1"}), "wide.png",
                                "has no level 1; there is only 0"));
}

// A mask, a macro picture of the same size, and one that does not say what it is.
TEST_F(Levels, AreReducedAndSmallerImagesOnly) {
  {
    TiffFile file(box / "a.tif");
    file.page(flat(40, 30, 1), {.subIfds = 4});
    file.page(flat(20, 15, 2), {.subfileType = FILETYPE_MASK});
    file.page(flat(40, 30, 3), {.subfileType = kReduced});
    file.page(flat(20, 15, 4));
    file.page(flat(10, 10, 5), {.subfileType = kReduced});
  }
  EXPECT_TRUE(succeeded(convert("a.tif", "out.tif", {"--level", "1"})));
  EXPECT_EQ(readContent(box / "out.tif"), (Content{BYTE, 10, 10, 1, std::vector<double>(100, 5)}));
  EXPECT_TRUE(failedWithOneLine(convert("a.tif", "out.tif", {"--level", "2"}), "a.tif",
                                "has no level 2; there are 0 to 1"));
}

// Pages of a pyramid that is not kept in SubIFDs.
TEST_F(Levels, AsFramesHaveNoPixelSize) {
  {
    TiffFile file(box / "a.tif");
    file.page(flat(40, 30, 1), {.perCentimetre = 20000});
    file.page(flat(20, 15, 2), {.subfileType = kReduced});
    file.page(flat(40, 30, 3));
  }
  for (const auto& [frame, size] : {std::pair("0", "pixel size: 0.5 x 0.5 um"), std::pair("1", ""),
                                    std::pair("2", "pixel size: 0.5 x 0.5 um")}) {
    EXPECT_TRUE(succeeded(convert("a.tif", "out.tif", {"--frame", frame})));
    EXPECT_EQ(sizeOf("out.tif"), size) << frame;
    EXPECT_TRUE(succeeded(box.run({"filter", "--op", "smooth", "--sigma", "1", "--frame", frame,
                                   "--output", "smooth.tif", "a.tif"})));
    EXPECT_EQ(sizeOf("smooth.tif"), size) << frame;
  }
}

}  // namespace
}  // namespace orva::test
