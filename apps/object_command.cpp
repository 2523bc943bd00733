#include "apps/object_command.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <vector>

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

// An estimate of an image, and the size of its square pixels in micrometres or 0, as they leave a
// child process.
std::string textOf(const SettingsEstimate& estimate, const std::optional<double>& pixelSize) {
  std::string text = shortestDecimal(pixelSize.value_or(0)) + ' ';
  for (const Settings& s : {Settings(estimate), estimate.runnerUp}) {
    text += shortestDecimal(s.radius) + ' ' + (s.polarity == Polarity::Dark ? '1' : '0') + ' ' +
            shortestDecimal(s.confidence) + ' ';
  }
  return text;
}

struct ImageEstimate {
  SettingsEstimate settings;
  double pixelSize = 0;
};

ImageEstimate estimateIn(const std::string& text) {
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  ImageEstimate image;
  in >> image.pixelSize;
  const auto read = [&in](Settings& s) {
    int isDark = 0;
    in >> s.radius >> isDark >> s.confidence;
    s.polarity = isDark == 1 ? Polarity::Dark : Polarity::Bright;
  };
  read(image.settings);
  read(image.settings.runnerUp);
  return image;
}

// Whether the images have pixels of different sizes, all known: their objects then have a size in
// micrometres in common.
bool needMicrometres(const std::vector<ImageEstimate>& images) {
  const auto size = [](const ImageEstimate& image) { return image.pixelSize; };
  return std::all_of(images.begin(), images.end(), [&](const auto& i) { return size(i) > 0; }) &&
         std::any_of(images.begin(), images.end(),
                     [&](const auto& i) { return size(i) != size(images.front()); });
}

// With two digits at least.
std::string micrometresText(double v) {
  int decimals = 1;
  for (double limit = 1; v < limit && decimals < 6; limit /= 10) ++decimals;
  return fixed(static_cast<float>(v), decimals);
}

}  // namespace

ObjectCommand::ObjectCommand(const Options& options)
    : DetectionCommand(options, "objects,radius,polarity,confidence") {}

// From "R" or "A:B".
std::optional<ObjectCommand::Radii> ObjectCommand::radiiIn(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) {
    const Radii radii{lengthIn(text), {}, {}};
    return radii.typical && radii.typical->value > 0 ? std::optional(radii) : std::nullopt;
  }
  const Radii radii{{}, lengthIn(text.substr(0, colon)), lengthIn(text.substr(colon + 1))};
  const bool isRange = radii.min && radii.max && radii.min->isMetric == radii.max->isMetric &&
                       radii.min->value <= radii.max->value;
  return isRange ? std::optional(radii) : std::nullopt;
}

void ObjectCommand::addSearchOptions() {
  options()
      .add("--radius", radiusText_,
           "Typical radius of the objects in pixels, or with a unit such as um, or a range A:B of "
           "their radii; default estimated from the image")
      .check([](const std::string& text) {
        return radiiIn(text) ? "" : text + " is neither a radius above 0 nor a range A:B of radii";
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
  addPixelSizeOption();
}

void ObjectCommand::check() {
  if (radiusText_) radii_ = *radiiIn(*radiusText_);
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
  std::vector<ImageEstimate> found;
  forEachImage([&](std::size_t i) { progress.show(i, images()[i] + " (estimate)"); },
               [&](std::size_t i) {
                 const auto [img, pixelSize] = readFirst(images()[i]);
                 return textOf(detect::findObjects(*img, settingsFor(pixelSize)).used, pixelSize);
               },
               [&](std::size_t, const Outcome& outcome) {
                 // A failure is reported when the image's turn comes.
                 if (outcome.text) found.push_back(estimateIn(*outcome.text));
               });
  const bool isMetric = needMicrometres(found);
  std::vector<SettingsEstimate> estimates;
  for (const ImageEstimate& image : found) {
    estimates.push_back(image.settings);
    if (!isMetric) continue;
    const auto size = static_cast<float>(image.pixelSize);
    estimates.back().radius *= size;
    estimates.back().runnerUp.radius *= size;
  }
  const SettingsEstimate common = detect::combinedEstimate(estimates);
  if (!settings_.polarity) settings_.polarity = common.polarity;
  if (radiusText_ || !(common.radius > 0)) return;
  if (isMetric) {
    radii_.typical = Size{common.radius, true};
  } else {
    settings_.radius = common.radius;
  }
}

detect::FindSettings ObjectCommand::settingsFor(const std::optional<double>& pixelSize) const {
  detect::FindSettings settings = settings_;
  const auto set = [&](std::optional<float>& radius, const std::optional<Size>& size) {
    if (size) radius = size->inPixels(pixelSize);
  };
  set(settings.radius, radii_.typical);
  set(settings.minRadius, radii_.min);
  set(settings.maxRadius, radii_.max);
  return settings;
}

std::string ObjectCommand::summaryOf(std::size_t objects, const Settings& used) {
  return std::to_string(objects) + ',' + fixed(used.radius, 1) + ',' + nameOf(used.polarity) + ',' +
         fixed(used.confidence, 2);
}

// What was found, in one line, with the confidence of what was estimated.
std::string ObjectCommand::reportOf(const FindResult& result,
                                    const std::optional<double>& pixelSize) const {
  const std::size_t n = result.objects.size();
  const Settings& used = result.used;
  if (n == 0) return "no objects found";
  const float radius = detect::typicalRadius(result.objects);
  std::string text = std::to_string(n) + ' ' + nameOf(used.polarity) +
                     (n == 1 ? " object" : " objects") + " of radius about " + fixed(radius, 1) +
                     " pixels";
  if (pixelSize) text += " (" + micrometresText(radius * *pixelSize) + " um)";
  if ((settings_.radius || radii_.typical) && settings_.polarity) return text;
  text += ", confidence " + fixed(used.confidence, 2);
  if (used.confidence < kLowConfidence) {
    text += "; this is low: check the picture, or give --radius and --polarity";
  }
  return text;
}

}  // namespace orva::apps
