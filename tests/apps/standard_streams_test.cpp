// "-": images from standard input, tables to standard output.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "tests/apps/image_files.h"
#include "tests/apps/pictures.h"
#include "tests/apps/png_files.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

// TMPDIR of the commands that it runs is a directory of its own.
class StandardStreams : public ::testing::Test {
 protected:
  StandardStreams() {
    box.write("a.pgm", pgm(twoDiscs()));
    fs::create_directory(box / "tmp");
    if (const char* value = std::getenv("TMPDIR")) before_ = value;
    ::setenv("TMPDIR", (box / "tmp").c_str(), 1);
  }
  ~StandardStreams() override {
    if (before_.empty()) {
      ::unsetenv("TMPDIR");
    } else {
      ::setenv("TMPDIR", before_.c_str(), 1);
    }
  }

  // Runs the command with `content` in a pipe as its standard input.
  Outcome runPiped(const Arguments& arguments, const std::string& content) const {
    if (::mkfifo((box / "pipe").c_str(), 0600) != 0) ADD_FAILURE() << "no FIFO";
    std::thread writer([&] { box.write("pipe", content); });
    const Outcome outcome = box.run(arguments, {.in = "pipe"});
    writer.join();
    fs::remove(box / "pipe");
    return outcome;
  }

  void expectNothingLeft() const { EXPECT_TRUE(fs::is_empty(box / "tmp")); }

  Sandbox box;

 private:
  std::string before_;
};

TEST_F(StandardStreams, EveryFormatKnownByItsBytesIsRead) {
  const Content content{BYTE, 60, 50, 1, discs(60, 50, {{20, 22, 7}}).values};
  for (const std::string name : {"b.pgm", "b.png", "b.tif"}) {
    SCOPED_TRACE(name);
    writeContent(box / name, content);
    const Outcome expected = box.run({"vote", "--max-radius", "10", name});
    const Outcome piped = runPiped({"vote", "--max-radius", "10", "-"}, box.read(name));
    EXPECT_TRUE(succeeded(piped));
    EXPECT_TRUE(marksEach(parseCsv(piped.out), {{20, 22, 7}}));
    EXPECT_EQ(piped.out, expected.out);
    EXPECT_EQ(box.run({"vote", "--max-radius", "10", "-"}, {.in = name.c_str()}).out, expected.out);
    expectNothingLeft();
  }
}

TEST_F(StandardStreams, EverySubcommandReadsStandardInput) {
  box.write("b.ppm", ppm({RGB, 2, 2, 1, {9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2}}));
  const Outcome info = runPiped({"info", "-"}, box.read("b.ppm"));
  EXPECT_TRUE(succeeded(info));
  EXPECT_EQ(info.out,
            "file: -\nformat: PPM\nwidth: 2\nheight: 2\nplanes: 1\npixel type: RGB\n"
            "range: 0 to 9\n");

  const std::string image = box.read("a.pgm");
  EXPECT_TRUE(succeeded(runPiped({"convert", "-", "c.tif"}, image)));
  EXPECT_TRUE(succeeded(box.run({"convert", "a.pgm", "d.tif"})));
  EXPECT_EQ(box.read("c.tif"), box.read("d.tif"));

  const Arguments filter{"filter", "--op", "dx", "--sigma", "1"};
  const auto filterWith = [&](const std::string& in, const std::string& out) {
    Arguments call = filter;
    call.insert(call.end(), {in, "--output", out});
    return call;
  };
  EXPECT_TRUE(succeeded(runPiped(filterWith("-", "e.tif"), image)));
  EXPECT_TRUE(succeeded(box.run(filterWith("a.pgm", "f.tif"))));
  EXPECT_EQ(box.read("e.tif"), box.read("f.tif"));

  const Outcome measure = runPiped({"measure", "-", "--table", "t.csv"}, image);
  EXPECT_TRUE(succeeded(measure));
  EXPECT_EQ(measure.out, box.run({"measure", "a.pgm", "--table", "u.csv"}).out);
  EXPECT_EQ(box.read("t.csv"), box.read("u.csv"));
  expectNothingLeft();
}

TEST_F(StandardStreams, AFrameOfAStackFromAPipeIsReached) {
  {
    TiffFile file(box / "stack.tif");
    file.page(discs(60, 50, {{15, 16, 7}}));
    file.page(discs(60, 50, {{30, 20, 7}}));
  }
  const Outcome outcome =
      runPiped({"vote", "--max-radius", "10", "--frame", "1", "-"}, box.read("stack.tif"));
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_TRUE(marksEach(parseCsv(outcome.out), {{30, 20, 7}}));
}

TEST_F(StandardStreams, JsonNamesTheImageByADash) {
  const Outcome outcome =
      runPiped({"vote", "--max-radius", "10", "--format", "json", "-"}, box.read("a.pgm"));
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(nlohmann::json::parse(outcome.out)["image"], "-");
}

TEST_F(StandardStreams, WithOutTheResultsAreNamedStdin) {
  const Outcome outcome =
      runPiped({"vote", "--max-radius", "10", "--out", "out", "--history", "out/h_", "a.pgm", "-"},
               box.read("a.pgm"));
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(box.read("out/stdin.csv"), box.read("out/a.csv"));
  EXPECT_EQ(box.read("out/stdin.png"), box.read("out/a.png"));
  EXPECT_EQ(box.read("out/h_stdin_vote_05.ids"), box.read("out/h_a_vote_05.ids"));
  EXPECT_NE(box.read("out/summary.csv").find("\n-,"), std::string::npos);
  expectNothingLeft();

  box.write("stdin.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(refused(box.run({"vote", "--out", "out", "stdin.pgm", "-"}), "two results would go"));
}

TEST_F(StandardStreams, WhatIsNoImageFailsWithOneLine) {
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "-"}), "-", "standard input is empty"));
  const Content content{BYTE, 3, 2, 1, {1, 2, 3, 4, 5, 6}};
  for (const std::string& bytes :
       {std::string("no image"), iht(content), uif(content), std::string("\tics_version\t1.0\n")}) {
    for (const Arguments& call : {Arguments{"vote", "-"}, Arguments{"info", "-"}}) {
      EXPECT_TRUE(failedWithOneLine(
          runPiped(call, bytes), "-",
          "is not a PGM, PPM, PNG or TIFF image; IHT, UIF and ICS files are known by their names"));
    }
  }
  EXPECT_TRUE(failedWithOneLine(runPiped({"vote", "-"}, box.read("a.pgm").substr(0, 100)), "-",
                                "is a damaged PGM file"));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "-"}, {.in = "."}), "-",
                                "standard input cannot be read: Is a directory"));
  expectNothingLeft();
}

TEST_F(StandardStreams, WithoutRoomForTheCopyTheCommandFails) {
  ::setenv("TMPDIR", (box / "missing").c_str(), 1);
  EXPECT_TRUE(failedWithOneLine(runPiped({"info", "-"}, box.read("a.pgm")), "-",
                                "standard input cannot be copied"));
  ::setenv("TMPDIR", (box / "tmp").c_str(), 1);
  EXPECT_TRUE(failedWithOneLine(box.run({"info", "-"}, {.in = "a.pgm", .maxFileBytes = 1000}), "-",
                                "File too large"));
  expectNothingLeft();
}

TEST_F(StandardStreams, ASignalLeavesNoCopyOfStandardInput) {
  ASSERT_EQ(::mkfifo((box / "pipe").c_str(), 0600), 0);
  const int pipe =
      ::open((box / "pipe").c_str(), O_RDWR | O_CLOEXEC);  // the command waits for more
  ASSERT_GE(pipe, 0);
  for (const Arguments& call :
       {Arguments{"vote", "-"}, Arguments{"vote", "--out", "out", "a.pgm", "-"}}) {
    ASSERT_EQ(::write(pipe, "P5\n", 3), 3);
    Running run = box.start(call, {.in = "pipe"});
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (fs::is_empty(box / "tmp") && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_FALSE(fs::is_empty(box / "tmp"));
    run.send(SIGTERM);
    EXPECT_EQ(run.outcome().status, 128 + SIGTERM);
    expectNothingLeft();
  }
  ::close(pipe);
}

TEST_F(StandardStreams, StandardInputIsReadOnce) {
  EXPECT_TRUE(refused(box.run({"vote", "--out", "out", "-", "-"}), "cannot be read twice"));
  EXPECT_FALSE(fs::exists(box / "out"));
}

TEST_F(StandardStreams, AFileNamedDashIsReachedByItsDirectory) {
  box.write("-", pgm(twoDiscs()));
  EXPECT_EQ(box.run({"vote", "--max-radius", "10", "./-"}).out,
            box.run({"vote", "--max-radius", "10", "a.pgm"}).out);
  EXPECT_TRUE(refused(box.run({"vote", "--centers", "./-", "./-"}), "would replace the input ./-"));
  EXPECT_TRUE(succeeded(box.run({"vote", "--max-radius", "10", "--centers", "./-", "a.pgm"})));
  EXPECT_TRUE(marksEach(parseCsv(box.read("-")), kTwoDiscs));
}

TEST_F(StandardStreams, ADashPutsTheCentersOnStandardOutput) {
  const Arguments call{"vote", "--max-radius", "10", "a.pgm"};
  const std::string expected = box.run(call).out;
  for (const Arguments& more : {Arguments{"--centers", "-"}, Arguments{"--centers=-"},
                                Arguments{"--centers", "-", "--overlay", "o.png"}}) {
    Arguments whole = call;
    whole.insert(whole.end(), more.begin(), more.end());
    const Outcome outcome = box.run(whole);
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, expected);
  }
  EXPECT_EQ(box.names(), (Arguments{"a.pgm", "o.png", "tmp"}));
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "a.pgm", "--centers", "-"}, {.out = "/dev/full"}),
                                "a.pgm", "the table can not be written to standard output"));
}

TEST_F(StandardStreams, ADashPutsTheTableOfRegionsAloneOnStandardOutput) {
  EXPECT_TRUE(succeeded(box.run({"measure", "a.pgm", "--table", "t.csv", "--labels", "l.iht"})));
  const Outcome outcome = box.run({"measure", "a.pgm", "--table", "-", "--labels", "m.iht"});
  EXPECT_TRUE(succeeded(outcome));
  EXPECT_EQ(outcome.out, box.read("t.csv"));
  EXPECT_EQ(box.read("m.iht"), box.read("l.iht"));
  EXPECT_FALSE(fs::exists(box / "-"));
  EXPECT_TRUE(failedWithOneLine(box.run({"measure", "a.pgm", "--table", "-"}, {.out = "/dev/full"}),
                                "a.pgm", "the table can not be written to standard output"));
}

}  // namespace
}  // namespace orva::test
