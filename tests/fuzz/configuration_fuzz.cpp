// parseTextFile() and Configure on any file, parseLine() on any line, toInt() and toFloat() on the
// words.
#include <bit>

#include "orva/util/fnp.h"
#include "orva/util/global.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/number_reference.h"
#include "tests/support/reference/text.h"

namespace orva::test {
namespace {

void requireSameNumbers(std::string text) {
  const int whole = intOf(text);
  const auto bits = std::bit_cast<std::uint32_t>(floatOf(text));
  require(toInt(text) == whole, "the whole number of a word");
  require(std::bit_cast<std::uint32_t>(toFloat(text)) == bits, "the number of a word");
}

// The table has the values of the reference implementation, and none for words that the reference
// implementation has no value for.
void requireSameTable(const std::string& content, const Configure& table) {
  const auto expected = reference::tableOf(content);
  for (const auto& [key, value] : expected) {
    require(table.property(key) == value, "the value of a key");
  }
  const auto requireNoMore = [&](const std::string& word) {
    if (!expected.contains(word)) require(table.property(word).empty(), "no value of another word");
  };
  requireNoMore("");
  // Words of the lines as the table takes them apart, of whole lines, and behind a long line.
  for (const char* delimiters : {" \t=", "\n", " \t=\n"}) {
    for (const auto& words : reference::linesOf(content, delimiters)) {
      for (const std::string& word : words) requireNoMore(word);
    }
    for (const std::string& word : reference::wordsOf(content, delimiters)) requireNoMore(word);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string content(textOf(data, size));
  const ContentFile file(content);
  requireSameTable(content, Configure(file.name()));
  for (const char* delimiters : {" \t=", ",;", ""}) {
    require(fnp::parseTextFile(file.name(), delimiters) == reference::linesOf(content, delimiters),
            "the words of the lines");
    require(fnp::parseLine(content, delimiters) == reference::wordsOf(content, delimiters),
            "the words of a line");
  }
  requireSameNumbers(content);
  for (const std::string& word : reference::wordsOf(content, " \t=\n")) requireSameNumbers(word);
  return 0;
}

}  // namespace orva::test
