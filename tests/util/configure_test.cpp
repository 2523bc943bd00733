// Lines split into words, text files of words, tables of keys and values.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "orva/util/fnp.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/reference/text.h"

namespace orva::test {
namespace {

using Words = std::vector<std::string>;
using Lines = std::vector<Words>;

TEST(ParseLine, SplitsAtRunsOfDelimiters) {
  EXPECT_EQ(fnp::parseLine("", " "), Words{});
  EXPECT_EQ(fnp::parseLine(" ", " "), Words{});
  EXPECT_EQ(fnp::parseLine(" =\t==", " \t="), Words{});
  EXPECT_EQ(fnp::parseLine("a", " "), Words{"a"});
  EXPECT_EQ(fnp::parseLine("a b", " "), (Words{"a", "b"}));
  EXPECT_EQ(fnp::parseLine("  a   bc  ", " "), (Words{"a", "bc"}));
  EXPECT_EQ(fnp::parseLine("a=b = c", " ="), (Words{"a", "b", "c"}));
  EXPECT_EQ(fnp::parseLine("a\tb", " "), Words{"a\tb"});
  EXPECT_EQ(fnp::parseLine("a,b;c", ",;"), (Words{"a", "b", "c"}));
}

TEST(ParseLine, KeepsALineWholeWithoutDelimiters) {
  EXPECT_EQ(fnp::parseLine(" a b ", ""), Words{" a b "});
  EXPECT_EQ(fnp::parseLine(" a b ", nullptr), Words{" a b "});
  EXPECT_EQ(fnp::parseLine("", ""), Words{});
}

TEST(ParseLineMatchesReference, ForRandomLines) {
  Random random(371);
  for (int round = 0; round < 5000; ++round) {
    const std::string delimiters =
        std::vector<std::string>{"", " ", " \t=", "ab", "a"}[static_cast<std::size_t>(round % 5)];
    const std::string letters = "ab =\tc";
    std::string line;
    for (int n = randomInt(random, 0, 20); n > 0; --n) {
      line += letters[static_cast<std::size_t>(randomInt(random, 0, 5))];
    }
    EXPECT_EQ(fnp::parseLine(line, delimiters.c_str()), reference::wordsOf(line, delimiters))
        << line;
  }
}

class TextFile : public testing::Test {
 protected:
  // Reads the file with this content without a message.
  Lines parse(const std::string& content, const char* delimiters = " ") const {
    writeFile(file_, content);
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const Lines lines = fnp::parseTextFile(file_, delimiters);
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(lines, reference::linesOf(content, delimiters));
    return lines;
  }

  Configure configure(const std::string& content) const {
    writeFile(file_, content);
    Configure table(file_);
    for (const auto& [key, value] : reference::tableOf(content))
      EXPECT_EQ(table.property(key), value) << key;
    return table;
  }

  TempDir dir_;
  std::string file_ = dir_.file("some.txt");
};

TEST_F(TextFile, IsSplitLineByLine) {
  EXPECT_EQ(parse("a b\nc\n"), (Lines{{"a", "b"}, {"c"}}));
  EXPECT_EQ(parse("a b\nc"), (Lines{{"a", "b"}, {"c"}}));
  EXPECT_EQ(parse("a=b\r\n", "="), (Lines{{"a", "b\r"}}));
}

TEST_F(TextFile, LosesLinesWithoutWords) {
  EXPECT_EQ(parse(""), Lines{});
  EXPECT_EQ(parse("\n\n  \n"), Lines{});
  EXPECT_EQ(parse("\na\n\n \nb\n\n"), (Lines{{"a"}, {"b"}}));
}

TEST_F(TextFile, EndsAtALineOf1024CharactersAsIsIntended) {
  for (const std::size_t length : {1022U, 1023U}) {
    const std::string line(length, 'x');
    EXPECT_EQ(parse("a\n" + line + "\nb\n"), (Lines{{"a"}, {line}, {"b"}})) << length;
    EXPECT_EQ(parse("a\n" + line), (Lines{{"a"}, {line}})) << length;
  }
  for (const std::size_t length : {1024U, 1025U, 3000U}) {
    const std::string line(length, 'x');
    EXPECT_EQ(parse("a\n" + line + "\nb\n"), Lines{{"a"}}) << length;
    EXPECT_EQ(parse("a\n" + line), Lines{{"a"}}) << length;
    EXPECT_EQ(parse(std::string(length, ' ') + "\nb\n"), Lines{}) << length;
  }
}

TEST_F(TextFile, ThatCannotBeOpenedIsReported) {
  const std::string name = dir_.file("missing.txt");
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  EXPECT_EQ(fnp::parseTextFile(name, " "), Lines{});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Cannot open file: " + name + "\n");
}

class TextFileMatchesReference : public TextFile {};

TEST_F(TextFileMatchesReference, ForRandomBytes) {
  Random random(372);
  for (int round = 0; round < 1500; ++round) {
    std::string content;
    for (int n = randomInt(random, 0, 400); n > 0; --n) {
      const int kind = randomInt(random, 0, 5);
      content += kind == 0 ? '\n' : kind == 1 ? ' ' : static_cast<char>(randomInt(random, 0, 255));
    }
    if (randomInt(random, 0, 3) == 0) {
      const auto length = static_cast<std::size_t>(randomInt(random, 1000, 1050));
      content.insert(content.size() / 2, std::string(length, 'x'));
    }
    parse(content, " \t=");
  }
}

TEST_F(TextFile, IsATableOfKeysAndValues) {
  const Configure table = configure("sigma=2.5\nname value\nthird\t= \t3\n = fourth 4\n");
  EXPECT_EQ(table.property("sigma"), "2.5");
  EXPECT_EQ(table.property("name"), "value");
  EXPECT_EQ(table.property("third"), "3");
  EXPECT_EQ(table.property("fourth"), "4");
  EXPECT_EQ(table.property("fifth"), "");
  EXPECT_EQ(table.property(""), "");
  EXPECT_EQ(table.property("Sigma"), "");
}

TEST_F(TextFile, GivesATableOnlyLinesOfTwoWords) {
  const Configure table =
      configure("one\nname = two words\na = b = c\n#sigma 3\n# x 4\n[part one]\n[ x\n x#y [5\n");
  for (const char* key : {"one", "name", "a", "#sigma", "sigma", "#", "x", "[part", "["}) {
    EXPECT_EQ(table.property(key), "") << key;
  }
  EXPECT_EQ(table.property("x#y"), "[5");
}

TEST_F(TextFile, GivesATableTheLaterOfTwoLines) {
  const Configure table = configure("a 1\nb 2\na 3\n");
  EXPECT_EQ(table.property("a"), "3");
  EXPECT_EQ(table.property("b"), "2");
  // A line that is ignored replaces nothing.
  EXPECT_EQ(configure("a 1\na\na 2 3\n#a 4\n").property("a"), "1");
}

TEST_F(TextFile, GivesATableNothingBehindALongLine) {
  const Configure table = configure("a 1\n" + std::string(1024, 'x') + "\nb 2\na 3\n");
  EXPECT_EQ(table.property("a"), "1");
  EXPECT_EQ(table.property("b"), "");
}

TEST_F(TextFileMatchesReference, ForTablesOfRandomLines) {
  Random random(373);
  for (int round = 0; round < 2000; ++round) {
    const std::string letters = "abc#[ \t==\n\n";
    std::string content;
    for (int n = randomInt(random, 0, 60); n > 0; --n) {
      content += letters[static_cast<std::size_t>(randomInt(random, 0, 10))];
    }
    const Configure table = configure(content);
    // And no other keys: all words of the file.
    const std::map<std::string, std::string> expected = reference::tableOf(content);
    for (const std::string& word : reference::wordsOf(content, " \t=\n")) {
      const auto found = expected.find(word);
      EXPECT_EQ(table.property(word), found == expected.end() ? "" : found->second) << content;
    }
  }
}

TEST(Configure, IsEmptyFromTheStart) { EXPECT_EQ(Configure().property("a"), ""); }

TEST_F(TextFile, ConvertsToATableByItsName) {
  static_assert(std::is_convertible_v<std::string, Configure>);
  writeFile(file_, "sigma = 2.5\n");
  const Configure table = file_;
  EXPECT_EQ(table.property("sigma"), "2.5");
}

TEST(Configure, OfAFileThatCannotBeOpenedIsEmpty) {
  testing::internal::CaptureStderr();
  const Configure table("/missing/some.txt");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Cannot open file: /missing/some.txt\n");
  EXPECT_EQ(table.property("a"), "");
}

TEST_F(TextFile, GivesTablesThatAreCopied) {
  Configure copy;
  {
    const Configure table = configure("a 1\n");
    copy = table;
  }
  EXPECT_EQ(copy.property("a"), "1");
}

static_assert(std::has_virtual_destructor_v<Configure>);

}  // namespace
}  // namespace orva::test
