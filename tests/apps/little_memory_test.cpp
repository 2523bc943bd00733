// The command where there is less memory than an image takes: one line, status 1 and no result.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/support/sanitizer.h"

namespace orva_test {
namespace {

namespace fs = std::filesystem;

constexpr long kMebibyte = 1L << 20;

// A directory with a large image, black and without blocks on the disk.
class LittleMemory : public ::testing::Test {
 protected:
  void SetUp() override {
    if (addressSanitizer) GTEST_SKIP() << "the sanitizer answers failed allocations";
    const std::string header = "P5 6000 5000 255\n";
    box.write("large.pgm", header);
    fs::resize_file(box / "large.pgm", header.size() + 30000000);
    before = box.names();
  }

  // Either the command itself could not have memory, or the library within it.
  void expectNoMemory(const std::vector<std::string>& arguments, long mebibytes) const {
    SCOPED_TRACE(arguments.at(0) + " with " + std::to_string(mebibytes));
    const Outcome outcome = box.run(arguments, {.mostMemory = mebibytes * kMebibyte});
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
  EXPECT_TRUE(succeeded(box.run({"info", "small.pgm"}, {.mostMemory = kStart * kMebibyte})));
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
TEST_F(LittleMemory, ForWhatTheLibraryWritesIsReportedAndLeavesNoDirectoryBehind) {
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
}  // namespace orva_test
