// Temporary files for tests.
#ifndef ORVA_TESTS_SUPPORT_FILES_H
#define ORVA_TESTS_SUPPORT_FILES_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace orva::test {

// A fresh directory, removed with its content at the end of the scope.
class TempDir {
 public:
  TempDir() {
    std::string name = testing::TempDir() + "/orva_XXXXXX";
    path_ = mkdtemp(name.data()) == nullptr ? "" : name;
    EXPECT_FALSE(path_.empty());
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string file(const std::string& name) const { return path_ + "/" + name; }

  // The names of its current entries.
  std::set<std::string> names() const {
    std::set<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      result.insert(entry.path().filename().string());
    }
    return result;
  }

 private:
  std::string path_;
};

inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in.is_open()) << path;
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary);
  out << content;
  out.close();
  EXPECT_TRUE(out) << path;
}

}  // namespace orva::test

#endif
