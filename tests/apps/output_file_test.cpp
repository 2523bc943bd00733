// Results are written whole or not at all.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"

namespace orva::test {
namespace {

// A directory with discs.pgm, a directory "taken" with a file in it, and an old result.
class OutputFile : public ::testing::Test {
 protected:
  OutputFile() {
    box.write("discs.pgm", pgm(twoDiscs()));
    fs::create_directory(box / "taken");
    box.write("taken/inside", "kept");
    box.write("old", "an old result");
    before = box.names();
  }

  Outcome vote(std::vector<std::string> arguments, const Streams& streams = {}) const {
    arguments.insert(arguments.begin(), {"vote", "--max-radius", "10", "discs.pgm"});
    return box.run(arguments, streams);
  }

  void expectUntouched() const {
    EXPECT_EQ(box.names(), before);
    EXPECT_EQ(box.read("old"), "an old result");
    EXPECT_EQ(box.read("taken/inside"), "kept");
    EXPECT_EQ(box.read("discs.pgm"), pgm(twoDiscs()));
  }

  Sandbox box;
  std::vector<std::string> before;
};

TEST_F(OutputFile, AMissingDirectoryFails) {
  for (const std::string option : {"--centers", "--overlay"}) {
    EXPECT_TRUE(failedWithOneLine(vote({option, "missing/result"}), "discs.pgm",
                                  "missing/result can not be written: No such file or directory"));
    EXPECT_TRUE(failedWithOneLine(vote({option, "old/result"}), "discs.pgm",
                                  "old/result can not be written: Not a directory"));
  }
  expectUntouched();
}

TEST_F(OutputFile, ADirectoryAsAResultFails) {
  for (const std::string option : {"--centers", "--overlay"}) {
    for (const std::string name : {"taken", "taken/", "."}) {
      SCOPED_TRACE(::testing::PrintToString(std::pair(option, name)));
      EXPECT_TRUE(failedWithOneLine(vote({option, name}), "discs.pgm",
                                    name + " can not be written: Is a directory"));
    }
  }
  expectUntouched();
}

TEST_F(OutputFile, ANameThatIsTooLongFails) {
  const std::string name(300, 'n');
  for (const std::string option : {"--centers", "--overlay"}) {
    EXPECT_TRUE(failedWithOneLine(vote({option, name}), "discs.pgm",
                                  name + " can not be written: File name too long"));
  }
  expectUntouched();
}

TEST_F(OutputFile, TheLongestNameIsWritten) {
  const std::string name(255, 'n');
  EXPECT_TRUE(succeeded(vote({"--centers", name})));
  EXPECT_TRUE(marksEach(parseCsv(box.read(name)), kTwoDiscs));
}

TEST_F(OutputFile, AFullDeviceFails) {
  for (const std::string option : {"--centers", "--overlay"}) {
    EXPECT_TRUE(failedWithOneLine(vote({option, "/dev/full"}), "discs.pgm",
                                  "/dev/full can not be written: No space left on device"));
  }
  EXPECT_TRUE(failedWithOneLine(vote({}, {.out = "/dev/full"}), "discs.pgm",
                                "the table can not be written to standard output"));
  EXPECT_TRUE(failedWithOneLine(vote({"--format", "json"}, {.out = "/dev/full"}), "discs.pgm",
                                "the table can not be written to standard output"));
  expectUntouched();
}

TEST_F(OutputFile, AFailedImageLeavesAnOldResult) {
  box.write("discs.pgm", pgm(twoDiscs()).substr(0, 2000));
  EXPECT_TRUE(failedWithOneLine(vote({"--centers", "old"}), "discs.pgm", "damaged PGM"));
  EXPECT_TRUE(failedWithOneLine(vote({"--overlay", "old"}), "discs.pgm", "damaged PGM"));
  EXPECT_EQ(box.read("old"), "an old result");
  EXPECT_EQ(box.names(), before);
}

TEST_F(OutputFile, ADeviceIsWrittenToAndStays) {
  EXPECT_TRUE(succeeded(vote({"--centers", "/dev/null"})));
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  expectUntouched();
  const Outcome shown = vote({"--centers", "/dev/stdout"});
  EXPECT_TRUE(succeeded(shown));
  EXPECT_TRUE(marksEach(parseCsv(shown.out), kTwoDiscs));
}

TEST_F(OutputFile, AnOldResultIsReplaced) {
  EXPECT_TRUE(succeeded(vote({"--centers", "old"})));
  EXPECT_TRUE(marksEach(parseCsv(box.read("old")), kTwoDiscs));
  EXPECT_EQ(box.names(), before);
}

TEST_F(OutputFile, AResultHasTheUsualPermissions) {
  const mode_t mask = ::umask(027);
  EXPECT_TRUE(succeeded(vote({"--centers", "new"})));
  ::umask(mask);
  struct stat facts {};
  ASSERT_EQ(::stat((box / "new").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777U, 0640U);
}

TEST_F(OutputFile, ThroughALinkItsTargetIsReplaced) {
  fs::create_symlink("old", box / "link");
  EXPECT_TRUE(succeeded(vote({"--centers", "link"})));
  EXPECT_TRUE(fs::is_symlink(box / "link"));
  EXPECT_TRUE(marksEach(parseCsv(box.read("old")), kTwoDiscs));
}

// As by other programs that write.
TEST_F(OutputFile, ThroughALinkToNothingItsTargetIsMade) {
  fs::create_symlink("taken/new", box / "link");
  fs::create_symlink("link", box / "longer");
  fs::create_symlink((box / "far").string(), box / "absolute");
  EXPECT_TRUE(succeeded(vote({"--centers", "longer", "--overlay", "absolute"})));
  for (const std::string link : {"link", "longer", "absolute"}) {
    EXPECT_TRUE(fs::is_symlink(box / link));
  }
  EXPECT_TRUE(marksEach(parseCsv(box.read("taken/new")), kTwoDiscs));
  EXPECT_TRUE(box.read("far").starts_with("\x89PNG"));
  EXPECT_EQ(box.names(), (std::vector<std::string>{"absolute", "discs.pgm", "far", "link", "longer",
                                                   "old", "taken", "taken/inside", "taken/new"}));
}

TEST_F(OutputFile, ALinkThatCannotLeadToAFileFails) {
  fs::create_symlink("missing/new", box / "link");
  fs::create_symlink("turn", box / "round");
  fs::create_symlink("round", box / "turn");
  before = box.names();
  EXPECT_TRUE(failedWithOneLine(vote({"--centers", "link"}), "discs.pgm",
                                "link can not be written: No such file or directory"));
  EXPECT_TRUE(failedWithOneLine(vote({"--centers", "round"}), "discs.pgm",
                                "round can not be written: Too many levels of symbolic links"));
  expectUntouched();
}

TEST_F(OutputFile, AnImageIsNeverReplacedByAResult) {
  fs::create_symlink("discs.pgm", box / "link.pgm");
  fs::create_directory_symlink(".", box / "here");
  for (const std::string name :
       {"discs.pgm", "./discs.pgm", "taken/../discs.pgm", "link.pgm", "here/discs.pgm"}) {
    for (const std::string option : {"--centers", "--overlay"}) {
      SCOPED_TRACE(::testing::PrintToString(std::pair(option, name)));
      EXPECT_TRUE(refused(vote({option, name}), "would replace the input discs.pgm"));
    }
  }
  EXPECT_EQ(box.read("discs.pgm"), pgm(twoDiscs()));
  EXPECT_TRUE(refused(box.run({"vote", "link.pgm", "--centers", "discs.pgm"}),
                      "would replace the input link.pgm"));
  EXPECT_EQ(box.read("discs.pgm"), pgm(twoDiscs()));
}

TEST_F(OutputFile, TwoResultsDoNotGoToOneFile) {
  fs::create_directory_symlink("taken", box / "link");
  fs::create_symlink("new", box / "to-new");
  const std::vector<std::vector<std::string>> pairs{{"new", "to-new"},
                                                    {"new", "new"},
                                                    {"new", "./new"},
                                                    {"old", "./old"},
                                                    {"taken/new", "link/new"},
                                                    {"new", "taken/../new"},
                                                    {"taken/missing/new", "link/missing/new"}};
  const std::vector<std::string> names = box.names();
  for (const auto& pair : pairs) {
    SCOPED_TRACE(::testing::PrintToString(pair));
    EXPECT_TRUE(refused(vote({"--centers", pair[0], "--overlay", pair[1]}), "two results"));
  }
  EXPECT_EQ(box.names(), names);
  EXPECT_TRUE(succeeded(vote({"--centers", "taken/new", "--overlay", "new"})));
}

// Standard output may be a file that others write to as well.
TEST_F(OutputFile, StandardOutputKeepsWhatItsFileHolds) {
  box.write("log", std::string(1000, '.'));
  const std::string log = box / "log";
  const Outcome outcome =
      box.run({"vote", "--max-radius", "10", "--centers", "/dev/stdout", "discs.pgm"},
              {.out = log.c_str()});
  EXPECT_TRUE(succeeded(outcome));
  const std::string content = box.read("log");
  EXPECT_TRUE(content.starts_with("x,y,weight\n")) << content;
  EXPECT_EQ(content.size(), 1000U);
}

TEST_F(OutputFile, KeepsTheModeOfTheFileThatItReplaces) {
  box.write("old", "x");
  std::filesystem::permissions(box / "old", std::filesystem::perms::owner_read);
  EXPECT_TRUE(succeeded(vote({"--centers", "old"})));
  EXPECT_EQ(std::filesystem::status(box / "old").permissions(), std::filesystem::perms::owner_read);
}

}  // namespace
}  // namespace orva::test
