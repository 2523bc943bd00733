#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/apps/pictures.h"
#include "tests/apps/png_files.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

bool isColoured(const std::array<unsigned char, 3>& p) { return p[0] != p[1] || p[1] != p[2]; }

// The grey of a value in low .. high when these become 0 and 255, rounded down, in single
// precision.
int stretched(double v, double low, double high) {
  if (v == high) return 255;
  const auto above = static_cast<float>(v - low);
  return static_cast<int>(above * 255.0F / static_cast<float>(high - low));
}

// Far from the centers the overlay is the image; at each one there is a mark.
void expectOverlay(const RgbPicture& overlay, const Picture& grey, const Table& centers) {
  ASSERT_EQ(overlay.width, grey.width);
  ASSERT_EQ(overlay.height, grey.height);
  const auto [low, high] = std::minmax_element(grey.values.begin(), grey.values.end());
  for (int y = 0; y < grey.height; ++y) {
    for (int x = 0; x < grey.width; ++x) {
      const bool near = std::any_of(centers.begin(), centers.end(), [x, y](const Row& c) {
        return std::max(std::abs(c.x - x), std::abs(c.y - y)) <= 6;
      });
      if (near) continue;
      const int expected = stretched(grey.at(x, y), *low, *high);
      const std::array<unsigned char, 3>& p = overlay.at(x, y);
      ASSERT_FALSE(isColoured(p)) << x << ", " << y;
      ASSERT_EQ(p[0], expected) << x << ", " << y;
    }
  }
  for (const Row& c : centers) {
    EXPECT_TRUE(isColoured(overlay.at(c.x, c.y))) << c;
    int coloured = 0;
    for (int y = std::max(c.y - 6, 0); y <= std::min(c.y + 6, grey.height - 1); ++y) {
      for (int x = std::max(c.x - 6, 0); x <= std::min(c.x + 6, grey.width - 1); ++x) {
        if (isColoured(overlay.at(x, y))) ++coloured;
      }
    }
    EXPECT_GE(coloured, 5) << c;  // more than a speck, at the border of the image too
  }
}

TEST(Overlay, MarksEveryCenterOnTheGreyImage) {
  const Picture picture = twoDiscs();
  const Sandbox box;
  box.write("discs.pgm", pgm(picture));
  const Outcome outcome =
      box.run({"vote", "--max-radius", "10", "--overlay", "discs.png", "discs.pgm"});
  EXPECT_TRUE(succeeded(outcome));
  const Table centers = parseCsv(outcome.out);
  EXPECT_TRUE(marksEach(centers, kTwoDiscs));
  expectOverlay(readRgbPng(box / "discs.png"), picture, centers);
  EXPECT_EQ(box.names(), (std::vector<std::string>{"discs.pgm", "discs.png"}));
}

TEST(Overlay, EveryDepthIsStretchedToTheSamePicture) {
  const Picture picture = scaled(twoDiscs(), 100);
  const Sandbox box;
  TiffFile(box / "discs.tif").page(picture, {.bits = 16});
  writePng(box / "discs16.png", picture, {.depth = 16});
  TiffFile(box / "float.tif")
      .page(scaled(picture, 0.25), {.bits = 32, .format = SAMPLEFORMAT_IEEEFP});
  for (const std::string name : {"discs.tif", "discs16.png", "float.tif"}) {
    SCOPED_TRACE(name);
    const Outcome outcome =
        box.run({"vote", "--max-radius", "10", "--overlay", "overlay.png", name});
    EXPECT_TRUE(succeeded(outcome));
    expectOverlay(readRgbPng(box / "overlay.png"), picture, parseCsv(outcome.out));
  }
}

TEST(Overlay, IsGreyWithoutCentersAndForColourImages) {
  const Picture grey = twoDiscs();
  const Sandbox box;
  writePng(box / "red.png",
           spread(grey,
                  [](double v) {
                    return std::vector{v, 0.0, 0.0};
                  }),
           {.colourType = PNG_COLOR_TYPE_RGB});
  const Outcome outcome = box.run({"vote", "--overlay", "overlay.png", "--polarity", "bright",
                                   "--threshold", "1e30", "red.png"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, "x,y,weight\n");
  Picture luminance = grey;
  for (double& v : luminance.values) v = static_cast<float>(0.212671 * v);
  expectOverlay(readRgbPng(box / "overlay.png"), luminance, {});
}

TEST(Overlay, FollowsTheFrame) {
  const Picture picture = twoDiscs();
  const Sandbox box;
  {
    TiffFile file(box / "stack.tif");
    file.page(discs(20, 20, {}));
    file.page(picture);
  }
  const Outcome outcome = box.run(
      {"vote", "--max-radius", "10", "--frame", "1", "--overlay", "overlay.png", "stack.tif"});
  EXPECT_TRUE(succeeded(outcome));
  expectOverlay(readRgbPng(box / "overlay.png"), picture, parseCsv(outcome.out));
}

TEST(Overlay, HotPixelsDoNotBlackenFoundObjects) {
  Picture picture = scaled(discs(200, 200, {{60, 60, 12}, {140, 130, 12}}), 20);
  picture.values[5] = picture.values[199 * 200 + 7] = 65535;
  const Sandbox box;
  TiffFile(box / "hot.tif").page(picture, {.bits = 16});
  for (const std::vector<std::string>& call :
       std::vector<std::vector<std::string>>{{"find", "--overlay", "a.png", "hot.tif"},
                                             {"segment", "--outlines", "a.png", "hot.tif"}}) {
    SCOPED_TRACE(call.front());
    const Outcome outcome = box.run(call);
    EXPECT_EQ(outcome.status, 0);
    const RgbPicture overlay = readRgbPng(box / "a.png");
    for (const auto& [x, y] : {std::pair(60, 60), std::pair(140, 130)}) {
      EXPECT_GT(overlay.at(x, y)[0], 100);
      EXPECT_LT(overlay.at(x, y)[0], 160);
    }
    EXPECT_EQ(overlay.at(5, 0)[0], 255);
    EXPECT_LT(overlay.at(100, 20)[0], 30);
  }
}

// Marks that stick out are cut off, with any size of image and mark.
TEST(Overlay, MarksStayInsideTheImage) {
  const Sandbox box;
  const Picture tiny = discs(7, 5, {{2, 2, 2}});
  box.write("tiny.pgm", pgm(tiny));
  for (const std::string radius : {"2", "10", "200"}) {
    SCOPED_TRACE(radius);
    const Outcome outcome =
        box.run({"vote", "--max-radius", radius, "--overlay", "tiny.png", "tiny.pgm"});
    EXPECT_TRUE(succeeded(outcome));
    const RgbPicture overlay = readRgbPng(box / "tiny.png");
    EXPECT_EQ(overlay.width, 7);
    EXPECT_EQ(overlay.height, 5);
    for (const Row& c : parseCsv(outcome.out)) EXPECT_TRUE(isColoured(overlay.at(c.x, c.y)));
  }
}

}  // namespace
}  // namespace orva::test
