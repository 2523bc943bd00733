// "-" as the name of a picture: standard output.
#include <gtest/gtest.h>

#include <string>

#include "tests/apps/disc_files.h"

namespace orva::test {
namespace {

struct PrintedPictures : DiscFiles {
  // The call with `file` in place of the last argument, "-", writes there what the call prints.
  void expectPrinted(Arguments call, const std::string& file) const {
    SCOPED_TRACE(call.front() + " " + file);
    const Outcome printed = box.run(call);
    EXPECT_EQ(printed.status, 0) << printed.err;
    EXPECT_FALSE(fs::exists(box / "-"));
    call.back() = file;
    EXPECT_EQ(box.run(call).status, 0);
    EXPECT_EQ(printed.out, box.read(file));
    EXPECT_FALSE(printed.out.empty());
  }
};

TEST_F(PrintedPictures, AreThoseOfTheFiles) {
  expectPrinted({"find", "discs.pgm", "--table", "t.csv", "--overlay", "-"}, "o.png");
  expectPrinted({"vote", "discs.pgm", "--max-radius", "13", "--centers", "t.csv", "--overlay", "-"},
                "o.png");
  expectPrinted({"segment", "discs.pgm", "--table", "t.csv", "--labels", "-"}, "l.tif");
  expectPrinted({"segment", "discs.pgm", "--table", "t.csv", "--outlines", "-"}, "o.png");
  expectPrinted({"filter", "discs.pgm", "--op", "dx", "--sigma", "2", "--output", "-"}, "f.tif");
  expectPrinted({"measure", "discs.pgm", "--table", "t.csv", "--labels", "-"}, "l.iht");
  expectPrinted({"convert", "discs.pgm", "-"}, "c.tif");
}

TEST_F(PrintedPictures, ConvertHasAFormatForThem) {
  for (const std::string format : {"pgm", "ppm", "png", "tif", "iht", "uif"}) {
    const std::string file = "c." + format;
    EXPECT_EQ(box.run({"convert", "discs.pgm", file}).status, 0);
    EXPECT_EQ(box.run({"convert", "--format", format, "discs.pgm", "-"}).out, box.read(file));
    EXPECT_EQ(box.run({"convert", "--frame", "0", "--format", format, "discs.pgm", "-"}).out,
              box.read(file));
  }
  EXPECT_TRUE(refused(box.run({"convert", "--format", "png", "discs.pgm", "c.tif"}),
                      "--format: is for standard output"));
  EXPECT_TRUE(refused(box.run({"convert", "--format", "ics", "discs.pgm", "-"}), "--format"));
}

TEST_F(PrintedPictures, OthersAreWrittenBeside) {
  const Outcome outcome = box.run({"segment", "--quiet", "--table", "t.zip", "--labels", "l.png",
                                   "--outlines", "-", "discs.pgm"});
  EXPECT_TRUE(outcome.out.starts_with("\x89PNG"));
  EXPECT_EQ(box.names(), (Arguments{"discs.pgm", "l.png", "t.zip", "times.tif"}));
}

TEST_F(PrintedPictures, StandardOutputTakesOneResult) {
  for (const Arguments& call : {Arguments{"find", "--overlay", "-"},
                                {"find", "--table", "-", "--overlay", "-"},
                                {"segment", "--table", "t.csv", "--labels", "-", "--outlines", "-"},
                                {"measure", "--table", "-", "--labels", "-"}}) {
    Arguments whole = call;
    whole.emplace_back("discs.pgm");
    EXPECT_TRUE(refused(box.run(whole), "two results would go to standard output"));
  }
}

TEST_F(PrintedPictures, OfSeveralTimesAreAnError) {
  for (const Arguments& call : {Arguments{"find", "--table", "t.csv", "--overlay", "-"},
                                {"filter", "--op", "dx", "--sigma", "2", "--output", "-"},
                                {"measure", "--table", "t.csv", "--labels", "-"}}) {
    Arguments whole = call;
    whole.emplace_back("times.tif");
    EXPECT_TRUE(
        failedWithOneLine(box.run(whole), "times.tif", "standard output takes one picture"));
    whole.insert(whole.end(), {"--time", "1"});
    EXPECT_EQ(box.run(whole).status, 0);
  }
}

TEST_F(PrintedPictures, AFullDeviceIsAnError) {
  EXPECT_TRUE(failedWithOneLine(box.run({"convert", "discs.pgm", "-"}, {.out = "/dev/full"}),
                                "discs.pgm", "the result can not be written to standard output"));
}

}  // namespace
}  // namespace orva::test
