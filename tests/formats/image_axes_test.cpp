#include "formats/image_axes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace orva::test {
namespace {

using formats::axesOfPages;
using formats::ImageAxes;
using formats::imageJAxes;
using formats::PageFacts;
using formats::PixelSize;
using ::testing::ElementsAre;

TEST(SquarePixelSize, IsTheMeanOfNearlyEqualSizes) {
  EXPECT_EQ(formats::squarePixelSize({0.5, 0.5, {}}), 0.5);
  EXPECT_EQ(formats::squarePixelSize({0.5, 0.50390625, 2.0}), 0.501953125);
  EXPECT_EQ(formats::squarePixelSize({0.5, 0.506, {}}), std::nullopt);
  EXPECT_EQ(formats::squarePixelSize({0.506, 0.5, {}}), std::nullopt);
  EXPECT_EQ(formats::squarePixelSize({0.5, {}, 0.5}), std::nullopt);
  EXPECT_EQ(formats::squarePixelSize({}), std::nullopt);
}

TEST(PageAxes, OnePageIsOnePlane) {
  const ImageAxes axes = axesOfPages({1});
  EXPECT_TRUE(axes.areKnown);
  EXPECT_EQ(axes.nc * axes.nz * axes.nt, 1);
  EXPECT_THAT(axes.pages, ElementsAre(0));
  EXPECT_EQ(axes.pixelSize, PixelSize{});
}

TEST(PageAxes, SeveralPagesHaveNoKnownMeaning) {
  const ImageAxes axes = axesOfPages({3});
  EXPECT_FALSE(axes.areKnown);
  EXPECT_EQ(axes.nz, 3);
  EXPECT_THAT(axes.pages, ElementsAre(0, 1, 2));
}

// Most programs write 72 or 300 pixels per inch into every file.
TEST(PageAxes, ResolutionsOfScreensAreNoPixelSize) {
  EXPECT_EQ(axesOfPages({1, 72, 72, "inch"}).pixelSize, PixelSize{});
  EXPECT_EQ(axesOfPages({1, 300, 300, "inch"}).pixelSize, PixelSize{});
  EXPECT_EQ(axesOfPages({1, 40000, 20000, ""}).pixelSize, PixelSize{});
  const PixelSize fine = axesOfPages({1, 40000, 20000, "cm"}).pixelSize;
  EXPECT_DOUBLE_EQ(fine.x.value_or(0), 0.25);
  EXPECT_DOUBLE_EQ(fine.y.value_or(0), 0.5);
  EXPECT_FALSE(fine.z.has_value());
  EXPECT_DOUBLE_EQ(axesOfPages({1, 25400, 25400, "inch"}).pixelSize.x.value_or(0), 1.0);
}

// A resolution of 1 / 0.65 is 1.5384616 as a float.
TEST(PageAxes, SizesHaveTheDigitsOfFloats) {
  const double perMicrometre = static_cast<double>(static_cast<float>(1 / 0.65));
  EXPECT_EQ(axesOfPages({1, perMicrometre * 1e4, perMicrometre * 1e4, "cm"}).pixelSize,
            (PixelSize{0.65, 0.65, std::nullopt}));
  EXPECT_EQ(imageJAxes("ImageJ=1\nunit=um\n", {1, perMicrometre, perMicrometre, ""}).pixelSize,
            (PixelSize{0.65, 0.65, std::nullopt}));
}

TEST(ImageJAxes, ChannelsVaryFastestThenSlices) {
  const ImageAxes axes = imageJAxes(
      "ImageJ=1.53t\nimages=12\nchannels=2\nslices=3\nframes=2\nhyperstack=true\nunit=micron\n"
      "spacing=0.5\n",
      {12, 4, 8, ""});
  EXPECT_TRUE(axes.areKnown);
  EXPECT_EQ(axes.nc, 2);
  EXPECT_EQ(axes.nz, 3);
  EXPECT_EQ(axes.nt, 2);
  EXPECT_EQ(axes.pageOf({1, 0, 0}), 1);
  EXPECT_EQ(axes.pageOf({0, 1, 0}), 2);
  EXPECT_EQ(axes.pageOf({0, 0, 1}), 6);
  EXPECT_EQ(axes.pageOf({1, 2, 1}), 11);
  EXPECT_EQ(axes.channelNames.size(), 2U);
  EXPECT_EQ(axes.pixelSize, (PixelSize{0.25, 0.125, 0.5}));
}

TEST(ImageJAxes, UnitsBecomeMicrometres) {
  const auto sizeIn = [](const std::string& unit) {
    return imageJAxes("ImageJ=1.53t\nunit=" + unit + "\nspacing=2\n", {1, 2, 2, "cm"}).pixelSize;
  };
  EXPECT_EQ(sizeIn("nm"), (PixelSize{0.0005, 0.0005, 0.002}));
  EXPECT_EQ(sizeIn("\\u00B5m"), (PixelSize{0.5, 0.5, 2}));
  EXPECT_EQ(sizeIn("\xb5m"), (PixelSize{0.5, 0.5, 2}));
  EXPECT_EQ(sizeIn("mm"), (PixelSize{500, 500, 2000}));
  EXPECT_EQ(sizeIn("pixel"), PixelSize{});
}

TEST(ImageJAxes, OtherNumbersOfPagesHaveNoKnownMeaning) {
  const ImageAxes axes = imageJAxes("ImageJ=1.53t\nimages=6\nchannels=2\nslices=3\n", {5});
  EXPECT_FALSE(axes.areKnown);
  EXPECT_EQ(axes.nc, 1);
  EXPECT_EQ(axes.nz, 5);
}

TEST(ImageJAxes, OddNumbersAreTakenForOne) {
  for (const std::string number : {"-2", "0", "x", "", "99999999999", "2.5"}) {
    const ImageAxes axes = imageJAxes("ImageJ=\nslices=" + number + "\n", {1});
    EXPECT_EQ(axes.nz, 1) << number;
    EXPECT_TRUE(axes.areKnown) << number;
  }
}

// "max=..." must not be read as "x=...".
TEST(ImageJAxes, KeysAreWholeLines) {
  const ImageAxes axes = imageJAxes("ImageJ=1\nxslices=2\nmy slices=2\nslices=1\n", {2});
  EXPECT_FALSE(axes.areKnown);
}

}  // namespace
}  // namespace orva::test
