#include "apps/segment_command.h"

#include <cstddef>
#include <vector>

#include "apps/input_file.h"
#include "formats/file_error.h"
#include "formats/image_writer.h"
#include "formats/overlay.h"
#include "formats/size_text.h"
#include "orva/detect/detect.h"
#include "orva/detect/measure.h"

namespace orva::apps {
namespace {

constexpr float kMaxArea = 4e9F;            // above the pixels of any image
enum : std::size_t { kLabels, kOutlines };  // further results

}  // namespace

SegmentCommand::SegmentCommand(CommandLine& line)
    : ObjectCommand(line.addSubcommand(
          "segment", "Find round objects, and measure the pixels of each",
          "Example: the nuclei in an image, as labels, a picture and a table\n"
          "  orva segment --labels labels.tif --outlines outlines.png --table nuclei.csv "
          "nuclei.pgm")) {
  addImages();
  addSearchOptions();
  addRegionOptions();
  addFileOptions(
      {"--table",
       "The table of measurements goes to FILE; default -, standard output",
       {{"--labels", "FILE.tif|.png",
         "The label image goes to FILE: 0 is background, k the pixels of the object in row k of "
         "the table",
         "_labels.tif", writableFile({".tif", ".tiff", ".png"})},
        {"--outlines", "FILE.png", "The image with the outline of each object goes to FILE.png",
         ".png", writableFile({".png"})}},
       "For each image NAME write DIR/NAME.csv, DIR/NAME_labels.tif and DIR/NAME.png, and "
       "DIR/summary.csv; standard input has the name stdin",
       "No progress line, and no line about what was found"});
}

void SegmentCommand::addRegionOptions() {
  const Check area = [number = numberIn(0.0F, kMaxArea)](const std::string& text) {
    const std::optional<Size> size = areaIn(text);
    return size && size->isMetric ? std::string() : number(text);
  };
  options()
      .add("--min-area", minAreaText_,
           "Leave out smaller objects, in pixels or with a unit such as um2; default 0")
      .check(area)
      .valueText("N");
  options()
      .add("--max-area", maxAreaText_,
           "Leave out larger objects, in pixels or with a unit such as um2")
      .check(area)
      .valueText("N");
  options().addFlag("--exclude-border", excludeBorder_,
                    "Leave out objects that touch the border of the image");
  options()
      .add("--measure", measured_,
           "Measure the intensities in IMAGE, another image of the same size")
      .valueText("IMAGE");
  options()
      .add("--measure-channel", measuredChannel_,
           "Measure the intensities in this channel, of IMAGE or of the image itself")
      .valueText("K|NAME");
}

void SegmentCommand::check() {
  ObjectCommand::check();
  if (minAreaText_ && maxAreaText_) {
    const Size min = *areaIn(*minAreaText_);
    const Size max = *areaIn(*maxAreaText_);
    if (min.isMetric != max.isMetric) {
      throw UsageError("--min-area", "must have a unit if --max-area has one");
    }
    if (max.value < min.value) throw UsageError("--min-area", "must not exceed --max-area");
  }
  if (planes().frame && measuredChannel_ && !measured_) {
    throw UsageError("--measure-channel", "goes with --frame only if --measure names an image");
  }
  if (measured_ && isBatch()) {
    throw UsageError("--measure", "goes with a single image, without --out");
  }
}

std::vector<std::string> SegmentCommand::inputs() const {
  std::vector<std::string> files = images();
  if (measured_) files.push_back(*measured_);
  return files;
}

std::unique_ptr<Image> SegmentCommand::otherImage(const Input& input) const {
  if (!measured_ && !measuredChannel_) return nullptr;
  const std::string file = measured_.value_or(input.file);
  const auto prefixed = [&](const std::string& text) {
    return "cannot be measured in " + file + ": " + text;
  };
  std::unique_ptr<Image> other;
  try {
    if (measured_) {
      if (!measuredImages_) {
        PlaneOptions options = planes();
        options.frame.reset();
        options.channel = measuredChannel_;
        measuredImages_ = std::make_unique<InputImages>(file, options);
      }
      if (input.index < measuredImages_->count()) other = measuredImages_->read(input.index);
    } else {
      other = input.images.readOfChannel(input.index, *measuredChannel_);
    }
  } catch (const FileError& error) {
    throw FileError(prefixed(error.what()));
  }
  if (!other) throw FileError(prefixed("it has fewer times or slices"));
  if (other->nx() != input.img.nx() || other->ny() != input.img.ny()) {
    const auto sizeOf = [](const Image& i) {
      return std::to_string(i.nx()) + " x " + std::to_string(i.ny());
    };
    throw FileError(
        prefixed("one has " + sizeOf(input.img) + " pixels, the other " + sizeOf(*other)));
  }
  return other;
}

detect::SegmentSettings SegmentCommand::regionSettingsFor(
    const std::optional<double>& pixelSize) const {
  detect::SegmentSettings settings;
  if (minAreaText_) settings.minArea = areaIn(*minAreaText_)->inPixels(pixelSize);
  if (maxAreaText_) settings.maxArea = areaIn(*maxAreaText_)->inPixels(pixelSize);
  settings.excludeBorder = excludeBorder_;
  return settings;
}

DetectionCommand::Findings SegmentCommand::findIn(const Input& input) const {
  const Image& img = input.img;
  const std::unique_ptr<Image> other = otherImage(input);
  const detect::FindSettings settings = settingsFor(input.pixelSize);
  const detect::SegmentSettings regionSettings = regionSettingsFor(input.pixelSize);
  const detect::SegmentedImage segmented = detect::segmentImage(img, settings, regionSettings);
  const auto measures = detect::measureObjects(segmented.labels, other ? *other : img);

  ImageFacts facts = factsOf(input);
  facts.measured = measured_;
  facts.measuredChannel = measuredChannel_;
  Findings findings;
  findings.found =
      detectionsOf(facts, settings, regionSettings, segmented, measures,
                   drawsContours(format()) ? contoursOf(segmented.labels) : std::vector<Contour>());
  if (const auto& file = input.files[kLabels]) {
    findings.files.push_back({*file, encodeLabels(*file, segmented.labels, input.pixelSizes)});
  }
  if (const auto& file = input.files[kOutlines]) {
    findings.files.push_back({*file, outlinesAsPng(img, segmented.labels)});
  }
  findings.summary = summaryOf(segmented.objects.size(), segmented.used);
  findings.report = reportOf(segmented, input.pixelSize);
  if (segmented.leftOut > 0) {
    findings.report += "; " + std::to_string(segmented.leftOut) + " more left out";
  }
  return findings;
}

}  // namespace orva::apps
