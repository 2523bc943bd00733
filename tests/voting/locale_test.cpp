// The voting and the names of its history are the same in every locale.
#include "tests/support/locale.h"

#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

// Cones that are 1000 pixels wide have a number that a locale would group.
TEST(HistoryText, HasTheSameNamesAndContentsInEveryLocale) {
  VotingParams params;
  params.minRadius = params.maxRadius = params.coneWidth = 1000;
  const auto img = discImage<unsigned char>({5, 4}, {{2, 2, 1}}, 200, 0);
  const TempDir classic;
  const TempDir foreign;
  const auto vote = [&](const TempDir& dir) {
    Probe probe(params);
    probe.saveHistory(true);
    probe.setPrefix(dir.file(""));
    probe.compute(img);
  };
  vote(classic);
  {
    const ForeignLocale comma;
    vote(foreign);
  }
  EXPECT_EQ(foreign.names(), classic.names());
  EXPECT_TRUE(classic.names().contains("vote_1000.ics"));
  for (const std::string& name : classic.names()) {
    EXPECT_EQ(readFile(foreign.file(name)), readFile(classic.file(name)));
  }
}

}  // namespace
}  // namespace orva::test
