// Calls: what is refused, help and version, files that are no image.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sstream>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"

namespace orva::test {
namespace {

bool holds(const std::string& text, const std::string& words) {
  return text.find(words) != std::string::npos;
}

TEST(VoteCommand, UsageErrorsWriteNothing) {
  struct Case {
    std::vector<std::string> arguments;
    const char* words;
  };
  const std::vector<Case> cases{
      {{}, "subcommand is required"},
      {{"votes", "a.pgm"}, "votes"},
      {{"--nonsense"}, ""},
      {{"vote"}, "image is required"},
      {{"vote", "--nonsense", "a.pgm"}, "--nonsense"},
      {{"vote", "-x", "a.pgm"}, "-x"},
      {{"vote", "--polarity", "grey", "a.pgm"}, "--polarity: grey not in {bright,dark,both}"},
      {{"vote", "--polarity", "Bright", "a.pgm"}, "--polarity"},
      {{"vote", "--polarity", "0", "a.pgm"}, "--polarity"},
      {{"vote", "--format", "xml", "a.pgm"}, "--format: xml not in {csv,json,geojson,roi,napari}"},
      {{"vote", "--format", "1", "a.pgm"}, "--format"},
      {{"vote", "--min-radius", "5", "--max-radius", "4", "a.pgm"},
       "--min-radius: must not exceed --max-radius"},
      {{"vote", "--min-radius", "21", "a.pgm"}, "--min-radius: must not exceed --max-radius"},
      {{"vote", "--min-radius", "0", "a.pgm"}, "--min-radius"},
      {{"vote", "--max-radius", "-3", "a.pgm"}, "--max-radius"},
      {{"vote", "--max-radius", "1001", "a.pgm"}, "--max-radius"},
      {{"vote", "--max-radius", "99999999999", "a.pgm"}, "--max-radius"},
      {{"vote", "--max-radius", "2.5", "a.pgm"}, "--max-radius"},
      {{"vote", "--max-radius", "ten", "a.pgm"}, "--max-radius"},
      {{"vote", "--max-radius", "3", "--max-radius", "4", "a.pgm"}, "--max-radius"},
      {{"vote", "--cone-width", "-1", "a.pgm"}, "--cone-width"},
      {{"vote", "--sigma", "0", "a.pgm"}, "--sigma"},
      {{"vote", "--sigma", "nan", "a.pgm"}, "--sigma"},
      {{"vote", "--sigma", "inf", "a.pgm"}, "--sigma"},
      {{"vote", "--gradient", "-1", "a.pgm"}, "--gradient"},
      {{"vote", "--gradient", "nan", "a.pgm"}, "--gradient"},
      {{"vote", "--relative-gradient", "1.5", "a.pgm"}, "--relative-gradient"},
      {{"vote", "--relative-gradient", "nan", "a.pgm"}, "--relative-gradient"},
      {{"vote", "--gradient", "1", "--relative-gradient", "0.1", "a.pgm"}, "--gradient"},
      {{"vote", "--threshold", "nan", "a.pgm"}, "--threshold"},
      {{"vote", "--threshold", "-1", "a.pgm"}, "--threshold"},
      {{"vote", "--relative-threshold", "0.04", "a.pgm"}, "--relative-threshold"},
      {{"vote", "--relative-threshold", "nan", "a.pgm"}, "--relative-threshold"},
      {{"vote", "--threshold", "1", "--relative-threshold", "0.1", "a.pgm"}, "--threshold"},
      {{"vote", "--power", "-1", "a.pgm"}, "--power"},
      {{"vote", "--power", "nan", "a.pgm"}, "--power"},
      {{"vote", "--power", "1x", "a.pgm"}, "--power"},
      {{"vote", "--frame", "-1", "a.pgm"}, "--frame"},
      {{"vote", "--frame", "65535", "a.pgm"}, "--frame"},
      {{"vote", "a.pgm", "b.pgm"}, "several images need --out"},
      {{"vote", "--out", "out", "--centers", "c.csv", "a.pgm"}, "--out"},
      {{"vote", "--out", "out", "--overlay", "o.png", "a.pgm"}, "--out"},
      {{"vote", "a.pgm", "--sigma"}, "--sigma"},
  };
  const Sandbox box;
  box.write("a.pgm", pgm(twoDiscs()));
  box.write("b.pgm", pgm(twoDiscs()));
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.arguments));
    EXPECT_TRUE(refused(box.run(c.arguments), c.words));
  }
  EXPECT_EQ(box.names(), (std::vector<std::string>{"a.pgm", "b.pgm"}));
}

TEST(VoteCommand, BordersOfTheRangesAreAllowed) {
  const Sandbox box;
  box.write("a.pgm", pgm(twoDiscs()));
  const std::vector<std::vector<std::string>> calls{
      {"--min-radius", "20"},
      {"--min-radius", "1", "--max-radius", "1"},
      {"--cone-width", "0"},
      {"--sigma", "0.1"},
      {"--gradient", "0"},
      {"--relative-gradient", "0"},
      {"--relative-gradient", "1"},
      {"--threshold", "0"},
      {"--relative-threshold", "1"},
      {"--relative-threshold", "0.05"},
      {"--power", "0"},
      {"--power", "100"},
      {"--polarity=dark"},
      {"--frame", "0"},
  };
  for (std::vector<std::string> call : calls) {
    SCOPED_TRACE(::testing::PrintToString(call));
    call.insert(call.begin(), {"vote", "a.pgm"});
    const Outcome outcome = box.run(call);
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_TRUE(outcome.out.starts_with("x,y,weight\n"));
  }
}

TEST(VoteCommand, PrintsItsVersion) {
  const Outcome outcome = Sandbox().run({"--version"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, "orva " ORVA_VERSION "\n");
}

TEST(VoteCommand, HelpHasAnExample) {
  const Sandbox box;
  for (const std::vector<std::string>& call :
       {std::vector<std::string>{"--help"}, {"-h"}, {"vote", "--help"}, {"vote", "-h"}}) {
    SCOPED_TRACE(::testing::PrintToString(call));
    const Outcome outcome = box.run(call);
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_TRUE(holds(outcome.out, "Usage: orva"));
    EXPECT_TRUE(holds(outcome.out, "Example: "));
    EXPECT_TRUE(holds(outcome.out, "\n  orva vote --max-radius 20 "));
  }
}

TEST(VoteCommand, HelpNamesEveryOption) {
  const Outcome outcome = Sandbox().run({"vote", "--help"});
  for (const std::string option :
       {"--polarity", "--min-radius", "--max-radius", "--cone-width", "--sigma", "--gradient",
        "--relative-gradient", "--threshold", "--relative-threshold", "--edges", "--power",
        "--history", "--frame", "--centers", "--format", "--overlay", "--out", "--quiet"}) {
    EXPECT_TRUE(holds(outcome.out, "\n  " + option + ' ')) << option;
  }
}

TEST(VoteCommand, TheExampleOfTheHelpWorks) {
  const Sandbox box;
  box.write("nuclei.pgm", pgm(twoDiscs()));
  for (const std::vector<std::string>& call :
       {std::vector<std::string>{"--help"}, {"vote", "--help"}}) {
    const std::string help = box.run(call).out;
    const std::string start = "\n  orva ";
    const std::size_t at = help.find(start);
    ASSERT_NE(at, std::string::npos);
    std::istringstream line(
        help.substr(at + start.size(), help.find('\n', at + 1) - at - start.size()));
    std::vector<std::string> arguments;
    for (std::string word; line >> word;) arguments.push_back(word);
    EXPECT_TRUE(succeeded(box.run(arguments))) << help;
    EXPECT_TRUE(fs::exists(box / "nuclei.png"));
    fs::remove(box / "nuclei.png");
  }
}

TEST(VoteCommand, WhatIsNoImageFails) {
  const Sandbox box;
  box.write("empty.pgm", "");
  box.write("text.tif", "This is not an image.\n");
  box.write("short.png", "\x89PN");
  box.write("start.png", "\x89PNG\r\n\x1a\n");
  box.write("start.tif", std::string("II*\0", 4));
  box.write("big.tif", std::string("MM\0+", 4));
  fs::create_directory(box / "folder");
  fs::create_symlink("nowhere", box / "link.pgm");
  fs::create_symlink("loop.pgm", box / "loop.pgm");
  ASSERT_EQ(::mkfifo((box / "pipe.pgm").c_str(), 0600), 0);
  const std::vector<std::string> before = box.names();
  const std::string tooLong(300, 'n');
  const std::vector<std::pair<std::string, std::string>> cases{
      {"missing.pgm", "can not be opened: No such file or directory"},
      {"", "can not be opened: No such file or directory"},
      {"link.pgm", "can not be opened: No such file or directory"},
      {"loop.pgm", "can not be opened: "},
      {"text.tif/inside.pgm", "can not be opened: Not a directory"},
      {tooLong, "can not be opened: File name too long"},
      {"folder", "is a directory"},
      {".", "is a directory"},
      {"pipe.pgm", "is not a regular file"},
      {"/dev/null", "is not a regular file"},
      {"/dev/zero", "is not a regular file"},
      {"empty.pgm", "is not a PGM, PPM, PNG or TIFF image"},
      {"text.tif", "is not a PGM, PPM, PNG or TIFF image"},
      {"short.png", "is not a PGM, PPM, PNG or TIFF image"},
      {"start.png", "is a damaged PNG file"},
      {"start.tif", "is a damaged TIFF file"},
      {"big.tif", "is a damaged TIFF file"},
  };
  for (const auto& [name, words] : cases) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(failedWithOneLine(
        box.run({"vote", "--overlay", "o.png", "--centers", "c.csv", "--history", "h", name}), name,
        words));
  }
  EXPECT_EQ(box.names(), before);
}

// The name of a file does not matter.
TEST(VoteCommand, TheKindOfAFileIsTakenFromItsContent) {
  const Sandbox box;
  box.write("discs.tif", pgm(twoDiscs()));
  box.write("--discs", pgm(twoDiscs()));
  const Outcome outcome = box.run({"vote", "discs.tif"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(box.run({"vote", "--", "--discs"}).out, outcome.out);
}

}  // namespace
}  // namespace orva::test
