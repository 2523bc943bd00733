// The number of planes that a TIFF stack states, in files whole and damaged.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/reference/image_io.h"

namespace orva::test {
namespace {

constexpr unsigned kStackTag = 33629;

// Builds files in either byte order.
struct Tiff {
  bool little = true;

  std::string bytes(unsigned v, int count) const {
    std::string text;
    for (int i = 0; i < count; ++i) {
      const int byte = little ? i : count - 1 - i;
      text += static_cast<char>(v >> (8 * byte) & 0xFFU);
    }
    return text;
  }

  std::string header(unsigned first) const {
    return (little ? "II" : "MM") + bytes(42, 2) + bytes(first, 4);
  }

  std::string entry(unsigned tag, unsigned count) const {
    return bytes(tag, 2) + bytes(4, 2) + bytes(count, 4) + bytes(0xABCD, 4);
  }

  std::string directory(const std::vector<std::string>& entries, unsigned next) const {
    std::string text = bytes(static_cast<unsigned>(entries.size()), 2);
    for (const std::string& e : entries) text += e;
    return text + bytes(next, 4);
  }
};

const std::vector<Tiff>& bothOrders() {
  static const std::vector<Tiff> orders = {{true}, {false}};
  return orders;
}

class StackCount : public testing::Test {
 protected:
  std::string file() const { return dir_.file("some.tif"); }

  // The result and what went to standard output.
  static std::pair<int, std::string> countIn(const std::string& name) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int count = image_io::returnStackCount(name);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    return {count, testing::internal::GetCapturedStdout()};
  }

  std::pair<int, std::string> count(const std::string& content) const {
    writeFile(file(), content);
    return countIn(file());
  }

  void expectAsDefined(const std::string& content) const {
    const reference::StackCount expected = reference::stackCount(content);
    EXPECT_EQ(count(content), std::make_pair(expected.count, expected.printed))
        << content.size() << " bytes";
  }

 private:
  TempDir dir_;
};

using Result = std::pair<int, std::string>;

TEST_F(StackCount, IsTheCountOfItsTag) {
  for (const Tiff& tiff : bothOrders()) {
    const std::string lsb = tiff.little ? "lsb1\n" : "lsb0\n";
    const std::string content =
        tiff.header(8) +
        tiff.directory({tiff.entry(256, 5), tiff.entry(kStackTag, 17), tiff.entry(257, 6)}, 0);
    EXPECT_EQ(count(content), Result(17, lsb + "0\n"));
  }
}

TEST_F(StackCount, IsMinusOneWithoutTheTag) {
  for (const Tiff& tiff : bothOrders()) {
    const std::string lsb = tiff.little ? "lsb1\n" : "lsb0\n";
    EXPECT_EQ(count(tiff.header(8) + tiff.directory({}, 0)), Result(-1, lsb + "0\n"));
    EXPECT_EQ(count(tiff.header(8) + tiff.directory({tiff.entry(33628, 3), tiff.entry(33630, 4),
                                                     tiff.entry(0x5D83, 5), tiff.entry(0x835C, 6)},
                                                    0)),
              Result(-1, lsb + "0\n"));
  }
}

TEST_F(StackCount, IsTheLowHalfOfTheCountWithASign) {
  for (const Tiff& tiff : bothOrders()) {
    const auto countOf = [&](unsigned v) {
      return count(tiff.header(8) + tiff.directory({tiff.entry(kStackTag, v)}, 0)).first;
    };
    EXPECT_EQ(countOf(0), 0);
    EXPECT_EQ(countOf(0x0102), 0x0102);
    EXPECT_EQ(countOf(32767), 32767);
    EXPECT_EQ(countOf(32768), -32768);
    EXPECT_EQ(countOf(65535), -1);
    EXPECT_EQ(countOf(65536), 0);
    EXPECT_EQ(countOf(0x12345678), 0x5678);
  }
}

TEST_F(StackCount, IsThatOfTheLastTagOfAllDirectories) {
  for (const Tiff& tiff : bothOrders()) {
    const std::string lsb = tiff.little ? "lsb1\n" : "lsb0\n";
    // One entry and the rest of a directory are 18 bytes, two are 30.
    const std::string content =
        tiff.header(38) + tiff.directory({}, 0) + std::string(24, 'x') +
        tiff.directory({tiff.entry(kStackTag, 3)}, 56) +
        tiff.directory({tiff.entry(kStackTag, 4), tiff.entry(kStackTag, 5)}, 86) +
        tiff.directory({tiff.entry(1, 6)}, 0);
    EXPECT_EQ(count(content), Result(5, lsb + "0\n1\n2\n"));
  }
}

TEST_F(StackCount, FollowsDirectoriesBackward) {
  for (const Tiff& tiff : bothOrders()) {
    const std::string lsb = tiff.little ? "lsb1\n" : "lsb0\n";
    const std::string content = tiff.header(26) + tiff.directory({tiff.entry(kStackTag, 9)}, 0) +
                                tiff.directory({tiff.entry(kStackTag, 8)}, 8);
    EXPECT_EQ(count(content), Result(9, lsb + "0\n1\n"));
  }
}

TEST_F(StackCount, EntryCountsOfBigEndianFilesAreTwoBytes) {
  // 258 entries: both bytes of the count matter.
  for (const Tiff& tiff : bothOrders()) {
    std::vector<std::string> entries(258, tiff.entry(7, 7));
    entries.back() = tiff.entry(kStackTag, 33);
    EXPECT_EQ(count(tiff.header(8) + tiff.directory(entries, 0)).first, 33);
    entries.push_back(tiff.entry(kStackTag, 34));
    EXPECT_EQ(count(tiff.header(8) + tiff.directory(entries, 0)).first, 34);
  }
}

TEST_F(StackCount, TakesEveryFirstByteButAnIAsBigEndian) {
  const Tiff big{false};
  std::string content = big.header(8) + big.directory({big.entry(kStackTag, 21)}, 0);
  for (int first = 0; first < 256; ++first) {
    content[0] = static_cast<char>(first);
    if (first == 'I') continue;
    EXPECT_EQ(count(content), Result(21, "lsb0\n0\n")) << first;
  }
  // Only the first byte matters.
  const Tiff little{true};
  content = little.header(8) + little.directory({little.entry(kStackTag, 22)}, 0);
  content[1] = 'M';
  content[2] = 'x';
  EXPECT_EQ(count(content), Result(22, "lsb1\n0\n"));
}

TEST_F(StackCount, EndsAtADirectoryMetAgain) {
  for (const Tiff& tiff : bothOrders()) {
    const std::string lsb = tiff.little ? "lsb1\n" : "lsb0\n";
    // Its own successor.
    EXPECT_EQ(count(tiff.header(8) + tiff.directory({tiff.entry(kStackTag, 3)}, 8)),
              Result(3, lsb + "0\n"));
    // A ring of two, and of three that is entered from outside.
    const std::string first = tiff.directory({tiff.entry(kStackTag, 3)}, 26);
    EXPECT_EQ(count(tiff.header(8) + first + tiff.directory({tiff.entry(kStackTag, 4)}, 8)),
              Result(4, lsb + "0\n1\n"));
    EXPECT_EQ(count(tiff.header(8) + first + tiff.directory({tiff.entry(kStackTag, 4)}, 44) +
                    tiff.directory({tiff.entry(kStackTag, 5)}, 62) +
                    tiff.directory({tiff.entry(kStackTag, 6)}, 26)),
              Result(6, lsb + "0\n1\n2\n3\n"));
  }
}

// Directories of 65535 entries, each 8 bytes behind the one before. Time must not be in proportion
// to the square of the file.
TEST_F(StackCount, EndsForOverlappingDirectoriesOfTooManyEntries) {
  constexpr std::size_t kEntryBytes = 65535 * 12;
  constexpr unsigned kDirectories = 500;
  const Tiff tiff;
  std::string content = tiff.header(8);
  content.resize(8 + 8 * kDirectories + 2 + kEntryBytes, '\xFF');
  for (unsigned i = 0; i < kDirectories; ++i) {
    content.replace(8 + 8 * i + 2 + kEntryBytes, 4, tiff.bytes(8 + 8 * (i + 1), 4));
  }
  const std::size_t pages = (content.size() / 12 + (1U << 20U)) / 65535;
  std::string printed = "lsb1\n";
  for (std::size_t page = 0; page < pages; ++page) printed += std::to_string(page) + '\n';
  EXPECT_EQ(count(content), Result(-1, printed));
}

TEST_F(StackCount, ADirectoryAtTheStartOfTheFileIsReadLikeOthers) {
  // "II" and "MM" are 18761 and 19789 entries, more than the file has.
  for (const Tiff& tiff : bothOrders()) {
    expectAsDefined(tiff.header(0));
    expectAsDefined(tiff.header(0) + std::string(30, '\0'));
  }
}

TEST_F(StackCount, EndsWhereAnOffsetLiesPastTheEnd) {
  for (const Tiff& tiff : bothOrders()) {
    const std::string lsb = tiff.little ? "lsb1\n" : "lsb0\n";
    for (const unsigned past : {26U, 25U, 1000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
      EXPECT_EQ(count(tiff.header(past) + std::string(18, '\0')), Result(-1, lsb)) << past;
      EXPECT_EQ(count(tiff.header(8) + tiff.directory({tiff.entry(kStackTag, 3)}, past)),
                Result(3, lsb + "0\n"))
          << past;
    }
  }
}

TEST_F(StackCount, OfAFileCutAtEveryLengthIsWhatWasFoundBefore) {
  for (const Tiff& tiff : bothOrders()) {
    const std::string whole =
        tiff.header(8) + tiff.directory({tiff.entry(1, 2), tiff.entry(kStackTag, 3)}, 38) +
        tiff.directory({tiff.entry(kStackTag, 4), tiff.entry(5, 6), tiff.entry(kStackTag, 7)}, 0);
    for (std::size_t length = 0; length <= whole.size(); ++length) {
      expectAsDefined(whole.substr(0, length));
    }
    const std::string lsb = tiff.little ? "lsb1\n" : "lsb0\n";
    EXPECT_EQ(count(whole.substr(0, 33)), Result(-1, lsb));         // inside the second entry
    EXPECT_EQ(count(whole.substr(0, 34)), Result(3, lsb));          // behind it
    EXPECT_EQ(count(whole.substr(0, 52)), Result(4, lsb + "0\n"));  // in the second directory
    EXPECT_EQ(count(whole), Result(7, lsb + "0\n1\n"));
  }
}

TEST_F(StackCount, OfAFileThatCannotBeOpenedIsMinusOne) {
  EXPECT_EQ(countIn(file()), Result(-1, "lsb0\n"));
  EXPECT_EQ(countIn(""), Result(-1, "lsb0\n"));
  EXPECT_EQ(countIn(testing::TempDir()), Result(-1, "lsb0\n"));  // a directory
}

class StackCountMatchesReference : public StackCount {};

TEST_F(StackCountMatchesReference, ForRandomBytes) {
  Random random(331);
  for (int round = 0; round < 4000; ++round) {
    const Tiff tiff{round % 2 == 0};
    // Random directories of few entries at random places, so that chains form.
    std::string content(static_cast<std::size_t>(randomInt(random, 0, 300)), '\0');
    for (char& c : content) {
      c = static_cast<char>(randomInt(random, 0, 1) == 0 ? 0 : randomInt(random, 0, 255));
    }
    const auto place = [&] { return static_cast<unsigned>(randomInt(random, 0, 310)); };
    const auto put = [&](unsigned at, const std::string& bytes) {
      for (std::size_t i = 0; i < bytes.size() && at + i < content.size(); ++i) {
        content[at + i] = bytes[i];
      }
    };
    const unsigned first = place();
    unsigned at = first;
    for (int n = randomInt(random, 0, 5); n > 0; --n) {
      const unsigned next = place();
      std::vector<std::string> entries;
      for (int e = randomInt(random, 0, 4); e > 0; --e) {
        entries.push_back(tiff.entry(randomInt(random, 0, 1) == 0 ? kStackTag : place(),
                                     static_cast<unsigned>(random())));
      }
      put(at, tiff.directory(entries, next));
      at = next;
    }
    if (randomInt(random, 0, 9) != 0) put(0, tiff.header(first));
    expectAsDefined(content);
  }
}

}  // namespace
}  // namespace orva::test
