// Gives a fuzz target the inputs of files and folders, without a fuzzer. A folder of findings may
// be missing or empty, as none may have been made; any other must hold inputs, or the replay fails.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_target.h"

namespace orva::test {
namespace {

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& path) {
  std::vector<std::filesystem::path> files;
  if (std::filesystem::is_regular_file(path)) files.push_back(path);
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool isOfFindings(const std::filesystem::path& folder) {
  return folder.parent_path().filename() == "findings";
}

}  // namespace
}  // namespace orva::test

int main(int argc, char** argv) {
  std::size_t inputs = 0;
  for (int i = 1; i < argc; ++i) {
    const std::vector<std::filesystem::path> files = orva::test::filesIn(argv[i]);
    if (files.empty() && !orva::test::isOfFindings(argv[i])) {
      std::cerr << argv[i] << ": no inputs\n";
      return 1;
    }
    for (const std::filesystem::path& file : files) {
      std::ifstream in(file, std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
      orva::test::LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                         bytes.size());
      ++inputs;
    }
  }
  std::cout << inputs << " inputs\n";
  return inputs > 0 ? 0 : 1;
}
