// "-" as the name of a picture: standard output.
#include <gtest/gtest.h>

#include <string>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

struct PrintedPictures : ::testing::Test {
  PrintedPictures() {
    box.write("a.pgm", pgm(discs(150, 110, {{20, 22, 9}, {61, 18, 9}, {88, 51, 9}})));
    TiffFile file(box / "times.tif");
    TiffForm form;
    form.description = "ImageJ=1.53t\nimages=2\nframes=2\n";
    file.page(discs(100, 90, {{30, 30, 9}}), form);
    form.description.clear();
    file.page(discs(100, 90, {{60, 50, 9}}), form);
  }

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

  Sandbox box;
};

TEST_F(PrintedPictures, AreThoseOfTheFiles) {
  expectPrinted({"find", "a.pgm", "--table", "t.csv", "--overlay", "-"}, "o.png");
  expectPrinted({"vote", "a.pgm", "--max-radius", "13", "--centers", "t.csv", "--overlay", "-"},
                "o.png");
  expectPrinted({"segment", "a.pgm", "--table", "t.csv", "--labels", "-"}, "l.tif");
  expectPrinted({"segment", "a.pgm", "--table", "t.csv", "--outlines", "-"}, "o.png");
  expectPrinted({"filter", "a.pgm", "--op", "dx", "--sigma", "2", "--output", "-"}, "f.tif");
  expectPrinted({"measure", "a.pgm", "--table", "t.csv", "--labels", "-"}, "l.iht");
  expectPrinted({"convert", "a.pgm", "-"}, "c.tif");
}

TEST_F(PrintedPictures, ConvertHasAFormatForThem) {
  for (const std::string format : {"pgm", "ppm", "png", "tif", "iht", "uif"}) {
    const std::string file = "c." + format;
    EXPECT_EQ(box.run({"convert", "a.pgm", file}).status, 0);
    EXPECT_EQ(box.run({"convert", "--format", format, "a.pgm", "-"}).out, box.read(file));
    EXPECT_EQ(box.run({"convert", "--frame", "0", "--format", format, "a.pgm", "-"}).out,
              box.read(file));
  }
  EXPECT_TRUE(refused(box.run({"convert", "--format", "png", "a.pgm", "c.tif"}),
                      "--format: is for standard output"));
  EXPECT_TRUE(refused(box.run({"convert", "--format", "ics", "a.pgm", "-"}), "--format"));
}

TEST_F(PrintedPictures, OthersAreWrittenBeside) {
  const Outcome outcome = box.run(
      {"segment", "--quiet", "--table", "t.zip", "--labels", "l.png", "--outlines", "-", "a.pgm"});
  EXPECT_TRUE(outcome.out.starts_with("\x89PNG"));
  EXPECT_EQ(box.names(), (Arguments{"a.pgm", "l.png", "t.zip", "times.tif"}));
}

TEST_F(PrintedPictures, StandardOutputTakesOneResult) {
  for (const Arguments& call : {Arguments{"find", "--overlay", "-"},
                                {"find", "--table", "-", "--overlay", "-"},
                                {"segment", "--table", "t.csv", "--labels", "-", "--outlines", "-"},
                                {"measure", "--table", "-", "--labels", "-"}}) {
    Arguments whole = call;
    whole.emplace_back("a.pgm");
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
  EXPECT_TRUE(failedWithOneLine(box.run({"convert", "a.pgm", "-"}, {.out = "/dev/full"}), "a.pgm",
                                "the result can not be written to standard output"));
}

}  // namespace
}  // namespace orva::test
