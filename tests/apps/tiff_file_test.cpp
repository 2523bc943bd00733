#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

const std::vector<std::string> kVote{"vote", "--max-radius", "10", "discs"};

// What the command prints for a PGM file of the picture.
std::string expectedTable(const Picture& picture) {
  const Sandbox box;
  box.write("discs", pgm(picture));
  return box.run(kVote).out;
}

// The same grey in a type of samples, by a power of two so that arithmetic stays exact.
struct Type {
  const char* name;
  std::uint16_t bits;
  std::uint16_t format;
  double factor;
  double shift = 0;
};
const std::vector<Type> kTypes{
    {"8-bit", 8, SAMPLEFORMAT_UINT, 1},
    {"8-bit of no stated format", 8, SAMPLEFORMAT_VOID, 1},
    {"8-bit signed", 8, SAMPLEFORMAT_INT, 0.5, -120},
    {"16-bit", 16, SAMPLEFORMAT_UINT, 1},
    {"16-bit of a larger range", 16, SAMPLEFORMAT_UINT, 256},
    {"16-bit signed", 16, SAMPLEFORMAT_INT, 1},
    {"16-bit signed, negative", 16, SAMPLEFORMAT_INT, 256, -32768},
    {"32-bit", 32, SAMPLEFORMAT_UINT, 1},
    {"32-bit of a larger range", 32, SAMPLEFORMAT_UINT, 65536},
    {"32-bit signed", 32, SAMPLEFORMAT_INT, 1},
    {"32-bit signed of a larger range", 32, SAMPLEFORMAT_INT, 65536},
    {"float", 32, SAMPLEFORMAT_IEEEFP, 1},
    {"float of a small range", 32, SAMPLEFORMAT_IEEEFP, 1.0 / 256},
    {"float of a large range", 32, SAMPLEFORMAT_IEEEFP, 65536},
};

// Even grey levels, so that half of them is whole; what a shift does to sums of floats is tested
// by the centers alone.
Picture evenLevels() {
  Picture picture = twoDiscs();
  for (double& v : picture.values) v -= v - 2 * static_cast<int>(v / 2);
  return picture;
}

void expectSameCenters(const std::string& out, const std::string& expected, bool exactly) {
  if (exactly) {
    EXPECT_EQ(out, expected);
    return;
  }
  const Table table = parseCsv(out);
  const Table wanted = parseCsv(expected);
  ASSERT_EQ(table.size(), wanted.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(table[i].x, wanted[i].x);
    EXPECT_EQ(table[i].y, wanted[i].y);
    EXPECT_NEAR(table[i].weight, wanted[i].weight, 0.001 * wanted[i].weight);
  }
}

TEST(TiffFile, EverySampleTypeGivesTheSameCentersInEveryLayout) {
  const Picture grey = evenLevels();
  const std::string expected = expectedTable(grey);
  ASSERT_TRUE(marksEach(parseCsv(expected), kTwoDiscs));
  struct Layout {
    const char* mode;
    std::uint16_t compression;
    std::uint32_t tileWidth;
    std::uint32_t tileHeight;
    std::uint32_t rowsPerStrip;
  };
  const std::vector<Layout> layouts{
      {"wl", COMPRESSION_NONE, 0, 0, 50},          {"wb", COMPRESSION_LZW, 0, 0, 16},
      {"wl8", COMPRESSION_ADOBE_DEFLATE, 0, 0, 1}, {"wb8", COMPRESSION_NONE, 32, 16, 0},
      {"wl", COMPRESSION_LZW, 16, 64, 0},          {"wb", COMPRESSION_ADOBE_DEFLATE, 128, 128, 0},
      {"wl", COMPRESSION_PACKBITS, 0, 0, 100},
  };
  const Sandbox box;
  for (const Type& type : kTypes) {
    for (const Layout& layout : layouts) {
      SCOPED_TRACE(std::string(type.name) + ", mode " + layout.mode + ", compression " +
                   std::to_string(layout.compression) + ", tiles " +
                   std::to_string(layout.tileWidth));
      TiffFile(box / "discs", layout.mode)
          .page(scaled(grey, type.factor, type.shift), {.bits = type.bits,
                                                        .format = type.format,
                                                        .compression = layout.compression,
                                                        .tileWidth = layout.tileWidth,
                                                        .tileHeight = layout.tileHeight,
                                                        .rowsPerStrip = layout.rowsPerStrip});
      const Outcome outcome = box.run(kVote);
      EXPECT_TRUE(succeeded(outcome));
      expectSameCenters(outcome.out, expected, type.shift == 0);
    }
  }
}

TEST(TiffFile, SeparatePlanesAndTilesOfColourAreReadAsColour) {
  const Picture grey = twoDiscs();
  const auto colour = spread(grey, [](double v) { return std::vector{255 - v, v, 40.0}; });
  const auto withAlpha = spread(grey, [](double v) { return std::vector{255 - v, v, 40.0, v}; });
  Picture luminance = grey;
  for (double& v : luminance.values) v = 0.212671 * (255 - v) + 0.71516 * v + 0.072169 * 40.0;
  const Sandbox box;
  TiffFile(box / "discs").page(luminance, {.bits = 32, .format = SAMPLEFORMAT_IEEEFP});
  const std::string expected = box.run(kVote).out;
  ASSERT_TRUE(marksEach(parseCsv(expected), kTwoDiscs));
  for (const Picture& picture : {colour, withAlpha}) {
    const std::vector<std::uint16_t> alpha(static_cast<std::size_t>(picture.samples - 3),
                                           EXTRASAMPLE_UNASSALPHA);
    for (const std::uint16_t planar : kPlanars) {
      for (const std::uint32_t tile : {0U, 32U}) {
        for (const Type& type : kTypes) {
          if (type.factor != 1) continue;
          SCOPED_TRACE(std::string(type.name) + ", samples " + std::to_string(picture.samples) +
                       ", planes " + std::to_string(planar) + ", tile " + std::to_string(tile));
          TiffFile(box / "discs")
              .page(picture, {.bits = type.bits,
                              .format = type.format,
                              .photometric = PHOTOMETRIC_RGB,
                              .planar = planar,
                              .tileWidth = tile,
                              .tileHeight = tile,
                              .extraSamples = alpha});
          const Outcome outcome = box.run(kVote);
          EXPECT_TRUE(succeeded(outcome));
          EXPECT_EQ(outcome.out, expected);
        }
      }
    }
  }
}

TEST(TiffFile, MinIsWhiteTurnsTheGreysRound) {
  const Picture grey = twoDiscs();
  const std::string expected = expectedTable(grey);
  const Sandbox box;
  for (const Type& type : kTypes) {
    if (type.factor != 1) continue;
    SCOPED_TRACE(type.name);
    const bool hasSign = type.format == SAMPLEFORMAT_INT || type.format == SAMPLEFORMAT_IEEEFP;
    const bool isLong = type.bits == 32 && !hasSign;
    // A long sample keeps its upper bits only, as a float.
    const double factor = isLong ? -16777216.0 : -1.0;
    const double white = hasSign ? 0.0 : std::ldexp(1.0, type.bits) - 1;
    TiffFile(box / "discs")
        .page(scaled(grey, factor, white),
              {.bits = type.bits, .format = type.format, .photometric = PHOTOMETRIC_MINISWHITE});
    const Outcome outcome = box.run(kVote);
    EXPECT_TRUE(succeeded(outcome));
    expectSameCenters(outcome.out, expected, type.format != SAMPLEFORMAT_INT);
  }
}

TEST(TiffFile, FewBitsSpanTheWholeGreyRange) {
  for (const int bits : {1, 2, 4}) {
    for (const int photometric : {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE}) {
      SCOPED_TRACE(std::to_string(bits) + " bits, photometric " + std::to_string(photometric));
      const double max = (1 << bits) - 1;
      Picture levels = twoDiscs();
      for (double& v : levels.values) v = static_cast<int>(v / 256 * (max + 1));
      const bool white = photometric == PHOTOMETRIC_MINISWHITE;
      const Sandbox box;
      TiffFile(box / "discs")
          .page(white ? scaled(levels, -1, max) : levels,
                {.bits = static_cast<std::uint16_t>(bits),
                 .photometric = static_cast<std::uint16_t>(photometric)});
      const Outcome outcome = box.run(kVote);
      EXPECT_TRUE(succeeded(outcome));
      EXPECT_EQ(outcome.out, expectedTable(scaled(levels, 255 / max)));
    }
  }
}

TEST(TiffFile, APaletteIsLookedUp) {
  Picture indices = twoDiscs();
  std::vector<std::uint16_t> palette(3 * 256);
  for (std::size_t channel = 0; channel < 3; ++channel) {
    for (std::size_t i = 0; i < 256; ++i) {
      palette[channel * 256 + i] = static_cast<std::uint16_t>((255 - i) * 257);
    }
  }
  const Sandbox box;
  TiffFile(box / "discs")
      .page(scaled(indices, -1, 255), {.photometric = PHOTOMETRIC_PALETTE, .palette = palette});
  const Outcome outcome = box.run(kVote);
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, expectedTable(indices));
}

TEST(TiffFile, EveryFrameIsReached) {
  const std::vector<std::vector<Disc>> frames{
      {{15, 16, 7}}, {{30, 20, 7}}, {{18, 32, 6}, {44, 14, 6}}};
  const Sandbox box;
  {
    TiffFile file(box / "stack.tif");
    for (const auto& objects : frames) file.page(discs(60, 50, objects));
    file.page(scaled(discs(40, 44, frames[0]), 100), {.bits = 16, .compression = COMPRESSION_LZW});
  }
  const std::vector<std::string> vote{"vote", "--max-radius", "10", "stack.tif"};
  for (std::size_t k = 0; k < 4; ++k) {
    SCOPED_TRACE(k);
    std::vector<std::string> arguments = vote;
    arguments.insert(arguments.end(), {"--frame", std::to_string(k)});
    const Outcome outcome = box.run(arguments);
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_TRUE(marksEach(parseCsv(outcome.out), frames[k % 3]));
  }
  EXPECT_TRUE(failedWithOneLine(box.run(vote), "stack.tif", "has 4 pages, and does not say"));
  for (const std::string k : {"4", "65534"}) {
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--frame", k, "stack.tif"}), "stack.tif",
                                  "there is no frame " + k));
  }
}

TEST(TiffFile, ThirtyTwoBitValuesPastTheSignedRangeAreKept) {
  Picture grey = twoDiscs();
  const std::string expected = expectedTable(grey);
  const Sandbox box;
  TiffFile(box / "discs").page(scaled(grey, 16777216.0), {.bits = 32});
  const Outcome outcome = box.run(kVote);
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, expected);
}

TEST(TiffFile, ValuesThatAreNoNumbersDoNoHarm) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Sandbox box;
  for (const double bad : {inf, -inf, nan, 3e38, -3e38, 1e-40}) {
    for (const bool everywhere : {false, true}) {
      SCOPED_TRACE(std::to_string(bad) + (everywhere ? " everywhere" : ""));
      Picture picture = twoDiscs();
      picture.values[1234] = bad;
      if (everywhere) picture.values.assign(picture.values.size(), bad);
      TiffFile(box / "odd.tif").page(picture, {.bits = 32, .format = SAMPLEFORMAT_IEEEFP});
      for (const std::string threshold : {"--relative-threshold", "--threshold"}) {
        const Outcome outcome = box.run({"vote", "--max-radius", "10", threshold, "0.5", "odd.tif",
                                         "--overlay", "odd.png", "--format", "json"});
        EXPECT_TRUE(succeeded(outcome));
      }
    }
  }
}

TEST(TiffFile, EveryCutFileFails) {
  const Sandbox box;
  TiffFile(box / "whole.tif").page(discs(24, 20, {{11, 9, 5}}));
  const std::string whole = box.read("whole.tif");
  for (std::size_t size = 4; size < whole.size(); size += 13) {
    SCOPED_TRACE(size);
    box.write("cut.tif", whole.substr(0, size));
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "cut.tif"}), "cut.tif", "damaged TIFF"));
  }
  box.write("cut.tif", whole.substr(0, whole.size() / 2));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "cut.tif"}), "cut.tif", "damaged TIFF"));
  EXPECT_EQ(box.names(), (std::vector<std::string>{"cut.tif", "whole.tif"}));
}

// Whatever byte is wrong, the command ends in order: with a table or with one line.
TEST(TiffFile, AFlippedByteIsNeverACrash) {
  const Sandbox box;
  for (const bool tiled : {false, true}) {
    TiffFile(box / "whole.tif", tiled ? "wb8" : "wl")
        .page(discs(24, 20, {{11, 9, 5}}),
              {.compression = tiled ? std::uint16_t{COMPRESSION_LZW}
                                    : std::uint16_t{COMPRESSION_ADOBE_DEFLATE},
               .tileWidth = tiled ? 16U : 0U,
               .tileHeight = tiled ? 16U : 0U});
    const std::string whole = box.read("whole.tif");
    for (std::size_t at = 0; at < whole.size(); at += 3) {
      SCOPED_TRACE(at);
      std::string flipped = whole;
      flipped[at] = static_cast<char>(~flipped[at]);
      box.write("flipped.tif", flipped);
      const Outcome outcome = box.run({"vote", "--max-radius", "5", "flipped.tif"});
      if (outcome.status == 0) {
        EXPECT_TRUE(succeeded(outcome));
      } else {
        EXPECT_TRUE(failedWithOneLine(outcome, "flipped.tif"));
      }
    }
  }
}

TEST(TiffFile, AbsurdSizesFail) {
  const std::uint32_t max = 4294967295U;
  const auto tags = [](std::uint32_t width, std::uint32_t height, std::uint32_t bits,
                       std::uint32_t photometric, std::uint32_t samples) {
    return std::vector<TiffTag>{
        {TIFFTAG_IMAGEWIDTH, width},        {TIFFTAG_IMAGELENGTH, height},
        {TIFFTAG_BITSPERSAMPLE, bits},      {TIFFTAG_COMPRESSION, COMPRESSION_NONE},
        {TIFFTAG_PHOTOMETRIC, photometric}, {TIFFTAG_STRIPOFFSETS, 512},
        {TIFFTAG_SAMPLESPERPIXEL, samples}, {TIFFTAG_ROWSPERSTRIP, height},
        {TIFFTAG_STRIPBYTECOUNTS, 100}};
  };
  const auto tiles = [](std::uint32_t width, std::uint32_t height) {
    return std::vector<TiffTag>{{TIFFTAG_IMAGEWIDTH, 20},
                                {TIFFTAG_IMAGELENGTH, 20},
                                {TIFFTAG_BITSPERSAMPLE, 8},
                                {TIFFTAG_COMPRESSION, COMPRESSION_NONE},
                                {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK},
                                {TIFFTAG_SAMPLESPERPIXEL, 1},
                                {TIFFTAG_TILEWIDTH, width},
                                {TIFFTAG_TILELENGTH, height},
                                {TIFFTAG_TILEOFFSETS, 512},
                                {TIFFTAG_TILEBYTECOUNTS, 400}};
  };
  const std::uint32_t grey = PHOTOMETRIC_MINISBLACK;
  struct Case {
    const char* name;
    std::vector<TiffTag> tags;
  };
  const std::vector<Case> cases{
      {"no width", tags(0, 10, 8, grey, 1)},
      {"no height", tags(10, 0, 8, grey, 1)},
      {"widest", tags(max, 10, 8, grey, 1)},
      {"highest", tags(10, max, 8, grey, 1)},
      {"widest and highest", tags(max, max, 8, grey, 1)},
      {"as large as is allowed", tags(32767, 32767, 8, grey, 1)},
      {"as large as is allowed, floats", tags(32767, 32767, 32, grey, 1)},
      {"as large as is allowed, many samples", tags(32767, 32767, 32, grey, 65535)},
      {"many samples", tags(20, 20, 8, grey, 65535)},
      {"no samples", tags(20, 20, 8, grey, 0)},
      {"many samples of colour", tags(32767, 32767, 32, PHOTOMETRIC_RGB, 65535)},
      {"few samples of colour", tags(20, 20, 8, PHOTOMETRIC_RGB, 1)},
      {"a large palette image", tags(32767, 32767, 8, PHOTOMETRIC_PALETTE, 1)},
      {"a large bilevel image", tags(32767, 32767, 1, grey, 1)},
      {"a huge bilevel image", tags(max, max, 1, grey, 1)},
      {"no bits", tags(20, 20, 0, grey, 1)},
      {"many bits", tags(20, 20, 65535, grey, 1)},
      {"64 bits", tags(5, 2, 64, grey, 1)},
      {"12 bits", tags(5, 2, 12, grey, 1)},
      {"an unknown colour space", tags(10, 10, 8, 12345, 1)},
      {"the largest tiles", tiles(0xfffffff0U, 0xfffffff0U)},
      {"large tiles", tiles(1U << 20U, 1U << 20U)},
      {"wide tiles", tiles(1U << 31U, 16)},
      {"no tiles", tiles(0, 0)},
  };
  const Sandbox box;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    box.write("absurd.tif", rawTiff(c.tags, std::string(100, 'x')));
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "absurd.tif", "--overlay", "absurd.png"}),
                                  "absurd.tif"));
  }
  EXPECT_EQ(box.names(), std::vector<std::string>{"absurd.tif"});

  box.write("sound.tif", rawTiff(tags(10, 10, 8, grey, 1), std::string(100, 'x')));
  EXPECT_TRUE(succeeded(box.run({"vote", "sound.tif"})));
}

TEST(TiffFile, AnEndlessChainOfPagesEnds) {
  const std::vector<TiffTag> tags{
      {TIFFTAG_IMAGEWIDTH, 4},      {TIFFTAG_IMAGELENGTH, 4},  {TIFFTAG_BITSPERSAMPLE, 8},
      {TIFFTAG_COMPRESSION, 1},     {TIFFTAG_PHOTOMETRIC, 1},  {TIFFTAG_STRIPOFFSETS, 512},
      {TIFFTAG_SAMPLESPERPIXEL, 1}, {TIFFTAG_ROWSPERSTRIP, 4}, {TIFFTAG_STRIPBYTECOUNTS, 16}};
  std::string file = rawTiff(tags, std::string(16, 'x'));
  file[8 + 2 + tags.size() * 12] = 8;  // the next page is this one
  const Sandbox box;
  box.write("loop.tif", file);
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--frame", "60000", "loop.tif"}), "loop.tif",
                                "there is no frame 60000"));
  EXPECT_TRUE(succeeded(box.run({"vote", "--frame", "0", "loop.tif"})));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "loop.tif"}), "loop.tif", "damaged"));
}

}  // namespace
}  // namespace orva::test
