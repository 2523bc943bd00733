// The voting and the names of its history are the same in every locale.
#include "tests/support/locale.h"

#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/voting/probe.h"

namespace {

using orva_test::ForeignLocale;
using orva_test::Probe;
using orva_test::VotingParams;

// Cones that are 1000 pixels wide have a number that a locale would group.
TEST(HistoryText, HasTheSameNamesAndContentsInEveryLocale) {
  VotingParams params;
  params.minRadius = params.maxRadius = params.coneWidth = 1000;
  const auto img = orva_test::discImage<unsigned char>({5, 4}, {{2, 2, 1}}, 200, 0);
  const orva_test::TempDir classic;
  const orva_test::TempDir foreign;
  const auto vote = [&](const orva_test::TempDir& dir) {
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
    EXPECT_EQ(orva_test::readFile(foreign.file(name)), orva_test::readFile(classic.file(name)));
  }
}

}  // namespace
