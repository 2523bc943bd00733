// The options --channel, --z, --time, --series and --level of the commands that search.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

using nlohmann::json;

constexpr int kChannels = 2;
constexpr int kSlices = 3;
constexpr int kTimes = 2;

// One disc in each plane, at x = 30 + 30 z, y = 30 + 40 t; with radius 9 in channel 0 and 12 in 1.
Picture plane(int c, int z, int t) {
  return discs(130, 110, {{30.0 + 30 * z, 30.0 + 40 * t, c == 0 ? 9.0 : 12.0}});
}

std::string ome(const std::string& order) {
  return "<?xml version=\"1.0\"?><OME xmlns=\"http://www.openmicroscopy.org/Schemas/OME/2016-06\">"
         "<Image ID=\"Image:0\"><Pixels DimensionOrder=\"" +
         order +
         "\" Type=\"uint8\" SizeX=\"130\" SizeY=\"110\" SizeC=\"2\" SizeZ=\"3\" SizeT=\"2\">"
         "<Channel Name=\"DAPI\"/><Channel Name=\"GFP\"/><TiffData/></Pixels></Image></OME>";
}

// All planes with c varying fastest, then z, then t.
void writeStack(const fs::path& path, const std::string& description) {
  TiffFile file(path);
  TiffForm form;
  form.description = description;
  for (int t = 0; t < kTimes; ++t) {
    for (int z = 0; z < kSlices; ++z) {
      for (int c = 0; c < kChannels; ++c) {
        file.page(plane(c, z, t), form);
        form.description.clear();
      }
    }
  }
}

std::string imageJ() {
  return "ImageJ=1.53t\nimages=12\nchannels=2\nslices=3\nframes=2\nhyperstack=true\n";
}

struct PlaneOptions : ::testing::Test {
  PlaneOptions() {
    writeStack(box / "ome.tif", ome("XYCZT"));
    writeStack(box / "imagej.tif", imageJ());
    writeStack(box / "pages.tif", "");
  }

  Outcome find(Arguments options, const std::string& file = "ome.tif") const {
    options.insert(options.begin(), "find");
    options.push_back(file);
    return box.run(options);
  }

  Sandbox box;
};

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The rounded numbers of each row of a table.
std::vector<std::vector<long>> rowsOf(const std::string& table) {
  std::vector<std::vector<long>> rows;
  const std::vector<std::string> lines = linesOf(table);
  for (std::size_t i = 1; i < lines.size(); ++i) {
    std::istringstream in(lines[i]);
    rows.emplace_back();
    for (std::string field; std::getline(in, field, ',');) {
      if (field != "true" && field != "false") {
        rows.back().push_back(std::lround(std::stod(field)));
      }
    }
  }
  return rows;
}

TEST_F(PlaneOptions, SeveralChannelsNeedAChoice) {
  EXPECT_TRUE(failedWithOneLine(
      find({}), "ome.tif", "has 2 channels: 0 \"DAPI\", 1 \"GFP\"; choose one with --channel"));
  EXPECT_TRUE(failedWithOneLine(find({}, "imagej.tif"), "imagej.tif", "has 2 channels: 0, 1;"));
  EXPECT_TRUE(failedWithOneLine(find({"--channel", "RFP"}), "ome.tif", "has no channel \"RFP\""));
}

// The maximum over the slices has three discs, at each time.
TEST_F(PlaneOptions, SlicesAreProjectedAndTimesSearchedOneByOne) {
  for (const std::string file : {"ome.tif", "imagej.tif"}) {
    const Outcome outcome = find({"--channel", "1"}, file);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(linesOf(outcome.out).at(0), "x,y,radius,score,t");
    const auto rows = rowsOf(outcome.out);
    ASSERT_EQ(rows.size(), 6U) << outcome.out;
    for (const auto& row : rows) {
      EXPECT_NEAR(static_cast<double>(row[1]), 30.0 + 40.0 * static_cast<double>(row[4]), 1.0);
      EXPECT_NEAR(static_cast<double>(row[2]), 12.0, 1.5);
    }
    const auto lines = linesOf(outcome.err);
    ASSERT_EQ(lines.size(), 3U) << outcome.err;
    EXPECT_EQ(lines[0], "orva: " + file + ": maximum of 3 slices; --z chooses");
    EXPECT_TRUE(lines[1].starts_with("orva: " + file + "#t=0: 3 bright objects")) << lines[1];
    EXPECT_TRUE(lines[2].starts_with("orva: " + file + "#t=1: 3 bright objects")) << lines[2];
  }
}

TEST_F(PlaneOptions, EveryPlaneIsReached) {
  for (const std::string order : {"XYCZT", "XYZCT", "XYTCZ"}) {
    SCOPED_TRACE(order);
    writeStack(box / "order.tif", ome(order));
    for (int page = 0; page < kChannels * kSlices * kTimes; ++page) {
      int c = page % 2;
      int z = page / 2 % 3;
      int t = page / 6;
      const Picture expected = plane(c, z, t);
      if (order == "XYZCT") {
        z = page % 3;
        c = page / 3 % 2;
      } else if (order == "XYTCZ") {
        t = page % 2;
        c = page / 2 % 2;
        z = page / 4;
      }
      box.write("one.pgm", pgm(expected));
      const Outcome outcome = find({"--quiet", "--channel", c == 0 ? "DAPI" : "GFP", "--z",
                                    std::to_string(z), "--time", std::to_string(t)},
                                   "order.tif");
      EXPECT_TRUE(succeeded(outcome));
      EXPECT_EQ(outcome.out, box.run({"find", "--quiet", "one.pgm"}).out);
    }
  }
}

TEST_F(PlaneOptions, JsonSaysWhatWasSearched) {
  const auto searched = [&](const std::vector<std::string>& options) {
    std::vector<std::string> call{"find",   "--quiet", "--format", "json",
                                  "--time", "0",       "--channel"};
    call.insert(call.end(), options.begin(), options.end());
    call.push_back("ome.tif");
    return json::parse(box.run(call).out);
  };
  const json projected = searched({"GFP"});
  EXPECT_EQ(projected.at("channel"), 1);
  EXPECT_EQ(projected.at("projection"), "max");
  EXPECT_FALSE(projected.contains("level"));
  EXPECT_EQ(searched({"0", "--z", "mean"}).at("projection"), "mean");
  const json slice = searched({"0", "--z", "2"});
  EXPECT_EQ(slice.at("channel"), 0);
  EXPECT_EQ(slice.at("z"), 2);
  EXPECT_EQ(slice.at("t"), 0);
  EXPECT_FALSE(slice.contains("projection"));
}

TEST_F(PlaneOptions, NumbersAreReadAsOtherNumbersAre) {
  const auto found = [&](const std::string& z) {
    return box.run({"find", "--quiet", "--channel", "0", "--z", z, "--time", "1", "ome.tif"}).out;
  };
  EXPECT_NE(found("2"), found("0"));
  EXPECT_EQ(found("0x2"), found("2"));
}

TEST_F(PlaneOptions, AllSlicesHaveAColumn) {
  const Outcome outcome = find({"--channel", "0", "--z", "all", "--quiet"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(linesOf(outcome.out).at(0), "x,y,radius,score,t,z");
  const auto rows = rowsOf(outcome.out);
  ASSERT_EQ(rows.size(), 6U);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i][4], static_cast<long>(i / 3));
    EXPECT_EQ(rows[i][5], static_cast<long>(i % 3));
    EXPECT_NEAR(static_cast<double>(rows[i][0]), 30.0 + 30.0 * static_cast<double>(rows[i][5]),
                1.0);
  }
  const Outcome mean = find({"--channel", "0", "--z", "mean", "--time", "0", "--quiet"});
  EXPECT_EQ(rowsOf(mean.out).size(), 3U);
  EXPECT_EQ(linesOf(mean.out).at(0), "x,y,radius,score");
}

TEST_F(PlaneOptions, JsonIsAnArrayOfDocuments) {
  const Outcome outcome =
      find({"--channel", "GFP", "--z", "1", "--format", "json", "--quiet"}, "ome.tif");
  const json documents = json::parse(outcome.out);
  ASSERT_EQ(documents.size(), 2U);
  EXPECT_EQ(documents[1].at("t"), 1);
  EXPECT_EQ(documents[1].at("z"), 1);
  EXPECT_EQ(documents[1].at("channel"), 1);
  EXPECT_EQ(documents[1].at("frame"), 9);  // the page of channel 1, slice 1, time 1
  EXPECT_EQ(documents[1].at("objects").size(), 1U);
}

TEST_F(PlaneOptions, PagesOfUnknownMeaningNeedAChoice) {
  EXPECT_TRUE(failedWithOneLine(
      find({}, "pages.tif"), "pages.tif",
      "has 12 pages, and does not say whether they are channels, slices or times; choose one with "
      "--frame K, or say what they are with --channel K, --z K|max|mean|all or --time K|all"));
  const std::string expected = find({"--quiet", "--frame", "3"}, "pages.tif").out;
  EXPECT_EQ(rowsOf(expected).size(), 1U);
  EXPECT_EQ(find({"--quiet", "--channel", "3"}, "pages.tif").out, expected);
  EXPECT_EQ(find({"--quiet", "--z", "3"}, "pages.tif").out, expected);
  EXPECT_EQ(find({"--quiet", "--time", "3"}, "pages.tif").out, expected);
  EXPECT_EQ(rowsOf(find({"--quiet", "--time", "all"}, "pages.tif").out).size(), 12U);
}

TEST_F(PlaneOptions, PicturesOfSeveralImagesAreNumbered) {
  EXPECT_TRUE(succeeded(find({"--quiet", "--channel", "0", "--z", "all", "--time", "0", "--table",
                              "t.csv", "--overlay", "o.png"})));
  EXPECT_TRUE(succeeded(box.run({"segment", "--quiet", "--channel", "0", "--table", "s.csv",
                                 "--labels", "l.tif", "ome.tif"})));
  const std::vector<std::string> names = box.names();
  for (const std::string name :
       {"o_z0000.png", "o_z0001.png", "o_z0002.png", "l_t0000.tif", "l_t0001.tif"}) {
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
  }
  EXPECT_EQ(std::count(names.begin(), names.end(), "o.png"), 0);
  EXPECT_EQ(std::count(names.begin(), names.end(), "l.tif"), 0);
}

TEST_F(PlaneOptions, NumberedResultsDoNotReplaceAnInput) {
  const std::string before = box.read("ome.tif");
  box.write("x_t0000.tif", before);
  EXPECT_TRUE(failedWithOneLine(box.run({"segment", "--channel", "0", "--z", "0", "--quiet",
                                         "--table", "s.csv", "--labels", "x.tif", "x_t0000.tif"}),
                                "x_t0000.tif", "a result would replace the input"));
  EXPECT_EQ(box.read("x_t0000.tif"), before);
}

TEST_F(PlaneOptions, FilterAndMeasureDoNotReplaceAnInput) {
  const std::string before = box.read("ome.tif");
  box.write("x_t0001.tif", before);
  EXPECT_TRUE(failedWithOneLine(box.run({"filter", "--op", "smooth", "--sigma", "1", "--channel",
                                         "0", "--output", "x.tif", "x_t0001.tif"}),
                                "x_t0001.tif", "a result would replace the input"));
  EXPECT_EQ(box.read("x_t0001.tif"), before);
  box.write("x_t0001.ids", before);
  EXPECT_TRUE(failedWithOneLine(box.run({"measure", "--threshold", "100", "--channel", "0",
                                         "--table", "x.csv", "--labels", "x.ics", "x_t0001.ids"}),
                                "x_t0001.ids", "a result would replace the input"));
  EXPECT_EQ(box.read("x_t0001.ids"), before);
}

// The first has numbers behind its name, which the second is called by.
TEST_F(PlaneOptions, NumberedResultsOfTwoImagesAreApart) {
  writeStack(box / "a.tif", ome("XYCZT"));
  box.write("a_t0000.pgm", pgm(plane(0, 0, 0)));
  box.write("a_t0002.pgm", pgm(plane(0, 0, 0)));
  const auto run = [&](const std::string& command, const std::string& other) {
    fs::remove_all(box / "out");
    return box.run({command, "--quiet", "--channel", "0", "--out", "out", "a.tif", other});
  };
  for (const std::string command : {"find", "vote", "segment"}) {
    EXPECT_TRUE(refused(run(command, "a_t0000.pgm"), "two results would go to out/a_t0000"));
    EXPECT_TRUE(succeeded(run(command, "a_t0002.pgm")));
    EXPECT_TRUE(fs::exists(box / "out/a_t0001.png") && fs::exists(box / "out/a_t0002.png"));
  }
}

TEST_F(PlaneOptions, BatchesHaveARowPerImage) {
  EXPECT_TRUE(succeeded(find({"--quiet", "--channel", "0", "--out", "out"})));
  const auto lines = linesOf(box.read("out/summary.csv"));
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_TRUE(lines[1].starts_with("ome.tif#t=0,130,110,3,")) << lines[1];
  EXPECT_TRUE(lines[2].starts_with("ome.tif#t=1,130,110,3,")) << lines[2];
  EXPECT_EQ(linesOf(box.read("out/ome.csv")).at(0), "x,y,radius,score,t");
}

TEST_F(PlaneOptions, IntensitiesAreThoseOfAnotherChannel) {
  const auto means = [&](const Arguments& options) {
    Arguments call{"segment", "--quiet", "--channel", "DAPI", "--z", "0", "--time", "0"};
    call.insert(call.end(), options.begin(), options.end());
    call.emplace_back("ome.tif");
    const auto rows = rowsOf(box.run(call).out);
    return rows.size() == 1 ? rows[0].at(11) : -1;
  };
  // The disc of channel 1 is larger, so that the edges of the one in channel 0 are bright in it.
  EXPECT_GT(means({"--measure-channel", "GFP"}), means({}));
  EXPECT_EQ(means({"--measure-channel", "GFP"}), 220);
}

TEST_F(PlaneOptions, MeasuredChannelIsReadFromStandardInputOnce) {
  const Arguments options{"--quiet", "--channel", "0", "--z", "all", "--measure-channel", "1"};
  Arguments call{"segment"};
  call.insert(call.end(), options.begin(), options.end());
  call.emplace_back("ome.tif");
  const Outcome expected = box.run(call);
  EXPECT_TRUE(succeeded(expected));
  EXPECT_EQ(rowsOf(expected.out).size(), 6U);
  call.back() = "-";
  const std::string file = box / "ome.tif";
  const Outcome outcome = box.run(call, {.in = file.c_str()});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, expected.out);
  call.back() = "ome.tif";
  call.insert(call.end() - 1, {"--measure", "-"});
  const Outcome measured = box.run(call, {.in = file.c_str()});
  EXPECT_TRUE(succeeded(measured));
  EXPECT_EQ(measured.out, expected.out);
}

TEST_F(PlaneOptions, MeasuredChannelNeedsAKnownPage) {
  EXPECT_TRUE(refused(box.run({"segment", "--frame", "0", "--measure-channel", "1", "ome.tif"}),
                      "--measure-channel: goes with --frame only if --measure names an image"));
  EXPECT_TRUE(failedWithOneLine(
      box.run({"segment", "--quiet", "--channel", "0", "--measure-channel", "2", "ome.tif"}),
      "ome.tif",
      "cannot be measured in ome.tif: has no channel 2; there are 0 \"DAPI\", 1 \"GFP\""));
}

TEST_F(PlaneOptions, WrongValuesAreRefused) {
  for (const std::string z : {"-1", "min", "1.5", ""}) {
    EXPECT_TRUE(refused(find({"--z=" + z}), "--z")) << z;
  }
  EXPECT_TRUE(refused(find({"--time=max"}), "--time"));
  EXPECT_TRUE(refused(find({"--level=-1"}), "--level"));
  EXPECT_TRUE(refused(find({"--frame", "1", "--z", "1"}), "--frame"));
  EXPECT_TRUE(failedWithOneLine(find({"--channel", "0", "--z", "70000"}), "ome.tif",
                                "has no slice 70000; there are 0 to 2"));
  EXPECT_TRUE(failedWithOneLine(find({"--channel", "0", "--time", "2"}), "ome.tif",
                                "has no time 2; there are 0 to 1"));
  EXPECT_TRUE(failedWithOneLine(find({"--series", "1"}), "ome.tif", "has no image 1"));
}

}  // namespace
}  // namespace orva::test
