#include "apps/vote_command.h"

#include "formats/overlay.h"
#include "formats/vote.h"

namespace orva::apps {
namespace {

using orva::voting::CircularVoting;

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
  const Check share = numberIn(0.0F, 1.0F);
  const Check level = numberIn(0.0F, kMaxLevels);

  options().addChoice<CircularVoting::RegionType>("--polarity", settings_.polarity,
                                                  {{"bright", CircularVoting::Bright},
                                                   {"dark", CircularVoting::Dark},
                                                   {"both", CircularVoting::Both}},
                                                  "bright, dark or both; default bright");
  options()
      .add("--min-radius", settings_.minRadius, "Nearest vote in pixels; default 1")
      .check(pixels)
      .valueText("N");
  options()
      .add("--max-radius", settings_.maxRadius,
           "Farthest vote in pixels, about 1.4 times an object's radius; default 20")
      .check(pixels)
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
  if (settings_.minRadius > settings_.maxRadius) {
    throw UsageError("--min-radius", "must not exceed --max-radius");
  }
}

DetectionCommand::Findings VoteCommand::findIn(const Input& input) const {
  std::optional<std::string> prefix = history_;
  if (prefix && input.stem) *prefix += *input.stem + "_";
  const VoteResult result = vote(input.img, settings_, prefix);
  Findings findings;
  findings.found = detectionsOf(factsOf(input), settings_, result);
  if (const auto& overlay = input.files.front()) {
    findings.files.push_back(
        {*overlay, overlayAsPng(input.img, result.centers, settings_.maxRadius)});
  }
  findings.summary = std::to_string(result.centers.size());
  return findings;
}

}  // namespace orva::apps
