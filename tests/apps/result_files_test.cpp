// Results of measure, filter and convert that cannot be written leave everything as it was.
#include "tests/apps/conversions.h"

namespace orva::test {
namespace {

const std::vector<std::string> kPair{"out.ics", "out.ids"};

// A directory with in.tif of 10000 bytes and more, old results and a directory "taken".
class ResultFiles : public ::testing::Test {
 protected:
  ResultFiles() {
    writeContent(box / "in.tif", randomContent(BYTE, {100, 100, 1}, 0, 255, 4));
    fs::create_directory(box / "taken");
    box.write("taken/inside", "kept");
    box.write("old", "an old result");
    remember();
  }

  void remember() { before_ = box.state(); }

  void expectUntouched() const { EXPECT_EQ(box.state(), before_); }

  Sandbox box;

 private:
  std::vector<std::pair<std::string, std::string>> before_;
};

// Calls that write the file `result`, of an extension that suits.
std::vector<Arguments> callsWriting(const std::string& result) {
  std::vector<Arguments> calls{{"convert", "in.tif", result}};
  const std::string extension = fs::path(result).extension().string();
  if (extension == ".tif" || extension == ".iht" || extension == ".ics") {
    calls.push_back({"filter", "in.tif", "--op", "dx", "--sigma", "1", "--output", result});
  }
  if (extension == ".iht" || extension == ".ics") {
    calls.push_back(
        {"measure", "in.tif", "--threshold", "250", "--table", "table.csv", "--labels", result});
  }
  return calls;
}

TEST_F(ResultFiles, AMissingDirectoryFails) {
  for (const std::string& extension : kOutputs) {
    for (const Arguments& call : callsWriting("missing/out" + extension)) {
      SCOPED_TRACE(::testing::PrintToString(call));
      EXPECT_TRUE(failedWithOneLine(box.run(call), "in.tif", "missing"));
      EXPECT_TRUE(failedWithOneLine(box.run(call), "in.tif",
                                    " can not be written: No such file or directory\n"));
    }
    for (const Arguments& call : callsWriting("old/out" + extension)) {
      SCOPED_TRACE(::testing::PrintToString(call));
      EXPECT_TRUE(
          failedWithOneLine(box.run(call), "in.tif", " can not be written: Not a directory\n"));
    }
  }
  expectUntouched();
}

TEST_F(ResultFiles, ADirectoryInTheirPlaceFails) {
  for (const std::string& extension : kOutputs) {
    fs::create_directory(box / ("out" + extension));
    remember();
    for (const Arguments& call : callsWriting("out" + extension)) {
      SCOPED_TRACE(::testing::PrintToString(call));
      EXPECT_TRUE(failedWithOneLine(box.run(call), "in.tif",
                                    "out" + extension + " can not be written: Is a directory\n"));
    }
    expectUntouched();
  }
}

// Either file of a pair; the other one, old or new, stays.
TEST_F(ResultFiles, AnIcsPairIsWrittenWholeOrNotAtAll) {
  for (const bool hasOldPair : {false, true}) {
    for (const std::string& blocked : kPair) {
      SCOPED_TRACE(blocked);
      for (const std::string& name : kPair) fs::remove_all(box / name);
      if (hasOldPair) {
        for (const std::string& name : kPair) box.write(name, "an old " + name);
      }
      fs::remove(box / blocked);
      fs::create_directory(box / blocked);
      remember();
      for (const Arguments& call : callsWriting("out.ics")) {
        SCOPED_TRACE(::testing::PrintToString(call));
        EXPECT_TRUE(failedWithOneLine(box.run(call), "in.tif",
                                      blocked + " can not be written: Is a directory\n"));
        expectUntouched();
      }
    }
  }
}

// The labels are not left alone when the table fails.
TEST_F(ResultFiles, LabelsAndTableAreWrittenTogetherOrNotAtAll) {
  fs::create_directory(box / "out.csv");
  box.write("old.iht", "old labels");
  remember();
  for (const std::string labels : {"new.iht", "old.iht", "new.ics"}) {
    for (const std::string table : {"out.csv", "missing/out.csv", "old/out.csv"}) {
      SCOPED_TRACE(::testing::PrintToString(std::pair(labels, table)));
      EXPECT_TRUE(failedWithOneLine(box.run({"measure", "in.tif", "--threshold", "250", "--table",
                                             table, "--labels", labels}),
                                    "in.tif", table + " can not be written: "));
      expectUntouched();
    }
  }
}

TEST_F(ResultFiles, AFullDiskFails) {
  for (const std::string& extension : kOutputs) {
    for (const bool hasOld : {false, true}) {
      for (const Arguments& call : callsWriting("out" + extension)) {
        SCOPED_TRACE(::testing::PrintToString(call));
        if (hasOld) box.write("out" + extension, "an old result");
        remember();
        EXPECT_TRUE(failedWithOneLine(box.run(call, {.maxFileBytes = 3000}), "in.tif",
                                      "can not be written"));
        expectUntouched();
      }
    }
  }
}

TEST_F(ResultFiles, AFullDiskFailsTheTable) {
  writeContent(box / "dots.uif", [] {
    Content c{BYTE, 60, 60, 1, std::vector<double>(3600)};
    for (std::size_t i = 0; i < c.values.size(); ++i) c.values[i] = i / 60 % 2 == 0 && i % 2 == 0;
    return c;
  }());
  remember();
  const Arguments call{"measure", "dots.uif", "--threshold", "1", "--table", "table.csv"};
  EXPECT_TRUE(failedWithOneLine(box.run(call, {.maxFileBytes = 3000}), "dots.uif",
                                "table.csv can not be written: File too large\n"));
  expectUntouched();
  EXPECT_TRUE(succeeded(box.run(call)));
}

// A link to a device has a name that is accepted.
TEST_F(ResultFiles, AFullDeviceFails) {
  for (const std::string& extension : kOutputs) {
    fs::create_symlink("/dev/full", box / ("out" + extension));
  }
  remember();
  for (const std::string& extension : kOutputs) {
    for (const Arguments& call : callsWriting("out" + extension)) {
      SCOPED_TRACE(::testing::PrintToString(call));
      EXPECT_TRUE(
          failedWithOneLine(box.run(call), "in.tif",
                            "out" + extension + " can not be written: No space left on device\n"));
    }
  }
  expectUntouched();
}

TEST_F(ResultFiles, ALinkIsWrittenThrough) {
  box.write("target", "an old result");
  for (const std::string& extension : kOutputs) {
    SCOPED_TRACE(extension);
    fs::create_symlink("target", box / ("link" + extension));
    EXPECT_TRUE(succeeded(box.run({"convert", "in.tif", "link" + extension})));
    EXPECT_TRUE(fs::is_symlink(box / ("link" + extension)));
    EXPECT_TRUE(succeeded(box.run({"convert", "in.tif", "plain" + extension})));
    if (extension != ".ics") {
      EXPECT_EQ(box.read("target"), box.read("plain" + extension));
    }
  }
}

TEST_F(ResultFiles, AResultMayNotReplaceTheInput) {
  box.write("in.pgm", "P5 1 1 255\nx");
  fs::create_symlink("in.pgm", box / "link.pgm");
  fs::create_symlink(".", box / "here");
  fs::create_hard_link(box / "in.tif", box / "in.iht");
  fs::create_symlink("in.tif", box / "pair.ids");
  remember();
  const std::string words = "a result would replace the input in.";
  for (const Arguments& call : std::vector<Arguments>{
           {"convert", "in.pgm", "in.pgm"},
           {"convert", "in.pgm", "./in.pgm"},
           {"convert", "in.pgm", "taken/../in.pgm"},
           {"convert", "in.pgm", "link.pgm"},
           {"convert", "in.pgm", "here/in.pgm"},
           {"convert", "in.pgm", (box / "in.pgm").string()},
           {"convert", "in.tif", "in.tif"},
           {"convert", "in.tif", "pair.ics"},
           {"filter", "in.tif", "--op", "dx", "--sigma", "1", "--output", "here/in.tif"},
           {"measure", "in.tif", "--table", "in.tif"},
           {"measure", "in.iht", "--table", "t.csv", "--labels", "in.iht"},
           {"measure", "in.tif", "--table", "t.csv", "--labels", "pair.ics"}}) {
    SCOPED_TRACE(::testing::PrintToString(call));
    EXPECT_TRUE(refused(box.run(call), words));
  }
  expectUntouched();
}

TEST_F(ResultFiles, TwoResultsMayNotShareAFile) {
  box.write("both.iht", "an old result");
  fs::create_symlink("both.iht", box / "link.iht");
  remember();
  for (const auto& [table, labels] :
       std::vector<std::pair<std::string, std::string>>{{"both.iht", "both.iht"},
                                                        {"both.iht", "./both.iht"},
                                                        {"both.iht", "link.iht"},
                                                        {"both.ics", "both.ics"},
                                                        {"both.ids", "both.ics"},
                                                        {"taken/../both.ids", "both.ics"}}) {
    SCOPED_TRACE(::testing::PrintToString(std::pair(table, labels)));
    EXPECT_TRUE(refused(box.run({"measure", "in.tif", "--table", table, "--labels", labels}),
                        "two results would go to "));
  }
  expectUntouched();
}

TEST_F(ResultFiles, FullStandardOutputFails) {
  EXPECT_TRUE(failedWithOneLine(box.run({"info", "in.tif"}, {.out = "/dev/full"}), "in.tif",
                                "can not be written to standard output\n"));
  for (const Arguments& arguments : {Arguments{"measure", "in.tif", "--table", "out.csv"},
                                     {"--version"},
                                     {"--help"},
                                     {"vote", "--help"},
                                     {"measure", "--help"}}) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    const Outcome outcome = box.run(arguments, {.out = "/dev/full"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "orva: standard output can not be written\n");
  }
}

}  // namespace
}  // namespace orva::test
