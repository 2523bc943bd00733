// findCenters(), voteField() and voteMargin(). The formats and apps tests cover them by files.
#include "orva/voting/find_centers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "orva/image/image.h"
#include "orva/scalespace/scalespace.h"
#include "orva/voting/circularvoting.h"
#include "tests/support/images.h"

namespace orva::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// A bright disc of radius 6 at (24, 18).
image<unsigned char> disc() {
  image<unsigned char> img(50, 40, 1, 1, 1);
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 50; ++x) img.setPixel(x, y, std::hypot(x - 24, y - 18) <= 6 ? 200 : 30);
  }
  return img;
}

voting::VoteSettings ofRadius(int maxRadius) {
  voting::VoteSettings settings;
  settings.maxRadius = maxRadius;
  return settings;
}

TEST(FindCenters, IsComputeWithTheDerivedSettings) {
  const image<unsigned char> img = disc();
  const voting::VoteResult result = voting::findCenters(img, ofRadius(9));
  EXPECT_EQ(result.used.coneWidth, 5);
  EXPECT_EQ(result.used.sigma, static_cast<float>(9.0 / 7));
  EXPECT_EQ(result.used.gradient,
            0.03F * scalespace::gradient(img, result.used.sigma, 1.0F).fmax());
  voting::CircularVoting voting;
  voting.setParams(voting::CircularVoting::Bright, 1, 9, 5, result.used.gradient, 0.3F,
                   result.used.sigma, voting::CircularVoting::Power, 0.5F, false, false);
  voting.compute(img);
  ASSERT_EQ(result.centers.size(), 1U);
  ASSERT_EQ(voting.centers().size(), 1U);
  EXPECT_EQ(result.centers[0].x, voting.centers()[0].x);
  EXPECT_EQ(result.centers[0].y, voting.centers()[0].y);
  EXPECT_EQ(result.centers[0].weight, voting.center_weights()[0]);
}

TEST(FindCenters, KeepsTheSettingsThatAreGiven) {
  voting::VoteSettings settings = ofRadius(9);
  settings.coneWidth = 2;
  settings.sigma = 2.5F;
  settings.gradient = 1.5F;
  const voting::VoteResult result = voting::findCenters(disc(), settings);
  EXPECT_EQ(result.used.coneWidth, 2);
  EXPECT_EQ(result.used.sigma, 2.5F);
  EXPECT_EQ(result.used.gradient, 1.5F);
}

TEST(FindCenters, ThrowsForASettingOutOfItsRange) {
  const auto refuses = [](const auto& change) {
    voting::VoteSettings settings = ofRadius(9);
    change(settings);
    EXPECT_THROW(voting::findCenters(disc(), settings), std::invalid_argument);
    EXPECT_THROW(voting::findCenters(image<float>(0, 1, 1, 1, 1), settings), std::invalid_argument);
  };
  refuses([](voting::VoteSettings& s) { s.minRadius = 0; });
  refuses([](voting::VoteSettings& s) { s.minRadius = 10; });
  refuses([](voting::VoteSettings& s) { s.coneWidth = -1; });
  refuses([](voting::VoteSettings& s) { s.sigma = 0.0F; });
  refuses([](voting::VoteSettings& s) { s.gradient = -1.0F; });
  refuses([](voting::VoteSettings& s) { s.relativeGradient = kNan; });
  refuses([](voting::VoteSettings& s) { s.threshold = kNan; });
  refuses([](voting::VoteSettings& s) { s.relativeThreshold = 0.04F; });
  refuses([](voting::VoteSettings& s) { s.relativeThreshold = 1.5F; });
  refuses([](voting::VoteSettings& s) { s.power = kNan; });
}

TEST(FindCenters, ThrowsForAnImageThatIsTooLarge) {
  const int side = 32767 - 2 * static_cast<int>(voting::voteMargin(5, 9));
  EXPECT_TRUE(
      voting::findCenters(image<unsigned char>(side, 1, 1, 1, 1), ofRadius(9)).centers.empty());
  EXPECT_THROW(voting::findCenters(image<unsigned char>(side + 1, 1, 1, 1, 1), ofRadius(9)),
               std::length_error);
  EXPECT_THROW(voting::findCenters(image<unsigned char>(1, side + 1, 1, 1, 1), ofRadius(9)),
               std::length_error);
}

TEST(FindCenters, PassesTheHistoryOn) {
  std::vector<int> widths;
  voting::findCenters(disc(), ofRadius(9), [&](int width, const image<float>& votes) {
    widths.push_back(width);
    EXPECT_EQ(votes.nx(), 50);
    EXPECT_EQ(votes.ny(), 40);
  });
  ASSERT_GT(widths.size(), 1U);
  EXPECT_EQ(widths.front(), 5);
}

TEST(VoteField, HoldsTheVotesOfTheCenters) {
  const image<unsigned char> img = disc();
  const image<float> field = voteField(img, ofRadius(9));
  ASSERT_EQ(field.nx(), 50);
  ASSERT_EQ(field.ny(), 40);
  // The center's weight is the mean vote above 0.3 of the strongest.
  double sum = 0.0;
  int count = 0;
  for (int i = 0; i < field.npix(); ++i) {
    if (field.pixels()[i] > 0.3F * field.fmax()) {
      sum += static_cast<double>(field.pixels()[i]);
      ++count;
    }
  }
  ASSERT_GT(count, 0);
  const voting::VoteResult result = voting::findCenters(img, ofRadius(9));
  ASSERT_EQ(result.centers.size(), 1U);
  EXPECT_NEAR(result.centers[0].weight, sum / count, 1e-4 * sum / count);
}

TEST(VotesWithoutMargin, AreThoseOfTheLastPass) {
  const image<unsigned char> img = disc();
  using voting::CircularVoting;
  CircularVoting search;
  EXPECT_TRUE(search.votesWithoutMargin().isNull());
  search.setParams(CircularVoting::Bright, 1, 9, 5, 1.0F, 0.3F, 1.3F, CircularVoting::Power, 0.5F,
                   false, false);
  search.compute(img);
  voting::VoteSettings settings = ofRadius(9);
  settings.coneWidth = 5;
  settings.sigma = 1.3F;
  settings.gradient = 1.0F;
  EXPECT_TRUE(sameImage(search.votesWithoutMargin(), voteField(img, settings)));
}

TEST(VoteField, IsEmptyForAnImageWithoutPixels) {
  EXPECT_TRUE(voteField(image<float>(0, 1, 1, 1, 1), ofRadius(9)).isNull());
  EXPECT_THROW(voteField(disc(), ofRadius(0)), std::invalid_argument);
}

TEST(VoteMargin, HoldsTheDiagonalOfTheWidestCone) {
  EXPECT_EQ(voting::voteMargin(0, 1), 4);
  EXPECT_EQ(voting::voteMargin(3, 4), 8);
  EXPECT_EQ(voting::voteMargin(500, 1000), 1121);
}

}  // namespace
}  // namespace orva::test
