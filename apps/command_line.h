// The command line of `orva`: subcommands, their options, and usage errors. CLI11, which is slow to
// compile, is included by command_line.cpp alone.
#ifndef ORVA_APPS_COMMAND_LINE_H
#define ORVA_APPS_COMMAND_LINE_H

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace orva::apps {

// Options that do not go together. `option` is named in the message.
class UsageError : public std::runtime_error {
 public:
  UsageError(const std::string& option, const std::string& message)
      : std::runtime_error(option + ": " + message) {}
};

// What is wrong with the text of an option, or "".
using Check = std::function<std::string(const std::string& text)>;

// An option or a positional argument.
class Option {
 public:
  explicit Option(CLI::Option* option) : option_(option) {}

  Option check(const Check& check) const;
  Option excludes(const Option& other) const;
  Option required() const;

  // What the help shows behind the name.
  Option valueText(const std::string& text) const;

 private:
  CLI::Option* option_;
};

// The options of a subcommand. What is given on the command line goes to `value`.
class Options {
 public:
  explicit Options(CLI::App* app) : app_(app) {}

  // For int, float, string, these as optional, and a vector of strings. A `name` without dashes is
  // that of a positional argument.
  template <class Value>
  Option add(const std::string& name, Value& value, const std::string& description);

  Option addFlag(const std::string& name, bool& value, const std::string& description);

  // One of `choices`: a name, and the value that it stands for.
  template <class Value>
  Option addChoice(const std::string& name, Value& value,
                   const std::vector<std::pair<std::string, Value>>& choices,
                   const std::string& description) {
    std::vector<std::string> names;
    names.reserve(choices.size());
    for (const auto& [key, stands] : choices) names.push_back(key);
    return addChoiceOf(
        name, names,
        [&value, choices](const std::string& chosen) {
          for (const auto& [key, stands] : choices) {
            if (key == chosen) value = stands;
          }
        },
        description);
  }

  // Whether the subcommand stands on the command line.
  bool areChosen() const;

 private:
  Option addChoiceOf(const std::string& name, const std::vector<std::string>& names,
                     const std::function<void(const std::string&)>& choose,
                     const std::string& description);

  CLI::App* app_;
};

class CommandLine {
 public:
  // The help begins with `description` and ends with `footer`.
  CommandLine(const std::string& name, const std::string& description, const std::string& footer,
              const std::string& version);
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;
  ~CommandLine();

  // The help of the subcommand ends with `example`.
  Options addSubcommand(const std::string& name, const std::string& description,
                        const std::string& example);

  // Sets the values of the options. Returns the exit status if there is nothing left to do: the
  // help or the version was asked for, or a usage error has been reported.
  std::optional<int> parse(int argc, char** argv);

  // Reports on standard error, and returns the exit status.
  static int report(const UsageError& error);

 private:
  std::unique_ptr<CLI::App> app_;
};

// A number in low .. high.
Check numberIn(float low, float high);
Check wholeNumberIn(int low, int high);

// The number that wholeNumberIn() has accepted.
int wholeNumberOf(const std::string& text);

// One of `names`.
Check oneOf(const std::vector<std::string>& names);

}  // namespace orva::apps

#endif
