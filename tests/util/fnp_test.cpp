// File names taken apart and joined.
#include "orva/util/fnp.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/files.h"

namespace orva::test {
namespace {

struct NameCase {
  std::string in;
  std::string out;
};

// Both forms of an operation give the rows.
void expectRows(const std::function<std::string(const char*)>& ofChars,
                const std::function<std::string(const std::string&)>& ofString,
                const std::vector<NameCase>& rows) {
  for (const auto& [in, out] : rows) {
    EXPECT_EQ(ofChars(in.c_str()), out) << in;
    EXPECT_EQ(ofString(in), out) << in;
  }
  EXPECT_EQ(ofChars(nullptr), "");
}

// Texts of a few letters, dots and slashes.
std::vector<std::string> randomNames() {
  std::mt19937 random(95);
  const std::string letters = "ab../";
  std::uniform_int_distribution<std::size_t> letter(0, letters.size() - 1);
  std::uniform_int_distribution<int> length(0, 9);
  std::vector<std::string> names(3000);
  for (std::string& name : names) {
    for (int n = length(random); n > 0; --n) name += letters[letter(random)];
  }
  return names;
}

TEST(Exists, IsTrueForAPathThatNamesSomething) {
  const TempDir dir;
  const std::string file = dir.file("some.txt");
  EXPECT_FALSE(fnp::exists(file));
  EXPECT_FALSE(fnp::exists(file.c_str()));
  writeFile(file, "");
  EXPECT_TRUE(fnp::exists(file));
  EXPECT_TRUE(fnp::exists(file.c_str()));
  EXPECT_TRUE(fnp::exists(dir.file("")));
  EXPECT_FALSE(fnp::exists(""));
  EXPECT_FALSE(fnp::exists(file + "/"));
}

TEST(Clean, DropsOneTrailingSlash) {
  expectRows([](const char* s) { return fnp::clean(s); },
             [](const std::string& s) { return fnp::clean(s); },
             {{"", ""},
              {"a", "a"},
              {"a/", "a"},
              {"a//", "a/"},
              {"/", ""},
              {"/a/b", "/a/b"},
              {"a.b/", "a.b"}});
}

TEST(Extension, IsTheTextAfterTheLastDotOfTheLastComponent) {
  expectRows([](const char* s) { return fnp::extension(s); },
             [](const std::string& s) { return fnp::extension(s); },
             {{"", ""},
              {"noext", ""},
              {".hidden", "hidden"},
              {"a.tar.gz", "gz"},
              {"dir.d/file", ""},
              {"dir.d/file.ics", "ics"},
              {"a.", ""},
              {"a.b/", ""},
              {"..", ""},
              {"/x/a.b.c", "c"}});
}

TEST(Root, IsTheNameWithoutExtensionAndDot) {
  expectRows([](const char* s) { return fnp::root(s); },
             [](const std::string& s) { return fnp::root(s); },
             {{"", ""},
              {"noext", "noext"},
              {".hidden", ""},
              {"a.tar.gz", "a.tar"},
              {"dir.d/file", "dir.d/file"},
              {"/x/a.b.c", "/x/a.b"},
              {"a.", "a"},
              {"a.b/", "a.b/"},
              {"dir/.x", "dir/"}});
}

TEST(Head, IsTheTextBeforeTheLastSlash) {
  expectRows([](const char* s) { return fnp::head(s); },
             [](const std::string& s) { return fnp::head(s); },
             {{"", ""},
              {"file", ""},
              {"/a", ""},
              {"a/b", "a"},
              {"a/b/c", "a/b"},
              {"dir/", "dir"},
              {"a//b", "a/"},
              {"/", ""}});
}

TEST(Tail, IsTheTextAfterTheLastSlash) {
  expectRows([](const char* s) { return fnp::tail(s); },
             [](const std::string& s) { return fnp::tail(s); },
             {{"", ""},
              {"file", "file"},
              {"/a", "a"},
              {"a/b/c.d", "c.d"},
              {"dir/", ""},
              {"a//b", "b"},
              {"/", ""}});
}

TEST(NameParts, RootDotExtensionIsTheName) {
  for (const std::string& name : randomNames()) {
    const bool dotted = fnp::tail(name).find('.') != std::string::npos;
    EXPECT_EQ(dotted ? fnp::root(name) + "." + fnp::extension(name) : fnp::root(name), name);
    EXPECT_EQ(fnp::extension(name).find_first_of("./"), std::string::npos) << name;
    if (!dotted) {
      EXPECT_EQ(fnp::extension(name), "") << name;
    }
  }
}

TEST(NameParts, HeadSlashTailIsTheName) {
  for (const std::string& name : randomNames()) {
    const bool slashed = name.find('/') != std::string::npos;
    EXPECT_EQ(slashed ? fnp::head(name) + "/" + fnp::tail(name) : fnp::tail(name), name);
    EXPECT_EQ(fnp::tail(name).find('/'), std::string::npos) << name;
  }
}

TEST(Fullname, JoinsDirectoryAndName) {
  struct Join {
    std::string dir;
    std::string name;
    std::string out;
  };
  for (const auto& [dir, name, out] : {Join{".", "b", "b"},
                                       {"a/", "b/", "a/b"},
                                       {"", "b", "b"},
                                       {"./", "b", "b"},
                                       {"a", "b/c", "a/b/c"},
                                       {"a//", "b", "a//b"},
                                       {"/", "b", "b"},
                                       {"/a", "b", "/a/b"},
                                       {"..", "b", "../b"},
                                       {"a", "", "a/"},
                                       {"", "", ""},
                                       // Cleaning leaves an empty name.
                                       {"a", "/", "a/"}}) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(fnp::fullname(dir, name), out);
    EXPECT_EQ(fnp::fullname(dir.c_str(), name.c_str()), out);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }
}

TEST(Fullname, RefusesAnAbsoluteNameCallingItRelativeAsIsIntended) {
  const std::string message =
      "Warning in fnp::fullname\nInvalid (relative) filename, return empty string\n";
  for (const char* name : {"/b", "//", "/b/c/"}) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(fnp::fullname(std::string("a"), std::string(name)), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
    testing::internal::CaptureStderr();
    EXPECT_EQ(fnp::fullname("", name), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
  }
}

TEST(CopySubString, TakesFromUpToNotIncluding) {
  EXPECT_EQ(fnp::copySubString("abcdef", 2, 4), "cd");
  EXPECT_EQ(fnp::copySubString("abcdef", -3, -1), "abcdef");
  EXPECT_EQ(fnp::copySubString("abc", 2, 2), "");
  EXPECT_EQ(fnp::copySubString("abcdef", 0, 6), "abcdef");
  EXPECT_EQ(fnp::copySubString("abcdef", 4, -1), "ef");
  EXPECT_EQ(fnp::copySubString("abcdef", -1, 2), "ab");
  EXPECT_EQ(fnp::copySubString("abcdef", 4, 2), "");
  EXPECT_EQ(fnp::copySubString("abcdef", 6, -1), "");
  EXPECT_EQ(fnp::copySubString("abcdef", 0, -2), "");
  EXPECT_EQ(fnp::copySubString("", 0, 3), "");
  EXPECT_EQ(fnp::copySubString("", 0, -1), "");
}

TEST(CopySubString, CutsPositionsPastTheEnd) {
  EXPECT_EQ(fnp::copySubString("abc", 1, 100), "bc");
  EXPECT_EQ(fnp::copySubString("abc", 50, 100), "");
}

}  // namespace
}  // namespace orva::test
