#include "formats/length_unit.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace orva::test {
namespace {

using formats::micrometres;
using formats::micrometresPer;

TEST(LengthUnit, SymbolsAndNamesAreKnown) {
  const std::vector<std::pair<std::string, double>> units{
      {"um", 1},          {"\u00b5m", 1},    {"\u03bcm", 1},       {"micron", 1},  {"microns", 1},
      {"Micrometres", 1}, {"nm", 1e-3},      {"nanometers", 1e-3}, {"pm", 1e-6},   {"\u00c5", 1e-4},
      {"mm", 1e3},        {"cm", 1e4},       {"m", 1e6},           {"metre", 1e6}, {"km", 1e9},
      {"inch", 25400},    {"inches", 25400}, {"in", 25400},        {" um\n", 1}};
  for (const auto& [name, expected] : units) {
    EXPECT_DOUBLE_EQ(micrometresPer(name).value_or(0), expected) << name;
  }
}

TEST(LengthUnit, OthersAreNot) {
  for (const std::string name :
       {"", " ", "pixel", "pixels", "reference frame", "s", "Mm", "u", "umm", "sec"}) {
    EXPECT_FALSE(micrometresPer(name).has_value()) << name;
  }
}

TEST(LengthUnit, LengthsAreAboveZeroAndFinite) {
  EXPECT_DOUBLE_EQ(micrometres(250, "nm").value_or(0), 0.25);
  for (const double length : {0.0, -1.0, std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN(), 1e308}) {
    EXPECT_FALSE(micrometres(length, "km").has_value()) << length;
  }
  EXPECT_FALSE(micrometres(5e-324, "nm").has_value());
}

}  // namespace
}  // namespace orva::test
