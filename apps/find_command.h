// The subcommand `orva find`.
#ifndef ORVA_APPS_FIND_COMMAND_H
#define ORVA_APPS_FIND_COMMAND_H

#include <optional>
#include <string>

#include "apps/detection_command.h"
#include "orva/detect/detect.h"

namespace orva::apps {

class FindCommand : public DetectionCommand {
 public:
  // Adds the subcommand and its options to `line`.
  explicit FindCommand(CommandLine& line);

 private:
  void check() override;
  void prepare() override;
  Findings findIn(const Input& input) const override;

  std::optional<std::string> radius_;
  detect::FindSettings settings_;
  bool sameSettings_ = false;
};

}  // namespace orva::apps

#endif
