// The dates that records take, at chosen times in chosen time zones.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string>
#include <utility>

#include "orva/image_io/image_io.h"

namespace {

std::time_t chosenTime = -1;  // or the clock's while negative

}  // namespace

// In place of the C library's, in this program.
extern "C" std::time_t time(std::time_t* result) noexcept {  // NOLINT: the name is given
  std::timespec now{chosenTime, 0};
  if (chosenTime < 0) std::timespec_get(&now, TIME_UTC);
  if (result != nullptr) *result = now.tv_sec;
  return now.tv_sec;
}

namespace orva::test {
namespace {

template <class Record>
class RecordDates : public testing::Test {
 protected:
  void SetUp() override {
    const char* zone = std::getenv("TZ");
    hadZone_ = zone != nullptr;
    if (hadZone_) zone_ = zone;
  }
  void TearDown() override {
    chosenTime = -1;
    hadZone_ ? setenv("TZ", zone_.c_str(), 1) : unsetenv("TZ");
    tzset();
  }

  // The lines of date and seconds of a record that takes the time.
  static std::string linesAt(std::time_t seconds, const char* zone) {
    setenv("TZ", zone, 1);  // and no tzset()
    chosenTime = seconds;
    Record record("d");
    record.setWithCurrentTime();
    EXPECT_EQ(record.getUTCseconds(), seconds);
    std::ostringstream text;
    text << record;
    const std::size_t begin = text.str().find("history\tdate\t");
    return text.str().substr(begin, text.str().find("history\tScope") - begin);
  }

  static std::string lines(const std::string& date, const std::string& seconds) {
    return "history\tdate\t" + date + "\nhistory\tUTC_seconds\t" + seconds + "\n";
  }

 private:
  std::string zone_;
  bool hadZone_ = false;
};

using Records = testing::Types<image_io::IcsInfo, image_io::MultiChannelIcsInfo>;
TYPED_TEST_SUITE(RecordDates, Records);

TYPED_TEST(RecordDates, FillDaysFrom1To9WithAZero) {
  EXPECT_EQ(this->linesAt(951782400, "UTC0"),
            this->lines("Tue Feb 29 00:00:00 UTC 2000", "951782400"));
  EXPECT_EQ(this->linesAt(951868800, "UTC0"),
            this->lines("Wed Mar 01 00:00:00 UTC 2000", "951868800"));
  EXPECT_EQ(this->linesAt(952605296, "UTC0"),
            this->lines("Thu Mar 09 12:34:56 UTC 2000", "952605296"));
}

TYPED_TEST(RecordDates, OfExactly30CharactersAreWhole) {
  const std::string whole = "Thu Mar 09 12:34:56 ABCDE 2000";
  ASSERT_EQ(whole.size(), 30U);
  EXPECT_EQ(this->linesAt(952605296, "ABCDE0"), this->lines(whole, "952605296"));
}

TYPED_TEST(RecordDates, OfMoreCharactersKeepTheFirst30) {
  EXPECT_EQ(this->linesAt(952605296, "ABCDEF0"),
            this->lines("Thu Mar 09 12:34:56 ABCDEF 200", "952605296"));
  EXPECT_EQ(this->linesAt(952605296, "ABCDEFGHI0"),
            this->lines("Thu Mar 09 12:34:56 ABCDEFGHI ", "952605296"));
}

TYPED_TEST(RecordDates, FollowAChangedTimeZone) {
  EXPECT_EQ(this->linesAt(952605296, "AAA-5"),
            this->lines("Thu Mar 09 17:34:56 AAA 2000", "952605296"));
  EXPECT_EQ(this->linesAt(952605296, "BBB+3:30"),
            this->lines("Thu Mar 09 09:04:56 BBB 2000", "952605296"));
  EXPECT_EQ(this->linesAt(952605296, "UTC0"),
            this->lines("Thu Mar 09 12:34:56 UTC 2000", "952605296"));
}

}  // namespace
}  // namespace orva::test
