// The formats of the tables of vote, find and segment.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tests/apps/disc_files.h"

namespace orva::test {
namespace {

using nlohmann::json;

struct OutputFormats : DiscFiles {};

TEST_F(OutputFormats, AreThoseOfTheExtension) {
  const std::string csv = box.run({"find", "discs.pgm"}).out;
  for (const std::string name : {"t.csv", "t.txt", "t"}) {
    EXPECT_EQ(box.run({"find", "--table", name, "discs.pgm"}).status, 0);
    EXPECT_EQ(box.read(name), csv) << name;
  }
  EXPECT_EQ(box.run({"find", "--table", "t.json", "discs.pgm"}).status, 0);
  EXPECT_EQ(json::parse(box.read("t.json"))["objects"].size(), 3U);
  EXPECT_EQ(box.run({"find", "--table", "t.geojson", "discs.pgm"}).status, 0);
  EXPECT_EQ(json::parse(box.read("t.geojson"))["features"].size(), 3U);
  EXPECT_EQ(box.run({"find", "--table", "t.geojson.gz", "discs.pgm"}).status, 0);
  EXPECT_TRUE(box.read("t.geojson.gz").starts_with("\x1f\x8b"));
  EXPECT_EQ(box.run({"find", "--table", "t.zip", "discs.pgm"}).status, 0);
  EXPECT_TRUE(box.read("t.zip").starts_with("PK\3\4"));
}

TEST_F(OutputFormats, OptionWinsOverTheExtension) {
  const std::string csv = box.run({"find", "discs.pgm"}).out;
  EXPECT_EQ(box.run({"find", "--format", "csv", "--table", "t.json", "discs.pgm"}).status, 0);
  EXPECT_EQ(box.read("t.json"), csv);
  EXPECT_EQ(box.run({"find", "--format", "geojson", "--table", "t.csv", "discs.pgm"}).status, 0);
  EXPECT_EQ(json::parse(box.read("t.csv"))["type"], "FeatureCollection");
}

TEST_F(OutputFormats, GeoJsonGoesToStandardOutput) {
  const Outcome outcome =
      box.run({"vote", "--max-radius", "13", "--format", "geojson", "discs.pgm"});
  const json features = json::parse(outcome.out)["features"];
  ASSERT_EQ(features.size(), 3U);
  EXPECT_EQ(features[0]["geometry"]["type"], "Point");
}

TEST_F(OutputFormats, RoiSetNeedsAName) {
  EXPECT_TRUE(refused(box.run({"find", "--format", "roi", "discs.pgm"}),
                      "--format: roi makes a ZIP file; name it, or - for standard output"));
  EXPECT_EQ(box.run({"find", "--table", "t.zip", "discs.pgm"}).status, 0);
  EXPECT_EQ(box.run({"find", "--format", "roi", "--table", "-", "discs.pgm"}).out,
            box.read("t.zip"));
  EXPECT_TRUE(refused(box.run({"find", "--format", "xml", "discs.pgm"}), "--format"));
}

TEST_F(OutputFormats, NapariPointsHaveTheCenters) {
  const std::string points =
      box.run({"vote", "--max-radius", "13", "--format", "napari", "discs.pgm"}).out;
  EXPECT_TRUE(points.starts_with("index,axis-0,axis-1\n0,")) << points;
  EXPECT_EQ(std::count(points.begin(), points.end(), '\n'), 4);
}

TEST_F(OutputFormats, SegmentDrawsThePixelsOfEachLabel) {
  ASSERT_EQ(box.run({"segment", "--table", "t.geojson", "discs.pgm"}).status, 0);
  const json document = json::parse(box.read("t.geojson"));
  for (const json& feature : document["features"]) {
    ASSERT_EQ(feature["geometry"]["type"], "Polygon");
    const json& ring = feature["geometry"]["coordinates"][0];
    double area = 0;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
      area += ring[i][0].get<double>() * ring[i + 1][1].get<double>() -
              ring[i + 1][0].get<double>() * ring[i][1].get<double>();
    }
    EXPECT_EQ(area / 2, feature["properties"]["measurements"]["area"]);
  }
}

TEST_F(OutputFormats, BatchNamesFilesByFormat) {
  struct Case {
    const char* format;
    const char* file;
    std::string_view start;
  };
  for (const Case& c : {Case{"csv", "csv/discs.csv", "x,y,"},
                        {"json", "json/discs.json", "{"},
                        {"geojson", "geojson/discs.geojson", "{\"type\""},
                        {"roi", "roi/discs.zip", "PK"},
                        {"napari", "napari/discs.csv", "index,"}}) {
    EXPECT_EQ(box.run({"find", "--out", c.format, "--format", c.format, "discs.pgm"}).status, 0);
    EXPECT_TRUE(box.read(c.file).starts_with(c.start)) << c.format;
  }
}

TEST_F(OutputFormats, TimesAreColumnsArraysAndPlanes) {
  const auto printed = [&](const char* format) {
    return box.run({"find", "--format", format, "times.tif"}).out;
  };
  EXPECT_TRUE(printed("csv").starts_with("x,y,radius,score,t\n"));
  EXPECT_EQ(json::parse(printed("json"))[1]["t"], 1);
  EXPECT_TRUE(printed("napari").starts_with("index,axis-0,axis-1,axis-2\n0,0,"));
  const json features = json::parse(printed("geojson"))["features"];
  ASSERT_EQ(features.size(), 2U);
  EXPECT_EQ(features[1]["geometry"]["plane"], json({{"c", -1}, {"z", 0}, {"t", 1}}));
}

TEST_F(OutputFormats, AChosenTimeHasItsPlane) {
  const json features =
      json::parse(box.run({"find", "--time", "1", "--format", "geojson", "times.tif"}).out);
  EXPECT_EQ(features["features"][0]["geometry"]["plane"]["t"], 1);
}

}  // namespace
}  // namespace orva::test
