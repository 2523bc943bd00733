#include <array>
#include <fstream>
#include <iostream>

#include "orva/util/fnp.h"

namespace orva {
namespace fnp {

std::vector<std::string> parseLine(const std::string& line, const char* delimiters) {
  const std::string separators = delimiters == nullptr ? "" : delimiters;
  std::vector<std::string> words;
  std::size_t start = line.find_first_not_of(separators);
  while (start != std::string::npos) {
    const std::size_t end = line.find_first_of(separators, start);
    words.push_back(line.substr(start, end - start));
    start = line.find_first_not_of(separators, end);
  }
  return words;
}

std::vector<std::vector<std::string>> parseTextFile(const std::string& filename,
                                                    const char* delimiters) {
  std::ifstream in(filename);
  if (!in) {
    std::cerr << "Cannot open file: " << filename << '\n';
    return {};
  }
  std::vector<std::vector<std::string>> lines;
  std::array<char, 1024> buffer{};
  while (in.getline(buffer.data(), buffer.size())) {
    std::vector<std::string> words = parseLine(buffer.data(), delimiters);
    if (!words.empty()) lines.push_back(std::move(words));
  }
  return lines;
}

}  // namespace fnp

Configure::Configure(const std::string& filename) {
  for (const std::vector<std::string>& words : fnp::parseTextFile(filename, " \t=")) {
    if (words.size() != 2 || words[0].front() == '[' || words[0].front() == '#') continue;
    properties_.insert_or_assign(words[0], words[1]);
  }
}

std::string Configure::property(const std::string& key) const {
  const auto found = properties_.find(key);
  return found == properties_.end() ? std::string() : found->second;
}

}  // namespace orva
