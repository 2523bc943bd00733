#include "tests/support/reference/text.h"

namespace orva::reference {

std::vector<std::string> wordsOf(const std::string& line, const std::string& delimiters) {
  std::vector<std::string> words;
  bool inWord = false;
  for (const char c : line) {
    bool isDelimiter = false;
    for (const char d : delimiters) isDelimiter = isDelimiter || c == d;
    if (!isDelimiter && !inWord) words.emplace_back();
    if (!isDelimiter) words.back() += c;
    inWord = !isDelimiter;
  }
  return words;
}

std::vector<std::vector<std::string>> linesOf(const std::string& content,
                                              const std::string& delimiters) {
  std::vector<std::vector<std::string>> lines;
  std::size_t start = 0;
  while (start < content.size()) {
    std::size_t end = start;
    while (end < content.size() && content[end] != '\n') ++end;
    if (end - start > 1023) break;
    const auto words = wordsOf(content.substr(start, end - start).c_str(), delimiters);
    if (!words.empty()) lines.push_back(words);
    start = end + 1;
  }
  return lines;
}

std::map<std::string, std::string> tableOf(const std::string& content) {
  std::map<std::string, std::string> table;
  for (const auto& words : linesOf(content, " \t=")) {
    if (words.size() == 2 && words[0][0] != '[' && words[0][0] != '#') table[words[0]] = words[1];
  }
  return table;
}

}  // namespace orva::reference
