// parseTextFile() and Configure on any file, parseLine() on any line.
#include "orva/util/fnp.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/reference/text.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using orva_fuzz::require;
  const std::string content(orva_fuzz::textOf(data, size));
  const orva_fuzz::ContentFile file(content);
  const orva::Configure table(file.name());
  for (const auto& [key, value] : reference::tableOf(content)) {
    require(table.property(key) == value, "the value of a key");
  }
  for (const char* delimiters : {" \t=", ",;", ""}) {
    require(orva::fnp::parseTextFile(file.name(), delimiters) ==
                reference::linesOf(content, delimiters),
            "the words of the lines");
    require(orva::fnp::parseLine(content, delimiters) == reference::wordsOf(content, delimiters),
            "the words of a line");
  }
  return 0;
}
