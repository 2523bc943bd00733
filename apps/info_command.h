// The subcommand `orva info`.
#ifndef ORVA_APPS_INFO_COMMAND_H
#define ORVA_APPS_INFO_COMMAND_H

#include <string>

#include "apps/subcommand.h"

namespace orva::apps {

class InfoCommand : public Subcommand {
 public:
  explicit InfoCommand(CommandLine& line);

  int run() override;

 private:
  std::string file_;
};

}  // namespace orva::apps

#endif
