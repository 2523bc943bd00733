#include <gtest/gtest.h>

#include <cmath>

#include "tests/apps/png_files.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

const std::vector<std::string> kVoteOnDiscs{"vote", "--max-radius", "10", "discs"};

// What the command prints for a PGM file of the picture.
std::string pngTable(const Picture& picture) {
  const Sandbox box;
  box.write("discs", pgm(picture));
  return box.run(kVoteOnDiscs).out;
}

// The same for a float TIFF file, for values that PGM does not hold.
std::string expectedFloatTable(const Picture& picture) {
  const Sandbox box;
  TiffFile(box / "discs").page(picture, {.bits = 32, .format = SAMPLEFORMAT_IEEEFP});
  return box.run(kVoteOnDiscs).out;
}

std::vector<png_color> greyRamp(int last) {
  std::vector<png_color> palette;
  for (int i = 0; i <= last; ++i) {
    const auto v = static_cast<png_byte>(i);
    palette.push_back({v, v, v});
  }
  return palette;
}

TEST(PngFile, EveryFormOfTheSameGreyGivesTheSameTable) {
  const Picture grey = twoDiscs();
  const Picture rgb = spread(grey, [](double v) { return std::vector{v, v, v}; });
  const Picture rgba = spread(grey, [](double v) { return std::vector{v, v, v, 255.0 - v}; });
  const Picture greyAlpha = spread(grey, [](double v) { return std::vector{v, 255.0 - v}; });
  const std::vector<png_byte> alpha(100, 7);
  struct Case {
    const char* name;
    Picture picture;
    PngForm form;
  };
  const std::vector<Case> cases{
      {"grey", grey, {}},
      {"grey, 0 transparent", grey, {.transparentBlack = true}},
      {"grey with alpha", greyAlpha, {.colourType = PNG_COLOR_TYPE_GRAY_ALPHA}},
      {"colour", rgb, {.colourType = PNG_COLOR_TYPE_RGB}},
      {"colour, black transparent",
       rgb,
       {.colourType = PNG_COLOR_TYPE_RGB, .transparentBlack = true}},
      {"colour with alpha", rgba, {.colourType = PNG_COLOR_TYPE_RGB_ALPHA}},
      {"palette", grey, {.colourType = PNG_COLOR_TYPE_PALETTE, .palette = greyRamp(255)}},
      {"palette, partly transparent",
       grey,
       {.colourType = PNG_COLOR_TYPE_PALETTE, .palette = greyRamp(255), .paletteAlpha = alpha}},
      {"16-bit grey", grey, {.depth = 16}},
      {"16-bit grey of a larger range", scaled(grey, 256), {.depth = 16}},
      {"16-bit grey with alpha", greyAlpha, {.depth = 16, .colourType = PNG_COLOR_TYPE_GRAY_ALPHA}},
      {"16-bit colour", rgb, {.depth = 16, .colourType = PNG_COLOR_TYPE_RGB}},
      {"16-bit colour with alpha", rgba, {.depth = 16, .colourType = PNG_COLOR_TYPE_RGB_ALPHA}},
  };
  const std::string expected = pngTable(grey);
  ASSERT_TRUE(marksEach(parseCsv(expected), kTwoDiscs));
  for (const Case& c : cases) {
    for (const bool interlaced : {false, true}) {
      SCOPED_TRACE(std::string(c.name) + (interlaced ? ", interlaced" : ""));
      const Sandbox box;
      PngForm form = c.form;
      form.interlaced = interlaced;
      writePng(box / "discs", c.picture, form);
      const Outcome outcome = box.run(kVoteOnDiscs);
      EXPECT_TRUE(succeeded(outcome));
      EXPECT_EQ(outcome.out, expected);
    }
  }
}

TEST(PngFile, FewBitsSpanTheWholeGreyRange) {
  for (const int depth : {1, 2, 4}) {
    for (const bool interlaced : {false, true}) {
      SCOPED_TRACE(std::to_string(depth) + " bits" + (interlaced ? ", interlaced" : ""));
      const double max = (1 << depth) - 1;
      Picture levels = twoDiscs();
      for (double& v : levels.values) v = std::floor(v / 256 * (max + 1));
      const std::string expected = pngTable(scaled(levels, 255 / max));
      ASSERT_TRUE(marksEach(parseCsv(expected), kTwoDiscs));
      const Sandbox box;
      writePng(box / "discs", levels, {.depth = depth, .interlaced = interlaced});
      const Outcome outcome = box.run(kVoteOnDiscs);
      EXPECT_TRUE(succeeded(outcome));
      EXPECT_EQ(outcome.out, expected);
    }
  }
}

TEST(PngFile, ASmallPaletteIsLookedUp) {
  Picture indices = twoDiscs();
  for (double& v : indices.values) v = v > 100 ? 1 : 2;
  const Sandbox box;
  writePng(box / "discs", indices,
           {.depth = 2,
            .colourType = PNG_COLOR_TYPE_PALETTE,
            .palette = {{9, 9, 9}, {200, 200, 200}, {30, 30, 30}}});
  Picture grey = indices;
  for (double& v : grey.values) v = v == 1 ? 200 : 30;
  const Outcome outcome = box.run(kVoteOnDiscs);
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, pngTable(grey));
}

// A red, a green and a blue disc: each counts by its share of the luminance.
TEST(PngFile, ColourCountsAsLuminance) {
  const Picture grey = discs(90, 40, {{18, 19, 7}, {45, 21, 7}, {71, 18, 7}}, 0);
  for (const int depth : {8, 16}) {
    SCOPED_TRACE(depth);
    Picture colour{grey.width, grey.height, 3, {}};
    Picture luminance = grey;
    for (int y = 0, i = 0; y < grey.height; ++y) {
      for (int x = 0; x < grey.width; ++x, ++i) {
        const double v = grey.at(x, y) * (depth == 8 ? 1 : 200);
        const double red = x < 31 ? v : 5;
        const double green = x >= 31 && x < 58 ? v : 5;
        const double blue = x >= 58 ? v : 5;
        colour.values.insert(colour.values.end(), {red, green, blue});
        luminance.values[static_cast<std::size_t>(i)] =
            0.212671 * red + 0.71516 * green + 0.072169 * blue;
      }
    }
    const Sandbox box;
    writePng(box / "discs", colour, {.depth = depth, .colourType = PNG_COLOR_TYPE_RGB});
    const Outcome outcome = box.run(kVoteOnDiscs);
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, expectedFloatTable(luminance));
    EXPECT_FALSE(parseCsv(outcome.out).empty());
  }
}

// Red is nearly as bright as green is not: equal luminance hides a disc.
TEST(PngFile, ADiscOfTheBackgroundsLuminanceIsNotFound) {
  const Picture grey = discs(50, 50, {{24, 25, 8}}, 0);
  const auto colours = [](double v) {
    return v > 100 ? std::vector{250.0, 0.0, 0.0} : std::vector{0.0, 74.0, 4.0};
  };
  const Sandbox box;
  writePng(box / "discs", spread(grey, colours), {.colourType = PNG_COLOR_TYPE_RGB});
  const Outcome seen = box.run({"vote", "--max-radius", "10", "--gradient", "1", "discs"});
  EXPECT_TRUE(succeeded(seen));
  EXPECT_EQ(seen.out, "x,y,weight\n");
}

TEST(PngFile, HasOneFrame) {
  const Sandbox box;
  writePng(box / "discs.png", twoDiscs());
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--frame", "1", "discs.png"}), "discs.png",
                                "there is no frame 1"));
  EXPECT_TRUE(succeeded(box.run({"vote", "--frame", "0", "discs.png"})));
}

TEST(PngFile, EveryCutFileFails) {
  const Sandbox box;
  writePng(box / "whole.png", discs(24, 20, {{11, 9, 5}}));
  const std::string whole = box.read("whole.png");
  for (std::size_t size = 8; size < whole.size(); size += size < 60 ? 5 : 17) {
    SCOPED_TRACE(size);
    box.write("cut.png", whole.substr(0, size));
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "cut.png"}), "cut.png", "damaged PNG"));
  }
  for (const std::size_t size : {whole.size() / 2, whole.size() - 12, whole.size() - 1}) {
    SCOPED_TRACE(size);
    box.write("cut.png", whole.substr(0, size));
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "cut.png"}), "cut.png", "damaged PNG"));
  }
  EXPECT_EQ(box.names(), (std::vector<std::string>{"cut.png", "whole.png"}));
}

TEST(PngFile, AFlippedByteFails) {
  const Sandbox box;
  writePng(box / "whole.png", discs(24, 20, {{11, 9, 5}}));
  const std::string whole = box.read("whole.png");
  for (std::size_t at = 0; at < whole.size(); at += at < 60 ? 3 : 11) {
    SCOPED_TRACE(at);
    std::string flipped = whole;
    flipped[at] = static_cast<char>(~flipped[at]);
    box.write("flipped.png", flipped);
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "flipped.png"}), "flipped.png"));
  }
}

TEST(PngFile, TooManyPixelsOnASideFail) {
  const Sandbox box;
  writePng(box / "long.png", {32768, 1, 1, std::vector<double>(32768)});
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "long.png"}), "long.png", "too large"));
}

}  // namespace
}  // namespace orva::test
