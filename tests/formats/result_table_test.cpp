// Tables of results, and the choice of their format.
#include "formats/result_table.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "formats/geojson.h"
#include "formats/gzip.h"
#include "tests/formats/detections_scene.h"

namespace orva::test {
namespace {

using formats::csvOf;
using formats::formatOf;
using formats::ImageFacts;
using formats::jsonOf;
using formats::napariPointsOf;
using formats::TableFormat;
using nlohmann::json;

ImageFacts atTime(int t) { return {"a.tif", t, 40, 30, t}; }

ImageFacts calibrated() {
  ImageFacts facts{"a.tif", 0, 40, 30};
  facts.pixelSize = 0.5;
  return facts;
}

TEST(TableFormat, IsThatOfTheExtension) {
  EXPECT_EQ(formatOf("a.csv"), TableFormat::kCsv);
  EXPECT_EQ(formatOf("a.JSON"), TableFormat::kJson);
  EXPECT_EQ(formatOf("a.geojson"), TableFormat::kGeoJson);
  EXPECT_EQ(formatOf("d.json/a.GeoJSON.GZ"), TableFormat::kGeoJson);
  EXPECT_EQ(formatOf("a.zip"), TableFormat::kRoi);
  EXPECT_EQ(formatOf("a.gz"), TableFormat::kCsv);
  EXPECT_EQ(formatOf("a.csv.gz"), TableFormat::kCsv);
  EXPECT_EQ(formatOf("a.json.gz"), TableFormat::kJson);
  EXPECT_EQ(formatOf("a.json.txt"), TableFormat::kCsv);
  EXPECT_EQ(formatOf("-"), TableFormat::kCsv);
}

TEST(ResultTable, EveryFormatIsCompressedUnderGz) {
  for (const TableFormat format : {TableFormat::kCsv, TableFormat::kJson, TableFormat::kGeoJson,
                                   TableFormat::kNapari, TableFormat::kRoi}) {
    const std::vector<Detections> scene{circlesScene()};
    const std::string plain = formats::encodeTable(scene, format, "a.csv");
    EXPECT_EQ(formats::encodeTable(scene, format, "a.csv.gz"), formats::gzipped(plain));
    EXPECT_EQ(formats::gzipped(plain).substr(0, 2), "\x1f\x8b");
  }
}

TEST(ResultTable, CentersAreRepeatedInMicrometres) {
  EXPECT_EQ(csvOf({pointsScene(calibrated())}),
            "x,y,weight,x_um,y_um\n12,7,5,6,3.5\n3,20,0.125,1.5,10\n");
  const json document = json::parse(jsonOf({pointsScene(calibrated())}));
  EXPECT_EQ(document["centers"][1],
            json({{"x", 3}, {"y", 20}, {"weight", 0.125}, {"x_um", 1.5}, {"y_um", 10}}));
}

TEST(ResultTable, CentroidsAreRepeatedInMicrometres) {
  const json objects = json::parse(jsonOf({contoursScene(calibrated())}))["objects"];
  for (const std::string name : {"centroid-0", "centroid-1"}) {
    EXPECT_EQ(objects[1][name + "_um"], objects[1][name].get<double>() / 2) << name;
  }
}

TEST(ResultTable, CsvHasARowForEachDetection) {
  EXPECT_EQ(csvOf({pointsScene()}), "x,y,weight\n12,7,5\n3,20,0.125\n");
  EXPECT_EQ(csvOf({circlesScene()}),
            "x,y,radius,score\n10.000,20.250,6.000,0.900\n30.500,4.000,3.000,0.500\n");
}

TEST(ResultTable, CsvOfSeveralTimesHasAColumn) {
  EXPECT_EQ(csvOf({pointsScene(atTime(0)), pointsScene(atTime(4))}),
            "x,y,weight,t\n12,7,5,0\n3,20,0.125,0\n12,7,5,4\n3,20,0.125,4\n");
}

TEST(ResultTable, MicrometresFollowThePixels) {
  EXPECT_EQ(csvOf({circlesScene(calibrated())}),
            "x,y,radius,score,x_um,y_um,radius_um\n10.000,20.250,6.000,0.900,5,10.125,3\n"
            "30.500,4.000,3.000,0.500,15.25,2,1.5\n");
  const json document = json::parse(jsonOf({circlesScene(calibrated())}));
  EXPECT_EQ(document["pixel_size_um"], 0.5);
  EXPECT_EQ(document["objects"][1]["x_um"], 15.25);
}

TEST(ResultTable, AreasAreInSquareMicrometres) {
  const Detections d = contoursScene(calibrated());
  const json objects = json::parse(jsonOf({d}))["objects"];
  ASSERT_EQ(objects.size(), 2U);
  EXPECT_EQ(objects[0]["area"], 8);
  EXPECT_EQ(objects[0]["area_um2"], 2);
  for (const char* name :
       {"perimeter", "major_axis_length", "minor_axis_length", "equivalent_diameter_area"}) {
    EXPECT_EQ(objects[0][std::string(name) + "_um"], objects[0][name].get<double>() / 2) << name;
  }
  EXPECT_TRUE(csvOf({d}).starts_with("label,centroid-0,"));
  EXPECT_NE(csvOf({d}).find(",score,touches_border,area_um2,perimeter_um,major_axis_length_um,"
                            "minor_axis_length_um,equivalent_diameter_area_um,"
                            "centroid-0_um,centroid-1_um\n"),
            std::string::npos);
}

TEST(ResultTable, JsonOfSeveralImagesIsAnArray) {
  const json documents = json::parse(jsonOf({pointsScene(atTime(0)), pointsScene(atTime(4))}));
  ASSERT_EQ(documents.size(), 2U);
  EXPECT_EQ(documents[1]["t"], 4);
  EXPECT_EQ(documents[1]["centers"][1], json({{"x", 3}, {"y", 20}, {"weight", 0.125}}));
}

TEST(ResultTable, JsonHasNoNumberForNan) {
  EXPECT_TRUE(json::parse(jsonOf({contoursScene()}))["objects"][0]["mean_intensity"].is_null());
}

TEST(NapariPoints, HaveYBeforeX) {
  EXPECT_EQ(napariPointsOf({circlesScene()}), "index,axis-0,axis-1\n0,20.25,10\n1,4,30.5\n");
}

TEST(NapariPoints, HaveTimeAndSliceFirst) {
  ImageFacts facts = atTime(4);
  facts.z = 2;
  EXPECT_EQ(napariPointsOf({pointsScene(facts)}),
            "index,axis-0,axis-1,axis-2,axis-3\n0,4,2,7,12\n1,4,2,20,3\n");
}

}  // namespace
}  // namespace orva::test
