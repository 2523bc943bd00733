// Sizes in micrometres with find and segment.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

using nlohmann::json;

std::string omePixels(const std::string& sizes) {
  return "<?xml version=\"1.0\"?><OME xmlns=\"http://www.openmicroscopy.org/Schemas/OME/2016-06\">"
         "<Image ID=\"Image:0\"><Pixels DimensionOrder=\"XYCZT\" Type=\"uint8\" SizeX=\"150\" "
         "SizeY=\"110\" SizeC=\"1\" SizeZ=\"1\" SizeT=\"1\" " +
         sizes + "><Channel/><TiffData/></Pixels></Image></OME>";
}

// Discs of radius 9 and one of radius 14.
struct Micrometres : ::testing::Test {
  Micrometres() {
    write("plain.tif", "");
    write("half.tif", "PhysicalSizeX=\"500\" PhysicalSizeXUnit=\"nm\" PhysicalSizeY=\"0.5\"");
    write("oblong.tif", "PhysicalSizeX=\"0.5\" PhysicalSizeY=\"0.7\"");
    write("nearly.tif", "PhysicalSizeX=\"0.4995\" PhysicalSizeY=\"0.5005\"");
  }

  void write(const std::string& name, const std::string& sizes) const {
    TiffFile file(box / name);
    TiffForm form;
    if (!sizes.empty()) form.description = omePixels(sizes);
    file.page(discs(150, 110, {{20, 22, 9}, {61, 18, 9}, {35, 70, 9}, {100, 60, 14}}), form);
  }

  Sandbox box;
};

std::vector<std::vector<std::string>> fieldsOfLines(const std::string& csv) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(csv);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');) rows.back().push_back(field);
  }
  return rows;
}

TEST_F(Micrometres, TableOfACalibratedImageHasBoth) {
  const auto rows = fieldsOfLines(box.run({"find", "half.tif"}).out);
  ASSERT_EQ(rows.size(), 5U);
  EXPECT_EQ(rows[0],
            (std::vector<std::string>{"x", "y", "radius", "score", "x_um", "y_um", "radius_um"}));
  for (std::size_t i = 1; i < rows.size(); ++i) {
    for (const std::size_t k : {0U, 1U, 2U}) {
      EXPECT_NEAR(std::stod(rows[i][k + 4]), std::stod(rows[i][k]) / 2, 0.0003);
    }
  }
}

TEST_F(Micrometres, OtherImagesAreAsBefore) {
  const Outcome plain = box.run({"find", "plain.tif"});
  EXPECT_TRUE(plain.out.starts_with("x,y,radius,score\n"));
  EXPECT_EQ(plain.err.find("um"), std::string::npos);
  const Outcome vote = box.run({"vote", "--max-radius", "13", "plain.tif"});
  EXPECT_TRUE(succeeded(vote));
  EXPECT_TRUE(vote.out.starts_with("x,y,weight\n"));
}

TEST_F(Micrometres, CentersAreRepeatedAndRadiiHaveUnits) {
  const Outcome outcome = box.run({"vote", "--max-radius", "13", "half.tif"});
  EXPECT_TRUE(succeeded(outcome));
  const auto rows = fieldsOfLines(outcome.out);
  ASSERT_EQ(rows.size(), 5U);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"x", "y", "weight", "x_um", "y_um"}));
  for (std::size_t i = 1; i < rows.size(); ++i) {
    EXPECT_EQ(std::stod(rows[i][3]), std::stod(rows[i][0]) / 2);
    EXPECT_EQ(std::stod(rows[i][4]), std::stod(rows[i][1]) / 2);
  }
  EXPECT_EQ(box.run({"vote", "--max-radius", "6.5um", "half.tif"}).out, outcome.out);
  EXPECT_EQ(box.run({"vote", "--max-radius", "6500nm", "--min-radius", "0.4um", "half.tif"}).out,
            outcome.out);
  EXPECT_EQ(
      box.run({"vote", "--max-radius", "13um", "--pixel-size", "1um", "plain.tif"}).out.size(),
      box.run({"vote", "--max-radius", "13", "--pixel-size", "1", "plain.tif"}).out.size());
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--max-radius", "6um", "plain.tif"}), "plain.tif",
                                "has no known size of square pixels; give --pixel-size"));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--max-radius", "6mm", "half.tif"}), "half.tif",
                                "6mm is not a radius from 1 to 1000"));
  EXPECT_TRUE(
      failedWithOneLine(box.run({"vote", "--min-radius", "8", "--max-radius", "3um", "half.tif"}),
                        "half.tif", "--min-radius exceeds --max-radius"));
  EXPECT_TRUE(refused(box.run({"vote", "--min-radius", "4um", "--max-radius", "3um", "half.tif"}),
                      "must not exceed --max-radius"));
}

TEST_F(Micrometres, ReportSaysBoth) {
  const auto radius = [&](const std::string& file) {
    const std::string line = box.run({"find", file}).err;
    const std::string before = "4 bright objects of radius about ";
    const std::size_t at = line.find(before);
    EXPECT_NE(at, std::string::npos) << line;
    return line.substr(at + before.size(), line.find(", confidence") - at - before.size());
  };
  EXPECT_EQ(radius("plain.tif"), "8.9 pixels");
  EXPECT_EQ(radius("half.tif"), "8.9 pixels (4.4 um)");
}

TEST_F(Micrometres, JsonHasTheEstimateInBoth) {
  for (const char* name : {"find", "segment"}) {
    const Outcome outcome = box.run({name, "--format", "json", "half.tif"});
    const json settings = json::parse(outcome.out)["settings"];
    EXPECT_NEAR(settings["radius_um"].get<double>(), settings["radius"].get<double>() / 2, 0.0003);
    const Outcome plain = box.run({name, "--format", "json", "plain.tif"});
    EXPECT_FALSE(json::parse(plain.out)["settings"].contains("radius_um"));
  }
}

TEST_F(Micrometres, LabelsAndFilteredImagesKeepTheSize) {
  const auto sizeOf = [&](const std::string& file) {
    const std::string text = box.run({"info", file}).out;
    const std::size_t at = text.find("pixel size: ");
    return at == std::string::npos ? "" : text.substr(at, text.find('\n', at) - at);
  };
  for (const auto& [file, size] :
       {std::pair("plain.tif", ""), std::pair("half.tif", "pixel size: 0.5 x 0.5 um"),
        std::pair("oblong.tif", "pixel size: 0.5 x 0.7 um")}) {
    EXPECT_EQ(box.run({"segment", "--quiet", "--labels", "labels.tif", file}).status, 0);
    EXPECT_EQ(sizeOf("labels.tif"), size) << file;
    for (const std::string output : {"smooth.tif", "smooth.ome.tif"}) {
      EXPECT_EQ(
          box.run({"filter", "--op", "smooth", "--sigma", "2", "--output", output, file}).status,
          0);
      EXPECT_EQ(sizeOf(output), size) << file;
    }
  }
  EXPECT_EQ(
      box.run({"segment", "--pixel-size", "200nm", "--labels", "labels.tif", "plain.tif"}).status,
      0);
  EXPECT_EQ(sizeOf("labels.tif"), "pixel size: 0.2 x 0.2 um");
}

TEST_F(Micrometres, OblongPixelsAreReportedAndNotUsed) {
  const Outcome outcome = box.run({"find", "oblong.tif"});
  EXPECT_TRUE(outcome.out.starts_with("x,y,radius,score\n"));
  EXPECT_TRUE(outcome.err.starts_with("orva: oblong.tif: a pixel is 0.5 x 0.7 um, not square; "))
      << outcome.err;
  EXPECT_EQ(box.run({"find", "nearly.tif"}).out, box.run({"find", "half.tif"}).out);
}

TEST_F(Micrometres, RadiusIsThatInPixels) {
  const auto objects = [&](const Arguments& options) {
    Arguments arguments{"find", "--format", "json", "half.tif"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return json::parse(box.run(arguments).out)["objects"];
  };
  EXPECT_EQ(objects({"--radius", "4.5um"}), objects({"--radius", "9"}));
  EXPECT_EQ(objects({"--radius", "4500nm"}), objects({"--radius", "9"}));
  EXPECT_EQ(objects({"--radius", "6um:0.008mm"}), objects({"--radius", "12:16"}));
  EXPECT_EQ(objects({"--radius", "6um:8um"}).size(), 1U);
  EXPECT_EQ(objects({"--radius", "9um", "--pixel-size", "1"}).size(), 4U);
}

TEST_F(Micrometres, PixelSizeGivesAndOverrides) {
  const std::string half = box.run({"find", "half.tif"}).out;
  for (const std::string size : {"0.5", "0.5um", "500nm"}) {
    EXPECT_EQ(box.run({"find", "--pixel-size", size, "plain.tif"}).out, half);
    EXPECT_EQ(box.run({"find", "--pixel-size", size, "oblong.tif"}).out, half);
  }
  EXPECT_NE(box.run({"find", "--pixel-size", "1", "half.tif"}).out, half);
}

TEST_F(Micrometres, WithoutACalibrationAreAnError) {
  for (const std::string file : {"plain.tif", "oblong.tif"}) {
    const Outcome outcome = box.run({"find", "--quiet", "--radius", "6um", file});
    EXPECT_TRUE(
        failedWithOneLine(outcome, file, "has no known size of square pixels; give --pixel-size"));
  }
  EXPECT_TRUE(failedWithOneLine(box.run({"segment", "--min-area", "50um2", "plain.tif"}),
                                "plain.tif", "has no known size of square pixels"));
}

TEST_F(Micrometres, WrongSizesAreRefused) {
  for (const std::string radius : {"6px", "um", "-1um", "0um", "4:9um", "9um:4um", "6um2"}) {
    EXPECT_TRUE(refused(box.run({"find", "--radius=" + radius, "half.tif"}), "neither a radius"))
        << radius;
  }
  for (const std::string area : {"6um", "-1um2", "um2", "x"}) {
    EXPECT_TRUE(refused(box.run({"segment", "--min-area=" + area, "half.tif"}), "is not a number"))
        << area;
  }
  for (const std::string size : {"0", "-1", "1px", "nan"}) {
    EXPECT_TRUE(refused(box.run({"find", "--pixel-size=" + size, "half.tif"}), "is not a length"))
        << size;
  }
  EXPECT_TRUE(refused(box.run({"segment", "--min-area", "3", "--max-area", "9um2", "half.tif"}),
                      "must have a unit"));
}

TEST_F(Micrometres, AreasAreLimitedInSquares) {
  const std::string large = box.run({"segment", "--min-area", "400", "half.tif"}).out;
  EXPECT_EQ(fieldsOfLines(large).size(), 2U);
  EXPECT_EQ(box.run({"segment", "--min-area", "100um2", "half.tif"}).out, large);
  const std::string small = box.run({"segment", "--max-area", "400", "half.tif"}).out;
  EXPECT_EQ(fieldsOfLines(small).size(), 4U);
  EXPECT_EQ(box.run({"segment", "--max-area", "100um2", "half.tif"}).out, small);
}

TEST_F(Micrometres, MeasurementsAreRepeatedInMicrometres) {
  const auto rows = fieldsOfLines(box.run({"segment", "half.tif"}).out);
  ASSERT_EQ(rows.size(), 5U);
  ASSERT_EQ(rows[0].size(), 28U);
  EXPECT_EQ(rows[0][21], "area_um2");
  EXPECT_EQ(std::stod(rows[1][21]), std::stod(rows[1][3]) / 4);
  EXPECT_EQ(rows[0][22], "perimeter_um");
  EXPECT_EQ(std::stod(rows[1][22]), std::stod(rows[1][5]) / 2);
  EXPECT_EQ(rows[0][26], "centroid-0_um");
  EXPECT_EQ(std::stod(rows[1][26]), std::stod(rows[1][1]) / 2);
}

// The same discs in pixels of half the size.
TEST_F(Micrometres, SameSettingsAreCombinedInMicrometres) {
  {
    TiffFile file(box / "quarter.tif");
    TiffForm form;
    form.description = omePixels("PhysicalSizeX=\"0.25\" PhysicalSizeY=\"0.25\"");
    file.page(discs(150, 110, {{30, 30, 18}, {90, 40, 18}, {60, 80, 18}}), form);
  }
  EXPECT_EQ(
      box.run({"find", "--quiet", "--same-settings", "--out", "out", "half.tif", "quarter.tif"})
          .status,
      0);
  const auto rows = fieldsOfLines(box.read("out/summary.csv"));
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[1][3], "4");
  EXPECT_EQ(rows[2][3], "3");
  EXPECT_NEAR(std::stod(rows[1][4]), 9, 1);
  EXPECT_NEAR(std::stod(rows[2][4]), 2 * std::stod(rows[1][4]), 0.15);
}

TEST_F(Micrometres, SameSettingsHoldForTheBatch) {
  EXPECT_EQ(box.run({"find", "--quiet", "--same-settings", "--radius", "4.5um", "--out", "out",
                     "half.tif", "nearly.tif"})
                .status,
            0);
  EXPECT_EQ(box.read("out/half.csv"),
            box.run({"find", "--radius", "9", "--polarity", "bright", "half.tif"}).out);
}

}  // namespace
}  // namespace orva::test
