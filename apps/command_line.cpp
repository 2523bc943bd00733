#include "apps/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>

#include "formats/text.h"

namespace orva::apps {
namespace {

constexpr int kUsageError = 2;

std::string usageErrorText(const std::exception& error) {
  return std::string("orva: ") + error.what() + " (--help shows how)\n";
}

// Help shows no description of checks: option_text() stands in their place.
CLI::Validator validator(const Check& check) { return {check, ""}; }

}  // namespace

Option Option::check(const Check& check) const { return Option(option_->check(validator(check))); }

Option Option::excludes(const Option& other) const {
  return Option(option_->excludes(other.option_));
}

Option Option::required() const { return Option(option_->required()); }

Option Option::valueText(const std::string& text) const {
  return Option(option_->option_text(text));
}

template <class Value>
Option Options::add(const std::string& name, Value& value, const std::string& description) {
  return Option(app_->add_option(name, value, description));
}

template Option Options::add(const std::string&, int&, const std::string&);
template Option Options::add(const std::string&, float&, const std::string&);
template Option Options::add(const std::string&, std::string&, const std::string&);
template Option Options::add(const std::string&, std::optional<int>&, const std::string&);
template Option Options::add(const std::string&, std::optional<float>&, const std::string&);
template Option Options::add(const std::string&, std::optional<std::string>&, const std::string&);
template Option Options::add(const std::string&, std::vector<std::string>&, const std::string&);

Option Options::addFlag(const std::string& name, bool& value, const std::string& description) {
  return Option(app_->add_flag(name, value, description));
}

Option Options::addChoiceOf(const std::string& name, const std::vector<std::string>& names,
                            const std::function<void(const std::string&)>& choose,
                            const std::string& description) {
  return Option(
             app_->add_option_function<std::string>(name, choose, description)->type_name("ENUM"))
      .check(oneOf(names))
      .valueText("NAME");
}

bool Options::areChosen() const { return app_->parsed(); }

CommandLine::CommandLine(const std::string& name, const std::string& description,
                         const std::string& footer, const std::string& version)
    : app_(std::make_unique<CLI::App>(description, name)) {
  app_->footer(footer);
  app_->set_version_flag("--version", version);
  app_->require_subcommand(0, 1);
  app_->failure_message(
      [](const CLI::App*, const CLI::Error& error) { return usageErrorText(error); });
}

CommandLine::~CommandLine() = default;

Options CommandLine::addSubcommand(const std::string& name, const std::string& description,
                                   const std::string& example) {
  CLI::App* subcommand = app_->add_subcommand(name, description);
  subcommand->footer(example);
  return Options(subcommand);
}

std::optional<int> CommandLine::parse(int argc, char** argv) {
  try {
    app_->parse(argc, argv);
    if (app_->get_subcommands().empty()) throw CLI::RequiredError("A subcommand");
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    return app_->exit(error) == 0 ? 0 : kUsageError;
  }
}

int CommandLine::report(const UsageError& error) {
  std::cerr << usageErrorText(error) << std::flush;
  return kUsageError;
}

// CLI11's own range takes "nan".
Check numberIn(float low, float high) {
  return [low, high](const std::string& text) {
    float v = 0;
    const bool good = CLI::detail::lexical_cast(text, v) && v >= low && v <= high;
    return good ? ""
                : text + " is not a number from " + formats::shortestDecimal(low) + " to " +
                      formats::shortestDecimal(high);
  };
}

Check wholeNumberIn(int low, int high) {
  return [=, range = CLI::Range(low, high)](const std::string& text) {
    // As CLI11 reads it, but of any size.
    char* end = nullptr;
    std::strtoll(text.c_str(), &end, 0);
    if (!text.empty() && end == text.c_str() + text.size()) return range(text);
    return "must be a whole number from " + std::to_string(low) + " to " + std::to_string(high) +
           (text.empty() ? "" : ", not " + text);
  };
}

int wholeNumberOf(const std::string& text) {
  return static_cast<int>(std::strtoll(text.c_str(), nullptr, 0));
}

Check oneOf(const std::vector<std::string>& names) {
  return [member = CLI::IsMember(names)](const std::string& text) { return member(text); };
}

}  // namespace orva::apps
