// The orva command.
#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <vector>

#include "apps/convert_command.h"
#include "apps/filter_command.h"
#include "apps/info_command.h"
#include "apps/measure_command.h"
#include "apps/vote_command.h"
#include "formats/temporary.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsageError = 2;

int run(int argc, char** argv) {
  CLI::App app("Image analysis for microscope images", "orva");
  app.footer(
      "Example: the centres of the bright nuclei in an image\n"
      "  orva vote --max-radius 20 --overlay nuclei.png nuclei.pgm\n"
      "`orva NAME --help` explains a subcommand.\n"
      "\n"
      "The exit status is 0, 1 when an image or a file failed, or 2 for a wrong call.");
  app.set_version_flag("--version", "orva " ORVA_VERSION);
  std::vector<std::unique_ptr<orva::apps::Subcommand>> subcommands;
  subcommands.push_back(std::make_unique<orva::apps::VoteCommand>(app));
  subcommands.push_back(std::make_unique<orva::apps::MeasureCommand>(app));
  subcommands.push_back(std::make_unique<orva::apps::FilterCommand>(app));
  subcommands.push_back(std::make_unique<orva::apps::InfoCommand>(app));
  subcommands.push_back(std::make_unique<orva::apps::ConvertCommand>(app));
  app.require_subcommand(0, 1);
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("orva: ") + error.what() + " (--help shows how)\n";
  });
  try {
    app.parse(argc, argv);
    for (const auto& subcommand : subcommands) {
      if (subcommand->isChosen()) return subcommand->run();
    }
    throw CLI::RequiredError("A subcommand");
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? 0 : kUsageError;
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is an error like a full disk
  orva::formats::removeTemporariesAtTheEnd();
  try {
    const int status = run(argc, argv);
    if (status == 0 && !std::cout.flush()) {
      std::cerr << "orva: standard output can not be written\n";
      return kFailed;
    }
    return status;
  } catch (const std::exception& e) {
    std::cerr << "orva: " << e.what() << '\n';
    return kFailed;
  }
}
