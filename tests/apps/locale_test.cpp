// The command reads and writes the same in every locale.
#include "tests/support/locale.h"

#include <gtest/gtest.h>

#include "tests/apps/conversions.h"
#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"

namespace orva::test {
namespace {

// All outputs of all subcommands, with numbers that a locale would group or cut off at the comma.
const std::vector<Arguments> kCalls{
    {"vote", "--max-radius", "10", "--sigma", "1.5", "--power", "0.25", "discs.pgm"},
    {"vote", "--max-radius", "10", "--gradient", "2.5", "--format", "json", "discs.pgm"},
    {"vote", "--max-radius", "10", "--overlay", "o.png", "--history", "h_", "discs.pgm"},
    {"vote", "--sigma", "1,5", "discs.pgm"},
    {"measure", "discs.pgm", "--table", "t.csv", "--labels", "l.ics"},
    {"measure", "wide.iht", "--threshold", "1500.5", "--table", "u.csv"},
    {"filter", "discs.pgm", "--op", "smooth", "--sigma", "1.5", "--output", "f.ics"},
    {"filter", "discs.pgm", "--op", "dx", "--sigma", "0.01", "--output", "f.tif"},
    {"info", "f.ics"},
    {"info", "wide.iht"},
    {"info", "missing.pgm"},
    {"convert", "wide.iht", "w.ics"},
    {"convert", "wide.iht", "w.tif"},
    {"convert", "--stretch", "wide.iht", "w.ppm"},
    {"convert", "wide.iht", "w.pgm"},
    {"vote", "--help"},
};

// What all calls say, and the files that they leave.
std::pair<std::vector<std::string>, std::vector<std::pair<std::string, std::string>>> resultOf() {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  box.write("wide.iht", iht(randomContent(SHORT, {1500, 3, 1}, -9000, 9000, 4)));
  std::vector<std::string> said;
  for (const Arguments& call : kCalls) {
    const Outcome outcome = box.run(call);
    said.push_back(std::to_string(outcome.status) + '\n' + outcome.out + outcome.err);
  }
  return {said, box.state()};
}

TEST(Command, IsTheSameInEveryLocale) {
  const auto classic = resultOf();
  const CommaLocale comma;
  ASSERT_STREQ(std::setlocale(LC_ALL, CommaLocale::kName), CommaLocale::kName);
  std::setlocale(LC_ALL, "C");
  for (const char* variable : {"LC_ALL", "LANG", "LC_NUMERIC"}) {
    SCOPED_TRACE(variable);
    const Environment set(variable, CommaLocale::kName);
    const auto foreign = resultOf();
    EXPECT_EQ(foreign.first, classic.first);
    EXPECT_EQ(foreign.second, classic.second);
  }
}

}  // namespace
}  // namespace orva::test
