// Every pair of formats with every pixel type.
#include <algorithm>
#include <map>

#include "tests/apps/conversions.h"

namespace orva::test {
namespace {

using ConvertPairs = Conversion;

// Of all pixel types, and of the types with values that narrower ones hold as well.
std::vector<Content> contents() {
  std::vector<Content> result;
  unsigned seed = 1;
  for (const Sizes& s : {Sizes{1, 1, 1}, Sizes{1, 9, 1}, Sizes{13, 1, 1}}) {
    for (const auto type : {BYTE, INT, RGB}) {
      result.push_back(randomContent(type, s, 0, 255, seed++));
    }
  }
  for (const Sizes& s : {Sizes{7, 5, 1}, Sizes{4, 3, 4}}) {
    const auto add = [&](ImageFormat type, double low, double high) {
      result.push_back(randomContent(type, s, low, high, seed++));
    };
    add(BYTE, 0, 255);
    add(USHORT, 0, 255);
    add(USHORT, 0, 256);
    add(USHORT, 0, 65535);
    add(SHORT, 0, 255);
    add(SHORT, -1, 200);
    add(SHORT, -32768, 32767);
    add(INT, 0, 255);
    add(INT, 7, 65535);
    add(INT, 7, 65536);
    add(INT, -2147483648.0, 2147483647.0);
    add(UINT, 0, 255);
    add(UINT, 0, 2147483647.0);
    add(UINT, 1, 2147483648.0);
    add(UINT, 0, 4294967295.0);
    add(FLOAT, 0, 255);
    add(FLOAT, 0, 300);
    add(FLOAT, -5, 100);
    add(FLOAT, -1000, 70000);
    result.push_back(result.back());
    for (double& v : result.back().values) v = static_cast<float>(v * 1e-7);
    result.push_back(randomContent(FLOAT, s, 3, 250, seed++));
    result.back().values.back() += 0.25;
    add(RGB, 0, 255);
  }
  return result;
}

TEST_F(ConvertPairs, EveryFormatIntoEveryOther) {
  std::map<std::string, int> written;
  for (const Content& c : contents()) {
    SCOPED_TRACE(::testing::PrintToString(c));
    for (const std::string& from : kInputs) {
      if (!formatHolds(from, c)) continue;
      writeContent(box / ("in" + from), c);
      for (const std::string& to : kOutputs) {
        SCOPED_TRACE(from + " to " + to);
        const Outcome outcome = convert("in" + from, "out" + to);
        const std::optional<Content> expected = expectedIn(to, c);
        if (expected) {
          ++written[from + to];
          EXPECT_TRUE(succeeded(outcome));
          EXPECT_EQ(outcome.out, "");
          ASSERT_TRUE(std::filesystem::exists(box / ("out" + to)));
          EXPECT_EQ(readContent(box / ("out" + to)), *expected);
        } else {
          EXPECT_TRUE(failedWithOneLine(outcome, "in" + from, reasonOf(to, c)));
        }
        std::vector<std::string> names{"in" + from};
        if (expected && to == ".ics") names.emplace_back("out.ids");
        if (expected) names.push_back("out" + to);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(box.names(), names);
        for (const std::string& name : names) {
          if (name.starts_with("out")) std::filesystem::remove(box / name);
        }
      }
      std::filesystem::remove(box / ("in" + from));
    }
  }
  EXPECT_EQ(written.size(), kInputs.size() * kOutputs.size());
}

// There and back through every format that holds the pixels gives them as they were.
TEST_F(ConvertPairs, ThereAndBackIsTheSame) {
  int trips = 0;
  for (const Content& c : contents()) {
    SCOPED_TRACE(::testing::PrintToString(c));
    for (const std::string& from : kInputs) {
      if (!formatHolds(from, c)) continue;
      writeContent(box / ("in" + from), c);
      for (const std::string& to : kInputs) {
        const bool greyOnly = to == ".pgm" || to == ".iht" || to == ".uif";
        if (!expectedIn(to, c) || (c.type == RGB && greyOnly)) continue;
        SCOPED_TRACE(from + " to " + to);
        EXPECT_TRUE(succeeded(convert("in" + from, "there" + to)));
        EXPECT_TRUE(succeeded(convert("there" + to, "back" + from)));
        const Content back = readContent(box / ("back" + from));
        if (to == ".ppm" && c.type != RGB && (from == ".tif" || from == ".png")) {
          EXPECT_EQ(back, asColour(*asBytes(c)));  // these hold the colour that PPM made of it
        } else {
          EXPECT_EQ(back.values, c.values);
          EXPECT_EQ(back.planes, c.planes);
          EXPECT_EQ(back.width, c.width);
        }
        ++trips;
      }
    }
  }
  EXPECT_GT(trips, 150);
}

TEST_F(ConvertPairs, StretchedGreyIsThatOfTheLibraryInEveryFormat) {
  for (const Content& c : contents()) {
    if (c.type == RGB || c.planes > 1) continue;
    SCOPED_TRACE(::testing::PrintToString(c));
    const AsImage img(c);
    const image<unsigned char> bytes = toByteImage(*img, true);
    const Content expected{
        BYTE, c.width, c.height, 1, {bytes.pixels(), bytes.pixels() + bytes.npix()}};
    writeContent(box / "in.tif", c);
    for (const std::string& to : kOutputs) {
      SCOPED_TRACE(to);
      EXPECT_TRUE(succeeded(convert("in.tif", "out" + to, {"--stretch"})));
      EXPECT_EQ(readContent(box / ("out" + to)), to == ".ppm" ? asColour(expected) : expected);
    }
  }
}

}  // namespace
}  // namespace orva::test
