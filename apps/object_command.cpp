#include "apps/object_command.h"

#include <charconv>
#include <cmath>
#include <locale>
#include <sstream>
#include <vector>

#include "apps/child_process.h"
#include "apps/input_file.h"
#include "apps/progress.h"
#include "formats/text.h"

namespace orva::apps {
namespace {

using detect::FindResult;
using detect::Polarity;
using detect::Settings;
using detect::SettingsEstimate;

constexpr float kLowConfidence = 0.6F;  // below it a user should look at the result

// A number of at least 0 that takes the whole of `text`.
std::optional<float> radiusIn(const std::string& text) {
  float v = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, v);
  if (error != std::errc() || rest != end || !std::isfinite(v) || v < 0) return std::nullopt;
  return v;
}

// Sets the radius or its range from "R" or "A:B". False for other texts.
bool setRadius(const std::string& text, detect::FindSettings& settings) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) {
    settings.radius = radiusIn(text);
    return settings.radius && *settings.radius > 0;
  }
  settings.minRadius = radiusIn(text.substr(0, colon));
  settings.maxRadius = radiusIn(text.substr(colon + 1));
  return settings.minRadius && settings.maxRadius && *settings.minRadius <= *settings.maxRadius;
}

// An estimate as it leaves a child process.
std::string textOf(const SettingsEstimate& estimate) {
  std::string text;
  for (const Settings& s : {Settings(estimate), estimate.runnerUp}) {
    text += shortestDecimal(s.radius) + ' ' + (s.polarity == Polarity::Dark ? '1' : '0') + ' ' +
            shortestDecimal(s.confidence) + ' ';
  }
  return text;
}

SettingsEstimate estimateIn(const std::string& text) {
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  const auto read = [&in](Settings& s) {
    int isDark = 0;
    in >> s.radius >> isDark >> s.confidence;
    s.polarity = isDark == 1 ? Polarity::Dark : Polarity::Bright;
  };
  SettingsEstimate estimate;
  read(estimate);
  read(estimate.runnerUp);
  return estimate;
}

}  // namespace

ObjectCommand::ObjectCommand(const Options& options)
    : DetectionCommand(options, "objects,radius,polarity,confidence") {}

void ObjectCommand::addSearchOptions() {
  options()
      .add("--radius", radius_,
           "Typical radius of the objects in pixels, or a range A:B of their radii; "
           "default estimated from the image")
      .check([](const std::string& text) {
        detect::FindSettings ignored;
        return setRadius(text, ignored)
                   ? ""
                   : text + " is neither a radius above 0 nor a range A:B of radii";
      })
      .valueText("R|A:B");
  options().addChoice<std::optional<Polarity>>(
      "--polarity", settings_.polarity, {{"bright", Polarity::Bright}, {"dark", Polarity::Dark}},
      "bright or dark; default estimated from the image");
  options()
      .add("--min-score", settings_.minScore,
           "Leave out objects of a lower score, 0 to 1; default 0.5")
      .check(numberIn(0.0F, 1.0F))
      .valueText("S");
  options().addFlag("--same-settings", sameSettings_,
                    "One estimate over all images, then the same radius and polarity for each");
}

void ObjectCommand::check() {
  if (radius_) setRadius(*radius_, settings_);
  if (!sameSettings_) return;
  for (const std::string& image : images()) {
    if (isStandardStream(image)) {
      throw UsageError("--same-settings", "standard input (-) cannot be read twice");
    }
  }
}

void ObjectCommand::prepare() {
  if (!sameSettings_) return;
  const Progress progress(images().size(), isQuiet());
  std::vector<SettingsEstimate> estimates;
  for (std::size_t i = 0; i < images().size(); ++i) {
    progress.show(i, images()[i] + " (estimate)");
    try {
      estimates.push_back(estimateIn(inChildProcess(
          [&] { return textOf(detect::findObjects(*readFirst(images()[i]), settings_).used); })));
    } catch (const std::exception&) {
      // Reported when the image's turn comes.
    }
  }
  const SettingsEstimate common = detect::combinedEstimate(estimates);
  if (!settings_.polarity) settings_.polarity = common.polarity;
  if (!radius_ && common.radius > 0) settings_.radius = common.radius;
}

std::string ObjectCommand::summaryOf(std::size_t objects, const Settings& used) {
  return std::to_string(objects) + ',' + fixed(used.radius, 1) + ',' + nameOf(used.polarity) + ',' +
         fixed(used.confidence, 2);
}

// What was found, in one line, with the confidence of what was estimated.
std::string ObjectCommand::reportOf(const FindResult& result) const {
  const std::size_t n = result.objects.size();
  const Settings& used = result.used;
  if (n == 0) return "no objects found";
  std::string text = std::to_string(n) + ' ' + nameOf(used.polarity) +
                     (n == 1 ? " object" : " objects") + " of radius about " +
                     fixed(detect::typicalRadius(result.objects), 1) + " pixels";
  if (settings_.radius && settings_.polarity) return text;
  text += ", confidence " + fixed(used.confidence, 2);
  if (used.confidence < kLowConfidence) {
    text += "; this is low: check the picture, or give --radius and --polarity";
  }
  return text;
}

}  // namespace orva::apps
