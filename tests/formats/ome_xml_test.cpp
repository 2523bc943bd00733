#include "formats/ome_xml.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "formats/file_error.h"

namespace orva::test {
namespace {

using formats::FileError;
using formats::ImageAxes;
using formats::isOmeXml;
using formats::PixelSize;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string document(const std::string& content, const std::string& attributes = "") {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<OME xmlns=\"http://www.openmicroscopy.org/Schemas/OME/2016-06\"" +
         attributes + ">" + content + "</OME>";
}

std::string image(const std::string& attributes, const std::string& content) {
  return "<Image ID=\"Image:0\" Name=\"field\"><Pixels ID=\"Pixels:0\" Type=\"uint16\" "
         "SizeX=\"30\" SizeY=\"20\" " +
         attributes + ">" + content + "</Pixels></Image>";
}

std::string sizes(const std::string& order, int c, int z, int t) {
  return "DimensionOrder=\"" + order + "\" SizeC=\"" + std::to_string(c) + "\" SizeZ=\"" +
         std::to_string(z) + "\" SizeT=\"" + std::to_string(t) + "\"";
}

// The samples of the pages of a file.
using Pages = std::vector<int>;

Pages pages(int count, int samples = 1) { return Pages(static_cast<std::size_t>(count), samples); }

ImageAxes omeAxes(const std::string& xml, std::optional<int> series, const Pages& samples) {
  return formats::omeAxes(xml, series, static_cast<int>(samples.size()),
                          [&](int page) { return samples.at(static_cast<std::size_t>(page)); });
}

std::string errorOf(const std::string& xml, const Pages& samples, std::optional<int> series = {}) {
  try {
    omeAxes(xml, series, samples);
    return "";
  } catch (const FileError& error) {
    return error.what();
  }
}

TEST(OmeXml, IsToldByItsLastTag) {
  EXPECT_TRUE(isOmeXml(document("")));
  EXPECT_TRUE(isOmeXml(document("") + "\n"));
  EXPECT_TRUE(isOmeXml("<OME:OME></OME:OME>"));
  EXPECT_TRUE(isOmeXml(document(image("", "")).substr(0, 200)));  // cut, which is an error then
  EXPECT_FALSE(isOmeXml(""));
  EXPECT_FALSE(isOmeXml("ImageJ=1.53t\n"));
  EXPECT_FALSE(isOmeXml("<svg></svg>"));
}

// A page per plane, in each of the six orders.
TEST(OmeXml, PagesFollowTheOrderOfDimensions) {
  std::string varying = "CTZ";
  do {
    const ImageAxes axes =
        omeAxes(document(image(sizes("XY" + varying, 2, 3, 4), "<TiffData/>")), {}, pages(24));
    EXPECT_EQ(axes.nc, 2);
    EXPECT_EQ(axes.nz, 3);
    EXPECT_EQ(axes.nt, 4);
    const auto sizeOf = [](char axis) { return axis == 'C' ? 2 : axis == 'Z' ? 3 : 4; };
    for (int c = 0; c < 2; ++c) {
      for (int z = 0; z < 3; ++z) {
        for (int t = 0; t < 4; ++t) {
          const auto at = [&](char axis) { return axis == 'C' ? c : axis == 'Z' ? z : t; };
          const int expected =
              at(varying[0]) +
              sizeOf(varying[0]) * (at(varying[1]) + sizeOf(varying[1]) * at(varying[2]));
          EXPECT_EQ(axes.pageOf({c, z, t}), expected) << varying;
        }
      }
    }
  } while (std::next_permutation(varying.begin(), varying.end()));
}

TEST(OmeXml, TiffDataAssignsPages) {
  const auto axesWith = [](const std::string& parts) {
    return omeAxes(document(image(sizes("XYZCT", 2, 2, 1), parts)), {}, pages(4)).pages;
  };
  // The order of the pages is c, z; in the file z varies faster.
  EXPECT_THAT(axesWith(""), ElementsAre(0, 2, 1, 3));
  EXPECT_THAT(axesWith("<TiffData IFD=\"0\" PlaneCount=\"4\"/>"), ElementsAre(0, 2, 1, 3));
  EXPECT_THAT(axesWith("<TiffData IFD=\"2\"/>"), ElementsAre(2, -1, -1, -1));
  EXPECT_THAT(axesWith("<TiffData IFD=\"1\" FirstC=\"1\" PlaneCount=\"2\"/>"),
              ElementsAre(-1, 1, -1, 2));
  EXPECT_THAT(axesWith("<TiffData IFD=\"3\" FirstZ=\"1\" FirstC=\"1\"/><TiffData IFD=\"0\"/>"),
              ElementsAre(0, -1, -1, 3));
}

TEST(OmeXml, ColourIsOneChannelOfSeveralSamples) {
  const std::string channel = "<Channel ID=\"Channel:0:0\" SamplesPerPixel=\"3\"/>";
  const ImageAxes stated =
      omeAxes(document(image(sizes("XYCZT", 3, 2, 1), channel + "<TiffData/>")), {}, pages(2, 3));
  EXPECT_EQ(stated.nc, 1);
  EXPECT_THAT(stated.pages, ElementsAre(0, 1));
  const ImageAxes unstated =
      omeAxes(document(image(sizes("XYCZT", 3, 2, 1), "<TiffData/>")), {}, pages(2, 3));
  EXPECT_EQ(unstated.nc, 1);
}

// The first image is in colour, the second has a page per channel.
TEST(OmeXml, ColourIsThatOfTheImagesOwnPages) {
  const std::string xml =
      document(image(sizes("XYCZT", 3, 1, 1),
                     "<Channel SamplesPerPixel=\"3\"/><TiffData IFD=\"0\" PlaneCount=\"1\"/>") +
               image(sizes("XYCZT", 3, 1, 1), "<TiffData IFD=\"1\" PlaneCount=\"3\"/>"));
  const Pages samples{3, 1, 1, 1};
  EXPECT_EQ(omeAxes(xml, 0, samples).nc, 1);
  EXPECT_EQ(omeAxes(xml, 0, samples).statedSamples, 3);
  EXPECT_EQ(omeAxes(xml, 1, samples).nc, 3);
  EXPECT_THAT(omeAxes(xml, 1, samples).pages, ElementsAre(1, 2, 3));
  EXPECT_FALSE(omeAxes(xml, 1, samples).statedSamples.has_value());
}

TEST(OmeXml, ImagesBehindTheFirstNameTheirPages) {
  for (const std::string part : {"", "<TiffData/>", "<TiffData PlaneCount=\"1\"/>"}) {
    const std::string one = image(sizes("XYCZT", 1, 1, 1), part);
    const std::string two = document(one + one);
    EXPECT_THAT(omeAxes(two, 0, pages(2)).pages, ElementsAre(0));
    EXPECT_THAT(errorOf(two, pages(2), 1),
                HasSubstr("its image 1 does not name its pages (TiffData, IFD)"));
  }
}

TEST(OmeXml, ChannelsHaveNames) {
  const ImageAxes axes = omeAxes(
      document(image(sizes("XYCZT", 3, 1, 1),
                     "<Channel Name=\"DAPI\"/><Channel/><Channel Name=\"a &amp; b\"/><TiffData/>")),
      {}, pages(3));
  EXPECT_THAT(axes.channelNames, ElementsAre("DAPI", "", "a & b"));
}

TEST(OmeXml, NamesAreUtf8) {
  const auto namesOf = [](const std::string& name) {
    return omeAxes(document(image(sizes("XYCZT", 1, 1, 1),
                                  "<Channel Name=\"" + name + "\"/><TiffData/>")),
                   {}, pages(1))
        .channelNames;
  };
  EXPECT_THAT(namesOf("Gr\u00fcn"), ElementsAre("Gr\u00fcn"));
  EXPECT_THAT(namesOf("Gr\xfcn"), ElementsAre("Gr\u00fcn"));  // Latin-1
  EXPECT_THAT(namesOf("a&#1;b&#xD800;"), ElementsAre("a\uFFFDb\uFFFD\uFFFD\uFFFD"));
}

TEST(OmeXml, WrittenAxesAreReadBack) {
  ImageAxes axes;
  axes.nc = 2;
  axes.nz = 3;
  axes.channelNames = {"a\x01\"<&>\xff", "488"};
  axes.pixelSize = {0.1, 0.25, 2.0};
  axes.bitDepth = 12;
  const ImageAxes again = omeAxes(formats::omeXml(axes, 30, 20, "uint16", 1), {}, pages(6));
  EXPECT_EQ(again.nc, 2);
  EXPECT_EQ(again.nz, 3);
  EXPECT_THAT(again.channelNames, ElementsAre("a\uFFFD\"<&>\uFFFD", "488"));
  EXPECT_EQ(again.pixelSize, axes.pixelSize);
  EXPECT_EQ(again.bitDepth, 12);
  EXPECT_THAT(again.pages, ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(OmeXml, PixelSizesAreInMicrometres) {
  const auto sizeWith = [](const std::string& attributes) {
    return omeAxes(document(image(sizes("XYCZT", 1, 1, 1) + " " + attributes, "<TiffData/>")), {},
                   pages(1))
        .pixelSize;
  };
  EXPECT_EQ(sizeWith(""), PixelSize{});
  EXPECT_EQ(sizeWith("PhysicalSizeX=\"0.5\" PhysicalSizeY=\"0.25\" PhysicalSizeZ=\"2\""),
            (PixelSize{0.5, 0.25, 2.0}));
  EXPECT_EQ(sizeWith("PhysicalSizeX=\"250\" PhysicalSizeXUnit=\"nm\" PhysicalSizeY=\"1\" "
                     "PhysicalSizeYUnit=\"\u00b5m\" PhysicalSizeZ=\"3\" "
                     "PhysicalSizeZUnit=\"pixel\""),
            (PixelSize{0.25, 1.0, std::nullopt}));
  EXPECT_EQ(sizeWith("PhysicalSizeX=\"0\" PhysicalSizeY=\"-1\" PhysicalSizeZ=\"x\""), PixelSize{});
}

TEST(OmeXml, SeveralImagesAreListed) {
  const std::string two = document(image(sizes("XYCZT", 1, 1, 1), "<TiffData IFD=\"0\"/>") +
                                   image(sizes("XYCZT", 1, 1, 1), "<TiffData IFD=\"1\"/>"));
  EXPECT_EQ(errorOf(two, pages(2)),
            "holds 2 images: 0 \"field\" (30 x 20), 1 \"field\" (30 x 20); choose one with "
            "--series");
  EXPECT_THAT(omeAxes(two, 1, pages(2)).pages, ElementsAre(1));
  EXPECT_THAT(errorOf(two, pages(2), 2), HasSubstr("has no image 2"));
}

TEST(OmeXml, SetsOfFilesAreRefused) {
  const auto withFile = [](const std::string& id, const std::string& name) {
    return "<TiffData IFD=\"0\"><UUID FileName=\"" + name + "\">" + id + "</UUID></TiffData>";
  };
  const auto axesOf = [&](const std::string& own, const std::string& parts) {
    return errorOf(
        document(image(sizes("XYCZT", 2, 1, 1), parts), own.empty() ? "" : " UUID=\"" + own + "\""),
        pages(2));
  };
  EXPECT_EQ(axesOf("urn:a", withFile("urn:a", "a.tif")), "");
  EXPECT_EQ(axesOf("", withFile("urn:a", "a.tif")), "");
  EXPECT_EQ(axesOf("urn:a", withFile("urn:a", "a.tif") + withFile("urn:b", "b.tif")),
            "is one file of an OME-TIFF set, with planes in b.tif; save the set as a single file");
  EXPECT_THAT(axesOf("", withFile("urn:a", "a.tif") + withFile("urn:b", "b.tif")),
              HasSubstr("planes in a.tif, b.tif"));
  EXPECT_EQ(errorOf(document("<BinaryOnly MetadataFile=\"set.companion.ome\" UUID=\"urn:c\"/>"),
                    pages(1)),
            "is one file of an OME-TIFF set whose description is in set.companion.ome; save the "
            "set as a single file");
}

TEST(OmeXml, WrongTextsAreErrors) {
  const auto expectError = [](const std::string& xml, const std::string& words) {
    EXPECT_THAT(errorOf(xml, pages(2)), HasSubstr("OME-XML is wrong: " + words)) << xml;
  };
  expectError("<OME><Image></OME>", "");
  expectError("<NotOME></NotOME>", "it has no OME element");
  expectError(document(""), "it has no Image");
  expectError(document("<Image/>"), "its image has no Pixels");
  const auto with = [](const std::string& s) { return document(image(s, "<TiffData/>")); };
  expectError(with("DimensionOrder=\"XYCZT\" SizeZ=\"1\" SizeT=\"1\""), "SizeC is missing");
  expectError(with("DimensionOrder=\"XYCZT\" SizeC=\"0\" SizeZ=\"1\" SizeT=\"1\""),
              "SizeC is \"0\"");
  expectError(with("DimensionOrder=\"XYCZT\" SizeC=\"1e3\" SizeZ=\"1\" SizeT=\"1\""), "SizeC is");
  expectError(with(sizes("ZYXCT", 1, 1, 1)), "DimensionOrder is");
  expectError(with(sizes("XYCCT", 1, 1, 1)), "DimensionOrder is");
  expectError(with(sizes("XYCZT", 2000000000, 2000000000, 1)), "it has too many planes");
  const auto part = [](const std::string& p) {
    return document(image(sizes("XYCZT", 2, 1, 1), p));
  };
  expectError(part("<TiffData IFD=\"2\"/>"), "IFD is \"2\"");
  expectError(part("<TiffData IFD=\"-1\"/>"), "IFD is");
  expectError(part("<TiffData FirstC=\"2\"/>"), "FirstC is");
  expectError(part("<TiffData IFD=\"1\" PlaneCount=\"2\"/>"),
              "it describes 2 planes from page 1 on, and the file has 2 pages");
  expectError(
      document(image(sizes("XYCZT", 3, 1, 1), "<Channel SamplesPerPixel=\"2\"/><TiffData/>")),
      "SizeC does not fit SamplesPerPixel");
}

TEST(OmeXml, EntitiesAreNotExpanded) {
  const std::string bomb =
      "<!DOCTYPE OME [<!ENTITY a \"0123456789\"><!ENTITY x SYSTEM \"file:///etc/passwd\">]>" +
      document(image(sizes("XYCZT", 1, 1, 1), "<Channel Name=\"&a;&x;\"/><TiffData/>")).substr(39);
  EXPECT_THAT(omeAxes(bomb, {}, pages(1)).channelNames, ElementsAre("&a;&x;"));
}

TEST(OmeXml, EveryCutTextIsAnError) {
  const std::string whole =
      document(image(sizes("XYCZT", 2, 1, 1), "<Channel Name=\"DAPI\"/><TiffData/>"));
  EXPECT_EQ(errorOf(whole, pages(2)), "");
  for (std::size_t n = 0; n + 1 < whole.size(); ++n) {
    EXPECT_NE(errorOf(whole.substr(0, n), pages(2)), "") << n;
  }
}

}  // namespace
}  // namespace orva::test
