#include "apps/vote_command.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "apps/child_process.h"
#include "apps/input_file.h"
#include "formats/file_error.h"
#include "formats/output_file.h"
#include "formats/overlay.h"
#include "formats/text.h"

namespace orva::apps {
namespace {

namespace fs = std::filesystem;
using orva::voting::CircularVoting;

constexpr int kMaxPixels = 1000;  // radius and cone width; the cones take memory by their product
constexpr float kMaxLevels = 3e38F;

// Shows which of several images is at work, on a terminal only.
class Progress {
 public:
  Progress(std::size_t count, bool quiet)
      : count_(count), shown_(!quiet && ::isatty(STDERR_FILENO) != 0) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { clear(); }

  void show(std::size_t index, const std::string& name) const {
    if (shown_)
      std::cerr << "\r\033[K[" << index + 1 << '/' << count_ << "] " << name << std::flush;
  }
  void clear() const {
    if (shown_) std::cerr << "\r\033[K" << std::flush;
  }

 private:
  std::size_t count_;
  bool shown_;
};

std::string seconds(std::chrono::steady_clock::duration time) {
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%lld.%03lld",
                static_cast<long long>(milliseconds / 1000),
                static_cast<long long>(milliseconds % 1000));
  return text.data();
}

}  // namespace

VoteCommand::VoteCommand(CommandLine& line)
    : Subcommand(line.addSubcommand(
          "vote", "Find the centers of round objects by circular voting",
          "Example: the centers of bright nuclei of radius up to 14 pixels, as a table and "
          "a picture\n"
          "  orva vote --max-radius 20 --centers nuclei.csv --overlay nuclei.png "
          "nuclei.pgm")) {
  options().add("image", images_, kImageFiles).required();
  addVotingOptions();
  addFileOptions();
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

void VoteCommand::addFileOptions() {
  options()
      .add("--history", history_,
           "Write the votes before every narrowing pass as ICS pairs PREFIXvote_NN, NN being "
           "the cone width; with --out PREFIXNAME_vote_NN")
      .valueText("PREFIX");
  options()
      .add("--frame", frame_, "Page of a TIFF file or plane of a stack, counted from 0; default 0")
      .check(frameNumber())
      .valueText("K");
  const Option centers = options()
                             .add("--centers", centersFile_,
                                  "The table x,y,weight goes to FILE; default -, standard output")
                             .valueText("FILE");
  options().addChoice<TableFormat>("--format", format_,
                                   {{"csv", TableFormat::kCsv}, {"json", TableFormat::kJson}},
                                   "csv or json; default csv");
  const Option overlay =
      options()
          .add("--overlay", overlayFile_, "The image with a cross at each center goes to FILE.png")
          .valueText("FILE.png");
  options()
      .add("--out", outDirectory_,
           "For each image NAME write DIR/NAME.csv and DIR/NAME.png, and DIR/summary.csv; "
           "standard input has the name stdin")
      .excludes(centers)
      .excludes(overlay)
      .valueText("DIR");
  options().addFlag("--quiet", quiet_, "No progress line");
}

// What the options' own checks do not see. Nothing has been written yet.
void VoteCommand::check() const {
  if (settings_.minRadius > settings_.maxRadius) {
    throw UsageError("--min-radius", "must not exceed --max-radius");
  }
  if (images_.size() > 1 && !outDirectory_) {
    throw UsageError("image", "several images need --out DIR");
  }
  std::vector<fs::path> results;
  if (!isPrinted()) results.emplace_back(*centersFile_);
  if (overlayFile_) results.emplace_back(*overlayFile_);
  if (outDirectory_) {
    const fs::path out(*outDirectory_);
    results.push_back(out / "summary.csv");
    for (const std::string& image : images_) {
      const std::string stem = stemOf(image);
      results.push_back(out / (stem + extension()));
      results.push_back(out / (stem + ".png"));
    }
  }
  requireSeparate(images_, results);
}

// Whether the table of a single image goes to standard output.
bool VoteCommand::isPrinted() const { return !centersFile_ || isStandardStream(*centersFile_); }

std::string VoteCommand::table(const std::string& file, const orva::Image& img,
                               const VoteResult& result) const {
  return format_ == TableFormat::kCsv
             ? centersAsCsv(result.centers)
             : centersAsJson({file, frame_, img.nx(), img.ny()}, settings_, result);
}

void VoteCommand::voteOnOne() const {
  const std::string& file = images_.front();
  const std::unique_ptr<orva::Image> img = readInput(file, frame_, ColourUse::kLuminance);
  const VoteResult result = vote(*img, settings_, history_);
  const std::string text = table(file, *img, result);
  std::vector<FileContent> files;
  if (overlayFile_) {
    files.push_back({*overlayFile_, overlayAsPng(*img, result.centers, settings_.maxRadius)});
  }
  if (!isPrinted()) files.push_back({*centersFile_, text});
  writeFiles(files);
  if (isPrinted()) print(text, "the table");
}

std::string VoteCommand::voteInBatch(const std::string& file) const {
  const auto start = std::chrono::steady_clock::now();
  const std::string stem = stemOf(file);
  const std::unique_ptr<orva::Image> img = readInput(file, frame_, ColourUse::kLuminance);
  const VoteResult result =
      vote(*img, settings_,
           history_ ? std::optional(*history_ + stem + "_") : std::optional<std::string>());
  const fs::path out(*outDirectory_);
  writeFiles({{out / (stem + extension()), table(file, *img, result)},
              {out / (stem + ".png"), overlayAsPng(*img, result.centers, settings_.maxRadius)}});
  const auto time = std::chrono::steady_clock::now() - start;
  return csvField(file) + ',' + std::to_string(img->nx()) + ',' + std::to_string(img->ny()) + ',' +
         std::to_string(result.centers.size()) + ',' + seconds(time) + '\n';
}

int VoteCommand::voteOnAll() const {
  const fs::path out(*outDirectory_);
  std::error_code made;
  fs::create_directories(out, made);
  if (made) throw FileError(out.string() + " can not be created: " + made.message());
  const Progress progress(images_.size(), quiet_);
  std::string summary = "file,width,height,centers,seconds\n";
  int status = 0;
  for (std::size_t i = 0; i < images_.size(); ++i) {
    const std::string& file = images_[i];
    progress.show(i, file);
    try {
      // The library ends the process when memory runs out; the other images are to be done still.
      summary += inChildProcess([&] { return voteInBatch(file); });
    } catch (const std::exception& error) {
      progress.clear();
      reportFailure(file, error);
      status = 1;
    }
  }
  writeFile(out / "summary.csv", summary);
  return status;
}

int VoteCommand::run() const {
  check();
  if (outDirectory_) return voteOnAll();
  return statusOf(images_.front(), [this] { voteOnOne(); });
}

}  // namespace orva::apps
