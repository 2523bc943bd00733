// The subcommand `orva measure`.
#ifndef ORVA_APPS_MEASURE_COMMAND_H
#define ORVA_APPS_MEASURE_COMMAND_H

#include <optional>
#include <string>
#include <vector>

#include "apps/subcommand.h"
#include "orva/bip/bip.h"
#include "orva/image/image.h"

namespace orva::apps {

class MeasureCommand : public Subcommand {
 public:
  explicit MeasureCommand(CommandLine& line);

  int run() override;

 private:
  // The regions of one image.
  struct Regions {
    float threshold;
    std::vector<RegionFeature> features;
    image<short> labels;
  };
  Regions measured(const Image& img) const;
  void measure() const;

  std::string input_;
  std::optional<float> threshold_;
  float scale_ = 5.0F;
  int minSize_ = 1;
  std::optional<int> maxSize_;
  bool fill_ = false;
  std::string table_;
  std::optional<std::string> labels_;
  PlaneOptions planes_;
};

}  // namespace orva::apps

#endif
