// Calls of measure, filter, info and convert: what is refused, the borders of ranges, help.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"

namespace orva::test {
namespace {

struct Call {
  Arguments arguments;
  const char* words;
};

void expectRefused(const std::vector<Call>& calls) {
  const Sandbox box;
  box.write("a.pgm", pgm(twoDiscs()));
  box.write("out.tif", "an old result");
  for (const Call& call : calls) {
    SCOPED_TRACE(::testing::PrintToString(call.arguments));
    EXPECT_TRUE(refused(box.run(call.arguments), call.words));
  }
  EXPECT_EQ(box.names(), (Arguments{"a.pgm", "out.tif"}));
  EXPECT_EQ(box.read("a.pgm"), pgm(twoDiscs()));
  EXPECT_EQ(box.read("out.tif"), "an old result");
}

TEST(Subcommands, UsageErrorsOfMeasureWriteNothing) {
  expectRefused({
      {{"measure"}, "image is required"},
      {{"measure", "a.pgm"}, "--table is required"},
      {{"measure", "--table", "t.csv"}, "image is required"},
      {{"measure", "a.pgm", "b.pgm", "--table", "t.csv"}, "b.pgm"},
      {{"measure", "a.pgm", "--table"}, "--table"},
      {{"measure", "a.pgm", "--table", "t.csv", "--nonsense"}, "--nonsense"},
      {{"measure", "a.pgm", "--table", "t.csv", "--threshold", "1", "--auto", "2"}, "--auto"},
      {{"measure", "a.pgm", "--table", "t.csv", "--auto", "2", "--threshold", "1"}, "--auto"},
      {{"measure", "a.pgm", "--table", "t.csv", "--threshold", "nan"}, "--threshold"},
      {{"measure", "a.pgm", "--table", "t.csv", "--threshold", "inf"}, "--threshold"},
      {{"measure", "a.pgm", "--table", "t.csv", "--threshold", "ten"}, "--threshold"},
      {{"measure", "a.pgm", "--table", "t.csv", "--threshold", ""}, "--threshold"},
      {{"measure", "a.pgm", "--table", "t.csv", "--auto", "0"}, "--auto"},
      {{"measure", "a.pgm", "--table", "t.csv", "--auto", "0.09"}, "--auto"},
      {{"measure", "a.pgm", "--table", "t.csv", "--auto", "1001"}, "--auto"},
      {{"measure", "a.pgm", "--table", "t.csv", "--auto", "-2"}, "--auto"},
      {{"measure", "a.pgm", "--table", "t.csv", "--auto", "nan"}, "--auto"},
      {{"measure", "a.pgm", "--table", "t.csv", "--min-size", "0"}, "--min-size"},
      {{"measure", "a.pgm", "--table", "t.csv", "--min-size", "-1"}, "--min-size"},
      {{"measure", "a.pgm", "--table", "t.csv", "--min-size", "1.5"}, "--min-size"},
      {{"measure", "a.pgm", "--table", "t.csv", "--max-size", "0"}, "--max-size"},
      {{"measure", "a.pgm", "--table", "t.csv", "--max-size", "2147483648"}, "--max-size"},
      {{"measure", "a.pgm", "--table", "t.csv", "--min-size", "5", "--max-size", "4"},
       "--max-size: must not be below --min-size"},
      {{"measure", "a.pgm", "--table", "t.csv", "--labels", "l.tif"}, "none of the extensions"},
      {{"measure", "a.pgm", "--table", "t.csv", "--labels", "l.uif"}, "none of the extensions"},
      {{"measure", "a.pgm", "--table", "t.csv", "--labels", "l.ICS"}, "none of the extensions"},
      {{"measure", "a.pgm", "--table", "t.csv", "--labels", "l"}, "none of the extensions"},
      {{"measure", "a.pgm", "--table", "t.csv", "--labels", "l.ids"}, "none of the extensions"},
      {{"measure", "a.pgm", "--table", "t.csv", "--frame", "-1"}, "--frame"},
      {{"measure", "a.pgm", "--table", "t.csv", "--frame", "65535"}, "--frame"},
      {{"measure", "a.pgm", "--table", "t.csv", "--table", "u.csv"}, "--table"},
  });
}

TEST(Subcommands, UsageErrorsOfFilterWriteNothing) {
  expectRefused({
      {{"filter"}, "is required"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "1"}, "--output is required"},
      {{"filter", "a.pgm", "--op", "dx", "--output", "out.tif"}, "--sigma is required"},
      {{"filter", "a.pgm", "--sigma", "1", "--output", "out.tif"}, "--op is required"},
      {{"filter", "--op", "dx", "--sigma", "1", "--output", "out.tif"}, "image is required"},
      {{"filter", "a.pgm", "--op", "blur", "--sigma", "1", "--output", "out.tif"}, "blur not in"},
      {{"filter", "a.pgm", "--op", "DX", "--sigma", "1", "--output", "out.tif"}, "DX not in"},
      {{"filter", "a.pgm", "--op", "", "--sigma", "1", "--output", "out.tif"}, "--op"},
      {{"filter", "a.pgm", "--op", "dyx", "--sigma", "1", "--output", "out.tif"}, "dyx not in"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "0", "--output", "out.tif"}, "--sigma"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "0.09", "--output", "out.tif"}, "--sigma"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "-1", "--output", "out.tif"}, "--sigma"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "1001", "--output", "out.tif"}, "--sigma"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "nan", "--output", "out.tif"}, "--sigma"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "1", "--output", "out.pgm"},
       "out.pgm has none of the extensions that can be written"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "1", "--output", "out.png"}, "extensions"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "1", "--output", "out.uif"}, "extensions"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "1", "--output", "out.ICS"}, "extensions"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "1", "--output", ""}, "extensions"},
      {{"filter", "a.pgm", "--op", "dx", "--sigma", "1", "--output", "out.tif", "--frame", "-1"},
       "--frame"},
  });
}

TEST(Subcommands, UsageErrorsOfInfoAndConvertWriteNothing) {
  expectRefused({
      {{"info"}, "file is required"},
      {{"info", "a.pgm", "out.tif"}, "out.tif"},
      {{"info", "--frame", "0", "a.pgm"}, "--frame"},
      {{"convert"}, "is required"},
      {{"convert", "a.pgm"}, "out is required"},
      {{"convert", "a.pgm", "b.pgm", "c.pgm"}, "c.pgm"},
      {{"convert", "a.pgm", "b"}, "b has none of the extensions that can be written"},
      {{"convert", "a.pgm", "b.bmp"}, "b.bmp has none of the extensions that can be written"},
      {{"convert", "a.pgm", "b.pgm", "--frame", "x"}, "--frame"},
      {{"convert", "a.pgm", "b.pgm", "--frame", "65535"}, "--frame"},
      {{"convert", "a.pgm", "b.pgm", "--stretch=maybe"}, "--stretch"},
      {{"convert", "missing.pgm", "b.bmp"}, "extensions"},
      {{"info", "a.pgm", "convert", "a.pgm", "b.pgm"}, ""},
  });
}

TEST(Subcommands, BordersOfTheRangesAreAllowed) {
  const Sandbox box;
  box.write("a.pgm", pgm(twoDiscs()));
  for (const Arguments& options : std::vector<Arguments>{{"--threshold", "-3e38"},
                                                         {"--threshold", "3e38"},
                                                         {"--threshold", "-1"},
                                                         {"--auto", "0.1"},
                                                         {"--auto", "1000"},
                                                         {"--min-size", "1"},
                                                         {"--max-size", "1"},
                                                         {"--min-size", "2147483647"},
                                                         {"--max-size", "2147483647"},
                                                         {"--min-size", "4", "--max-size", "4"},
                                                         {"--labels", "l.IHT"},
                                                         {"--frame", "0"}}) {
    SCOPED_TRACE(::testing::PrintToString(options));
    Arguments call{"measure", "a.pgm", "--table", "t.csv"};
    call.insert(call.end(), options.begin(), options.end());
    EXPECT_TRUE(succeeded(box.run(call)));
  }
  for (const std::string sigma : {"0.1", "1000"}) {
    EXPECT_TRUE(succeeded(
        box.run({"filter", "a.pgm", "--op", "dx", "--sigma", sigma, "--output", "f.TIFF"})));
  }
}

TEST(Subcommands, HelpNamesEveryOption) {
  const std::vector<std::pair<std::string, Arguments>> subcommands{
      {"measure",
       {"--threshold", "--auto", "--min-size", "--max-size", "--fill", "--table", "--labels",
        "--frame"}},
      {"filter", {"--op", "--sigma", "--output", "--frame"}},
      {"info", {}},
      {"convert", {"--frame", "--stretch"}}};
  const Sandbox box;
  const Outcome all = box.run({"--help"});
  for (const auto& [name, options] : subcommands) {
    EXPECT_NE(all.out.find("\n  " + name + ' '), std::string::npos) << name;
    const Outcome outcome = box.run({name, "--help"});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_TRUE(outcome.out.find("Usage: orva " + name) != std::string::npos) << outcome.out;
    for (const std::string& option : options) {
      EXPECT_NE(outcome.out.find("\n  " + option + ' '), std::string::npos) << option;
    }
  }
}

TEST(Subcommands, TheExamplesOfTheHelpWork) {
  const Sandbox box;
  box.write("nuclei.pgm", pgm(twoDiscs()));
  ASSERT_TRUE(succeeded(box.run({"convert", "nuclei.pgm", "nuclei.tif"})));
  for (const std::string name : {"measure", "filter", "info", "convert"}) {
    const std::string help = box.run({name, "--help"}).out;
    const std::string start = "\n  orva " + name + ' ';
    const std::size_t at = help.find(start);
    ASSERT_NE(at, std::string::npos) << help;
    std::istringstream line(help.substr(at + 8, help.find('\n', at + 1) - at - 8));
    Arguments arguments;
    for (std::string word; line >> word;) arguments.push_back(word);
    EXPECT_TRUE(succeeded(box.run(arguments))) << help;
  }
  EXPECT_EQ(box.names(),
            (Arguments{"edges.tif", "nuclei.csv", "nuclei.pgm", "nuclei.png", "nuclei.tif"}));
}

// Options may stand before or behind the files.
TEST(Subcommands, TheOrderOfOptionsDoesNotMatter) {
  const Sandbox box;
  box.write("a.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(succeeded(box.run({"convert", "--stretch", "a.pgm", "b.pgm"})));
  EXPECT_TRUE(succeeded(box.run({"convert", "a.pgm", "--stretch", "c.pgm"})));
  EXPECT_TRUE(succeeded(box.run({"convert", "a.pgm", "d.pgm", "--stretch"})));
  EXPECT_EQ(box.read("b.pgm"), box.read("c.pgm"));
  EXPECT_EQ(box.read("b.pgm"), box.read("d.pgm"));
  EXPECT_NE(box.read("b.pgm"), box.read("a.pgm"));
}

}  // namespace
}  // namespace orva::test
