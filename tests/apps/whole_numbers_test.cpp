// Options that take whole numbers: what is told about text that is none, and about one out of
// range.
#include <gtest/gtest.h>

#include "tests/apps/pictures.h"
#include "tests/apps/sandbox.h"

namespace orva::test {
namespace {

struct WholeNumberOption {
  std::vector<std::string> call;
  std::string option;
  std::string low;
  std::string high;
};

const std::vector<WholeNumberOption> kOptions{
    {{"vote", "a.pgm"}, "--min-radius", "1", "1000"},
    {{"vote", "a.pgm"}, "--max-radius", "1", "1000"},
    {{"vote", "a.pgm"}, "--cone-width", "0", "1000"},
    {{"vote", "a.pgm"}, "--frame", "0", "65534"},
    {{"measure", "a.pgm", "--table", "t.csv"}, "--min-size", "1", "2147483647"},
    {{"measure", "a.pgm", "--table", "t.csv"}, "--max-size", "1", "2147483647"},
    {{"measure", "a.pgm", "--table", "t.csv"}, "--frame", "0", "65534"},
    {{"filter", "a.pgm", "--op", "dx", "--sigma", "1", "--output", "o.tif"},
     "--frame",
     "0",
     "65534"},
    {{"convert", "a.pgm", "o.tif"}, "--frame", "0", "65534"},
};

// What standard error holds after the call with this value of the option.
void expectMessage(const WholeNumberOption& option, const std::string& value,
                   const std::string& message) {
  SCOPED_TRACE(option.call.front() + ' ' + option.option + " '" + value + "'");
  const Sandbox box;
  box.write("a.pgm", pgm(twoDiscs()));
  std::vector<std::string> call = option.call;
  call.insert(call.end(), {option.option, value});
  const Outcome outcome = box.run(call);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "orva: " + option.option + ": " + message + " (--help shows how)\n");
  EXPECT_EQ(box.names(), std::vector<std::string>{"a.pgm"});
}

TEST(WholeNumbers, OtherTextIsAnsweredWithWhatIsNeeded) {
  for (const WholeNumberOption& option : kOptions) {
    for (const std::string value : {"36.5", "36.0", "3e1", "ten", "1x", "nan"}) {
      expectMessage(
          option, value,
          "must be a whole number from " + option.low + " to " + option.high + ", not " + value);
    }
  }
}

TEST(WholeNumbers, OutOfRangeKeepTheirMessage) {
  for (const WholeNumberOption& option : kOptions) {
    for (const std::string value :
         {"-1", "2147483648", "99999999999999999999", "-99999999999999999999"}) {
      expectMessage(option, value,
                    "Value " + value + " not in range " + option.low + " to " + option.high);
    }
  }
}

TEST(WholeNumbers, MayBeWrittenInOtherBases) {
  const Sandbox box;
  box.write("a.pgm", pgm(twoDiscs()));
  const Outcome decimal = box.run({"vote", "--max-radius", "10", "a.pgm"});
  EXPECT_TRUE(succeeded(decimal));
  EXPECT_EQ(box.run({"vote", "--max-radius", "0xA", "a.pgm"}).out, decimal.out);
}

}  // namespace
}  // namespace orva::test
