// GeoJSON of results.
#include "formats/geojson.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "formats/gzip.h"
#include "formats/result_table.h"
#include "formats/table_file.h"
#include "tests/formats/detections_scene.h"

namespace orva::test {
namespace {

using formats::geoJsonOf;
using nlohmann::json;

json featuresOf(const std::vector<Detections>& images) {
  const json collection = json::parse(geoJsonOf(images));
  EXPECT_EQ(collection["type"], "FeatureCollection");
  return collection["features"];
}

double areaOf(const json& ring) {
  EXPECT_GE(ring.size(), 4U);
  EXPECT_EQ(ring.front(), ring.back());
  double sum = 0;
  for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
    sum += ring[i][0].get<double>() * ring[i + 1][1].get<double>() -
           ring[i + 1][0].get<double>() * ring[i][1].get<double>();
  }
  return sum / 2;
}

TEST(GeoJson, CentersAreAtHalves) {
  const json features = featuresOf({pointsScene()});
  ASSERT_EQ(features.size(), 2U);
  EXPECT_EQ(features[0], json::parse(R"({"type": "Feature",
      "geometry": {"type": "Point", "coordinates": [12.5, 7.5]},
      "properties": {"objectType": "detection", "measurements": {"x": 12, "y": 7, "weight": 5}}})"));
}

TEST(GeoJson, CirclesAreClosedPolygonsOfTheirArea) {
  const json features = featuresOf({circlesScene()});
  ASSERT_EQ(features.size(), 2U);
  const json& geometry = features[0]["geometry"];
  EXPECT_EQ(geometry["type"], "Polygon");
  EXPECT_EQ(geometry["isEllipse"], true);
  const json& ring = geometry["coordinates"][0];
  const double area = areaOf(ring);
  EXPECT_LT(area, M_PI * 36);
  EXPECT_GT(area, M_PI * 35);
  for (const json& point : ring) {
    EXPECT_NEAR(std::hypot(point[0].get<double>() - 10.5, point[1].get<double>() - 20.75), 6, 2e-3);
  }
  EXPECT_EQ(ring[0], json({16.5, 20.75}));
}

TEST(GeoJson, LargeCirclesHaveMoreVertices) {
  Detections d = circlesScene();
  d.places[0].radius = 500;
  const json features = featuresOf({d});
  const std::size_t large = features[0]["geometry"]["coordinates"][0].size();
  EXPECT_GT(large, 3 * features[1]["geometry"]["coordinates"][0].size());
  EXPECT_EQ(large % 4, 1U);
}

TEST(GeoJson, RegionsHaveHolesAndParts) {
  const json features = featuresOf({contoursScene()});
  ASSERT_EQ(features.size(), 2U);
  EXPECT_EQ(features[0]["geometry"]["type"], "Polygon");
  EXPECT_EQ(features[0]["geometry"]["coordinates"],
            json::parse("[[[0,0],[3,0],[3,3],[0,3],[0,0]],[[1,2],[2,2],[2,1],[1,1],[1,2]]]"));
  EXPECT_EQ(areaOf(features[0]["geometry"]["coordinates"][0]), 9);
  EXPECT_EQ(areaOf(features[0]["geometry"]["coordinates"][1]), -1);
  EXPECT_EQ(features[1]["geometry"]["type"], "MultiPolygon");
  EXPECT_EQ(features[1]["geometry"]["coordinates"].size(), 2U);
}

TEST(GeoJson, MeasurementsAreFiniteNumbers) {
  const json measurements = featuresOf({contoursScene()})[0]["properties"]["measurements"];
  EXPECT_FALSE(measurements.contains("mean_intensity"));
  EXPECT_EQ(measurements["touches_border"], 1);
  for (const auto& [name, value] : measurements.items()) EXPECT_TRUE(value.is_number()) << name;
}

TEST(GeoJson, StacksHavePlanes) {
  formats::ImageFacts facts{"a.tif", 0, 40, 30};
  EXPECT_FALSE(featuresOf({pointsScene(facts)})[0]["geometry"].contains("plane"));
  facts.position.t = 3;
  EXPECT_EQ(featuresOf({pointsScene(facts)})[0]["geometry"]["plane"],
            json({{"c", -1}, {"z", 0}, {"t", 3}}));
  facts.position = {1, 2, 0};
  const json features = featuresOf({pointsScene(), pointsScene(facts)});
  ASSERT_EQ(features.size(), 4U);
  EXPECT_EQ(features[2]["geometry"]["plane"], json({{"c", 1}, {"z", 2}, {"t", 0}}));
}

TEST(GeoJson, OfNothingIsAnEmptyCollection) {
  Detections d = pointsScene();
  d.values.clear();
  d.places.clear();
  EXPECT_EQ(featuresOf({d}), json::array());
}

TEST(GeoJson, GzipHoldsTheSameBytesAndNoTime) {
  std::string text;
  for (int i = 0; i < 30000; ++i) text += std::to_string(i * i);  // more than one piece
  for (const std::string& each : {std::string(), geoJsonOf({circlesScene()}), text}) {
    const std::string file = formats::gzipped(each);
    ASSERT_GT(file.size(), 18U);
    EXPECT_EQ(file.substr(0, 8), std::string("\x1f\x8b\x08\0\0\0\0\0", 8));
    std::string read(each.size() + 1, '\0');
    z_stream stream{};
    ASSERT_EQ(inflateInit2(&stream, 15 + 16), Z_OK);
    std::string copy = file;
    stream.next_in = reinterpret_cast<Bytef*>(copy.data());
    stream.avail_in = static_cast<uInt>(copy.size());
    stream.next_out = reinterpret_cast<Bytef*>(read.data());
    stream.avail_out = static_cast<uInt>(read.size());
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    EXPECT_EQ(stream.avail_in, 0U);
    inflateEnd(&stream);
    EXPECT_EQ(read.substr(0, read.size() - stream.avail_out), each);
  }
}

TEST(GeoJson, IsCompressedByTheNameOfTheFile) {
  const std::vector<Detections> images(2000, circlesScene());  // several pieces
  const auto encoded = [&](const std::string& path) {
    return formats::encodeTable(images, formats::TableFormat::kGeoJson, path);
  };
  EXPECT_EQ(encoded("a.geojson"), geoJsonOf(images));
  EXPECT_EQ(encoded("a.geojson.gz"), formats::gzipped(geoJsonOf(images)));
  const auto streamed = [&](const std::string& path) {
    std::string text;
    const auto file = formats::tableFile(path, images, formats::TableFormat::kGeoJson);
    file.forEachPiece([&](std::string_view piece) { text += piece; });
    return text;
  };
  EXPECT_EQ(streamed("a.geojson"), encoded("a.geojson"));
  EXPECT_EQ(streamed("a.geojson.gz"), encoded("a.geojson.gz"));
}

}  // namespace
}  // namespace orva::test
