// The subcommand `orva filter`.
#ifndef ORVA_APPS_FILTER_COMMAND_H
#define ORVA_APPS_FILTER_COMMAND_H

#include <string>

#include "apps/subcommand.h"

namespace orva::apps {

class FilterCommand : public Subcommand {
 public:
  explicit FilterCommand(CommandLine& line);

  int run() override;

 private:
  std::string input_;
  std::string operation_;
  float sigma_ = 0.0F;
  std::string output_;
  PlaneOptions planes_;
  bool keepsType_ = false;
};

}  // namespace orva::apps

#endif
