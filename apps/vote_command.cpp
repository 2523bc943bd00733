#include "apps/vote_command.h"

#include <cmath>
#include <string>

#include "formats/file_error.h"
#include "formats/overlay.h"
#include "formats/size_text.h"
#include "formats/text.h"
#include "formats/vote.h"

namespace orva::apps {
namespace {

using orva::voting::CircularVoting;

// In pixels or, with a unit, in micrometres. The text has been checked.
Size radiusIn(const std::string& text) {
  const std::optional<Size> size = lengthIn(text);
  if (size && size->isMetric) return *size;
  return {static_cast<double>(wholeNumberOf(text)), false};
}

constexpr int kMaxPixels = 1000;  // radius and cone width; the cones take memory by their product
constexpr float kMaxLevels = 3e38F;

}  // namespace

VoteCommand::VoteCommand(CommandLine& line)
    : DetectionCommand(
          line.addSubcommand(
              "vote", "Find the centers of round objects by circular voting",
              "Example: the centers of bright nuclei of radius up to 14 pixels, as a table and "
              "a picture\n"
              "  orva vote --max-radius 20 --centers nuclei.csv --overlay nuclei.png "
              "nuclei.pgm"),
          "centers") {
  addImages();
  addVotingOptions();
  addPixelSizeOption();
  options()
      .add("--history", history_,
           "Write the votes before every narrowing pass as ICS pairs PREFIXvote_NN, NN being "
           "the cone width; with --out PREFIXNAME_vote_NN")
      .valueText("PREFIX");
  addFileOptions(
      {"--centers",
       "The table x,y,weight goes to FILE; default -, standard output",
       {{"--overlay", "FILE.png", "The image with a cross at each center goes to FILE.png", ".png",
         nullptr}},
       "For each image NAME write DIR/NAME.csv and DIR/NAME.png, and DIR/summary.csv; standard "
       "input has the name stdin",
       "No progress line"});
}

void VoteCommand::addVotingOptions() {
  const Check pixels = wholeNumberIn(1, kMaxPixels);
  const Check radius = [pixels](const std::string& text) {
    const std::optional<Size> size = lengthIn(text);
    return size && size->isMetric && size->value > 0 ? std::string() : pixels(text);
  };
  const Check share = numberIn(0.0F, 1.0F);
  const Check level = numberIn(0.0F, kMaxLevels);

  options().addChoice<CircularVoting::RegionType>("--polarity", settings_.polarity,
                                                  {{"bright", CircularVoting::Bright},
                                                   {"dark", CircularVoting::Dark},
                                                   {"both", CircularVoting::Both}},
                                                  "bright, dark or both; default bright");
  options()
      .add("--min-radius", minRadiusText_,
           "Nearest vote in pixels, or with a unit such as um; default 1")
      .check(radius)
      .valueText("N");
  options()
      .add(
          "--max-radius", maxRadiusText_,
          "Farthest vote in pixels, or with a unit such as um, about 1.4 times an object's radius; "
          "default 20")
      .check(radius)
      .valueText("N");
  options()
      .add("--cone-width", settings_.coneWidth,
           "Half-width of the widest cone at its end, in pixels; default half the largest "
           "radius")
      .check(wholeNumberIn(0, kMaxPixels))
      .valueText("N");
  options()
      .add("--sigma", settings_.sigma,
           "Scale of the gradient in pixels; default a seventh of the largest radius, at "
           "least 1")
      .check(numberIn(0.1F, static_cast<float>(kMaxPixels)))
      .valueText("S");
  const Option gradient = options()
                              .add("--gradient", settings_.gradient,
                                   "Gradients below G grey levels per pixel cast no vote")
                              .check(level)
                              .valueText("G");
  options()
      .add("--relative-gradient", settings_.relativeGradient,
           "The same as a share of the strongest gradient; default 0.03")
      .check(share)
      .excludes(gradient)
      .valueText("F");
  const Option threshold =
      options()
          .add("--threshold", settings_.threshold, "Regions of more than T votes make a center")
          .check(level)
          .valueText("T");
  options()
      .add("--relative-threshold", settings_.relativeThreshold,
           "The same as a share of the strongest vote, 0.05 to 1; default 0.3")
      .check(numberIn(0.05F, 1.0F))
      .excludes(threshold)
      .valueText("F");
  options().addFlag("--edges", settings_.edges, "Vote only from the edges of bright blobs");
  options()
      .add("--power", settings_.power,
           "Exponent that turns gradient magnitudes into weights; default 0.5")
      .check(numberIn(0.0F, 100.0F))
      .valueText("P");
}

void VoteCommand::check() {
  const auto sizeOf = [](const std::optional<std::string>& text, int otherwise) {
    return text ? radiusIn(*text) : Size{static_cast<double>(otherwise), false};
  };
  const Size min = sizeOf(minRadiusText_, settings_.minRadius);
  const Size max = sizeOf(maxRadiusText_, settings_.maxRadius);
  if (min.isMetric == max.isMetric && min.value > max.value) {
    throw UsageError("--min-radius", "must not exceed --max-radius");
  }
}

VoteSettings VoteCommand::settingsFor(const std::optional<double>& pixelSize) const {
  VoteSettings settings = settings_;
  const auto set = [&](int& radius, const std::optional<std::string>& text) {
    if (!text) return;
    const float pixels = std::round(radiusIn(*text).inPixels(pixelSize));
    if (!(pixels >= 1 && pixels <= static_cast<float>(kMaxPixels))) {
      throw FileError("has pixels of " + shortestDecimal(static_cast<float>(*pixelSize)) +
                      " um, in which " + *text + " is not a radius from 1 to " +
                      std::to_string(kMaxPixels));
    }
    radius = static_cast<int>(pixels);
  };
  set(settings.minRadius, minRadiusText_);
  set(settings.maxRadius, maxRadiusText_);
  if (settings.minRadius > settings.maxRadius) {
    throw FileError("has pixels in which --min-radius exceeds --max-radius");
  }
  return settings;
}

DetectionCommand::Findings VoteCommand::findIn(const Input& input) const {
  std::optional<std::string> prefix = history_;
  if (prefix && input.stem) *prefix += *input.stem + "_";
  const VoteSettings settings = settingsFor(input.pixelSize);
  const VoteResult result = vote(input.img, settings, prefix);
  Findings findings;
  findings.found = detectionsOf(factsOf(input), settings, result);
  if (const auto& overlay = input.files.front()) {
    findings.files.push_back(
        {*overlay, overlayAsPng(input.img, result.centers, settings.maxRadius)});
  }
  findings.summary = std::to_string(result.centers.size());
  return findings;
}

}  // namespace orva::apps
