// What the subcommands that search for round objects have in common: the options of the search, one
// estimate for several images, and the line about what was found.
#ifndef ORVA_APPS_OBJECT_COMMAND_H
#define ORVA_APPS_OBJECT_COMMAND_H

#include <cstddef>
#include <optional>
#include <string>

#include "apps/detection_command.h"
#include "orva/detect/detect.h"

namespace orva::apps {

class ObjectCommand : public DetectionCommand {
 protected:
  // The fields of the summary are those of summaryOf().
  explicit ObjectCommand(const Options& options);

  // For the constructors of the subcommands, in the order of the help.
  void addSearchOptions();

  void check() override;
  void prepare() override;

  const detect::FindSettings& settings() const { return settings_; }
  // The fields of the summary, and what the report says, of a number of objects.
  static std::string summaryOf(std::size_t objects, const detect::Settings& used);
  std::string reportOf(const detect::FindResult& result) const;

 private:
  std::optional<std::string> radius_;
  detect::FindSettings settings_;
  bool sameSettings_ = false;
};

}  // namespace orva::apps

#endif
