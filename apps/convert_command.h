// The subcommand `orva convert`.
#ifndef ORVA_APPS_CONVERT_COMMAND_H
#define ORVA_APPS_CONVERT_COMMAND_H

#include <optional>
#include <string>

#include "apps/subcommand.h"

namespace orva::apps {

class ConvertCommand : public Subcommand {
 public:
  explicit ConvertCommand(CommandLine& line);

  int run() override;

 private:
  void convert() const;

  std::string input_;
  std::string output_;
  std::optional<std::string> format_;
  PlaneOptions planes_;
  bool stretch_ = false;
};

}  // namespace orva::apps

#endif
