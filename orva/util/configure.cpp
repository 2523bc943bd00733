#include "orva/util/fnp.h"

namespace orva {

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
