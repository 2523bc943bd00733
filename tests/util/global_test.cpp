// Numbers and text, the environment, shell commands, the notice of a bug.
#include "orva/util/global.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>

namespace orva::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <class V>
std::string printed(const char* format, V v) {
  char text[400];
  std::snprintf(text, sizeof text, format, v);
  return text;
}

// The value that stream extraction leaves.
template <class T>
T extracted(const std::string& text) {
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  T value{};
  in >> value;
  return value;
}

int intOf(std::string text) { return toInt(text); }
float floatOf(std::string text) { return toFloat(text); }

TEST(ToString, CopiesText) {
  EXPECT_EQ(toString(std::string("a b\n")), "a b\n");
  EXPECT_EQ(toString("text"), "text");
  EXPECT_EQ(toString(""), "");
  EXPECT_EQ(toString(static_cast<const char*>(nullptr)), "");
}

TEST(ToString, WritesIntsInDecimal) {
  EXPECT_EQ(toString(3), "3");
  EXPECT_EQ(toString(0), "0");
  EXPECT_EQ(toString(-17), "-17");
  EXPECT_EQ(toString(std::numeric_limits<int>::min()), "-2147483648");
  EXPECT_EQ(toString(std::numeric_limits<int>::max()), "2147483647");
}

TEST(ToString, WritesFloatsWithSixDecimals) {
  EXPECT_EQ(toString(0.5F), "0.500000");
  EXPECT_EQ(toString(-1.0F), "-1.000000");
  EXPECT_EQ(toString(1e-9F), "0.000000");
  EXPECT_EQ(toString(std::numeric_limits<float>::max()),
            "340282346638528859811704183484516925440.000000");
}

TEST(ToString, ExponentForDoublesUnlikeFloatsIsIntended) {
  EXPECT_EQ(toString(0.5), "5.000000e-01");
  EXPECT_EQ(toString(-1.0), "-1.000000e+00");
  EXPECT_EQ(toString(1e300), "1.000000e+300");
  EXPECT_EQ(toString(0.0), "0.000000e+00");
}

TEST(ToString, WritesInfinitiesAsTheFormatsDo) {
  EXPECT_EQ(toString(static_cast<float>(kInfinity)), "inf");
  EXPECT_EQ(toString(-kInfinity), "-inf");
  EXPECT_EQ(toString(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(ToString, AgreesWithTheFormatsForRandomNumbers) {
  std::mt19937 random(91);
  std::uniform_real_distribution<double> exponent(-37, 38);
  for (int round = 0; round < 2000; ++round) {
    const int n = static_cast<int>(random());
    EXPECT_EQ(toString(n), printed("%d", n));
    const double v = (round % 2 == 0 ? 1 : -1) * std::pow(10.0, exponent(random));
    const auto f = static_cast<float>(v);
    EXPECT_EQ(toString(f), printed("%f", double{f}));
    EXPECT_EQ(toString(v), printed("%e", v));
  }
}

TEST(ToInt, ReadsTheNumberAtTheStart) {
  EXPECT_EQ(intOf("  42 "), 42);
  EXPECT_EQ(intOf("7.9"), 7);
  EXPECT_EQ(intOf("12abc"), 12);
  EXPECT_EQ(intOf("\t\n-5"), -5);
  EXPECT_EQ(intOf("+6"), 6);
  EXPECT_EQ(intOf("007"), 7);
}

TEST(ToInt, IsZeroWithoutANumber) {
  for (const char* text : {"", "   ", "abc", "-", ".5", "x7"}) EXPECT_EQ(intOf(text), 0) << text;
}

TEST(ToInt, IsTheNearestIntOutOfRange) {
  EXPECT_EQ(intOf("99999999999"), std::numeric_limits<int>::max());
  EXPECT_EQ(intOf("-99999999999"), std::numeric_limits<int>::min());
}

TEST(ToFloat, ReadsTheNumberAtTheStart) {
  EXPECT_EQ(floatOf("1e3"), 1000.0F);
  EXPECT_EQ(floatOf(" 0.1"), 0.1F);
  EXPECT_EQ(floatOf("-2.5mm"), -2.5F);
  EXPECT_EQ(floatOf("12abc"), 12.0F);
  EXPECT_EQ(floatOf(".5"), 0.5F);
  EXPECT_EQ(floatOf("3."), 3.0F);
}

TEST(ToFloat, IsZeroWithoutANumber) {
  for (const char* text : {"", "   ", "abc", "-", ".", "inf", "nan"}) {
    EXPECT_EQ(floatOf(text), 0.0F) << text;
  }
}

TEST(ToFloat, IsTheLargestFloatOutOfRange) {
  EXPECT_EQ(floatOf("1e99"), std::numeric_limits<float>::max());
  EXPECT_EQ(floatOf("-1e99"), -std::numeric_limits<float>::max());
}

TEST(FromText, AgreesWithStreamExtraction) {
  std::mt19937 random(92);
  const std::string letters = "0123456789012345 \t+-..eEax";
  std::uniform_int_distribution<std::size_t> letter(0, letters.size() - 1);
  std::uniform_int_distribution<int> length(0, 12);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (int n = length(random); n > 0; --n) text += letters[letter(random)];
    EXPECT_EQ(intOf(text), extracted<int>(text)) << '"' << text << '"';
    EXPECT_EQ(floatOf(text), extracted<float>(text)) << '"' << text << '"';
  }
}

TEST(FromText, LeavesTheTextAlone) {
  std::string text = " 42 ";
  toInt(text);
  toFloat(text);
  EXPECT_EQ(text, " 42 ");
}

TEST(FromText, ReadsBackWhatToStringWrote) {
  for (const int n : {0, 1, -1, 123456789, -2147483647}) EXPECT_EQ(intOf(toString(n)), n);
  for (const float f : {0.0F, 0.5F, -3.25F, 1024.0F}) EXPECT_EQ(floatOf(toString(f)), f);
}

TEST(GetEnv, GivesTheValue) {
  setenv("ORVA_TEST_VARIABLE", "some value", 1);
  EXPECT_EQ(getEnv("ORVA_TEST_VARIABLE"), "some value");
  setenv("ORVA_TEST_VARIABLE", "", 1);
  EXPECT_EQ(getEnv("ORVA_TEST_VARIABLE"), "");
  unsetenv("ORVA_TEST_VARIABLE");
}

TEST(GetEnv, ThrowsForAVariableThatIsNotSet) {
  unsetenv("ORVA_TEST_VARIABLE");
  EXPECT_THROW(getEnv("ORVA_TEST_VARIABLE"), std::logic_error);
}

TEST(ExecSysCmd, ReturnsTheStatus) {
  EXPECT_EQ(execSysCmd("true"), 0);
  const int status = execSysCmd("exit 3");
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST(ExecSysCmd, RunsInTheShell) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(execSysCmd("for i in 1 2; do echo line $i; done"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "line 1\nline 2\n");
}

TEST(ReportBugInfo, WritesTheNoticeAndReturns) {
  testing::internal::CaptureStderr();
  reportBugInfo("foo()");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "There is an unexpected bug in \n"
            "* foo() *\n"
            "Please report this problem to the orva maintainers: bugs@orva.example\n"
            "Thanks!\n");
}

}  // namespace
}  // namespace orva::test
