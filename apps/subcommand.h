// What the subcommands of `orva` have in common.
#ifndef ORVA_APPS_SUBCOMMAND_H
#define ORVA_APPS_SUBCOMMAND_H

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orva::formats {}

namespace orva::apps {

using namespace formats;  // every subcommand reads and writes files

class Subcommand {
 public:
  Subcommand(const Subcommand&) = delete;
  Subcommand& operator=(const Subcommand&) = delete;
  virtual ~Subcommand() = default;

  bool isChosen() const { return command_->parsed(); }

  // Throws CLI::ValidationError for options that do not go together. Returns the exit status.
  virtual int run() const = 0;

 protected:
  // Adds the subcommand to `app`; its help ends with `example`.
  Subcommand(CLI::App& app, const std::string& name, const std::string& description,
             const std::string& example);

  CLI::App& command() { return *command_; }

  // Adds --frame, for a command that otherwise takes all frames.
  void addFrameOption(std::optional<int>& frame);

 private:
  CLI::App* command_;
};

// What is wrong, in words that go behind a file's name.
const char* reasonOf(const std::exception& error);

// The line "orva: FILE: what is wrong" on standard error.
void reportFailure(const std::string& file, const std::exception& error);

// Calls work() and returns the exit status: 0, or 1 after reportFailure() for what it throws.
template <class Work>
int statusOf(const std::string& file, Work work) {
  try {
    work();
    return 0;
  } catch (const std::exception& error) {
    reportFailure(file, error);
    return 1;
  }
}

// A number in low .. high. CLI11's own range takes "nan".
CLI::Validator numberIn(float low, float high);

// The name of a file that writeImageFile() knows, of these extensions if some are given.
CLI::Validator writableFile(const std::vector<std::string>& extensions);

// A page of a TIFF file or a plane of a stack.
CLI::Validator frameNumber();

// One of `names`, and what it stands for.
template <class Value>
void chooseFrom(CLI::Option* option, const std::vector<std::pair<std::string, Value>>& names) {
  std::vector<std::string> keys;
  keys.reserve(names.size());
  for (const auto& [name, value] : names) keys.push_back(name);
  option->transform(CLI::Transformer(names).description(""))
      ->transform(CLI::IsMember(keys).description(""))  // this comes first, then the one above
      ->option_text("NAME");
}

// Throws CLI::ValidationError when two results would go to one file, whatever its names, or a
// result would replace an input.
void requireSeparate(const std::vector<std::string>& inputs,
                     const std::vector<std::filesystem::path>& results);

}  // namespace orva::apps

#endif
