// Tables and labels of `orva measure` against the library called step by step, and by hand.
#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <sstream>

#include "orva/bip/bip.h"
#include "tests/apps/conversions.h"
#include "tests/apps/pictures.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

const std::string kHeader = "xmin,xmax,ymin,ymax,zmin,zmax,cx,cy,cz,radius,npix,mean,var\n";

struct Request {
  std::optional<float> threshold{};
  std::optional<float> scale{};
  int minSize = 1;
  int maxSize = std::numeric_limits<int>::max();
  bool fill = false;

  std::vector<std::string> arguments() const {
    std::vector<std::string> result;
    const auto add = [&result](const char* option, const auto& value) {
      std::ostringstream text;
      text.precision(9);
      text << value;
      result.insert(result.end(), {option, text.str()});
    };
    if (threshold) add("--threshold", *threshold);
    if (scale) add("--auto", *scale);
    if (minSize > 1) add("--min-size", minSize);
    if (maxSize < std::numeric_limits<int>::max()) add("--max-size", maxSize);
    if (fill) result.emplace_back("--fill");
    return result;
  }
};

using Fields = std::vector<float>;  // thirteen a row; the pixel counts here fit a float

struct Measured {
  float threshold;
  std::vector<Fields> rows;
  Content labels;
};

Fields fieldsOf(const RegionFeature& f) {
  Fields fields;
  for (const int v :
       {f.xmin, f.xmax, f.ymin, f.ymax, f.zmin, f.zmax, f.cx, f.cy, f.cz, f.radius, f.npix}) {
    fields.push_back(static_cast<float>(v));
  }
  fields.insert(fields.end(), {f.mean, f.var});
  return fields;
}

// The wanted regions keep their order and are numbered from 0.
Measured measureDirectly(const Image& img, const Request& request) {
  const float t = request.threshold ? *request.threshold
                                    : bip::computeThreshold(img, request.scale.value_or(5.0F));
  image<unsigned char> mask = bip::threshold(img, t);
  if (request.fill) bip::removeInternalStructures(mask);
  int n = 0;
  const image<short> all = bip::regions(mask, n, 255, 1, NEIGHBORHOOD_4);
  const auto features = bip::regionFeatures(all, n, img);
  Measured result{t, {}, {SHORT, img.nx(), img.ny(), img.nz(), {}}};
  std::vector<int> numbers;
  for (const RegionFeature& f : features) {
    const bool isWanted = f.npix >= request.minSize && f.npix <= request.maxSize;
    numbers.push_back(isWanted ? static_cast<int>(result.rows.size()) : -1);
    if (isWanted) result.rows.push_back(fieldsOf(f));
  }
  for (int i = 0; i < all.npix(); ++i) {
    const short k = all.pixels()[i];
    result.labels.values.push_back(k < 0 ? -1 : numbers[static_cast<std::size_t>(k)]);
  }
  return result;
}

std::vector<Fields> parseRows(const std::string& table) {
  std::vector<Fields> rows;
  EXPECT_TRUE(table.starts_with(kHeader)) << table;
  EXPECT_EQ(table.back(), '\n');
  std::istringstream lines(table.substr(kHeader.size()));
  for (std::string line; std::getline(lines, line);) {
    Fields fields;
    const char* at = line.data();
    const char* end = at + line.size();
    for (int i = 0; i < 13; ++i) {
      float value = 0;
      const auto [behind, error] = std::from_chars(at, end, value);
      EXPECT_TRUE(error == std::errc() &&
                  (i < 12 ? behind != end && *behind == ',' : behind == end))
          << line;
      fields.push_back(value);
      at = std::min(behind + 1, end);
    }
    rows.push_back(fields);
  }
  return rows;
}

class MeasureCommand : public ::testing::Test {
 protected:
  Outcome measure(const std::string& in, const Request& request,
                  const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments{"measure", in, "--table", "table.csv"};
    for (const auto& more : {request.arguments(), options}) {
      arguments.insert(arguments.end(), more.begin(), more.end());
    }
    return box.run(arguments);
  }

  // Returns the number of regions. `in` holds `img`.
  std::size_t expectMeasured(const std::string& in, const Image& img, const Request& request,
                             const std::vector<std::string>& options = {}) const {
    SCOPED_TRACE(in + ' ' + ::testing::PrintToString(request.arguments()));
    const Measured expected = measureDirectly(img, request);
    for (const std::string labels : {"labels.iht", "labels.ics"}) {
      std::vector<std::string> all{"--labels", labels};
      all.insert(all.end(), options.begin(), options.end());
      const Outcome outcome = measure(in, request, all);
      EXPECT_TRUE(succeeded(outcome));
      const std::string start = "threshold: ";
      EXPECT_TRUE(outcome.out.starts_with(start)) << outcome.out;
      if (!outcome.out.starts_with(start)) return 0;
      EXPECT_EQ(std::stof(outcome.out.substr(start.size())), expected.threshold);
      EXPECT_TRUE(
          outcome.out.ends_with("\nregions: " + std::to_string(expected.rows.size()) + '\n'))
          << outcome.out;
      EXPECT_EQ(parseRows(box.read("table.csv")), expected.rows);
      EXPECT_EQ(readContent(box / labels), expected.labels);
    }
    return expected.rows.size();
  }

  Sandbox box;
};

// Worked out by hand: a ring, a dot and a bar of two brightnesses.
TEST_F(MeasureCommand, ASmallPictureByHand) {
  box.write("in.pgm", std::string("P5 7 4 255\n") +
                          "zzz   a"
                          "z z    "
                          "zzz dd "
                          "     ff");
  const std::string ring = "0,2,0,2,0,0,1,1,0,1,8,122,0\n";
  const std::string dot = "6,6,0,0,0,0,6,0,0,1,1,97,0\n";
  // x 4 5 5 6, y 2 2 3 3; 100 100 102 102 with the variance 4 / 3.
  const std::string bar = "4,6,2,3,0,0,5,2,0,1,4,101,1.3333334\n";
  EXPECT_TRUE(succeeded(measure("in.pgm", {.threshold = 97})));
  EXPECT_EQ(box.read("table.csv"), kHeader + ring + dot + bar);
  EXPECT_TRUE(succeeded(measure("in.pgm", {.threshold = 97.5F})));
  EXPECT_EQ(box.read("table.csv"), kHeader + ring + bar);
  EXPECT_TRUE(succeeded(measure("in.pgm", {.threshold = 97, .minSize = 2})));
  EXPECT_EQ(box.read("table.csv"), kHeader + ring + bar);
  EXPECT_TRUE(succeeded(measure("in.pgm", {.threshold = 97, .minSize = 4, .maxSize = 4})));
  EXPECT_EQ(box.read("table.csv"), kHeader + bar);
  EXPECT_TRUE(succeeded(measure("in.pgm", {.threshold = 97, .minSize = 5, .maxSize = 7})));
  EXPECT_EQ(box.read("table.csv"), kHeader);
  EXPECT_TRUE(succeeded(measure("in.pgm", {.threshold = 97, .maxSize = 7}, {"--labels", "l.iht"})));
  EXPECT_EQ(box.read("table.csv"), kHeader + dot + bar);
  EXPECT_EQ(readContent(box / "l.iht"),
            (Content{SHORT, 7, 4, 1, {-1, -1, -1, -1, -1, -1, 0,  -1, -1, -1, -1, -1, -1, -1,
                                      -1, -1, -1, -1, 1,  1,  -1, -1, -1, -1, -1, -1, 1,  1}}));
  // The hole is filled before it is counted, with its own brightness: 122 eight times and 32.
  EXPECT_TRUE(succeeded(measure("in.pgm", {.threshold = 97, .minSize = 9, .fill = true})));
  EXPECT_EQ(box.read("table.csv"), kHeader + "0,2,0,2,0,0,1,1,0,1,9,112,900\n");
}

TEST_F(MeasureCommand, NothingBrightGivesAnEmptyTable) {
  const Content dark{BYTE, 3, 2, 1, {1, 2, 3, 4, 5, 6}};
  writeContent(box / "in.pgm", dark);
  for (const bool fill : {false, true}) {
    EXPECT_TRUE(
        succeeded(measure("in.pgm", {.threshold = 7, .fill = fill}, {"--labels", "labels.iht"})));
    EXPECT_EQ(box.read("table.csv"), kHeader);
    EXPECT_EQ(readContent(box / "labels.iht"),
              (Content{SHORT, 3, 2, 1, std::vector<double>(6, -1)}));
  }
}

TEST_F(MeasureCommand, EveryPixelTypeAtManyThresholds) {
  unsigned seed = 100;
  std::size_t regions = 0;
  for (const auto type : {BYTE, SHORT, USHORT, INT, UINT, FLOAT}) {
    const double low = type == SHORT || type == FLOAT ? -300 : 0;
    const double high = type == BYTE ? 255 : type == UINT ? 4e9 : 30000;
    for (const Sizes& s :
         {Sizes{1, 1, 1}, Sizes{19, 1, 1}, Sizes{1, 17, 1}, Sizes{31, 23, 1}, Sizes{9, 8, 5}}) {
      const Content content = randomContent(type, s, low, high, seed++);
      writeContent(box / "in.tif", content);
      const AsImage img(content);
      for (const double share : {0.0, 0.3, 0.5, 0.9}) {
        Request request{.threshold = static_cast<float>(low + share * (high - low))};
        request.fill = share == 0.5;
        regions += expectMeasured("in.tif", *img, request);
      }
      regions += expectMeasured("in.tif", *img, {});
      regions += expectMeasured("in.tif", *img, {.scale = 1.5F, .minSize = 2});
      regions += expectMeasured("in.tif", *img, {.scale = 0.7F, .maxSize = 3, .fill = true});
    }
  }
  EXPECT_GT(regions, 1000U);
}

// A region on the limits stays, its neighbours in size go.
TEST_F(MeasureCommand, SizeLimitsIncludeTheirEnds) {
  Content bars{BYTE, 6, 11, 1, std::vector<double>(66)};
  for (std::size_t length = 1; length <= 6; ++length) {
    for (std::size_t x = 0; x < length; ++x) bars.values[(length - 1) * 12 + x] = 9;
  }
  writeContent(box / "in.uif", bars);
  const AsImage img(bars);
  for (int minSize = 1; minSize <= 7; ++minSize) {
    for (int maxSize = minSize; maxSize <= 7; ++maxSize) {
      const auto expected =
          static_cast<std::size_t>(std::max(0, std::min(maxSize, 6) - minSize + 1));
      EXPECT_EQ(
          expectMeasured("in.uif", *img, {.threshold = 9, .minSize = minSize, .maxSize = maxSize}),
          expected);
    }
  }
}

TEST_F(MeasureCommand, AFrameIsMeasuredAlone) {
  const Content content = randomContent(BYTE, {12, 9, 3}, 0, 255, 200);
  for (const std::string in : {"in.tif", "in.iht", "in.uif"}) {
    writeContent(box / in, content);
    const AsImage stack(content);
    expectMeasured(in, *stack, {.threshold = 180});
    for (int k = 0; k < 3; ++k) {
      const AsImage plane(content.plane(k));
      expectMeasured(in, *plane, {.threshold = 128}, {"--frame", std::to_string(k)});
    }
    EXPECT_TRUE(failedWithOneLine(measure(in, {}, {"--frame", "3"}), in, "there is no frame 3"));
  }
}

TEST_F(MeasureCommand, ColourCountsAsLuminance) {
  const Content colour = randomContent(RGB, {25, 16, 1}, 0, 255, 201);
  const AsImage grey(luminance(colour));
  for (const std::string in : {"in.ppm", "in.png", "in.tif"}) {
    writeContent(box / in, colour);
    expectMeasured(in, *grey, {.threshold = 120});
    expectMeasured(in, *grey, {});
  }
}

TEST_F(MeasureCommand, ATableOnStandardOutputStandsThereAlone) {
  box.write("discs.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(succeeded(measure("discs.pgm", {})));
  for (const std::string name : {"/dev/stdout", "/dev/fd/1"}) {
    const Outcome outcome = box.run({"measure", "discs.pgm", "--table", name});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, box.read("table.csv"));
  }
}

TEST_F(MeasureCommand, TheDefaultScaleIsFive) {
  box.write("discs.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(succeeded(measure("discs.pgm", {})));
  const std::string table = box.read("table.csv");
  EXPECT_TRUE(succeeded(measure("discs.pgm", {.scale = 5.0F})));
  EXPECT_EQ(box.read("table.csv"), table);
  const std::vector<Fields> rows = parseRows(table);
  ASSERT_EQ(rows.size(), kTwoDiscs.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i][6], kTwoDiscs[i].x);
    EXPECT_EQ(rows[i][7], kTwoDiscs[i].y);
    EXPECT_NEAR(rows[i][9], kTwoDiscs[i].radius, 1.0);
  }
}

TEST_F(MeasureCommand, WithoutLabelsTheTableIsAllThatIsWritten) {
  box.write("discs.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(succeeded(measure("discs.pgm", {})));
  EXPECT_EQ(box.names(), (std::vector<std::string>{"discs.pgm", "table.csv"}));
}

// Labels are shorts; the command reports more regions, and those that are kept are right.
TEST_F(MeasureCommand, MoreRegionsThanLabelsFail) {
  Content dots{BYTE, 363, 363, 1, std::vector<double>(363 * 363)};
  for (int i = 0; i < 182 * 182; ++i) {  // 33124 single pixels
    dots.values[static_cast<std::size_t>(i % 182 * 2 + i / 182 * 2 * 363)] = 200;
  }
  writeContent(box / "in.pgm", dots);
  EXPECT_TRUE(failedWithOneLine(measure("in.pgm", {.threshold = 1}, {"--labels", "labels.iht"}),
                                "in.pgm", "has more than 32768 regions"));
  EXPECT_EQ(box.names(), std::vector<std::string>{"in.pgm"});
}

// As many holes are filled silently.
TEST_F(MeasureCommand, MoreHolesThanLabelsAreFilled) {
  Content holes{BYTE, 365, 365, 1, std::vector<double>(365 * 365, 200)};
  for (int i = 0; i < 182 * 182; ++i) {
    holes.values[static_cast<std::size_t>(i % 182 * 2 + 1 + (i / 182 * 2 + 1) * 365)] = 0;
  }
  writeContent(box / "in.pgm", holes);
  EXPECT_TRUE(succeeded(measure("in.pgm", {.threshold = 1, .fill = true})));
  const auto rows = parseRows(box.read("table.csv"));
  ASSERT_EQ(rows.size(), 1U);
}

TEST_F(MeasureCommand, PixelsThatAreNoNumbersNeedAThreshold) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double bad : {inf, -inf, nan}) {
    SCOPED_TRACE(bad);
    Picture picture = twoDiscs();
    picture.values[0] = bad;
    TiffFile(box / "odd.tif").page(picture, {.bits = 32, .format = SAMPLEFORMAT_IEEEFP});
    EXPECT_TRUE(failedWithOneLine(measure("odd.tif", {}), "odd.tif", "give a --threshold"));
    EXPECT_TRUE(succeeded(measure("odd.tif", {.threshold = 100})));
    EXPECT_EQ(parseRows(box.read("table.csv")).size(), bad == inf ? 3U : 2U);
  }
}

// The nuclei of the last one are dark, so that few regions are bright.
TEST_F(MeasureCommand, SampleImages) {
  const std::vector<std::pair<std::string, std::size_t>> images{
      {"dsb_sparse_a", 6}, {"dsb_dense_a", 50}, {"dsb_large_a", 6}, {"dsb_histw_a", 1}};
  for (const auto& [name, minRegions] : images) {
    const std::string file = ORVA_DATA "/images/" + name + ".pgm";
    const AsImage img(readContent(file));
    EXPECT_GE(expectMeasured(file, *img, {.minSize = 30, .fill = true}), minRegions);
    EXPECT_GE(expectMeasured(file, *img, {.scale = 5.0F, .minSize = 10, .maxSize = 2000}),
              minRegions);
  }
}

}  // namespace
}  // namespace orva::test
