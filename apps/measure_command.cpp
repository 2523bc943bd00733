#include "apps/measure_command.h"

#include <iostream>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "apps/input_file.h"
#include "formats/image_writer.h"
#include "formats/output_file.h"
#include "formats/result_table.h"
#include "formats/text.h"

namespace orva::apps {

MeasureCommand::MeasureCommand(CommandLine& line)
    : Subcommand(line.addSubcommand(
          "measure", "Threshold an image and measure its bright regions",
          "The table has a row for each region of bright pixels that touch along the axes: its "
          "bounding\n"
          "box, centroid and radius of the disc (in a stack the ball) of as many pixels, both "
          "rounded down,\n"
          "number of pixels, and the mean and variance of its brightness. Row k, from 0, belongs "
          "to label k.\n"
          "There may be 32768 regions. The threshold and the number of regions go to standard "
          "output.\n"
          "Example: nuclei of at least 30 pixels\n"
          "  orva measure --min-size 30 --fill --table nuclei.csv nuclei.pgm")) {
  options().add("image", input_, kImageFiles).required();
  const Option threshold =
      options()
          .add("--threshold", settings_.threshold, "Regions are made of pixels of at least T")
          .check(numberIn(-3e38F, 3e38F))
          .valueText("T");
  options()
      .add("--auto", settings_.scale,
           "Threshold half way between the means inside and outside bright blobs of this "
           "scale in pixels, about the radius of the objects; default 5")
      .check(numberIn(0.1F, 1000.0F))
      .excludes(threshold)
      .valueText("SCALE");
  const Check pixels = wholeNumberIn(1, std::numeric_limits<int>::max());
  options()
      .add("--min-size", settings_.minSize, "Leave out regions of fewer pixels")
      .check(pixels)
      .valueText("N");
  options()
      .add("--max-size", settings_.maxSize, "Leave out regions of more pixels")
      .check(pixels)
      .valueText("N");
  options().addFlag("--fill", settings_.fill, "Fill the holes of regions first");
  options()
      .add("--table", table_, "The table goes to FILE.csv, or to standard output for -")
      .required()
      .valueText("FILE.csv REQUIRED");
  options()
      .add(
          "--labels", labels_,
          "The image of labels, -1 outside, goes to FILE.iht or .ics, or to standard output for -, "
          "as IHT")
      .check(writableFile({".iht", ".ics"}))
      .valueText("FILE");
  addPlaneOptions(planes_, kSlicesAsVolume);
  addThreadsOption();
}

void MeasureCommand::measure() const {
  const InputImages images(input_, planes_, InputImages::Slices::kVolume);
  if (labels_) requireOnePicture(images.count(), *labels_);
  std::vector<Detections> tables;
  std::string summary;
  std::vector<FileContent> results;
  for (std::size_t i = 0; i < images.count(); ++i) {
    const std::unique_ptr<Image> img = images.read(i);
    const InputImages::Place place = images.placeOf(i);
    const ThresholdedRegions regions = regionsOf(*img, settings_);
    tables.push_back(
        detectionsOf({input_, place.page, img->nx(), img->ny(), place.t, place.z}, regions));
    summary += "threshold: " + shortestDecimal(regions.threshold) +
               "\nregions: " + std::to_string(regions.features.size()) + '\n';
    if (!labels_) continue;
    const std::filesystem::path file = withEnding(*labels_, endingOf(place));
    results = encodeResult(file.string(), ".iht", regions.labels, Fit::kExactly);
    if (images.count() == 1) continue;
    requireNoInputs({input_}, results);
    writeFiles(results);
  }
  if (images.count() > 1) results.clear();  // they have been written
  const std::string table = csvOf(tables);
  if (!isStandardStream(table_)) results.push_back({table_, table});
  writeResults(std::move(results));
  if (isStandardStream(table_)) print(table, "the table");
  // Not into a result that goes the same way.
  const bool isTaken = isStandardStream(table_) || isStandardOutput(table_) ||
                       (labels_ && isStandardStream(*labels_));
  if (!isTaken) std::cout << summary << std::flush;
}

int MeasureCommand::run() {
  if (settings_.maxSize && *settings_.maxSize < settings_.minSize) {
    throw UsageError("--max-size", "must not be below --min-size");
  }
  std::vector<std::filesystem::path> results;
  results.emplace_back(table_);
  if (labels_) {
    for (const auto& file : filesOf(*labels_)) results.push_back(file);
  }
  requireSeparate({input_}, results);
  return statusOf(input_, [this] { measure(); });
}

}  // namespace orva::apps
