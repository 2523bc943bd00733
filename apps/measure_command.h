// The subcommand `orva measure`.
#ifndef ORVA_APPS_MEASURE_COMMAND_H
#define ORVA_APPS_MEASURE_COMMAND_H

#include <optional>
#include <string>

#include "apps/subcommand.h"
#include "formats/thresholded_regions.h"

namespace orva::apps {

class MeasureCommand : public Subcommand {
 public:
  explicit MeasureCommand(CommandLine& line);

  int run() override;

 private:
  void measure() const;

  std::string input_;
  formats::RegionSettings settings_;
  std::string table_;
  std::optional<std::string> labels_;
  PlaneOptions planes_;
};

}  // namespace orva::apps

#endif
