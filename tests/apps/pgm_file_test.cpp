#include <gtest/gtest.h>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"

namespace orva::test {
namespace {

const std::vector<std::string> kVote{"vote", "--max-radius", "10", "discs.pgm"};

std::string pixelsOf(const Picture& picture) {
  const std::string file = pgm(picture);
  return file.substr(file.size() - picture.values.size());
}

TEST(PgmFile, CentersLieOnTheDiscs) {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  const Outcome outcome = box.run(kVote);
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_TRUE(marksEach(parseCsv(outcome.out), kTwoDiscs));
}

TEST(PgmFile, HeadersMayHoldCommentsAndAnyBlanks) {
  const Picture picture = twoDiscs();
  const Sandbox box;
  box.write("discs.pgm", pgm(picture));
  const std::string expected = box.run(kVote).out;
  for (const std::string header :
       {"P5 66 50 255 ", "P5\n# by a microscope, 1 of 2\n66 50\n255\n",
        "P5\n66\n#\n# 12\n50\n255\n", "P5\t66\r\n50\r255\n", "P5\n66 50\n9\n", "P5 066 50 255\n"}) {
    SCOPED_TRACE(header);
    box.write("discs.pgm", header + pixelsOf(picture));
    const Outcome outcome = box.run(kVote);
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, expected);
  }
}

TEST(PgmFile, BytesBehindThePixelsAreIgnored) {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  const std::string expected = box.run(kVote).out;
  box.write("discs.pgm", pgm(twoDiscs()) + "P5 1 1 255 x");
  EXPECT_EQ(box.run(kVote).out, expected);
}

TEST(PgmFile, EveryCutFileFails) {
  const std::string whole = pgm(discs(24, 20, {{11, 9, 5}}));
  const Sandbox box;
  for (std::size_t size = 2; size < whole.size(); size += size < 16 ? 1 : 37) {
    SCOPED_TRACE(size);
    box.write("cut.pgm", whole.substr(0, size));
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "cut.pgm"}), "cut.pgm", "damaged PGM"));
  }
  box.write("cut.pgm", whole.substr(0, whole.size() - 1));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "cut.pgm"}), "cut.pgm", "pixels are missing"));
  EXPECT_EQ(box.names(), std::vector<std::string>{"cut.pgm"});
}

TEST(PgmFile, BadHeadersFail) {
  struct Case {
    std::string content;
    const char* words;
  };
  const std::string many(1000, 'x');
  const std::vector<Case> cases{
      {"P5 20 20 65535\n" + many, "16-bit PGM"},
      {"P5 20 20 256\n" + many, "16-bit PGM"},
      {"P5 0 20 255\n" + many, "no pixels"},
      {"P5 20 0 255\n" + many, "no pixels"},
      {"P5 0 0 255\n", "no pixels"},
      {"P5 46341 46341 255\n" + many, "too large"},
      {"P5 32768 1 255\n" + std::string(32768, 'x'), "too large to vote on"},
      {"P5 1 32768 255\n" + std::string(32768, 'x'), "too large to vote on"},
      {"P5 4294967297 1 255\n" + many, "too large"},
      {"P5 99999999999999999999999 1 255\n" + many, "too large"},
      {"P5 30000 30000 255\n" + many, "pixels are missing"},
      {"P5 # no end of this", "header is cut off"},
      {"P5 a b c", "header is cut off"},
      {"P2 2 2 255 0 0 0 0", "not a PGM, PPM, PNG or TIFF image"},
      {"P6 2 1 255 xyz", "is a damaged PPM file: pixels are missing"},
  };
  const Sandbox box;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.content.substr(0, 40));
    box.write("bad.pgm", c.content);
    EXPECT_TRUE(failedWithOneLine(box.run({"vote", "bad.pgm"}), "bad.pgm", c.words));
  }
  EXPECT_EQ(box.names(), std::vector<std::string>{"bad.pgm"});
}

// The library's reader takes a comment in pieces of 9000 characters and the rest of a longer one
// for numbers, so the command must not hand it over.
TEST(PgmFile, ACommentPastTheLibrarysBufferDoesNotEndTheProcess) {
  const Picture picture = twoDiscs();
  const Sandbox box;
  for (const std::size_t length : {8999U, 9000U, 9001U, 9002U, 20000U}) {
    SCOPED_TRACE(length);
    box.write("discs.pgm",
              "P5\n#" + std::string(length, '7') + "\n66 50\n255\n" + pixelsOf(picture));
    box.write("good.pgm", pgm(picture));
    const Outcome outcome =
        box.run({"vote", "--max-radius", "10", "--out", "out", "discs.pgm", "good.pgm"});
    const bool fits = length <= 9000;
    EXPECT_EQ(outcome.status, fits ? 0 : 1);
    EXPECT_EQ(outcome.err, fits ? ""
                                : "orva: discs.pgm: is a damaged PGM file: a comment is longer "
                                  "than 9000 characters\n");
    EXPECT_TRUE(marksEach(parseCsv(box.read("out/good.csv")), kTwoDiscs));
    if (fits) {
      EXPECT_EQ(box.read("out/discs.csv"), box.read("out/good.csv"));
    }
    std::filesystem::remove_all(box / "out");
  }
}

TEST(PgmFile, HasOneFrame) {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--frame", "1", "discs.pgm"}), "discs.pgm",
                                "there is no frame 1"));
}

TEST(PgmFile, ImagesWithoutObjectsGiveAnEmptyTable) {
  const Sandbox box;
  for (const std::string content :
       {"P5 1 1 255\nx", "P5 7 1 255\nabcdefg", "P5 1 7 255\nabcdefg"}) {
    SCOPED_TRACE(content);
    box.write("small.pgm", content);
    EXPECT_TRUE(succeeded(box.run({"vote", "small.pgm"})));
  }
  box.write("even.pgm", pgm(discs(40, 40, {}, 99)));
  const Outcome outcome = box.run({"vote", "even.pgm"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, "x,y,weight\n");
}

// The widest image that the library votes on, and the next.
TEST(PgmFile, ASideThatVotingCannotAddressFails) {
  const Sandbox box;
  // The margin of radius 3 and cone width 4 is 5 and 3 more.
  const int widest = 32767 - 2 * 8;
  for (const int width : {widest, widest + 1}) {
    SCOPED_TRACE(width);
    box.write("long.pgm", pgm({width, 1, 1, std::vector<double>(static_cast<std::size_t>(width))}));
    const Outcome outcome = box.run({"vote", "--max-radius", "3", "--cone-width", "4", "long.pgm"});
    if (width == widest) {
      EXPECT_TRUE(succeeded(outcome));
      EXPECT_EQ(outcome.out, "x,y,weight\n");
    } else {
      EXPECT_TRUE(failedWithOneLine(outcome, "long.pgm", "too large to vote on"));
    }
  }
}

}  // namespace
}  // namespace orva::test
