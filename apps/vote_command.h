// The subcommand `orva vote`.
#ifndef ORVA_APPS_VOTE_COMMAND_H
#define ORVA_APPS_VOTE_COMMAND_H

#include <optional>
#include <string>

#include "apps/detection_command.h"

namespace orva::apps {

class VoteCommand : public DetectionCommand {
 public:
  // Adds the subcommand and its options to `line`.
  explicit VoteCommand(CommandLine& line);

 private:
  void addVotingOptions();
  void check() override;
  Findings findIn(const Input& input) const override;

  // The settings for an image with pixels of this size. Throws FileError where that is needed and
  // not known, and for radii that are out of range in pixels.
  VoteSettings settingsFor(const std::optional<double>& pixelSize) const;

  VoteSettings settings_;
  std::optional<std::string> minRadiusText_;
  std::optional<std::string> maxRadiusText_;
  std::optional<std::string> history_;
};

}  // namespace orva::apps

#endif
