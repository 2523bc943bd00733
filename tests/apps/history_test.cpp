#include <gtest/gtest.h>

#include <algorithm>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"

namespace orva::test {
namespace {

// The history that the library writes itself, with the names' common start `prefix`.
std::vector<std::string> writeDirectly(const Sandbox& box, const std::string& prefix,
                                       int maxRadius) {
  voteDirectly(imageOf<unsigned char>(twoDiscs()),
               {.maxRadius = maxRadius, .history = (box / prefix).string()});
  return box.names();
}

TEST(History, HoldsThePairsOfTheLibrary) {
  for (const std::string prefix : {"h_", "sub/h_", "sub/", ""}) {
    SCOPED_TRACE(prefix);
    const Sandbox expected;
    fs::create_directory(expected / "sub");
    const std::vector<std::string> names = writeDirectly(expected, prefix, 12);

    const Sandbox box;
    fs::create_directory(box / "sub");
    box.write("discs.pgm", pgm(twoDiscs()));
    const Outcome outcome =
        box.run({"vote", "--max-radius", "12", "--history", prefix, "discs.pgm"});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, box.run({"vote", "--max-radius", "12", "discs.pgm"}).out);
    fs::remove(box / "discs.pgm");
    EXPECT_EQ(box.names(), names);
    for (const std::string& name : names) {
      if (name != "sub") {
        EXPECT_EQ(box.read(name), expected.read(name)) << name;
      }
    }
  }
}

TEST(History, IsOnePairAPassThatSortsByItsWidth) {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(succeeded(box.run({"vote", "--cone-width", "12", "--history", "h_", "discs.pgm"})));
  std::vector<int> widths;
  for (const std::string& name : box.names()) {
    if (!name.ends_with(".ics")) continue;
    ASSERT_TRUE(name.starts_with("h_vote_"));
    widths.push_back(std::stoi(name.substr(7)));
    const std::string pixels = name.substr(0, name.size() - 4) + ".ids";
    EXPECT_EQ(fs::file_size(box / pixels), 66U * 50U * sizeof(float));
  }
  EXPECT_TRUE(std::is_sorted(widths.begin(), widths.end()));
  EXPECT_EQ(widths.front(), 0);
  EXPECT_EQ(widths.back(), 12);
  EXPECT_EQ(box.names().size(), 1 + 2 * widths.size());
}

TEST(History, ReplacesAnEarlierOne) {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  const std::vector<std::string> call{"vote", "--history", "h_", "discs.pgm"};
  EXPECT_TRUE(succeeded(box.run(call)));
  const std::string first = box.read("h_vote_10.ids");
  const std::vector<std::string> names = box.names();
  box.write("h_vote_10.ids", "old");
  EXPECT_TRUE(succeeded(box.run(call)));
  EXPECT_EQ(box.read("h_vote_10.ids"), first);
  EXPECT_EQ(box.names(), names);
}

TEST(History, AMissingDirectoryFailsAndLeavesNothing) {
  const Sandbox box;
  box.write("discs.pgm", pgm(twoDiscs()));
  for (const std::string prefix : {"missing/h_", "discs.pgm/h_"}) {
    EXPECT_TRUE(
        failedWithOneLine(box.run({"vote", "--history", prefix, "--overlay", "o.png", "discs.pgm"}),
                          "discs.pgm", "can not be written"));
  }
  EXPECT_EQ(box.names(), std::vector<std::string>{"discs.pgm"});
}

TEST(History, ADirectoryInItsWayFailsAndLeavesNothing) {
  for (const std::string taken : {"h_vote_10.ids", "h_vote_00.ics", "h_vote_04.ids"}) {
    SCOPED_TRACE(taken);
    const Sandbox box;
    box.write("discs.pgm", pgm(twoDiscs()));
    fs::create_directory(box / taken);
    EXPECT_TRUE(
        failedWithOneLine(box.run({"vote", "--history", "h_", "--centers", "c.csv", "discs.pgm"}),
                          "discs.pgm", taken + " can not be written"));
    EXPECT_EQ(box.names(), (std::vector<std::string>{"discs.pgm", taken}));
  }
}

TEST(History, NothingIsLeftForAnImageThatFails) {
  const Sandbox box;
  box.write("cut.pgm", "P5 20 20 255\n");
  EXPECT_TRUE(failedWithOneLine(box.run({"vote", "--history", "h_", "cut.pgm"}), "cut.pgm"));
  EXPECT_EQ(box.names(), std::vector<std::string>{"cut.pgm"});
}

TEST(History, OfSeveralImagesCarriesTheirNames) {
  const Sandbox box;
  box.write("a.pgm", pgm(twoDiscs()));
  box.write("b.pgm", pgm(twoDiscs()));
  EXPECT_TRUE(succeeded(
      box.run({"vote", "--cone-width", "1", "--out", "out", "--history", "h_", "a.pgm", "b.pgm"})));
  EXPECT_EQ(box.names(),
            (std::vector<std::string>{"a.pgm", "b.pgm", "h_a_vote_00.ics", "h_a_vote_00.ids",
                                      "h_a_vote_01.ics", "h_a_vote_01.ids", "h_b_vote_00.ics",
                                      "h_b_vote_00.ids", "h_b_vote_01.ics", "h_b_vote_01.ids",
                                      "out", "out/a.csv", "out/a.png", "out/b.csv", "out/b.png",
                                      "out/summary.csv"}));
}

}  // namespace
}  // namespace orva::test
