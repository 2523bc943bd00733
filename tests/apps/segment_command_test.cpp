// The subcommand segment.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"
#include "tests/apps/pictures.h"
#include "tests/apps/png_files.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

using nlohmann::json;

const std::vector<std::string> kColumns{"label",
                                        "centroid-0",
                                        "centroid-1",
                                        "area",
                                        "equivalent_diameter_area",
                                        "perimeter",
                                        "eccentricity",
                                        "major_axis_length",
                                        "minor_axis_length",
                                        "orientation",
                                        "solidity",
                                        "mean_intensity",
                                        "min_intensity",
                                        "max_intensity",
                                        "intensity_std",
                                        "bbox-0",
                                        "bbox-1",
                                        "bbox-2",
                                        "bbox-3",
                                        "score",
                                        "touches_border"};

// One disc at the border.
Picture fiveDiscs() {
  return discs(150, 110,
               {{20, 22, 9, 220}, {61, 18, 9, 150}, {35, 60, 9, 90}, {88, 51, 12}, {147, 80, 9}});
}

using TextRow = std::map<std::string, std::string>;

std::vector<TextRow> regionRows(const std::string& csv) {
  std::istringstream lines(csv);
  const auto fieldsOf = [](const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, ',');) fields.push_back(field);
    return fields;
  };
  std::string line;
  EXPECT_TRUE(std::getline(lines, line));
  EXPECT_EQ(fieldsOf(line), kColumns);
  std::vector<TextRow> rows;
  while (std::getline(lines, line)) {
    const std::vector<std::string> fields = fieldsOf(line);
    EXPECT_EQ(fields.size(), kColumns.size()) << line;
    TextRow row;
    for (std::size_t i = 0; i < std::min(fields.size(), kColumns.size()); ++i) {
      row[kColumns[i]] = fields[i];
    }
    rows.push_back(row);
  }
  return rows;
}

double number(const TextRow& row, const std::string& column) { return std::stod(row.at(column)); }

// A page of unsigned 16-bit samples, as libtiff reads it.
struct Labels {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint16_t> values;
};

Labels readLabels(const fs::path& path) {
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(path.c_str(), "r"), TIFFClose);
  Labels labels;
  if (!tiff) return labels;
  std::uint16_t bits = 0;
  std::uint16_t format = 0;
  TIFFGetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetField(tiff.get(), TIFFTAG_SAMPLEFORMAT, &format);
  EXPECT_EQ(bits, 16);
  EXPECT_EQ(format, SAMPLEFORMAT_UINT);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &labels.width);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &labels.height);
  labels.values.resize(std::size_t{labels.width} * labels.height);
  for (std::uint32_t y = 0; y < labels.height; ++y) {
    EXPECT_EQ(TIFFReadScanline(tiff.get(), &labels.values[std::size_t{y} * labels.width], y, 0), 1);
  }
  return labels;
}

// What the library makes of a picture.
struct Expected {
  detect::FindResult found;
  detect::Segmentation segmented;
  std::vector<detect::ObjectMeasures> measures;
};

Expected expectedOf(const Picture& picture) {
  const auto img = imageOf<unsigned char>(picture);
  const detect::FindResult found = detect::findObjects(img, {});
  detect::SegmentSettings settings;
  settings.polarity = found.used.polarity;
  const detect::Segmentation segmented = detect::segmentObjects(img, found.objects, settings);
  return {found, segmented, detect::measureObjects(segmented.labels, img)};
}

std::vector<std::uint16_t> samplesOf(const image<int>& labels) {
  return {labels.pixels(), labels.pixels() + labels.npix()};
}

TEST(SegmentCommand, TableHasTheMeasurementsOfTheLibrary) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  const Outcome outcome = box.run({"segment", "discs.pgm"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.err.starts_with("orva: discs.pgm: 5 bright objects of radius about "))
      << outcome.err;
  const auto rows = regionRows(outcome.out);
  const Expected expected = expectedOf(fiveDiscs());
  ASSERT_EQ(rows.size(), 5U);
  ASSERT_EQ(expected.measures.size(), 5U);
  int atBorder = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (const detect::MeasureColumn& column : detect::measureColumns()) {
      EXPECT_EQ(number(rows[i], column.name), column.of(expected.measures[i])) << column.name;
    }
    EXPECT_EQ(number(rows[i], "label"), static_cast<double>(i + 1));
    EXPECT_NEAR(number(rows[i], "score"), expected.found.objects[expected.segmented.kept[i]].score,
                0.00051);
    const bool touches = number(rows[i], "bbox-3") == 150;
    EXPECT_EQ(rows[i].at("touches_border"), touches ? "true" : "false");
    atBorder += touches ? 1 : 0;
  }
  EXPECT_EQ(atBorder, 1);
}

TEST(SegmentCommand, LabelFilesHoldTheRegions) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  const auto expected = samplesOf(expectedOf(fiveDiscs()).segmented.labels);
  for (const std::string name : {"labels.tif", "labels.TIFF", "labels.png"}) {
    EXPECT_TRUE(succeeded(
        box.run({"segment", "--quiet", "--labels", name, "--table", "table.csv", "discs.pgm"})))
        << name;
  }
  const Labels labels = readLabels(box / "labels.tif");
  EXPECT_EQ(labels.width, 150U);
  EXPECT_EQ(labels.height, 110U);
  EXPECT_EQ(labels.values, expected);
  EXPECT_EQ(box.read("labels.tif"), box.read("labels.TIFF"));
  const std::string png = box.read("labels.png");
  EXPECT_EQ(png[24], 16);  // bits
  EXPECT_EQ(png[25], PNG_COLOR_TYPE_GRAY);
  EXPECT_TRUE(succeeded(box.run({"convert", "labels.png", "fromPng.tif"})));
  EXPECT_TRUE(succeeded(box.run({"convert", "labels.png", "fromPng.pgm"})));
  EXPECT_TRUE(succeeded(box.run({"convert", "labels.tif", "fromTiff.pgm"})));
  EXPECT_EQ(box.read("fromPng.pgm"), box.read("fromTiff.pgm"));
}

// The coloured pixels are those at the border of a region; all others are grey.
TEST(SegmentCommand, OutlinesAreOnePixelWide) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  EXPECT_TRUE(succeeded(box.run({"segment", "--quiet", "--outlines", "outlines.png", "--labels",
                                 "labels.tif", "--table", "table.csv", "discs.pgm"})));
  const RgbPicture picture = readRgbPng(box / "outlines.png");
  const Labels labels = readLabels(box / "labels.tif");
  ASSERT_EQ(picture.width, 150);
  ASSERT_EQ(picture.height, 110);
  const auto labelAt = [&](int x, int y) -> int {
    if (x < 0 || y < 0 || x >= picture.width || y >= picture.height) return 0;
    return labels.values[static_cast<std::size_t>(x + y * picture.width)];
  };
  std::map<int, std::array<unsigned char, 3>> colours;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const int label = labelAt(x, y);
      const bool isBorder =
          label > 0 && (labelAt(x - 1, y) != label || labelAt(x + 1, y) != label ||
                        labelAt(x, y - 1) != label || labelAt(x, y + 1) != label);
      const auto& p = picture.at(x, y);
      ASSERT_EQ(p[0] != p[1] || p[1] != p[2], isBorder) << x << ' ' << y;
      if (isBorder) {
        EXPECT_EQ(colours.emplace(label, p).first->second, p);
      }
    }
  }
  EXPECT_EQ(colours.size(), 5U);
  EXPECT_NE(colours.at(1), colours.at(2));
}

TEST(SegmentCommand, JsonReportsTheSettings) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  const Outcome outcome = box.run({"segment", "--quiet", "--format", "json", "--min-area", "100",
                                   "--exclude-border", "discs.pgm"});
  EXPECT_TRUE(succeeded(outcome));
  const json document = json::parse(outcome.out);
  EXPECT_EQ(document.at("width"), 150);
  const json& settings = document.at("settings");
  EXPECT_EQ(settings.at("polarity"), "bright");
  EXPECT_EQ(settings.at("estimated"), (json{"radius", "polarity"}));
  EXPECT_EQ(settings.at("min_area"), 100);
  EXPECT_FALSE(settings.contains("max_area"));
  EXPECT_EQ(settings.at("exclude_border"), true);
  const json& objects = document.at("objects");
  ASSERT_EQ(objects.size(), 4U);
  const auto rows =
      regionRows(box.run({"segment", "--min-area", "100", "--exclude-border", "discs.pgm"}).out);
  ASSERT_EQ(rows.size(), 4U);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ASSERT_EQ(objects[i].size(), kColumns.size());
    EXPECT_EQ(objects[i].at("touches_border"), false);
    for (const std::string& column : kColumns) {
      if (column == "touches_border") continue;
      EXPECT_EQ(objects[i].at(column).get<double>(), number(rows[i], column)) << column;
    }
    EXPECT_TRUE(objects[i].at("area").is_number_integer());
  }
}

TEST(SegmentCommand, AreaAndBorderLeaveObjectsOut) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  const Outcome large = box.run({"segment", "--min-area", "350", "discs.pgm"});
  ASSERT_EQ(regionRows(large.out).size(), 1U);
  EXPECT_GE(number(regionRows(large.out)[0], "area"), 350);
  EXPECT_EQ(large.err.substr(large.err.rfind(';')), "; 4 more left out\n");
  EXPECT_EQ(regionRows(box.run({"segment", "--max-area", "349.5", "discs.pgm"}).out).size(), 4U);
  const auto inner = regionRows(box.run({"segment", "--exclude-border", "discs.pgm"}).out);
  EXPECT_EQ(inner.size(), 4U);
  for (const TextRow& row : inner) EXPECT_EQ(row.at("touches_border"), "false");
}

TEST(SegmentCommand, IntensitiesAreThoseOfTheOtherImage) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  box.write("other.pgm", pgm(discs(150, 110, {}, 77)));
  {
    TiffFile stack(box / "stack.tif");
    stack.page(fiveDiscs());
    stack.page(discs(150, 110, {}, 33));
  }
  const auto own = regionRows(box.run({"segment", "discs.pgm"}).out);
  const auto expectLevel = [&](const Arguments& measure, double level) {
    Arguments call{"segment"};
    call.insert(call.end(), measure.begin(), measure.end());
    call.emplace_back("discs.pgm");
    const auto rows = regionRows(box.run(call).out);
    ASSERT_EQ(rows.size(), own.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      EXPECT_EQ(rows[i].at("area"), own[i].at("area"));
      EXPECT_EQ(number(rows[i], "mean_intensity"), level);
      EXPECT_EQ(number(rows[i], "min_intensity"), level);
      EXPECT_EQ(number(rows[i], "max_intensity"), level);
      EXPECT_EQ(number(rows[i], "intensity_std"), 0);
    }
  };
  expectLevel({"--measure", "other.pgm"}, 77);
  expectLevel({"--measure", "stack.tif", "--measure-channel", "1"}, 33);
}

TEST(SegmentCommand, JsonNamesTheOtherImage) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  const Arguments call{"segment", "--quiet", "--format", "json", "discs.pgm"};
  EXPECT_FALSE(json::parse(box.run(call).out)["settings"].contains("measure"));
  Arguments other = call;
  other.insert(other.end(), {"--measure", "discs.pgm", "--measure-channel", "0"});
  const json settings = json::parse(box.run(other).out)["settings"];
  EXPECT_EQ(settings["measure"], "discs.pgm");
  EXPECT_EQ(settings["measure_channel"], "0");
}

TEST(SegmentCommand, AnOtherImageThatDoesNotFitFails) {
  const Sandbox box;
  box.write("discs.pgm", pgm(fiveDiscs()));
  box.write("small.pgm", pgm(discs(149, 110, {})));
  box.write("text.tif", "This is no image.\n");
  const auto expectFailure = [&](const std::string& other, const std::string& words) {
    EXPECT_TRUE(failedWithOneLine(
        box.run({"segment", "--measure", other, "--labels", "l.tif", "discs.pgm"}), "discs.pgm",
        "cannot be measured in " + other + ": " + words));
  };
  expectFailure("small.pgm", "one has 150 x 110 pixels, the other 149 x 110");
  expectFailure("text.tif", "is not a ");
  expectFailure("missing.tif", "can not be opened");
  EXPECT_EQ(box.names(), (Arguments{"discs.pgm", "small.pgm", "text.tif"}));
}

TEST(SegmentCommand, NothingFoundGivesEmptyResults) {
  const Sandbox box;
  box.write("flat.pgm", pgm(discs(60, 50, {})));
  box.write("pixel.pgm", pgm(discs(1, 1, {})));
  for (const std::string name : {"flat", "pixel"}) {
    const Outcome outcome =
        box.run({"segment", "--labels", name + ".tif", "--outlines", name + ".png", name + ".pgm"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(regionRows(outcome.out).empty());
    EXPECT_EQ(outcome.err, "orva: " + name + ".pgm: no objects found\n");
    const Labels labels = readLabels(box / (name + ".tif"));
    EXPECT_EQ(labels.width, name == "flat" ? 60U : 1U);
    EXPECT_EQ(std::count(labels.values.begin(), labels.values.end(), 0),
              static_cast<std::ptrdiff_t>(labels.values.size()));
  }
}

TEST(SegmentCommand, BatchWritesTablesLabelsAndPictures) {
  const Sandbox box;
  box.write("one.pgm", pgm(fiveDiscs()));
  box.write("two.pgm", pgm(scaled(fiveDiscs(), -1, 240)));
  box.write("text.tif", "This is no image.\n");
  const Outcome outcome =
      box.run({"segment", "--quiet", "--out", "out", "one.pgm", "text.tif", "two.pgm"});
  EXPECT_TRUE(failedWithOneLine(outcome, "text.tif"));
  EXPECT_EQ(box.read("out/one.csv"), box.run({"segment", "--quiet", "one.pgm"}).out);
  EXPECT_EQ(readLabels(box / "out/one_labels.tif").values,
            samplesOf(expectedOf(fiveDiscs()).segmented.labels));
  EXPECT_EQ(readRgbPng(box / "out/two.png").width, 150);
  const std::string summary = box.read("out/summary.csv");
  EXPECT_TRUE(
      summary.starts_with("file,width,height,objects,radius,polarity,confidence,seconds\n"
                          "one.pgm,150,110,5,"))
      << summary;
  EXPECT_NE(summary.find("\ntwo.pgm,150,110,5,"), std::string::npos) << summary;
}

TEST(SegmentCommand, WrongOptionsAreRefused) {
  const Sandbox box;
  box.write("a.pgm", pgm(fiveDiscs()));
  const auto expectRefusal = [&](Arguments options, const std::string& words) {
    options.insert(options.begin(), "segment");
    options.emplace_back("a.pgm");
    EXPECT_TRUE(refused(box.run(options), words)) << words;
  };
  expectRefusal({"--min-area", "-1"}, "--min-area");
  expectRefusal({"--max-area", "nan"}, "--max-area");
  expectRefusal({"--min-area", "5", "--max-area", "4"}, "must not exceed --max-area");
  expectRefusal({"--labels", "l.jpg"}, "--labels");
  expectRefusal({"--labels", "l.pgm"}, "--labels");
  expectRefusal({"--outlines", "o.tif"}, "--outlines");
  expectRefusal({"--labels", "l.tif", "--out", "o"}, "--out");
  expectRefusal({"--outlines", "o.png", "--out", "o"}, "--out");
  expectRefusal({"--labels", "same.png", "--outlines", "same.png"}, "same.png");
  expectRefusal({"--measure", "a.pgm", "--out", "o"}, "goes with a single image");
  expectRefusal({"--labels", "a.tif", "--table", "a.tif"}, "a.tif");
  EXPECT_TRUE(refused(box.run({"segment", "--measure", "-", "-"}), "cannot be read twice"));
  EXPECT_EQ(box.names(), (Arguments{"a.pgm"}));
}

TEST(SegmentCommand, ResultsDoNotReplaceTheMeasuredImage) {
  const Sandbox box;
  box.write("a.pgm", pgm(fiveDiscs()));
  EXPECT_TRUE(succeeded(box.run({"convert", "a.pgm", "b.tif"})));
  EXPECT_TRUE(
      refused(box.run({"segment", "--measure", "b.tif", "--labels", "b.tif", "a.pgm"}), "b.tif"));
}

TEST(SegmentCommand, HelpNamesEveryOption) {
  const Outcome outcome = Sandbox().run({"segment", "--help"});
  EXPECT_TRUE(succeeded(outcome));
  for (const std::string option :
       {"--radius", "--polarity", "--min-score", "--same-settings", "--min-area", "--max-area",
        "--exclude-border", "--measure", "--measure-channel", "--frame", "--table", "--format",
        "--labels", "--outlines", "--out", "--quiet"}) {
    EXPECT_NE(outcome.out.find("\n  " + option + ' '), std::string::npos) << option;
  }
}

}  // namespace
}  // namespace orva::test
