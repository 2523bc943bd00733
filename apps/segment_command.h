// The subcommand `orva segment`.
#ifndef ORVA_APPS_SEGMENT_COMMAND_H
#define ORVA_APPS_SEGMENT_COMMAND_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/object_command.h"
#include "orva/detect/segment.h"
#include "orva/image/image.h"

namespace orva::apps {

class SegmentCommand : public ObjectCommand {
 public:
  // Adds the subcommand and its options to `line`.
  explicit SegmentCommand(CommandLine& line);

 private:
  void addRegionOptions();
  void check() override;
  std::vector<std::string> inputs() const override;
  Findings findIn(const Input& input) const override;
  // The image to measure; null where that is the input's.
  std::unique_ptr<Image> otherImage(const Input& input) const;

  // As settingsFor().
  detect::SegmentSettings regionSettingsFor(const std::optional<double>& pixelSize) const;

  bool excludeBorder_ = false;
  std::optional<std::string> minAreaText_;
  std::optional<std::string> maxAreaText_;
  std::optional<std::string> measured_;
  std::optional<std::string> measuredChannel_;
  mutable std::unique_ptr<InputImages> measuredImages_;  // opened for the first of the images
};

}  // namespace orva::apps

#endif
