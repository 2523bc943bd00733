// Which characters mean something in file names, lines and configuration files, and that no other
// does.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orva/util/fnp.h"
#include "tests/support/files.h"

namespace orva::test {
namespace {

using Words = std::vector<std::string>;

// Printable characters other than letters, digits and those in `without`.
std::string marksWithout(const std::string& without) {
  std::string marks;
  for (const char c : std::string("!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~")) {
    if (without.find(c) == std::string::npos) marks += c;
  }
  return marks;
}

TEST(FileNames, HaveNoSeparatorButTheSlash) {
  for (const char c : marksWithout("/.")) {
    const std::string name = std::string("a") + c + "b";
    SCOPED_TRACE(name);
    EXPECT_EQ(fnp::tail(name), name);
    EXPECT_EQ(fnp::head(name), "");
    EXPECT_EQ(fnp::head("/d/" + name), "/d");
    EXPECT_EQ(fnp::tail("/d/" + name), name);
    EXPECT_EQ(fnp::extension("x." + name), name);
    EXPECT_EQ(fnp::root("x." + name), "x");
    const std::string ending = std::string("a") + c;
    EXPECT_EQ(fnp::clean(ending), ending);
    const std::string beginning = c + std::string("a");
    EXPECT_EQ(fnp::fullname("d", beginning), "d/" + beginning);
    EXPECT_EQ(fnp::fullname(ending, "n"), ending + "/n");
  }
}

TEST(ConfigurationLines, OnlyTwoCharactersHideThem) {
  for (const char c : marksWithout("=")) {
    const std::string key = std::string(1, c) + "key";
    const TempDir dir;
    writeFile(dir.file("c.txt"), key + " value\n" + c + " alone\nend=" + c + "\n");
    Configure table(dir.file("c.txt"));
    const bool hidden = c == '[' || c == '#';
    EXPECT_EQ(table.property(key), hidden ? "" : "value") << c;
    EXPECT_EQ(table.property(std::string(1, c)), hidden ? "" : "alone") << c;
    EXPECT_EQ(table.property("end"), std::string(1, c)) << c;
  }
}

TEST(LinesOfText, KeepANewlineUnlessItSeparates) {
  EXPECT_EQ(fnp::parseLine("a b\n", " "), (Words{"a", "b\n"}));
  EXPECT_EQ(fnp::parseLine("a b \n", " "), (Words{"a", "b", "\n"}));
  EXPECT_EQ(fnp::parseLine("\n", " "), (Words{"\n"}));
  EXPECT_EQ(fnp::parseLine("a\nb\n", "\n"), (Words{"a", "b"}));
  EXPECT_EQ(fnp::parseLine("a\r\n", "\n"), (Words{"a\r"}));
}

TEST(TextFiles, EndWithOrWithoutANewline) {
  const TempDir dir;
  const std::string longest(1023, 'x');
  for (const char* end : {"", "\n", "\n\n"}) {
    writeFile(dir.file("t.txt"), std::string("a b\nc d") + end);
    EXPECT_EQ(fnp::parseTextFile(dir.file("t.txt"), " "),
              (std::vector<Words>{{"a", "b"}, {"c", "d"}}));
    writeFile(dir.file("t.txt"), "a\n" + longest + end);
    EXPECT_EQ(fnp::parseTextFile(dir.file("t.txt"), " "), (std::vector<Words>{{"a"}, {longest}}));
  }
}

}  // namespace
}  // namespace orva::test
