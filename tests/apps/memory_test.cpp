// The command where there is less memory than an image takes: a line for the image, status 1 and no
// result of it.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/support/sanitizer.h"

namespace orva::test {
namespace {

constexpr long kMebibyte = 1L << 20;
constexpr long kRoom = 200 * kMebibyte;

// All holes, on a disk that knows them.
void writeBlack(const Sandbox& box, const std::string& name, std::size_t width,
                std::size_t height) {
  const std::string header =
      "P5\n" + std::to_string(width) + ' ' + std::to_string(height) + "\n255\n";
  box.write(name, header);
  fs::resize_file(box / name, header.size() + width * height);
}

// Has two good images, and two that do not fit: one is read but too large for voting, one is not
// even read.
class Memory : public ::testing::Test {
 protected:
  void SetUp() override {
    if (addressSanitizer) GTEST_SKIP() << "it needs more address space than there is";
    box.write("a.pgm", pgm(twoDiscs()));
    box.write("z.pgm", pgm(twoDiscs()));
    writeBlack(box, "wide.pgm", 3500, 3500);
    writeBlack(box, "huge.pgm", 20000, 20000);
  }

  Sandbox box;
};

TEST_F(Memory, OfOneImageIsItsFailureAndTheOthersAreDone) {
  const Outcome outcome = box.run({"vote", "--max-radius", "10", "--history", "h_", "--out", "out",
                                   "a.pgm", "wide.pgm", "huge.pgm", "z.pgm"},
                                  {.maxMemory = kRoom});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err,
            "Error: out of memory\n"
            "orva: wide.pgm: could not be finished\n"
            "orva: huge.pgm: needs more memory than there is\n");
  EXPECT_TRUE(marksEach(parseCsv(box.read("out/a.csv")), kTwoDiscs));
  EXPECT_TRUE(marksEach(parseCsv(box.read("out/z.csv")), kTwoDiscs));
  const std::string summary = box.read("out/summary.csv");
  EXPECT_NE(summary.find("\na.pgm,66,50,2,"), std::string::npos) << summary;
  EXPECT_NE(summary.find("\nz.pgm,66,50,2,"), std::string::npos) << summary;
  for (const std::string& name : box.names()) {
    EXPECT_EQ(name.find(".orva-"), std::string::npos) << name;
    EXPECT_EQ(name.find("wide_vote"), std::string::npos) << name;
  }
}

// The library ends the process itself.
TEST_F(Memory, OfTheOnlyImageEndsTheRunWithoutATrace) {
  box.write("old.csv", "an old result");
  const auto before = box.names();
  const Outcome outcome =
      box.run({"vote", "--max-radius", "10", "--history", "h_", "--centers", "old.csv", "wide.pgm"},
              {.maxMemory = kRoom});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "Error: out of memory\n");
  EXPECT_EQ(box.names(), before);
  EXPECT_EQ(box.read("old.csv"), "an old result");
}

// Has one image, which does not fit.
class LittleMemory : public ::testing::Test {
 protected:
  void SetUp() override {
    if (addressSanitizer) GTEST_SKIP() << "it needs more address space than there is";
    writeBlack(box, "large.pgm", 6000, 5000);
    before = box.names();
  }

  // Either the command itself could not have memory, or the library within it.
  void expectNoMemory(const std::vector<std::string>& arguments, long mebibytes) const {
    SCOPED_TRACE(arguments.at(0) + " with " + std::to_string(mebibytes));
    const Outcome outcome = box.run(arguments, {.maxMemory = mebibytes * kMebibyte});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err == "orva: large.pgm: needs more memory than there is\n" ||
                outcome.err == "Error: out of memory\n" || outcome.err == "Out of memory\n")
        << outcome.err;
    EXPECT_EQ(box.names(), before);
  }

  Sandbox box;
  std::vector<std::string> before;
};

// With so much the command can start.
constexpr long kStart = 48;

TEST_F(LittleMemory, IsEnoughForASmallImage) {
  box.write("small.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(succeeded(box.run({"info", "small.pgm"}, {.maxMemory = kStart * kMebibyte})));
}

TEST_F(LittleMemory, ForTheImageAloneIsReported) {
  for (const long more : {1, 10, 20}) {
    expectNoMemory({"info", "large.pgm"}, kStart + more);
    expectNoMemory({"convert", "large.pgm", "out.tif"}, kStart + more);
    expectNoMemory({"vote", "large.pgm", "--centers", "out.csv"}, kStart + more);
    expectNoMemory({"filter", "large.pgm", "--op", "smooth", "--sigma", "2", "--output", "out.tif"},
                   kStart + more);
    expectNoMemory({"measure", "large.pgm", "--table", "out.csv"}, kStart + more);
  }
}

TEST_F(LittleMemory, ForWhatIsMadeFromTheImageIsReported) {
  for (const long more : {70, 110}) {
    expectNoMemory({"vote", "large.pgm", "--centers", "out.csv"}, kStart + more);
    expectNoMemory({"filter", "large.pgm", "--op", "smooth", "--sigma", "2", "--output", "out.tif"},
                   kStart + more);
  }
}

// The library writes these by name into a directory beside them, quietly.
TEST_F(LittleMemory, ForTheLibrarysFilesIsReportedAndLeavesNothing) {
  for (const long more : {70, 110, 150, 250}) {
    expectNoMemory({"vote", "large.pgm", "--history", "out_", "--centers", "out.csv"},
                   kStart + more);
  }
  for (const long more : {40, 60}) {
    expectNoMemory(
        {"measure", "large.pgm", "--threshold", "0", "--labels", "out.iht", "--table", "out.csv"},
        kStart + more);
  }
}

}  // namespace
}  // namespace orva::test
