// TIFF files with planes, channels or samples that are not read are refused by every subcommand.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

constexpr std::uint16_t kUnspecified = EXTRASAMPLE_UNSPECIFIED;
constexpr std::uint16_t kPremultiplied = EXTRASAMPLE_ASSOCALPHA;
constexpr std::uint16_t kAlpha = EXTRASAMPLE_UNASSALPHA;

constexpr std::array<std::uint16_t, 2> kBits{8, 16};
constexpr std::array<std::uint16_t, 2> kGreyAndRgb{PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_RGB};

// Grey discs whose pixels have so many samples, the first of which is the grey.
Picture withSamples(int samples) {
  return spread(twoDiscs(), [=](double v) {
    std::vector<double> pixel(static_cast<std::size_t>(samples), 255 - v);
    pixel.front() = v;
    return pixel;
  });
}

// No subcommand reads "a.tif".
void expectRefused(const Sandbox& box, const std::string& words) {
  const auto before = box.names();
  for (const Arguments& call :
       {Arguments{"vote", "a.tif"}, Arguments{"vote", "--frame", "0", "a.tif"},
        Arguments{"info", "a.tif"}, Arguments{"convert", "a.tif", "b.tif"},
        Arguments{"convert", "--frame", "0", "a.tif", "b.tif"},
        Arguments{"measure", "a.tif", "--table", "t.csv"},
        Arguments{"filter", "--op", "dx", "--sigma", "1", "--output", "b.tif", "a.tif"}}) {
    EXPECT_TRUE(failedWithOneLine(box.run(call), "a.tif", words)) << call.front();
  }
  EXPECT_EQ(box.names(), before);
}

TEST(TiffRefusals, SamplesThatAreNoAlphaAreRefused) {
  struct Case {
    int samples;
    std::uint16_t photometric;
    std::vector<std::uint16_t> extra;
  };
  const std::uint16_t grey = PHOTOMETRIC_MINISBLACK;
  const std::uint16_t rgb = PHOTOMETRIC_RGB;
  const std::vector<Case> cases{
      {2, grey, {}},
      {2, grey, {kUnspecified}},
      {2, PHOTOMETRIC_MINISWHITE, {}},
      {3, grey, {}},
      {3, grey, {kAlpha, kUnspecified}},
      {3, grey, {kAlpha, kAlpha}},
      {5, grey, {}},
      {5, grey, {kAlpha}},  // of the four the last
      {4, rgb, {}},
      {4, rgb, {kUnspecified}},
      {5, rgb, {kAlpha, kUnspecified}},
      {6, rgb, {}},
  };
  for (const Case& c : cases) {
    for (const std::uint16_t planar : kPlanars) {
      for (const std::uint16_t bits : kBits) {
        SCOPED_TRACE(std::to_string(c.samples) + " samples, " + std::to_string(c.extra.size()) +
                     " of them described, photometric " + std::to_string(c.photometric) +
                     ", planes " + std::to_string(planar));
        const Sandbox box;
        TiffFile(box / "a.tif")
            .page(withSamples(c.samples), {.bits = bits,
                                           .photometric = c.photometric,
                                           .planar = planar,
                                           .extraSamples = c.extra});
        expectRefused(box, "is a TIFF file with " + std::to_string(c.samples) +
                               " samples per pixel, more than grey or colour and alpha have; save "
                               "each channel as a page of its own");
      }
    }
  }
}

TEST(TiffRefusals, FewBitsOfSeveralSamplesAreRefused) {
  const Sandbox box;
  const Picture picture{4, 2, 2, {1, 0, 0, 1, 1, 1, 0, 0, 1, 0, 0, 1, 1, 1, 0, 0}};
  TiffFile(box / "a.tif").page(picture, {.bits = 4});
  expectRefused(box, "2 samples per pixel");
}

TEST(TiffRefusals, AlphaIsLeftOut) {
  const Sandbox box;
  TiffFile(box / "grey.tif").page(twoDiscs());
  const std::string expected = box.run({"vote", "--max-radius", "10", "grey.tif"}).out;
  for (const std::uint16_t alpha : {kAlpha, kPremultiplied}) {
    for (const std::uint16_t planar : kPlanars) {
      TiffFile(box / "a.tif").page(withSamples(2), {.planar = planar, .extraSamples = {alpha}});
      const Outcome outcome = box.run({"vote", "--max-radius", "10", "a.tif"});
      EXPECT_TRUE(succeeded(outcome));
      EXPECT_EQ(outcome.out, expected);
      TiffFile(box / "b.tif")
          .page(withSamples(4),
                {.photometric = PHOTOMETRIC_RGB, .planar = planar, .extraSamples = {alpha}});
      EXPECT_TRUE(succeeded(box.run({"info", "b.tif"})));
    }
  }
}

TEST(TiffRefusals, ALaterPageOfSeveralSamplesIsRefused) {
  const Sandbox box;
  {
    TiffFile file(box / "a.tif");
    file.page(twoDiscs());
    file.page(withSamples(2));
  }
  EXPECT_TRUE(succeeded(box.run({"vote", "--frame", "0", "a.tif"})));
  for (const Arguments& call :
       {Arguments{"info", "a.tif"}, Arguments{"vote", "--frame", "1", "a.tif"},
        Arguments{"convert", "a.tif", "b.tif"}}) {
    EXPECT_TRUE(failedWithOneLine(box.run(call), "a.tif", "2 samples per pixel"));
  }
}

TEST(TiffRefusals, AnImageDepthAboveOneIsRefused) {
  const Sandbox box;
  TiffFile(box / "a.tif").page(twoDiscs(), {.depth = 3});
  expectRefused(box,
                "is a TIFF file with 3 planes in one page (ImageDepth), of which only the "
                "first could be read; save each plane as a page of its own");
}

class ImageJStack : public ::testing::Test {
 protected:
  // One page whose description is that of so many planes; behind it lie `bytes` more.
  void write(int planes, std::size_t bytes, const TiffForm& form = {}) const {
    TiffForm described = form;
    described.description =
        "ImageJ=1.53t\nimages=" + std::to_string(planes) + "\nslices=2\nloop=false\n";
    TiffFile(box / "a.tif").page(twoDiscs(), described);
    box.write("a.tif", box.read("a.tif") + std::string(bytes, '\x40'));
  }

  Sandbox box;
  const std::size_t plane = twoDiscs().values.size();
};

TEST_F(ImageJStack, InOnePageIsRefused) {
  write(2, plane);
  const std::string words =
      "is a TIFF file with 2 planes in one page, as ImageJ writes stacks of over 4 GB, of which "
      "only the first could be read; save each plane as a page of its own";
  expectRefused(box, words);
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--frame", "1", "a.tif"}), "a.tif", words));
  write(5000, plane);  // whatever is missing at its end
  expectRefused(box, "with 5000 planes in one page");
}

// Other programs copy the description along with a page.
TEST_F(ImageJStack, OnePageOfItIsRead) {
  write(5, 0);
  EXPECT_TRUE(succeeded(box.run({"info", "a.tif"})));
  write(5, plane, {.compression = COMPRESSION_LZW});
  EXPECT_TRUE(succeeded(box.run({"info", "a.tif"})));
  write(1, plane);
  EXPECT_TRUE(succeeded(box.run({"info", "a.tif"})));
}

TEST_F(ImageJStack, OfSeveralPagesIsRead) {
  {
    TiffFile file(box / "a.tif");
    file.page(twoDiscs(), {.description = "ImageJ=1.53t\nimages=2\nslices=2\n"});
    file.page(twoDiscs());
  }
  const Outcome outcome = box.run({"info", "a.tif"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_NE(outcome.out.find("pages: 2\n"), std::string::npos);
}

TEST(TiffRefusals, AMetaMorphStackIsRefused) {
  std::vector<TiffTag> tags{
      {TIFFTAG_IMAGEWIDTH, 4},      {TIFFTAG_IMAGELENGTH, 4},  {TIFFTAG_BITSPERSAMPLE, 8},
      {TIFFTAG_COMPRESSION, 1},     {TIFFTAG_PHOTOMETRIC, 1},  {TIFFTAG_STRIPOFFSETS, 512},
      {TIFFTAG_SAMPLESPERPIXEL, 1}, {TIFFTAG_ROWSPERSTRIP, 4}, {TIFFTAG_STRIPBYTECOUNTS, 16}};
  const Sandbox box;
  for (const std::uint32_t planes : {1U, 3U}) {
    std::vector<TiffTag> all = tags;
    all.push_back({33629, 560, TIFF_RATIONAL, planes});
    box.write("a.tif", rawTiff(all, std::string(48 + 24 * planes, '\1')));
    if (planes == 1) {
      EXPECT_TRUE(succeeded(box.run({"info", "a.tif"})));
    } else {
      expectRefused(box, "with 3 planes in one page, as MetaMorph writes stacks, of which only");
    }
  }
}

TEST(TiffRefusals, UnreadSampleTypesAreNamed) {
  struct Case {
    std::uint16_t bits;
    std::uint16_t format;
    const char* words;
  };
  const std::vector<Case> cases{
      {16, SAMPLEFORMAT_IEEEFP,
       "is a TIFF file of 16-bit floating point, which is not read; convert it to 32-bit floating "
       "point"},
      {64, SAMPLEFORMAT_IEEEFP, "is a TIFF file of 64-bit floating point, which is not read"},
      {64, SAMPLEFORMAT_UINT,
       "is a TIFF file of 64-bit whole numbers, which is not read; convert it to 32-bit whole "
       "numbers"},
      {64, SAMPLEFORMAT_INT, "is a TIFF file of 64-bit whole numbers, which is not read"},
      {64, SAMPLEFORMAT_COMPLEXIEEEFP, "is a TIFF file of complex numbers, which is not read"},
      {32, SAMPLEFORMAT_COMPLEXINT, "is a TIFF file of complex numbers, which is not read"},
  };
  for (const Case& c : cases) {
    for (const std::uint16_t photometric : kGreyAndRgb) {
      SCOPED_TRACE(c.words);
      const Sandbox box;
      const bool isRgb = photometric == PHOTOMETRIC_RGB;
      const Picture colour = spread(twoDiscs(), [](double v) { return std::vector{v, v, v}; });
      TiffFile(box / "a.tif")
          .page(isRgb ? colour : twoDiscs(),
                {.bits = c.bits, .format = c.format, .photometric = photometric});
      expectRefused(box, c.words);
    }
  }
}

}  // namespace
}  // namespace orva::test
