// The parts of file names are what they were cut from.
#include "orva/util/fnp.h"
#include "tests/fuzz/fuzz_target.h"

namespace orva::test {
namespace {

void checkParts(const std::string& name) {
  const std::string extension = fnp::extension(name);
  const std::string root = fnp::root(name);
  require(root == name ? extension.empty() : root + "." + extension == name, "root and extension");
  require(extension.find_first_of("./") == std::string::npos, "an extension of one component");

  const std::string head = fnp::head(name);
  const std::string tail = fnp::tail(name);
  const bool hasSlash = name.find('/') != std::string::npos;
  require(hasSlash ? head + "/" + tail == name : tail == name && head.empty(), "head and tail");
  require(tail.find('/') == std::string::npos, "a tail of one component");

  const std::string cleaned = fnp::clean(name);
  require(cleaned == name || cleaned + "/" == name, "at most one slash less");
  require(name.empty() || name.back() != '/' || cleaned != name, "a trailing slash less");
}

void checkJoined(const std::string& directory, const std::string& name) {
  const Captured captured;
  const std::string joined = fnp::fullname(directory, name);
  const std::string cleanName = fnp::clean(name);
  if (cleanName.starts_with('/')) {
    require(joined.empty() && !captured.reported().empty(), "an absolute name is refused");
    return;
  }
  const std::string cleanDirectory = fnp::clean(directory);
  const bool here = cleanDirectory.empty() || cleanDirectory == ".";
  require(joined == (here ? cleanName : cleanDirectory + "/" + cleanName), "directory and name");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const int from = input.take<std::int8_t>();
  const int to = input.take<std::int8_t>();
  const std::string whole(input.rest());
  const std::string part = fnp::copySubString(whole, from, to);
  require(whole.find(part) != std::string::npos, "a part of the text");
  require(part.empty() ||
              part == whole.substr(static_cast<std::size_t>(std::max(from, 0)), part.size()),
          "the part from there on");

  // Names end at a zero.
  const std::string name = whole.c_str();
  checkParts(name);
  checkJoined(name.substr(0, name.size() / 2), name.substr(name.size() / 2));
  return 0;
}

}  // namespace orva::test
