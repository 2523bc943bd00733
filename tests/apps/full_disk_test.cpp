// A disk that is full at any byte: old results stay, and nothing is left of new ones.
#include <algorithm>

#include "tests/apps/conversions.h"
#include "tests/apps/pictures.h"

namespace orva::test {
namespace {

// A call on in.iht, and the files that it writes.
struct Call {
  Arguments arguments;
  std::vector<std::string> results;
};

std::vector<Call> calls() {
  std::vector<Call> result{
      {{"vote", "in.iht", "--centers", "c.csv"}, {"c.csv"}},
      {{"vote", "in.iht", "--format", "json", "--centers", "c.json"}, {"c.json"}},
      {{"vote", "in.iht", "--centers", "c.csv", "--overlay", "o.png"}, {"c.csv", "o.png"}},
      {{"vote", "in.iht", "--cone-width", "1", "--history", "h_", "--centers", "/dev/null"},
       {"h_vote_00.ics", "h_vote_00.ids", "h_vote_01.ics", "h_vote_01.ids"}},
      {{"measure", "in.iht", "--threshold", "200", "--table", "t.csv"}, {"t.csv"}},
      {{"measure", "in.iht", "--threshold", "200", "--table", "t.csv", "--labels", "l.iht"},
       {"t.csv", "l.iht"}},
      {{"measure", "in.iht", "--threshold", "200", "--table", "t.csv", "--labels", "l.ics"},
       {"t.csv", "l.ics", "l.ids"}},
  };
  for (const std::string& extension : kOutputs) {
    std::vector<std::string> files{"out" + extension};
    if (extension == ".ics") files.emplace_back("out.ids");
    result.push_back({{"convert", "in.iht", files.front()}, files});
    if (extension == ".tif" || extension == ".iht" || extension == ".ics") {
      result.push_back(
          {{"filter", "in.iht", "--op", "dx", "--sigma", "1", "--output", files.front()}, files});
    }
  }
  return result;
}

// All small ones, some between, and the last few.
std::vector<std::size_t> roomsBelow(std::size_t size, std::size_t step) {
  std::vector<std::size_t> rooms;
  for (std::size_t room = 0; room < size; ++room) {
    if (room < 2 || room % step == 0 || room + 3 >= size) rooms.push_back(room);
  }
  return rooms;
}

// Has in.iht, small enough that the headers of results are a good part of them.
class FullDisk : public ::testing::Test {
 protected:
  void writeInput(int width, int height) const {
    box.write("in.iht", iht(randomContent(BYTE, {width, height, 1}, 0, 255, 4)));
  }

  // With and without old results, in turn.
  void expectEveryCutFails(const Call& call, std::size_t step) const {
    SCOPED_TRACE(::testing::PrintToString(call.arguments));
    EXPECT_TRUE(succeeded(withoutOutput(box.run(call.arguments))));
    std::size_t longest = 0;
    std::vector<std::string> wholes;
    for (const std::string& name : call.results) {
      wholes.push_back(box.read(name));
      longest = std::max(longest, wholes.back().size());
    }
    bool hasOld = false;
    for (const std::size_t room : roomsBelow(longest, step)) {
      SCOPED_TRACE(room);
      hasOld = !hasOld;
      for (const std::string& name : call.results) {
        fs::remove(box / name);
        if (hasOld) box.write(name, "old " + name);
      }
      const auto before = box.state();
      EXPECT_TRUE(
          failedWithOneLine(box.run(call.arguments, {.maxFileBytes = static_cast<long>(room)}),
                            "in.iht", "can not be written"));
      EXPECT_EQ(box.state(), before);
    }
    // Just enough is enough, but for the longer line that a header has for a moment.
    const std::size_t enough = longest + 2;
    EXPECT_TRUE(succeeded(
        withoutOutput(box.run(call.arguments, {.maxFileBytes = static_cast<long>(enough)}))));
    for (std::size_t i = 0; i < wholes.size(); ++i) {
      EXPECT_EQ(box.read(call.results[i]), wholes[i]);
    }
    for (const std::string& name : call.results) fs::remove(box / name);
  }

  // Of measure, which reports the number of regions.
  static Outcome withoutOutput(Outcome outcome) {
    outcome.out.clear();
    return outcome;
  }

  Sandbox box;
};

TEST_F(FullDisk, FailsEveryResultWhereverItIsCutOff) {
  writeInput(6, 5);
  for (const Call& call : calls()) expectEveryCutFails(call, 19);
}

// Of these the pixels are longer than the header.
TEST_F(FullDisk, FailsEveryResultInThePixels) {
  writeInput(40, 30);
  for (const Call& call : calls()) expectEveryCutFails(call, 997);
}

// The pictures do not fit, the tables would.
TEST_F(FullDisk, OfSeveralImagesIsTheFailureOfEach) {
  box.write("a.pgm", pgm(twoDiscs()));
  box.write("b.pgm", pgm(twoDiscs()));
  const Arguments call{"vote", "--max-radius", "10", "--out", "out", "a.pgm", "b.pgm"};
  const Outcome outcome = box.run(call, {.maxFileBytes = 150});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "orva: a.pgm: out/a.png can not be written: File too large\n"
            "orva: b.pgm: out/b.png can not be written: File too large\n");
  EXPECT_EQ(box.names(), (std::vector<std::string>{"a.pgm", "b.pgm", "out", "out/summary.csv"}));
  EXPECT_EQ(box.read("out/summary.csv"), "file,width,height,centers,seconds\n");

  const Outcome full = box.run(call, {.maxFileBytes = 0});
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.err,
            "orva: a.pgm: out/a.csv can not be written: File too large\n"
            "orva: b.pgm: out/b.csv can not be written: File too large\n"
            "orva: out/summary.csv can not be written: File too large\n");
  EXPECT_EQ(box.names(), (std::vector<std::string>{"a.pgm", "b.pgm", "out", "out/summary.csv"}));
  EXPECT_EQ(box.read("out/summary.csv"), "file,width,height,centers,seconds\n");
}

TEST_F(FullDisk, FailsStandardOutput) {
  box.write("discs.pgm", pgm(twoDiscs()));
  const Arguments call{"vote", "--max-radius", "10", "discs.pgm"};
  const std::string whole = box.run(call).out;
  for (std::size_t room = 0; room < whole.size(); ++room) {
    SCOPED_TRACE(room);
    box.write("stdout", "");
    const std::string file = box / "stdout";
    EXPECT_TRUE(failedWithOneLine(
        box.run(call, {.out = file.c_str(), .maxFileBytes = static_cast<long>(room)}), "discs.pgm",
        "the table can not be written to standard output"));
  }
}

}  // namespace
}  // namespace orva::test
