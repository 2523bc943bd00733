#include "formats/plane_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include "formats/file_error.h"

namespace orva::test {
namespace {

using formats::FileError;
using formats::ImageAxes;
using formats::PlaneChoice;
using formats::PlaneSelection;
using formats::Projection;
using formats::selectPlanes;

ImageAxes axesOf(const std::vector<std::string>& channels, int nz, int nt) {
  ImageAxes axes;
  axes.nc = static_cast<int>(channels.size());
  axes.nz = nz;
  axes.nt = nt;
  axes.channelNames = channels;
  axes.pages.resize(channels.size() * static_cast<std::size_t>(nz * nt));
  std::iota(axes.pages.begin(), axes.pages.end(), 0);
  return axes;
}

ImageAxes unknownPages(int count) {
  ImageAxes axes = axesOf({""}, count, 1);
  axes.areKnown = false;
  return axes;
}

std::string errorOf(const ImageAxes& axes, const PlaneChoice& choice) {
  try {
    selectPlanes(axes, choice);
    return "";
  } catch (const FileError& error) {
    return error.what();
  }
}

PlaneChoice channel(const std::string& name) {
  PlaneChoice choice;
  choice.channel = name;
  return choice;
}

TEST(PlaneChoice, OnePlaneNeedsNone) {
  const PlaneSelection s = selectPlanes(axesOf({""}, 1, 1), {});
  ASSERT_EQ(s.images.size(), 1U);
  EXPECT_EQ(s.images[0].z, 0);
  EXPECT_EQ(s.note, "");
  EXPECT_FALSE(s.variesInT || s.variesInZ);
}

TEST(PlaneChoice, SeveralChannelsAreListed) {
  const ImageAxes axes = axesOf({"DAPI", "", "GFP"}, 1, 1);
  EXPECT_EQ(errorOf(axes, {}),
            "has 3 channels: 0 \"DAPI\", 1, 2 \"GFP\"; choose one with --channel");
  EXPECT_EQ(selectPlanes(axes, channel("GFP")).images[0].c, 2);
  EXPECT_EQ(selectPlanes(axes, channel("1")).images[0].c, 1);
  EXPECT_EQ(errorOf(axes, channel("RFP")),
            "has no channel \"RFP\"; there are 0 \"DAPI\", 1, 2 \"GFP\"");
  EXPECT_EQ(errorOf(axes, channel("3")), "has no channel 3; there are 0 \"DAPI\", 1, 2 \"GFP\"");
  EXPECT_EQ(errorOf(axesOf({"a", "a"}, 1, 1), channel("a")),
            "has several channels \"a\"; there are 0 \"a\", 1 \"a\"");
  EXPECT_EQ(errorOf(axesOf({""}, 1, 1), channel("RFP")), "has no channel \"RFP\"; there is only 0");
}

// Wavelengths, for example.
TEST(PlaneChoice, NamesMayBeNumbers) {
  const ImageAxes axes = axesOf({"405", "488", "1", "0"}, 1, 1);
  EXPECT_EQ(selectPlanes(axes, channel("488")).images[0].c, 1);
  EXPECT_EQ(selectPlanes(axes, channel("1")).images[0].c, 1);  // a number comes first
  EXPECT_EQ(selectPlanes(axes, channel("0")).images[0].c, 0);
  EXPECT_EQ(errorOf(axes, channel("561")),
            "has no channel 561; there are 0 \"405\", 1 \"488\", 2 \"1\", 3 \"0\"");
  EXPECT_EQ(selectPlanes(axesOf({"a", "-1"}, 1, 1), channel("-1")).images[0].c, 1);
}

TEST(PlaneChoice, KeptPlanesHaveTheirOwnAxes) {
  ImageAxes axes = axesOf({"a", "b"}, 3, 2);
  axes.pixelSize = {0.5, 0.5, 2.0};
  axes.bitDepth = 12;
  PlaneChoice choice = channel("1");
  choice.projection = Projection::kMax;
  const formats::KeptPlanes planes = formats::keepPlanes(axes, choice);
  EXPECT_EQ(planes.images.size(), 2U);
  EXPECT_EQ(planes.kept.pages, (std::vector<int>{0, 1}));
  EXPECT_EQ(planes.kept.pageOf({0, 0, 1}), 1);
  EXPECT_EQ(planes.kept.pixelSize, (formats::PixelSize{0.5, 0.5, std::nullopt}));
  EXPECT_EQ(planes.kept.bitDepth, 12);
  choice.projection = Projection::kMean;
  EXPECT_FALSE(formats::keepPlanes(axes, choice).kept.bitDepth.has_value());
  choice.projection.reset();
  choice.z = 1;
  EXPECT_EQ(formats::keepPlanes(axes, choice).kept.pixelSize, axes.pixelSize);
}

TEST(PlaneChoice, SlicesGiveTheirMaximumAndSaySo) {
  const ImageAxes axes = axesOf({""}, 5, 1);
  const PlaneSelection open = selectPlanes(axes, {});
  ASSERT_EQ(open.images.size(), 1U);
  EXPECT_FALSE(open.images[0].z.has_value());
  EXPECT_EQ(open.images[0].projection, Projection::kMax);
  EXPECT_EQ(open.note, "maximum of 5 slices; --z chooses");
  PlaneChoice mean;
  mean.projection = Projection::kMean;
  EXPECT_EQ(selectPlanes(axes, mean).images[0].projection, Projection::kMean);
  EXPECT_EQ(selectPlanes(axes, mean).note, "");
  PlaneChoice one;
  one.z = 4;
  EXPECT_EQ(selectPlanes(axes, one).images[0].z, 4);
  one.z = 5;
  EXPECT_EQ(errorOf(axes, one), "has no slice 5; there are 0 to 4");
  PlaneChoice each;
  each.eachSlice = true;
  const PlaneSelection all = selectPlanes(axes, each);
  ASSERT_EQ(all.images.size(), 5U);
  EXPECT_EQ(all.images[3].z, 3);
  EXPECT_TRUE(all.variesInZ);
}

TEST(PlaneChoice, TimesAreTakenOneByOne) {
  const ImageAxes axes = axesOf({""}, 2, 3);
  const PlaneSelection open = selectPlanes(axes, {});
  ASSERT_EQ(open.images.size(), 3U);
  EXPECT_TRUE(open.variesInT);
  EXPECT_EQ(open.images[2].t, 2);
  PlaneChoice one;
  one.t = 1;
  one.eachSlice = true;
  const PlaneSelection slices = selectPlanes(axes, one);
  ASSERT_EQ(slices.images.size(), 2U);
  EXPECT_EQ(slices.images[1].t, 1);
  EXPECT_EQ(slices.images[1].z, 1);
  EXPECT_FALSE(slices.variesInT);
  one.t = 3;
  EXPECT_EQ(errorOf(axes, one), "has no time 3; there are 0 to 2");
}

TEST(PlaneChoice, ItNamesTheAxisOfUnknownPages) {
  const ImageAxes axes = unknownPages(4);
  EXPECT_EQ(errorOf(axes, {}),
            "has 4 pages, and does not say whether they are channels, slices or times; choose one "
            "with --frame K, or say what they are with --channel K, --z K|max|mean|all or "
            "--time K|all");
  const PlaneSelection second = selectPlanes(axes, channel("1"));
  EXPECT_EQ(second.axes.pageOf({second.images[0].c, *second.images[0].z, second.images[0].t}), 1);
  PlaneChoice z;
  z.z = 2;
  EXPECT_EQ(selectPlanes(axes, z).axes.pageOf({0, 2, 0}), 2);
  PlaneChoice times;
  times.eachTime = true;
  const PlaneSelection each = selectPlanes(axes, times);
  ASSERT_EQ(each.images.size(), 4U);
  EXPECT_EQ(each.axes.pageOf({0, 0, 3}), 3);
  times.z = 1;
  EXPECT_EQ(errorOf(axes, times),
            "has 4 pages, and does not say whether they are channels, slices or times; choose "
            "along one axis only");
}

}  // namespace
}  // namespace orva::test
