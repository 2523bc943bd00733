// The orva command.
#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "apps/command_line.h"
#include "apps/convert_command.h"
#include "apps/filter_command.h"
#include "apps/find_command.h"
#include "apps/info_command.h"
#include "apps/measure_command.h"
#include "apps/segment_command.h"
#include "apps/vote_command.h"
#include "formats/temporary.h"
#include "formats/thread_pool.h"
#include "orva/util/parallel.h"

namespace orva::apps {
namespace {

constexpr int kFailed = 1;

int run(int argc, char** argv) {
  CommandLine line(
      "orva", "Image analysis for microscope images",
      "Example: the centers of the bright nuclei in an image\n"
      "  orva vote --max-radius 20 --overlay nuclei.png nuclei.pgm\n"
      "and nuclei of any size and brightness, with nothing told\n"
      "  orva find --overlay found.png nuclei.pgm\n"
      "`orva NAME --help` explains a subcommand.\n"
      "\n"
      "The exit status is 0, 1 when an image or a file failed, or 2 for a usage error.",
      "orva " ORVA_VERSION);
  std::vector<std::unique_ptr<Subcommand>> subcommands;
  subcommands.push_back(std::make_unique<FindCommand>(line));
  subcommands.push_back(std::make_unique<SegmentCommand>(line));
  subcommands.push_back(std::make_unique<VoteCommand>(line));
  subcommands.push_back(std::make_unique<MeasureCommand>(line));
  subcommands.push_back(std::make_unique<FilterCommand>(line));
  subcommands.push_back(std::make_unique<InfoCommand>(line));
  subcommands.push_back(std::make_unique<ConvertCommand>(line));
  if (const std::optional<int> status = line.parse(argc, argv)) return *status;
  const auto chosen = std::find_if(subcommands.begin(), subcommands.end(),
                                   [](const auto& each) { return each->isChosen(); });
  formats::ThreadPool pool((*chosen)->threads());
  const ParallelScope scope(formats::ThreadPool::run, &pool);
  try {
    return (*chosen)->run();
  } catch (const UsageError& error) {
    return CommandLine::report(error);
  }
}

}  // namespace
}  // namespace orva::apps

int main(int argc, char** argv) {
  std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is an error like a full disk
  orva::formats::removeTemporariesAtExit();
  try {
    const int status = orva::apps::run(argc, argv);
    if (status == 0 && !std::cout.flush()) {
      std::cerr << "orva: standard output can not be written\n";
      return orva::apps::kFailed;
    }
    return status;
  } catch (const std::exception& e) {
    std::cerr << "orva: " << e.what() << '\n';
    return orva::apps::kFailed;
  }
}
