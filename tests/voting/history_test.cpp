#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/printed.h"
#include "tests/support/reference/voting.h"
#include "tests/support/resource_limit.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

class History : public testing::Test {
 protected:
  std::string prefix(const std::string& start) const { return dir_.file(start); }

  std::set<std::string> names() const { return dir_.names(); }
  std::string content(const std::string& name) const { return readFile(dir_.file(name)); }

  Probe computed(const VotingParams& params, const std::string& start, const Image& img) {
    Probe probe(params);
    probe.setPrefix(prefix(start));
    probe.saveHistory(true);
    probe.compute(img);
    return probe;
  }

 private:
  TempDir dir_;
};

VotingParams paramsOf(int maxRadius, int coneWidth) {
  VotingParams params;
  params.maxRadius = maxRadius;
  params.coneWidth = coneWidth;
  return params;
}

std::set<std::string> pairsOf(const std::string& prefix, const std::vector<std::string>& labels) {
  std::set<std::string> names;
  for (const std::string& label : labels) {
    for (const char* extension : {".ics", ".ids"}) {
      names.insert(prefix + "vote_" + label + extension);
    }
  }
  return names;
}

std::string labelOf(int width) {
  std::string label = width <= 9 ? "0" : "";
  label += std::to_string(width);
  return label;
}

// The bytes of the accumulator without its margin.
std::string innerBytes(const image<float>& acc, int margin) {
  std::string bytes;
  for (int y = margin; y < acc.ny() - margin; ++y) {
    const float* row = acc.pixels() + y * acc.nx() + margin;
    const auto size = static_cast<std::size_t>(acc.nx() - 2 * margin) * sizeof(float);
    bytes.append(reinterpret_cast<const char*>(row), size);
  }
  return bytes;
}

TEST_F(History, IsAPairOfFilesForEveryNarrowingPass) {
  computed(paramsOf(20, 10), "", blank<float>({9, 7}));
  EXPECT_EQ(names(), pairsOf("", {"10", "06", "04", "02", "01", "00"}));
}

TEST_F(History, PutsThePrefixBeforeTheNames) {
  computed(paramsOf(10, 3), "run7_", blank<float>({9, 7}));
  EXPECT_EQ(names(), pairsOf("run7_", {"03", "02", "01", "00"}));
}

TEST_F(History, OfConeWidthZeroIsOnePair) {
  computed(paramsOf(10, 0), "a", blank<float>({9, 7}));
  EXPECT_EQ(names(), pairsOf("a", {"00"}));
}

TEST_F(History, LabelsOfThreeDigitsStayAsTheyAre) {
  VotingParams params = paramsOf(100, 100);
  params.minRadius = 100;
  computed(params, "", blank<float>({2, 2}));
  std::vector<std::string> labels;
  for (int w = 100; w > 0; w = reference::nextConeRadius(100, w)) {
    labels.push_back(labelOf(w));
  }
  labels.emplace_back("00");
  EXPECT_EQ(names(), pairsOf("", labels));
}

TEST_F(History, IsOffUnlessAsked) {
  Probe probe(paramsOf(10, 3));
  probe.setPrefix(prefix("x"));
  probe.compute(blank<float>({9, 7}));
  EXPECT_TRUE(names().empty());
}

TEST_F(History, HoldsTheAccumulatorWithoutItsMarginBeforeEveryPass) {
  const VotingParams params = paramsOf(20, 10);
  const auto img = discImage<unsigned char>({37, 26}, {{12, 11, 6}, {28, 16, 5}}, 200, 30);
  computed(params, "p_", img);
  const reference::Voting expected = reference::compute(params, img);
  ASSERT_EQ(expected.history.size(), 6U);
  for (const auto& [width, acc] : expected.history) {
    const std::string name = "p_vote_" + labelOf(width);
    EXPECT_TRUE(content(name + ".ids") == innerBytes(acc, expected.margin)) << name;
    EXPECT_GT(acc.max(), 0.0F);
  }
}

TEST_F(History, ObserversSeeTheVotesBeforeEveryPass) {
  const VotingParams params = paramsOf(20, 10);
  const auto img = discImage<unsigned char>({37, 26}, {{12, 11, 6}, {28, 16, 5}}, 200, 30);
  const reference::Voting expected = reference::compute(params, img);
  Probe probe(params);
  probe.saveHistory(true);
  probe.setPrefix(prefix("p_"));
  std::size_t pass = 0;
  probe.compute(img, [&](int width, const image<float>& votes) {
    ASSERT_LT(pass, expected.history.size());
    const auto& [expectedWidth, acc] = expected.history[pass++];
    EXPECT_EQ(width, expectedWidth);
    EXPECT_EQ(votes.nx(), img.nx());
    EXPECT_EQ(votes.ny(), img.ny());
    EXPECT_TRUE(innerBytes(votes, 0) == innerBytes(acc, expected.margin)) << width;
  });
  EXPECT_EQ(pass, expected.history.size());
  expectSameVoting(probe, expected);
  EXPECT_TRUE(names().empty());  // no history beside it
}

TEST_F(History, AnObserverCanEndTheSearch) {
  Probe probe(paramsOf(20, 10));
  int calls = 0;
  EXPECT_THROW(probe.compute(blank<float>({9, 7}),
                             [&](int, const image<float>&) {
                               if (++calls == 2) throw std::runtime_error("enough");
                             }),
               std::runtime_error);
  EXPECT_EQ(calls, 2);
  EXPECT_TRUE(probe.centers().empty());
}

TEST_F(History, HasTheHeaderOfAFloatPlane) {
  computed(paramsOf(20, 10), "p_", blank<short>({37, 26, 2}));
  for (const char* label : {"10", "06", "04", "02", "01", "00"}) {
    EXPECT_EQ(content("p_vote_" + std::string(label) + ".ics"),
              "\t\n"
              "ics_version\t1.0\n"
              "filename\tp_vote_" +
                  std::string(label) +
                  "\n"
                  "layout\tparameters\t6\n"
                  "layout\torder\tbits\tx\ty\tz\tc\tt\n"
                  "layout\tsizes\t32\t37\t26\t1\t1\t1\n"
                  "layout\tcoordinates\tvideo\n"
                  "layout\tsignificant_bits\t32\n"
                  "representation\tformat\tfloat\n"
                  "representation\tsign\tsigned\n"
                  "representation\tcompression\tuncompressed\n"
                  "representation\tbyte_order\t2\t1\n"
                  "representation\tSCIL_TYPE\tg2d\n"
                  "parameter\tex_filter\tUNDEFINED\n"
                  "parameter\texp_time\tUNDEFINED\n"
                  "history\tdate\tUNDEFINED\n"
                  "history\tUTC_seconds\tUNDEFINED\n");
  }
}

TEST_F(History, OfAnEmptyAccumulatorWritesNothing) {
  testing::internal::CaptureStderr();
  for (const Shape& shape : {Shape{0, 1}, Shape{0, 0}, Shape{5, 5, 0}}) {
    computed(paramsOf(10, 3), "", blank<float>(shape));
  }
  Probe fresh;
  fresh.setPrefix(prefix(""));
  fresh.saveHistory(true);
  fresh.vote();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(names().empty());
}

TEST_F(History, ThatCannotBeWrittenDoesNotChangeTheResult) {
  const VotingParams params = paramsOf(10, 3);
  const auto img = discImage<unsigned char>({30, 26}, {{12, 11, 6}}, 200, 30);
  testing::internal::CaptureStderr();
  Probe probe = computed(params, "missing/", img);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("In image_io::writeICS\n"),
            std::string::npos);
  expectSameVoting(probe, reference::compute(params, img));
  EXPECT_TRUE(names().empty());
}

// The pixels of a pair have 3848 bytes, its header some hundreds.
TEST_F(History, ThatIsCutOffIsReportedAndKeepsTheResult) {
  const VotingParams params = paramsOf(20, 10);
  const auto img = discImage<unsigned char>({37, 26}, {{12, 11, 6}, {28, 16, 5}}, 200, 30);
  const reference::Voting expected = reference::compute(params, img);
  computed(params, "", img);
  for (const std::size_t room : {0U, 1U, 100U, 1000U, 3847U, 3848U}) {
    SCOPED_TRACE(room);
    std::string messages;
    for (const char* label : {"10", "06", "04", "02", "01", "00"}) {
      for (const char* extension : {".ics", ".ids"}) {
        const std::string name = "vote_" + std::string(label) + extension;
        if (room >= content(name).size()) continue;
        messages += "In image_io::writeICS\n   Error in writing " + prefix("cut_" + name) + "\n";
      }
    }
    Probe probe(params);
    probe.setPrefix(prefix("cut_"));
    probe.saveHistory(true);
    const std::string printed = printedBy([&] {
      const ResourceLimit limit(RLIMIT_FSIZE, static_cast<long>(room));
      probe.compute(img);
    });
    EXPECT_EQ(printed, messages);
    expectSameVoting(probe, expected);
  }
}

TEST_F(History, DoesNotChangeTheResult) {
  VotingParams params = paramsOf(10, 4);
  params.regionType = 2;
  const auto img = discImage<unsigned char>({30, 26}, {{12, 11, 6}}, 200, 30);
  Probe probe = computed(params, "", img);
  expectSameVoting(probe, reference::compute(params, img));
}

}  // namespace
}  // namespace orva::test
