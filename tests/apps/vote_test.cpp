// Every option reaches the library: the command's table is that of a direct call.
#include <gtest/gtest.h>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"
#include "tests/apps/tables.h"

namespace orva::test {
namespace {

// Bright and dark discs of several sizes and levels on a background that is not even, so that every
// setting makes a difference.
Picture scene() {
  Picture picture = discs(120, 90,
                          {{20, 21, 8},
                           {52, 24, 6, 160},
                           {88, 20, 9, 110},
                           {104, 62, 4, 240},
                           {24, 64, 9, 20},
                           {60, 66, 7, 40},
                           {84, 58, 3, 15}},
                          90);
  std::size_t i = 0;
  for (double& v : picture.values) {
    const std::size_t noise = i * 2654435761U >> 7U;
    v += static_cast<double>(noise % 9) - 4;
    ++i;
  }
  return picture;
}

struct Case {
  std::vector<std::string> arguments;
  Settings settings;
};

Table tableOf(const Sandbox& box, const std::vector<std::string>& arguments) {
  std::vector<std::string> all{"vote", "scene.pgm"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const Outcome outcome = box.run(all);
  EXPECT_TRUE(succeeded(outcome));
  return parseCsv(outcome.out);
}

TEST(Vote, DefaultsAreAsDocumented) {
  const Sandbox box;
  box.write("scene.pgm", pgm(scene()));
  const Table table = tableOf(box, {});
  EXPECT_EQ(table, voteDirectly(imageOf<unsigned char>(scene()), {}));
  EXPECT_GE(table.size(), 3U);
}

TEST(Vote, EveryOptionReachesTheLibrary) {
  const std::vector<Case> cases{
      {{"--polarity", "bright"}, {}},
      {{"--polarity", "dark"}, {.polarity = voting::CircularVoting::Dark}},
      {{"--polarity", "both"}, {.polarity = voting::CircularVoting::Both}},
      {{"--min-radius", "5"}, {.minRadius = 5}},
      {{"--max-radius", "12"}, {.maxRadius = 12}},
      {{"--cone-width", "3"}, {.coneWidth = 3}},
      {{"--cone-width", "0"}, {.coneWidth = 0}},
      {{"--sigma", "1.25"}, {.sigma = 1.25F}},
      {{"--gradient", "2.5"}, {.gradient = 2.5F}},
      {{"--gradient", "0"}, {.gradient = 0.0F}},
      {{"--relative-gradient", "0.4"}, {.relativeGradient = 0.4F}},
      {{"--threshold", "30"}, {.threshold = 30.0F}},
      {{"--relative-threshold", "0.6"}, {.relativeThreshold = 0.6F}},
      {{"--edges"}, {.edges = true}},
      {{"--power", "2"}, {.power = 2.0F}},
  };
  const Picture picture = scene();
  const image<unsigned char> img = imageOf<unsigned char>(picture);
  const Table usual = voteDirectly(img, {});
  const Sandbox box;
  box.write("scene.pgm", pgm(picture));
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.arguments));
    const Table table = tableOf(box, c.arguments);
    EXPECT_EQ(table, voteDirectly(img, c.settings));
    EXPECT_FALSE(table.empty());
    if (c.arguments.back() != "bright") {
      EXPECT_NE(table, usual);
    }
  }
}

TEST(Vote, AllOptionsGoTogether) {
  const Sandbox box;
  box.write("scene.pgm", pgm(scene()));
  const Table table = tableOf(box, {"--polarity", "both", "--min-radius", "2", "--max-radius", "11",
                                    "--cone-width", "7", "--sigma", "1.5", "--gradient", "3",
                                    "--threshold", "12", "--edges", "--power", "0.75"});
  EXPECT_EQ(table,
            voteDirectly(imageOf<unsigned char>(scene()), {.polarity = voting::CircularVoting::Both,
                                                           .minRadius = 2,
                                                           .maxRadius = 11,
                                                           .coneWidth = 7,
                                                           .sigma = 1.5F,
                                                           .gradient = 3.0F,
                                                           .threshold = 12.0F,
                                                           .edges = true,
                                                           .power = 0.75F}));
  EXPECT_FALSE(table.empty());
}

// The cone width is half the largest radius, halves upward; sigma a seventh, but 1 at least.
TEST(Vote, WidthAndSigmaFollowTheLargestRadius) {
  const Picture picture = scene();
  const image<unsigned char> img = imageOf<unsigned char>(picture);
  struct Row {
    int maxRadius;
    int coneWidth;
    float sigma;
  };
  const Sandbox box;
  box.write("scene.pgm", pgm(picture));
  for (const Row& r :
       {Row{1, 1, 1.0F}, Row{2, 1, 1.0F}, Row{5, 3, 1.0F}, Row{7, 4, 1.0F},
        Row{8, 4, static_cast<float>(8 / 7.0)}, Row{14, 7, 2.0F}, Row{21, 11, 3.0F}}) {
    SCOPED_TRACE(r.maxRadius);
    EXPECT_EQ(
        tableOf(box, {"--max-radius", std::to_string(r.maxRadius)}),
        voteDirectly(img, {.maxRadius = r.maxRadius, .coneWidth = r.coneWidth, .sigma = r.sigma}));
  }
}

TEST(Vote, PolaritiesFindTheirDiscs) {
  const std::vector<Disc> bright{{20, 22, 7}, {70, 24, 7}};
  const std::vector<Disc> dark{{22, 62, 7, 20}, {68, 60, 7, 20}};
  std::vector<Disc> both = bright;
  both.insert(both.end(), dark.begin(), dark.end());
  const Sandbox box;
  box.write("scene.pgm", pgm(discs(90, 84, both, 110)));
  EXPECT_TRUE(
      marksEach(tableOf(box, {"--max-radius", "10", "--relative-threshold", "0.6"}), bright));
  EXPECT_TRUE(marksEach(
      tableOf(box, {"--max-radius", "10", "--relative-threshold", "0.6", "--polarity", "dark"}),
      dark));
  EXPECT_TRUE(marksEach(
      tableOf(box, {"--max-radius", "10", "--relative-threshold", "0.6", "--polarity", "both"}),
      both));
}

}  // namespace
}  // namespace orva::test
