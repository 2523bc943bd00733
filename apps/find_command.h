// The subcommand `orva find`.
#ifndef ORVA_APPS_FIND_COMMAND_H
#define ORVA_APPS_FIND_COMMAND_H

#include "apps/object_command.h"

namespace orva::apps {

class FindCommand : public ObjectCommand {
 public:
  // Adds the subcommand and its options to `line`.
  explicit FindCommand(CommandLine& line);

 private:
  Findings findIn(const Input& input) const override;
};

}  // namespace orva::apps

#endif
