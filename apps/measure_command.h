// The subcommand `orva measure`.
#ifndef ORVA_APPS_MEASURE_COMMAND_H
#define ORVA_APPS_MEASURE_COMMAND_H

#include <cstddef>
#include <optional>
#include <string>

#include "apps/subcommand.h"

namespace orva::apps {

class MeasureCommand : public Subcommand {
 public:
  explicit MeasureCommand(CommandLine& line);

  int run() override;

 private:
  void measure() const;
  void summarize(float threshold, std::size_t regions) const;

  std::string input_;
  std::optional<float> threshold_;
  float scale_ = 5.0F;
  int minSize_ = 1;
  std::optional<int> maxSize_;
  bool fill_ = false;
  std::string table_;
  std::optional<std::string> labels_;
  std::optional<int> frame_;
};

}  // namespace orva::apps

#endif
