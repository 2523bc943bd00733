// Several images with --out.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/apps/pictures.h"
#include "tests/apps/png_files.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

// A summary whose last field is "S" where it is seconds with three decimals.
std::string withoutTimes(const std::string& summary) {
  std::string result;
  std::istringstream lines(summary);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t start = line.rfind(',') + 1;
    const std::size_t point = line.find_first_not_of("0123456789", start);
    const bool isTime = point != std::string::npos && point > start && line[point] == '.' &&
                        line.find_first_not_of("0123456789", point + 1) == std::string::npos &&
                        line.size() == point + 4;
    result += (isTime ? line.substr(0, start) + 'S' : line) + '\n';
  }
  return result;
}

const std::string kHeader = "file,width,height,centers,seconds\n";

TEST(Batch, EveryImageGetsATableAPictureAndARow) {
  const Sandbox box;
  fs::create_directory(box / "in");
  box.write("in/one.pgm", pgm(twoDiscs()));
  writePng(box / "two.png", discs(40, 44, {{19, 20, 7}}));
  TiffFile(box / "in/three.of.3.tif").page(discs(30, 31, {}));
  const Outcome outcome = box.run({"vote", "--max-radius", "10", "--out", "new/out", "in/one.pgm",
                                   "two.png", "in/three.of.3.tif"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(box.names(),
            (std::vector<std::string>{"in", "in/one.pgm", "in/three.of.3.tif", "new", "new/out",
                                      "new/out/one.csv", "new/out/one.png", "new/out/summary.csv",
                                      "new/out/three.of.3.csv", "new/out/three.of.3.png",
                                      "new/out/two.csv", "new/out/two.png", "two.png"}));
  EXPECT_EQ(withoutTimes(box.read("new/out/summary.csv")), kHeader +
                                                               "in/one.pgm,66,50,2,S\n"
                                                               "two.png,40,44,1,S\n"
                                                               "in/three.of.3.tif,30,31,0,S\n");
  // Each pair equals that of a run on its image alone.
  for (const std::string name : {"in/one.pgm", "two.png", "in/three.of.3.tif"}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(succeeded(
        box.run({"vote", "--max-radius", "10", "--centers", "c", "--overlay", "o", name})));
    const std::string stem = "new/out/" + fs::path(name).stem().string();
    EXPECT_EQ(box.read(stem + ".csv"), box.read("c"));
    EXPECT_EQ(box.read(stem + ".png"), box.read("o"));
  }
}

TEST(Batch, FoldersAndPatternsStandForTheirImages) {
  const Sandbox box;
  fs::create_directory(box / "in");
  for (const std::string name : {"in/b.pgm", "in/a.pgm", "c.pgm"}) box.write(name, pgm(twoDiscs()));
  const auto filesOf = [&](const Arguments& images) {
    Arguments call{"vote", "--max-radius", "10", "--out", "out"};
    call.insert(call.end(), images.begin(), images.end());
    EXPECT_TRUE(succeeded(box.run(call)));
    std::vector<std::string> files;
    std::istringstream lines(box.read("out/summary.csv"));
    for (std::string line; std::getline(lines, line);)
      files.push_back(line.substr(0, line.find(',')));
    files.erase(files.begin());
    return files;
  };
  EXPECT_EQ(filesOf({"in", "c.pgm"}), (Arguments{"in/a.pgm", "in/b.pgm", "c.pgm"}));
  EXPECT_EQ(filesOf({"*.pgm", "in/[b].*"}), (Arguments{"c.pgm", "in/b.pgm"}));
  EXPECT_TRUE(refused(box.run({"vote", "in"}), "several images need --out DIR"));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--out", "out", "*.tif"}), "*.tif",
                                "can not be opened: No such file or directory"));
  EXPECT_TRUE(refused(box.run({"vote", "--out", "", "c.pgm"}), "--out: must name a folder"));
}

TEST(Batch, OneImageWorksToo) {
  const Sandbox box;
  box.write("one.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(succeeded(box.run({"vote", "--max-radius", "10", "--out", ".", "one.pgm"})));
  EXPECT_EQ(box.names(),
            (std::vector<std::string>{"one.csv", "one.pgm", "one.png", "summary.csv"}));
}

TEST(Batch, FormatAppliesToEveryTable) {
  const Sandbox box;
  box.write("one.pgm", pgm(twoDiscs()));
  box.write("two.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(
      succeeded(box.run({"vote", "--format", "json", "--out", "out", "one.pgm", "two.pgm"})));
  EXPECT_EQ(nlohmann::json::parse(box.read("out/one.json")).at("image"), "one.pgm");
  EXPECT_EQ(nlohmann::json::parse(box.read("out/two.json")).at("image"), "two.pgm");
  EXPECT_EQ(withoutTimes(box.read("out/summary.csv")).substr(0, kHeader.size()), kHeader);
}

TEST(Batch, AFailingFileIsReportedAndSkipped) {
  const std::vector<std::string> bad{"missing.pgm", "cut.pgm",   "text.tif",
                                     "folder",      "empty.png", "half.png"};
  for (const std::size_t place : {0U, 1U, 2U}) {
    for (const std::string& name : bad) {
      SCOPED_TRACE(name + " at " + std::to_string(place));
      const Sandbox box;
      box.write("one.pgm", pgm(twoDiscs()));
      box.write("two.pgm", pgm(discs(40, 44, {{19, 20, 7}})));
      box.write("cut.pgm", "P5 20 20 255\nabc");
      box.write("text.tif", "This is no image.\n");
      box.write("empty.png", "");
      writePng(box / "half.png", twoDiscs());
      box.write("half.png", box.read("half.png").substr(0, 200));
      fs::create_directory(box / "folder");
      std::vector<std::string> arguments{"vote", "--max-radius", "10",     "--out",
                                         "out",  "one.pgm",      "two.pgm"};
      arguments.insert(arguments.begin() + 5 + static_cast<std::ptrdiff_t>(place), name);
      EXPECT_TRUE(failedWithOneLine(box.run(arguments), name));
      EXPECT_TRUE(marksEach(parseCsv(box.read("out/one.csv")), kTwoDiscs));
      EXPECT_TRUE(marksEach(parseCsv(box.read("out/two.csv")), {{19, 20, 7}}));
      EXPECT_EQ(readRgbPng(box / "out/two.png").width, 40);
      EXPECT_EQ(withoutTimes(box.read("out/summary.csv")),
                kHeader + "one.pgm,66,50,2,S\ntwo.pgm,40,44,1,S\n");
      std::size_t results = 0;
      for (const std::string& n : box.names()) results += n.starts_with("out/") ? 1 : 0;
      EXPECT_EQ(results, 5U);
    }
  }
}

TEST(Batch, EveryFailureHasItsLine) {
  const Sandbox box;
  box.write("a.pgm", "P5");
  box.write("b.pgm", "");
  const Outcome outcome = box.run({"vote", "--out", "out", "a.pgm", "b.pgm", "c.pgm"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err,
            "orva: a.pgm: is a damaged PGM file: the header is cut off\n"
            "orva: b.pgm: is not a PGM, PPM, PNG or TIFF image, nor named .iht or .uif\n"
            "orva: c.pgm: can not be opened: No such file or directory\n");
  EXPECT_EQ(box.read("out/summary.csv"), kHeader);
}

TEST(Batch, AnUnreachableNameIsReportedAndSkipped) {
  const Sandbox box;
  box.write("one.pgm", pgm(twoDiscs()));
  fs::create_symlink("loop", box / "loop");
  const std::string tooLong(300, 'n');
  for (const std::string& name : {std::string("loop"), tooLong, std::string("one.pgm/two.pgm")}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--out", "out", name, "one.pgm"}), name,
                                  "can not be opened"));
    EXPECT_EQ(withoutTimes(box.read("out/summary.csv")).size(),
              (kHeader + "one.pgm,66,50,2,S\n").size());
    fs::remove_all(box / "out");
  }
}

TEST(Batch, AResultThatCannotBeWrittenIsTheImagesFailure) {
  for (const std::string taken : {"one.csv", "one.png"}) {
    SCOPED_TRACE(taken);
    const Sandbox box;
    box.write("one.pgm", pgm(twoDiscs()));
    box.write("two.pgm", pgm(twoDiscs()));
    fs::create_directories(box / ("out/" + taken));
    const Outcome outcome =
        box.run({"vote", "--max-radius", "10", "--out", "out", "one.pgm", "two.pgm"});
    EXPECT_TRUE(failedWithOneLine(outcome, "one.pgm",
                                  "out/" + taken + " can not be written: Is a directory"));
    EXPECT_EQ(withoutTimes(box.read("out/summary.csv")), kHeader + "two.pgm,66,50,2,S\n");
    // Table and picture belong together.
    EXPECT_EQ(box.names(),
              (std::vector<std::string>{"one.pgm", "out", "out/" + taken, "out/summary.csv",
                                        "out/two.csv", "out/two.png", "two.pgm"}));
  }
}

TEST(Batch, ASummaryThatCannotBeWrittenFails) {
  const Sandbox box;
  box.write("one.pgm", pgm(twoDiscs()));
  fs::create_directories(box / "out/summary.csv");
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--out", "out", "one.pgm"}),
                                "out/summary.csv can not be written", "Is a directory"));
}

TEST(Batch, AFileInThePlaceOfTheDirectoryFails) {
  const Sandbox box;
  box.write("one.pgm", pgm(twoDiscs()));
  box.write("out", "kept");
  for (const std::string directory : {"out", "out/sub"}) {
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--out", directory, "one.pgm"}),
                                  directory + " can not be created", "Not a directory"));
  }
  EXPECT_EQ(box.read("out"), "kept");
  EXPECT_EQ(box.names(), (std::vector<std::string>{"one.pgm", "out"}));
}

TEST(Batch, NamesAreQuotedInTheSummaryWhereTheyMustBe) {
  const Sandbox box;
  const std::vector<std::string> names{"a,b.pgm", "say \"hi\".pgm", "two\nlines.pgm", "plain .pgm"};
  std::vector<std::string> arguments{"vote", "--max-radius", "10", "--out", "out"};
  for (const std::string& name : names) {
    box.write(name, pgm(twoDiscs()));
    arguments.push_back(name);
  }
  EXPECT_TRUE(succeeded(box.run(arguments)));
  EXPECT_EQ(withoutTimes(box.read("out/summary.csv")), kHeader +
                                                           "\"a,b.pgm\",66,50,2,S\n"
                                                           "\"say \"\"hi\"\".pgm\",66,50,2,S\n"
                                                           "\"two\nlines.pgm\",66,50,2,S\n"
                                                           "plain .pgm,66,50,2,S\n");
  EXPECT_TRUE(marksEach(parseCsv(box.read("out/a,b.csv")), kTwoDiscs));
  EXPECT_TRUE(marksEach(parseCsv(box.read("out/say \"hi\".csv")), kTwoDiscs));
}

TEST(Batch, TwoImagesOfOneNameAreRefused) {
  const Sandbox box;
  fs::create_directory(box / "in");
  box.write("one.pgm", pgm(twoDiscs()));
  box.write("in/one.tif", "");
  box.write("summary.pgm", pgm(twoDiscs()));
  const std::vector<std::string> before = box.names();
  EXPECT_TRUE(refused(box.run({"vote", "--out", "out", "one.pgm", "in/one.tif"}),
                      "two results would go to out/one.csv"));
  EXPECT_TRUE(refused(box.run({"vote", "--out", "out", "one.pgm", "./one.pgm"}), "two results"));
  EXPECT_TRUE(refused(box.run({"vote", "--out", "out", "summary.pgm"}), "two results"));
  EXPECT_EQ(box.names(), before);
}

TEST(Batch, AResultDoesNotReplaceAnImage) {
  const Sandbox box;
  writePng(box / "one.png", twoDiscs());
  const std::string content = box.read("one.png");
  EXPECT_TRUE(
      refused(box.run({"vote", "--out", ".", "one.png"}), "would replace the input one.png"));
  box.write("two.pgm", pgm(twoDiscs()));
  fs::rename(box / "one.png", box / "two.png");
  EXPECT_TRUE(refused(box.run({"vote", "--out", ".", "two.pgm", "two.png"}), "two"));
  EXPECT_EQ(box.read("two.png"), content);
  EXPECT_EQ(box.names(), (std::vector<std::string>{"two.pgm", "two.png"}));
}

TEST(Batch, ProgressIsShownOnATerminalOnly) {
  const Sandbox box;
  box.write("one.pgm", pgm(twoDiscs()));
  box.write("two.pgm", pgm(twoDiscs()));
  const std::vector<std::string> vote{"vote", "--max-radius", "5",      "--out",
                                      "out",  "one.pgm",      "two.pgm"};
  const Outcome shown = box.run(vote, {.terminal = true});
  EXPECT_EQ(shown.status, 0);
  EXPECT_NE(shown.err.find("[1/2] one.pgm"), std::string::npos);
  EXPECT_NE(shown.err.find("[2/2] two.pgm"), std::string::npos);
  EXPECT_TRUE(shown.err.ends_with("\r\033[K"));  // the line is gone in the end
  EXPECT_TRUE(succeeded(box.run(vote)));

  std::vector<std::string> quiet = vote;
  quiet.emplace_back("--quiet");
  EXPECT_TRUE(succeeded(box.run(quiet, {.terminal = true})));
}

TEST(Batch, QuietStillReportsFailures) {
  const Sandbox box;
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--quiet", "--out", "out", "missing.pgm"}),
                                "missing.pgm"));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--quiet", "missing.pgm"}), "missing.pgm"));
}

}  // namespace
}  // namespace orva::test
