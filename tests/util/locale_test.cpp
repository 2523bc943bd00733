// Numbers and text are the same in every locale.
#include "tests/support/locale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "orva/util/fnp.h"
#include "orva/util/global.h"
#include "tests/support/files.h"

namespace orva::test {
namespace {

std::string streamed(double v) {
  std::ostringstream out;
  out << v;
  return out.str();
}

TEST(ForeignLocale, ChangesStreamsAndIsTakenBack) {
  const std::string name = std::setlocale(LC_ALL, nullptr);
  {
    const ForeignLocale foreign;
    EXPECT_EQ(streamed(1234.5), "1.234,5");
    EXPECT_EQ(std::strtod("1,5", nullptr), 1.5);
  }
  EXPECT_EQ(streamed(1234.5), "1234.5");
  EXPECT_EQ(std::strtod("1,5", nullptr), 1.0);
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), name);
}

TEST(ToString, IsTheSameInEveryLocale) {
  const ForeignLocale foreign;
  EXPECT_EQ(toString(1234567), "1234567");
  EXPECT_EQ(toString(-2147483647 - 1), "-2147483648");
  EXPECT_EQ(toString(1234.5F), "1234.500000");
  EXPECT_EQ(toString(-0.25F), "-0.250000");
  EXPECT_EQ(toString(1234567.5), "1.234568e+06");
  EXPECT_EQ(toString(-0.5), "-5.000000e-01");
}

TEST(FromText, IsTheSameInEveryLocale) {
  struct Row {
    std::string text;
    int whole;
    float number;
  };
  std::vector<Row> rows = {{"1234567", 1234567, 1234567.0F},
                           {"1.234", 1, 1.234F},
                           {"1.234.567", 1, 1.234F},
                           {"1,5", 1, 1.0F},
                           {"1234.5", 1234, 1234.5F},
                           {" -2.5e3", -2, -2500.0F},
                           {"0.5", 0, 0.5F},
                           {"12,345,678", 12, 12.0F}};
  const ForeignLocale foreign;
  for (Row& row : rows) {
    EXPECT_EQ(toInt(row.text), row.whole) << row.text;
    EXPECT_EQ(toFloat(row.text), row.number) << row.text;
  }
}

TEST(Configure, IsTheSameInEveryLocale) {
  const TempDir dir;
  writeFile(dir.file("c"), "sigma = 1234.5\nlevels = 1.234.567\nshare\t-0,25\n");
  const ForeignLocale foreign;
  const Configure configuration(dir.file("c"));
  std::string sigma = configuration.property("sigma");
  EXPECT_EQ(sigma, "1234.5");
  EXPECT_EQ(toFloat(sigma), 1234.5F);
  EXPECT_EQ(configuration.property("levels"), "1.234.567");
  EXPECT_EQ(configuration.property("share"), "-0,25");
}

}  // namespace
}  // namespace orva::test
