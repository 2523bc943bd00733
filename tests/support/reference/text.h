// Reference implementations of the readers of text files.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_TEXT_H
#define ORVA_TESTS_SUPPORT_REFERENCE_TEXT_H

#include <map>
#include <string>
#include <vector>

namespace orva::reference {

// Character by character.
std::vector<std::string> wordsOf(const std::string& line, const std::string& delimiters);

// A line that does not fit a buffer of 1024 characters, the terminating zero included, ends the
// file. A zero within a line ends the line.
std::vector<std::vector<std::string>> linesOf(const std::string& content,
                                              const std::string& delimiters);

// The keys and values of a configuration file.
std::map<std::string, std::string> tableOf(const std::string& content);

}  // namespace orva::reference

#endif
