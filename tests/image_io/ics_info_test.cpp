// Metadata records: each setter's line, and the order in which they are written.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "orva/image_io/image_io.h"

namespace orva::test {
namespace {

static_assert(std::has_virtual_destructor_v<image_io::IcsInfo> &&
              std::has_virtual_destructor_v<image_io::MultiChannelIcsInfo>);
static_assert(std::is_copy_assignable_v<image_io::IcsInfo> &&
              std::is_copy_assignable_v<image_io::MultiChannelIcsInfo>);

constexpr const char* kNoHistory =
    "history\tdate\tUNDEFINED\n"
    "history\tUTC_seconds\tUNDEFINED\n"
    "history\tScope\tUNDEFINED\n";
constexpr const char* kNoTime =
    "history\tdate\tUNDEFINED\n"
    "history\tUTC_seconds\tUNDEFINED\n";
constexpr const char* kNoFilters =
    "parameter\tex_filter\tUNDEFINED\n"
    "parameter\texp_time\tUNDEFINED\n";
constexpr const char* kNoAnnotation = "history\tAnnotation\tNONE";

template <class Info>
std::string written(const Info& info) {
  std::ostringstream out;
  out << info;
  return out.str();
}

template <class Info>
class Records : public testing::Test {
 protected:
  // What every record of the class writes before its history when it has no channel.
  static std::string defaults() {
    return std::is_same_v<Info, image_io::IcsInfo> ? std::string() : std::string(kNoFilters);
  }
};
using RecordTypes = testing::Types<image_io::IcsInfo, image_io::MultiChannelIcsInfo>;
TYPED_TEST_SUITE(Records, RecordTypes);

TEST(IcsInfo, FreshWritesThreeUndefinedLinesAndNoAnnotation) {
  EXPECT_EQ(written(image_io::IcsInfo("d")), std::string(kNoHistory) + kNoAnnotation);
}

TEST(MultiChannelIcsInfo, FreshWritesFilterDefaultsUnlikeIcsInfoAsIsIntended) {
  EXPECT_EQ(written(image_io::MultiChannelIcsInfo("d")),
            std::string(kNoFilters) + kNoHistory + kNoAnnotation);
}

TYPED_TEST(Records, StartEmpty) {
  const TypeParam info("plate/well 7");
  EXPECT_EQ(info.datasetName(), "plate/well 7");
  EXPECT_EQ(info.getUTCseconds(), 0);
}

TEST(IcsInfo, NamesTheDataSetWithItsChannel) {
  image_io::IcsInfo info("d");
  EXPECT_EQ(info.channelName(), "");
  info.setWithChannelInfo("488", "20 ms", 'c');
  EXPECT_EQ(info.channelName(), "c");
  EXPECT_EQ(info.datasetName(), "d_c");
  EXPECT_EQ(written(info), std::string("parameter\tex_filter\t488\nparameter\texp_time\t20 ms\n") +
                               kNoHistory + kNoAnnotation);
  info.setWithChannelInfo("561", "5 ms", 'r');
  EXPECT_EQ(info.datasetName(), "d_r");
  EXPECT_EQ(written(info), std::string("parameter\tex_filter\t561\nparameter\texp_time\t5 ms\n") +
                               kNoHistory + kNoAnnotation);
}

TEST(MultiChannelIcsInfo, CollectsItsChannels) {
  image_io::MultiChannelIcsInfo info("d");
  EXPECT_TRUE(info.channelNames().empty());
  info.setWithChannelInfo("488", "20 ms", 'g');
  info.setWithChannelInfo("561", "5 ms", 'r');
  EXPECT_THAT(info.channelNames(), testing::ElementsAre("g", "r"));
  EXPECT_EQ(info.datasetName(), "d");
  EXPECT_EQ(written(info), std::string("parameter\tex_filter\t488\nparameter\texp_time\t20 ms\n"
                                       "parameter\tex_filter\t561\nparameter\texp_time\t5 ms\n") +
                               kNoHistory + kNoAnnotation);
}

TYPED_TEST(Records, ConvertsFromADataSetName) {
  static_assert(std::is_convertible_v<std::string, TypeParam>);
  const TypeParam info = std::string("plate/well");
  EXPECT_EQ(info.datasetName(), "plate/well");
}

TEST(IcsInfo, LeavesOutEmptyItems) {
  image_io::IcsInfo info("d");
  info.setWithChannelInfo("", "", 'c');
  info.setScope("");
  info.setSample("", "cells", "", 0.5F, -2, "");
  info.addProperty({"parameter", "", "gain", "", "3"});
  EXPECT_EQ(written(info), std::string("parameter\tex_filter\nparameter\texp_time\n") + kNoTime +
                               "history\tScope\n"
                               "Sample\tcells\t0.500000\t-2.000000\n"
                               "parameter\tgain\t3\n" +
                               kNoAnnotation);
}

TEST(MultiChannelIcsInfo, WritesEmptyItemsUnlikeIcsInfoAsIsIntended) {
  image_io::MultiChannelIcsInfo info("d");
  info.setWithChannelInfo("", "", 'c');
  info.setScope("");
  info.setSample("", "cells", "", 0.5F, -2, "");
  info.addProperty({"parameter", "", "gain", "", "3"});
  EXPECT_EQ(written(info), std::string("parameter\tex_filter\t\nparameter\texp_time\t\n") +
                               kNoTime +
                               "history\tScope\t\n"
                               "Sample\t\tcells\t\t0.500000\t-2.000000\t\n"
                               "parameter\t\tgain\t\t3\n" +
                               kNoAnnotation);
}

TYPED_TEST(Records, WriteScopeAndSample) {
  TypeParam info("d");
  info.setScope("widefield 40x");
  info.setSample("s1", "HeLa", "DAPI", 37.25F, 1e-7F, "fixed");
  EXPECT_EQ(written(info), this->defaults() + kNoTime +
                               "history\tScope\twidefield 40x\n"
                               "Sample\ts1\tHeLa\tDAPI\t37.250000\t0.000000\tfixed\n" +
                               kNoAnnotation);
}

TYPED_TEST(Records, ReplaceScopeSampleAndAnnotation) {
  TypeParam info("d");
  for (const char* text : {"first", "second"}) {
    info.setScope(text);
    info.setSample(text, "b", "c", 1, 2, "d");
    info.annotate(text);
  }
  EXPECT_EQ(written(info), this->defaults() + kNoTime +
                               "history\tScope\tsecond\n"
                               "Sample\tsecond\tb\tc\t1.000000\t2.000000\td\n"
                               "history\tAnnotation\tsecond");
}

TYPED_TEST(Records, WriteNonEmptyPropertiesInOrder) {
  TypeParam info("d");
  info.addProperty({});
  info.addProperty({"one"});
  info.addProperty({""});
  info.addProperty({"two", "items"});
  EXPECT_EQ(written(info), this->defaults() + kNoHistory + "one\ntwo\titems\n" + kNoAnnotation);
}

TYPED_TEST(Records, KeepAnEmptyFirstItemOfAProperty) {
  TypeParam info("d");
  info.addProperty({"", "second"});
  EXPECT_EQ(written(info), this->defaults() + kNoHistory + "\tsecond\n" + kNoAnnotation);
}

TEST(IcsInfo, AnnotatesEveryLine) {
  const std::string prefix = "history\tAnnotation\t";
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"one", prefix + "one"},
      {"one\ntwo", prefix + "one\n" + prefix + "two"},
      {"one\n", prefix + "one\n"},
      {"one\n\ntwo", prefix + "one\n" + prefix + "\n" + prefix + "two"},
      {"\none", prefix + "\n" + prefix + "one"},
      {"\n", prefix + "\n"},
      {"", kNoAnnotation}};
  for (const auto& [text, lines] : rows) {
    image_io::IcsInfo info("d");
    info.annotate("an earlier text");
    info.annotate(text);
    EXPECT_EQ(written(info), kNoHistory + lines) << text;
  }
}

TEST(MultiChannelIcsInfo, AnnotatesTheWholeTextOnceAsIsIntended) {
  for (const std::string text : {"one", "one\ntwo\n", ""}) {
    image_io::MultiChannelIcsInfo info("d");
    info.annotate(text);
    EXPECT_EQ(written(info), std::string(kNoFilters) + kNoHistory + "history\tAnnotation\t" + text);
  }
}

TEST(IcsInfo, WritesTheParagraphAsItIsBeforeTheAnnotation) {
  image_io::IcsInfo info("d");
  info.addParagraph("free ");
  info.addParagraph("text");
  info.addProperty({"p"});
  EXPECT_EQ(written(info), std::string(kNoHistory) + "p\nfree text" + kNoAnnotation);
  info.addParagraph("\n");
  info.annotate("a");
  EXPECT_EQ(written(info), std::string(kNoHistory) + "p\nfree text\nhistory\tAnnotation\ta");
}

TYPED_TEST(Records, CopyEveryField) {
  TypeParam info("d");
  info.setWithChannelInfo("f", "e", 'c');
  info.setWithCurrentTime();
  info.setScope("s");
  info.setSample("a", "b", "c", 1, 2, "d");
  info.addProperty({"p"});
  info.annotate("text");
  if constexpr (std::is_same_v<TypeParam, image_io::IcsInfo>) info.addParagraph("free");
  const TypeParam copy(info);
  TypeParam assigned("other");
  assigned = info;
  for (const TypeParam* other : {&copy, const_cast<const TypeParam*>(&assigned)}) {
    EXPECT_EQ(written(*other), written(info));
    EXPECT_EQ(other->datasetName(), info.datasetName());
    EXPECT_EQ(other->getUTCseconds(), info.getUTCseconds());
  }
}

// Sets the time zone for one scope.
class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    const char* before = std::getenv("TZ");
    if (before != nullptr) before_ = before;
    had_ = before != nullptr;
    setenv("TZ", zone, 1);
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
  ~TimeZone() {
    had_ ? setenv("TZ", before_.c_str(), 1) : unsetenv("TZ");
    tzset();
  }

 private:
  std::string before_;
  bool had_ = false;
};

std::string dateOf(std::time_t seconds) {
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[100];
  std::strftime(text, sizeof text, "%a %b %d %X %Z %Y", &local);
  return text;
}

TYPED_TEST(Records, WriteTheCurrentLocalTime) {
  for (const char* zone : {"UTC0", "CEST-2", "XYZ11:30"}) {
    const TimeZone scope(zone);
    TypeParam info("d");
    const std::time_t before = std::time(nullptr);
    info.setWithCurrentTime();
    const std::time_t after = std::time(nullptr);
    const std::time_t seconds = info.getUTCseconds();
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, after);
    EXPECT_EQ(written(info), this->defaults() + "history\tdate\t" + dateOf(seconds) +
                                 "\nhistory\tUTC_seconds\t" + std::to_string(seconds) +
                                 "\nhistory\tScope\tUNDEFINED\n" + kNoAnnotation);
  }
}

TYPED_TEST(Records, KeepTheDateWithin30Characters) {
  const TimeZone scope("ALONGZONENAME-3");
  TypeParam info("d");
  info.setWithCurrentTime();
  const std::string text = written(info);
  const std::string label = "history\tdate\t";
  ASSERT_THAT(text, testing::HasSubstr(label));
  const std::size_t start = text.find(label) + label.size();
  EXPECT_LE(text.find('\n', start) - start, 30U);
  EXPECT_THAT(
      text, testing::HasSubstr("\nhistory\tUTC_seconds\t" + std::to_string(info.getUTCseconds())));
}

TYPED_TEST(Records, WriteAllLinesInTheirOrder) {
  const TimeZone scope("UTC0");
  TypeParam info("d");
  info.annotate("note");
  info.addProperty({"property", "1"});
  info.setSample("a", "b", "c", 1, 2, "d");
  info.setScope("scope");
  info.setWithCurrentTime();
  info.setWithChannelInfo("filter", "time", 'c');
  const std::time_t seconds = info.getUTCseconds();
  EXPECT_EQ(written(info),
            "parameter\tex_filter\tfilter\nparameter\texp_time\ttime\nhistory\tdate\t" +
                dateOf(seconds) + "\nhistory\tUTC_seconds\t" + std::to_string(seconds) +
                "\nhistory\tScope\tscope\nSample\ta\tb\tc\t1.000000\t2.000000\td\n"
                "property\t1\nhistory\tAnnotation\tnote");
}

}  // namespace
}  // namespace orva::test
