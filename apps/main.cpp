// The orva command.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "apps/vote_command.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsageError = 2;

int run(int argc, char** argv) {
  CLI::App app("Image analysis for microscope images", "orva");
  app.footer(
      "Example: the centres of the bright nuclei in an image\n"
      "  orva vote --max-radius 20 --overlay nuclei.png nuclei.pgm\n"
      "\n"
      "The exit status is 0, 1 when an image or a file failed, or 2 for a wrong call.");
  app.set_version_flag("--version", "orva " ORVA_VERSION);
  const orva_app::VoteCommand vote(app);
  try {
    app.parse(argc, argv);
    if (!app.got_subcommand("vote")) throw CLI::RequiredError("A subcommand");
    return vote.run();
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? 0 : kUsageError;
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& e) {
    std::cerr << "orva: " << e.what() << '\n';
    return kFailed;
  }
}
