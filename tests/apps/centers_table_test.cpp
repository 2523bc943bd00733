#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

using nlohmann::json;

// The centers of a document.
Table tableIn(const json& document) {
  Table table;
  for (const json& c : document.at("centers")) {
    EXPECT_EQ(c.size(), 3U);
    table.push_back({c.at("x").get<int>(), c.at("y").get<int>(), c.at("weight").get<float>()});
  }
  return table;
}

TEST(CentersTable, CsvBeginsWithItsHeaderAndKeepsTheLabelOrder) {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  const Outcome outcome = box.run({"vote", "--max-radius", "10", "discs.pgm"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_TRUE(outcome.out.starts_with("x,y,weight\n"));
  EXPECT_EQ(parseCsv(outcome.out),
            voteDirectly(imageOf<unsigned char>(twoDiscs()), {.maxRadius = 10}));
}

TEST(CentersTable, AFileHoldsWhatStandardOutputWould) {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  for (const std::string format : {"csv", "json"}) {
    SCOPED_TRACE(format);
    const Outcome shown = box.run({"vote", "--format", format, "discs.pgm"});
    const Outcome kept = box.run({"vote", "--format", format, "--centers", "table", "discs.pgm"});
    EXPECT_TRUE(succeeded(kept));
    EXPECT_EQ(kept.out, "");
    EXPECT_EQ(box.read("table"), shown.out);
  }
}

TEST(CentersTable, JsonCarriesTheDefaultSettings) {
  const image<unsigned char> img = imageOf<unsigned char>(twoDiscs());
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  const Outcome outcome = box.run({"vote", "--format", "json", "discs.pgm"});
  EXPECT_TRUE(succeeded(outcome));
  const json document = json::parse(outcome.out);
  EXPECT_EQ(document.at("image"), "discs.pgm");
  EXPECT_EQ(document.at("frame"), 0);
  EXPECT_EQ(document.at("width"), 66);
  EXPECT_EQ(document.at("height"), 50);
  EXPECT_EQ(tableIn(document), voteDirectly(img, {}));

  json settings = document.at("settings");
  const Settings defaults;
  EXPECT_EQ(settings.at("sigma").get<float>(), defaults.usedSigma());
  EXPECT_EQ(settings.at("gradient").get<float>(), defaults.usedGradient(img));
  settings.erase("sigma");
  settings.erase("gradient");
  EXPECT_EQ(settings, json({{"polarity", "bright"},
                            {"min_radius", 1},
                            {"max_radius", 20},
                            {"cone_width", 10},
                            {"relative_gradient", 0.03},
                            {"relative_threshold", 0.3},
                            {"edges", false},
                            {"power", 0.5}}));
}

TEST(CentersTable, JsonCarriesTheGivenSettings) {
  const Sandbox box;
  {
    TiffFile file(box / "stack.tif");
    file.page(discs(10, 10, {}));
    file.page(twoDiscs());
  }
  const Outcome outcome = box.run({"vote",     "--format",
                                   "json",     "--polarity",
                                   "both",     "--min-radius",
                                   "2",        "--max-radius",
                                   "11",       "--cone-width",
                                   "7",        "--sigma",
                                   "1.5",      "--gradient",
                                   "3.1",      "--threshold",
                                   "12.3",     "--edges",
                                   "--power",  "0.7",
                                   "--frame",  "1",
                                   "stack.tif"});
  EXPECT_TRUE(succeeded(outcome));
  const json document = json::parse(outcome.out);
  EXPECT_EQ(document.at("frame"), 1);
  EXPECT_EQ(document.at("width"), 66);
  EXPECT_EQ(document.at("settings"), json({{"polarity", "both"},
                                           {"min_radius", 2},
                                           {"max_radius", 11},
                                           {"cone_width", 7},
                                           {"sigma", 1.5},
                                           {"gradient", 3.1},
                                           {"threshold", 12.3},
                                           {"edges", true},
                                           {"power", 0.7}}));
  EXPECT_EQ(json::parse(box.run({"vote", "--format", "json", "--polarity", "dark", "--frame", "0",
                                 "stack.tif"})
                            .out)
                .at("settings")
                .at("polarity"),
            "dark");
}

TEST(CentersTable, JsonWithoutCentersHasAnEmptyList) {
  const Sandbox box;
  box.write("even.pgm", pgm(discs(30, 30, {})));
  const json document = json::parse(box.run({"vote", "--format", "json", "even.pgm"}).out);
  EXPECT_EQ(document.at("centers"), json::array());
}

TEST(CentersTable, JsonStaysSoundForEveryFileName) {
  const Sandbox box;
  for (const std::string name :
       {"a \"quoted\" name", "back\\slash", "tab\tand\nline", "\xc3\xa9.pgm", "\xff\xfe.pgm"}) {
    SCOPED_TRACE(name);
    box.write(name, pgm(twoDiscs()));
    const Outcome outcome = box.run({"vote", "--format", "json", name});
    EXPECT_TRUE(succeeded(outcome));
    const json document = json::parse(outcome.out);
    const bool isUtf8 = name[0] != '\xff';
    EXPECT_EQ(document.at("image"), isUtf8 ? name : "\xef\xbf\xbd\xef\xbf\xbd.pgm");
  }
}

}  // namespace
}  // namespace orva::test
