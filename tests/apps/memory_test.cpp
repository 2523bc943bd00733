// An image that needs more memory than there is.
#include <gtest/gtest.h>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/support/sanitizer.h"

namespace orva_test {
namespace {

namespace fs = std::filesystem;

constexpr long kRoom = 200L << 20;

// Has two good images, and two that do not fit: one is read and can not be voted on, one is not
// even read.
class Memory : public ::testing::Test {
 protected:
  void SetUp() override {
    if (addressSanitizer) GTEST_SKIP() << "it needs more address space than there is";
    box.write("a.pgm", pgm(twoDiscs()));
    box.write("z.pgm", pgm(twoDiscs()));
    writeBlack("wide.pgm", 3500);
    writeBlack("huge.pgm", 20000);
  }

  // All holes, on a disk that knows them.
  void writeBlack(const std::string& name, int side) const {
    const std::string header =
        "P5\n" + std::to_string(side) + ' ' + std::to_string(side) + "\n255\n";
    box.write(name, header);
    fs::resize_file(box / name, header.size() + static_cast<std::uintmax_t>(side) *
                                                    static_cast<std::uintmax_t>(side));
  }

  Sandbox box;
};

TEST_F(Memory, OfOneImageIsItsFailureAndTheOthersAreDone) {
  const Outcome outcome = box.run({"vote", "--max-radius", "10", "--history", "h_", "--out", "out",
                                   "a.pgm", "wide.pgm", "huge.pgm", "z.pgm"},
                                  {.mostMemory = kRoom});
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
              {.mostMemory = kRoom});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "Error: out of memory\n");
  EXPECT_EQ(box.names(), before);
  EXPECT_EQ(box.read("old.csv"), "an old result");
}

}  // namespace
}  // namespace orva_test
