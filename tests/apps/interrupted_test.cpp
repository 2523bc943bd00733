// A run that is ended by a signal while it writes leaves old results and no temporary files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"

namespace orva::test {
namespace {

constexpr std::string_view kTemporary = ".orva-";

// The name of the command's temporary file or directory in `directory`; "" when none comes.
fs::path awaitTemporary(const fs::path& directory) {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + std::chrono::seconds(60);
  while (steady_clock::now() < end) {
    for (const auto& entry : fs::directory_iterator(directory)) {
      if (entry.path().filename().string().starts_with(kTemporary)) return entry.path();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return {};
}

class Interrupted : public ::testing::Test {
 protected:
  Interrupted() {
    box.write("discs.pgm", pgm(twoDiscs()));
    box.write("old.png", "an old result");
    if (::mkfifo((box / "fifo").c_str(), 0600) != 0) ADD_FAILURE() << "no FIFO";
  }

  // Every pixel of it votes, which takes far longer than a test may.
  void writeLargeImage() const {
    Picture noise{900, 900, 1, {}};
    for (int i = 0; i < 900 * 900; ++i) noise.values.push_back(i % 997 * 7919 % 251);
    box.write("large.pgm", pgm(noise));
  }

  Sandbox box;
  // The picture is complete under its temporary name while the command waits for a reader of the
  // table.
  const std::vector<std::string> waiting{"vote",    "--max-radius", "10",   "--overlay",
                                         "old.png", "--centers",    "fifo", "discs.pgm"};
  // Votes for a long time, with a directory for the history.
  const std::vector<std::string> voting{"vote", "--max-radius", "150", "--cone-width",
                                        "75",   "--gradient",   "0",   "--history",
                                        "h_",   "large.pgm"};
};

TEST_F(Interrupted, LeavesNoTemporaryFile) {
  const auto before = box.names();
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    SCOPED_TRACE(signal);
    Running run = box.start(waiting);
    ASSERT_NE(awaitTemporary(box / "."), "");
    run.send(signal);
    EXPECT_EQ(run.outcome().status, 128 + signal);
    EXPECT_EQ(box.names(), before);
    EXPECT_EQ(box.read("old.png"), "an old result");
  }
}

// The test puts the file there, so that the library need not have come so far.
TEST_F(Interrupted, LeavesNoDirectoryAndNoFileInIt) {
  writeLargeImage();
  const auto before = box.names();
  Running run = box.start(voting);
  const fs::path directory = awaitTemporary(box / ".");
  ASSERT_TRUE(fs::is_directory(directory));
  for (int i = 0; i < 300; ++i) {
    std::ofstream(directory / ("h_vote_" + std::to_string(i) + ".ics")) << "header";
  }
  run.send(SIGTERM);
  EXPECT_EQ(run.outcome().status, 128 + SIGTERM);
  EXPECT_EQ(box.names(), before);
}

TEST_F(Interrupted, OfSeveralImagesEndsWithTheOneAtWork) {
  writeLargeImage();
  fs::create_directory(box / "out");
  const auto before = box.names();
  std::vector<std::string> call = voting;
  call.insert(call.end(), {"discs.pgm", "--out", "out"});
  for (const int signal : {SIGINT, SIGTERM}) {
    Running run = box.start(call);
    ASSERT_NE(awaitTemporary(box / "."), "");
    run.send(signal);
    EXPECT_EQ(run.outcome().status, 128 + signal);
    EXPECT_EQ(box.names(), before);
  }
}

// As under nohup.
TEST_F(Interrupted, ByAnIgnoredSignalItIsNot) {
  Running run = box.start(waiting, {.ignored = SIGHUP});
  ASSERT_NE(awaitTemporary(box / "."), "");
  run.send(SIGHUP);
  EXPECT_TRUE(marksEach(parseCsv(box.read("fifo")), kTwoDiscs));
  EXPECT_TRUE(succeeded(run.outcome()));
  EXPECT_NE(box.read("old.png"), "an old result");
}

TEST_F(Interrupted, ByAReaderThatIsGoneLeavesNoTemporaryFile) {
  const auto before = box.names();
  const Outcome outcome = box.run({"vote", "--max-radius", "10", "--overlay", "old.png",
                                   "--centers", "/dev/stdout", "discs.pgm"},
                                  {.noReader = true});
  EXPECT_EQ(outcome.status, 128 + SIGPIPE);
  EXPECT_EQ(box.names(), before);
  EXPECT_EQ(box.read("old.png"), "an old result");
}

}  // namespace
}  // namespace orva::test
