// What the subcommands that search for round objects have in common: the options of the search, one
// estimate for several images, and the line about what was found.
#ifndef ORVA_APPS_OBJECT_COMMAND_H
#define ORVA_APPS_OBJECT_COMMAND_H

#include <cstddef>
#include <optional>
#include <string>

#include "apps/detection_command.h"
#include "formats/size_text.h"
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

  // The settings for an image with pixels of this size. Throws FileError where that is needed and
  // not known.
  detect::FindSettings settingsFor(const std::optional<double>& pixelSize) const;
  // The fields of the summary, and what the report says, of a number of objects.
  static std::string summaryOf(std::size_t objects, const detect::Settings& used);
  std::string reportOf(const detect::FindResult& result,
                       const std::optional<double>& pixelSize) const;

 private:
  std::optional<std::string> radiusText_;
  // What it gives.
  struct Radii {
    std::optional<Size> typical;
    std::optional<Size> min;
    std::optional<Size> max;
  };
  static std::optional<Radii> radiiIn(const std::string& text);
  Radii radii_;
  detect::FindSettings settings_;
  bool sameSettings_ = false;
};

}  // namespace orva::apps

#endif
