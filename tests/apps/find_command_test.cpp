// The subcommand find.
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

#include "orva/detect/detect.h"
#include "tests/apps/pictures.h"
#include "tests/apps/png_files.h"
#include "tests/apps/sandbox.h"

namespace orva::test {
namespace {

using nlohmann::json;

// Discs of one size, in no order.
const std::vector<Disc> kFiveDiscs{
    {20, 22, 9}, {61, 18, 9}, {35, 60, 9}, {88, 51, 9}, {120, 80, 9}};

Picture fiveDiscs() { return discs(150, 110, kFiveDiscs); }

Picture darkDiscs() { return scaled(fiveDiscs(), -1, 240); }

std::vector<std::vector<double>> rowsOf(const std::string& csv) {
  std::vector<std::vector<double>> rows;
  std::istringstream lines(csv);
  std::string line;
  EXPECT_TRUE(std::getline(lines, line));
  EXPECT_EQ(line, "x,y,radius,score");
  while (std::getline(lines, line)) {
    std::istringstream fields(line);
    std::vector<double> row;
    for (std::string field; std::getline(fields, field, ',');) row.push_back(std::stod(field));
    EXPECT_EQ(row.size(), 4U) << line;
    rows.push_back(row);
  }
  return rows;
}

// One row for each disc and no other.
void expectDiscs(const std::vector<std::vector<double>>& rows, const std::vector<Disc>& expected) {
  EXPECT_EQ(rows.size(), expected.size());
  for (const Disc& d : expected) {
    int near = 0;
    for (const std::vector<double>& r : rows) {
      if (std::hypot(r[0] - d.x, r[1] - d.y) > 1) continue;
      ++near;
      EXPECT_NEAR(r[2], d.radius, 1.5);
      EXPECT_GE(r[3], 0.5);
      EXPECT_LE(r[3], 1.0);
    }
    EXPECT_EQ(near, 1) << d.x << ' ' << d.y;
  }
}

// The summary's fields without the time.
std::vector<std::string> summaryRows(const std::string& summary) {
  std::vector<std::string> rows;
  std::istringstream lines(summary);
  for (std::string line; std::getline(lines, line);)
    rows.push_back(line.substr(0, line.rfind(',')));
  return rows;
}

TEST(FindCommand, FindsBrightAndDarkDiscsWithNothingTold) {
  const Sandbox box;
  box.write("bright.pgm", pgm(fiveDiscs()));
  box.write("dark.pgm", pgm(darkDiscs()));
  for (const std::string name : {"bright", "dark"}) {
    const Outcome outcome = box.run({"find", name + ".pgm"});
    EXPECT_EQ(outcome.status, 0);
    expectDiscs(rowsOf(outcome.out), kFiveDiscs);
    EXPECT_TRUE(
        outcome.err.starts_with("orva: " + name + ".pgm: 5 " + name + " objects of radius about "))
        << outcome.err;
  }
}

TEST(FindCommand, TableHasTheObjectsOfTheLibrary) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  const auto rows = rowsOf(box.run({"find", "discs.pgm"}).out);
  const auto objects = detect::findObjects(imageOf<unsigned char>(fiveDiscs()), {}).objects;
  ASSERT_EQ(rows.size(), objects.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_NEAR(rows[i][0], objects[i].x, 0.00051);
    EXPECT_NEAR(rows[i][1], objects[i].y, 0.00051);
    EXPECT_NEAR(rows[i][2], objects[i].radius, 0.00051);
    EXPECT_NEAR(rows[i][3], objects[i].score, 0.00051);
  }
}

TEST(FindCommand, JsonTellsWhatWasEstimated) {
  const Sandbox box;
  box.write("dark.pgm", pgm(darkDiscs()));
  const auto settings = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"find", "--quiet", "--format", "json", "dark.pgm"});
    const Outcome outcome = box.run(arguments);
    EXPECT_TRUE(succeeded(outcome));
    const json document = json::parse(outcome.out);
    EXPECT_EQ(document.at("width"), 150);
    EXPECT_EQ(document.at("objects").size(), 5U);
    EXPECT_EQ(document.at("objects")[0].size(), 5U);
    return document.at("settings");
  };
  const json estimated = settings({});
  EXPECT_EQ(estimated.at("polarity"), "dark");
  EXPECT_NEAR(estimated.at("radius").get<double>(), 9, 1.5);
  EXPECT_GT(estimated.at("confidence").get<double>(), 0.5);
  EXPECT_EQ(estimated.at("estimated"), (json{"radius", "polarity"}));
  const json told = settings({"--radius", "9", "--polarity", "dark"});
  EXPECT_EQ(told.at("radius"), 9);
  EXPECT_EQ(told.at("estimated"), json::array());
  const json range = settings({"--radius", "5:15"});
  EXPECT_EQ(range.at("min_radius"), 5);
  EXPECT_EQ(range.at("max_radius"), 15);
}

TEST(FindCommand, RadiusRangeAndScoreLeaveObjectsOut) {
  const Sandbox box;
  box.write("discs.pgm", pgm(discs(160, 80, {{25, 30, 8}, {60, 45, 8}, {115, 40, 22}})));
  EXPECT_EQ(rowsOf(box.run({"find", "discs.pgm"}).out).size(), 3U);
  EXPECT_EQ(rowsOf(box.run({"find", "--radius", "15:30", "discs.pgm"}).out).size(), 1U);
  EXPECT_EQ(rowsOf(box.run({"find", "--radius", "5:12", "discs.pgm"}).out).size(), 2U);
  const auto all = rowsOf(box.run({"find", "--min-score", "0", "discs.pgm"}).out);
  EXPECT_GE(all.size(), 3U);
}

TEST(FindCommand, SaysWhereNothingIs) {
  const Sandbox box;
  box.write("flat.pgm", pgm(discs(60, 50, {})));
  const Outcome outcome = box.run({"find", "--overlay", "flat.png", "flat.pgm"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "x,y,radius,score\n");
  EXPECT_EQ(outcome.err, "orva: flat.pgm: no objects found\n");
  EXPECT_EQ(readRgbPng(box / "flat.png").width, 60);
}

TEST(FindCommand, OverlayHasACircleAroundEachDisc) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  EXPECT_TRUE(succeeded(box.run({"find", "--quiet", "--overlay", "discs.png", "discs.pgm"})));
  const RgbPicture picture = readRgbPng(box / "discs.png");
  const auto isOrange = [&](double x, double y) {
    const auto p = picture.at(static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)));
    return p[0] == 255 && p[1] == 128 && p[2] == 0;
  };
  for (const auto& row : rowsOf(box.run({"find", "discs.pgm"}).out)) {
    for (int k = 0; k < 8; ++k) {
      const double angle = k * 0.785398163;
      EXPECT_TRUE(isOrange(row[0] + row[2] * std::cos(angle), row[1] + row[2] * std::sin(angle)));
    }
    EXPECT_FALSE(isOrange(row[0], row[1]));
  }
}

TEST(FindCommand, BatchWritesTablesPicturesAndASummary) {
  const Sandbox box;
  box.write("one.pgm", pgm(fiveDiscs()));
  box.write("two.pgm", pgm(darkDiscs()));
  box.write("text.tif", "This is no image.\n");
  const Outcome outcome =
      box.run({"find", "--quiet", "--out", "out", "one.pgm", "text.tif", "two.pgm"});
  EXPECT_TRUE(failedWithOneLine(outcome, "text.tif"));
  const auto rows = summaryRows(box.read("out/summary.csv"));
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[0], "file,width,height,objects,radius,polarity,confidence");
  EXPECT_TRUE(rows[1].starts_with("one.pgm,150,110,5,")) << rows[1];
  EXPECT_NE(rows[1].find(",bright,"), std::string::npos);
  EXPECT_TRUE(rows[2].starts_with("two.pgm,150,110,5,")) << rows[2];
  EXPECT_NE(rows[2].find(",dark,"), std::string::npos);
  EXPECT_EQ(box.read("out/one.csv"), box.run({"find", "--quiet", "one.pgm"}).out);
  EXPECT_EQ(readRgbPng(box / "out/two.png").width, 150);
}

// An image without objects of the common polarity, which alone would be taken for the other one.
TEST(FindCommand, SameSettingsHoldForEveryImage) {
  const Sandbox box;
  box.write("a.pgm", pgm(fiveDiscs()));
  box.write("b.pgm", pgm(discs(150, 110, {{40, 40, 9}, {90, 60, 9}})));
  box.write("dark.pgm", pgm(scaled(discs(150, 110, {{50, 50, 9}}), -1, 240)));
  const std::vector<std::string> images{"a.pgm", "b.pgm", "dark.pgm"};
  std::vector<std::string> call{"find", "--quiet", "--out", "each"};
  call.insert(call.end(), images.begin(), images.end());
  EXPECT_TRUE(succeeded(box.run(call)));
  EXPECT_NE(summaryRows(box.read("each/summary.csv")).at(3).find(",dark,"), std::string::npos);
  call[3] = "same";
  call.insert(call.begin() + 1, "--same-settings");
  EXPECT_TRUE(succeeded(box.run(call)));
  const auto rows = summaryRows(box.read("same/summary.csv"));
  ASSERT_EQ(rows.size(), 4U);
  EXPECT_TRUE(rows[1].starts_with("a.pgm,150,110,5,")) << rows[1];
  EXPECT_TRUE(rows[2].starts_with("b.pgm,150,110,2,")) << rows[2];
  EXPECT_TRUE(rows[3].starts_with("dark.pgm,150,110,0,")) << rows[3];
  for (std::size_t i = 1; i < rows.size(); ++i) {
    EXPECT_NE(rows[i].find(",bright,"), std::string::npos) << rows[i];
  }
}

TEST(FindCommand, WrongOptionsAreRefused) {
  const Sandbox box;
  box.write("a.pgm", pgm(fiveDiscs()));
  for (const std::string radius :
       {"0", "-3", "x", "nan", "inf", "5:", ":5", "9:5", "1:2:3", "5 "}) {
    EXPECT_TRUE(refused(box.run({"find", "--radius=" + radius, "a.pgm"}),
                        "neither a radius above 0 nor a range A:B of radii"))
        << radius;
  }
  EXPECT_TRUE(refused(box.run({"find", "--polarity", "both", "a.pgm"}), "--polarity"));
  EXPECT_TRUE(refused(box.run({"find", "--min-score", "1.5", "a.pgm"}), "--min-score"));
  EXPECT_TRUE(refused(box.run({"find", "a.pgm", "a.pgm"}), "several images need --out DIR"));
  EXPECT_TRUE(refused(box.run({"find", "--same-settings", "--out", "o", "a.pgm", "-"}),
                      "standard input (-) cannot be read twice"));
  EXPECT_TRUE(refused(box.run({"find", "--table", "a.pgm", "a.pgm"}), "replace the input"));
}

TEST(FindCommand, HelpNamesEveryOption) {
  const Outcome outcome = Sandbox().run({"find", "--help"});
  EXPECT_TRUE(succeeded(outcome));
  for (const std::string option :
       {"--radius", "--polarity", "--min-score", "--same-settings", "--frame", "--table",
        "--format", "--overlay", "--out", "--quiet"}) {
    EXPECT_NE(outcome.out.find("\n  " + option + ' '), std::string::npos) << option;
  }
}

}  // namespace
}  // namespace orva::test
