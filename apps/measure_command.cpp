#include "apps/measure_command.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "apps/input_file.h"
#include "formats/file_error.h"
#include "formats/image_writer.h"
#include "formats/output_file.h"
#include "formats/result_table.h"
#include "formats/text.h"
#include "orva/bip/bip.h"
#include "orva/bip/silent.h"

namespace orva::apps {
namespace {

using orva::RegionFeature;

Detections tableOf(const ImageFacts& facts, const std::vector<RegionFeature>& features) {
  Detections table;
  table.facts = facts;
  for (const char* name :
       {"xmin", "xmax", "ymin", "ymax", "zmin", "zmax", "cx", "cy", "cz", "radius", "npix"}) {
    table.columns.push_back({name, Column::Kind::kWhole});
  }
  for (const char* name : {"mean", "var"}) table.columns.push_back({name, Column::Kind::kFloat});
  for (const RegionFeature& f : features) {
    for (const int v :
         {f.xmin, f.xmax, f.ymin, f.ymax, f.zmin, f.zmax, f.cx, f.cy, f.cz, f.radius, f.npix}) {
      table.values.push_back(v);
    }
    for (const float v : {f.mean, f.var}) table.values.push_back(v);
  }
  return table;
}

// Takes the regions out of the labels and the table that do not have `minSize` to `maxSize` pixels,
// and numbers the others anew. (orva::bip::selectRegionsBySize keeps the first region in any case.)
void selectBySize(orva::image<short>& labels, std::vector<RegionFeature>& features, int minSize,
                  int maxSize) {
  const auto isWanted = [=](const RegionFeature& f) {
    return f.npix >= minSize && f.npix <= maxSize;
  };
  for (int i = 0; i < labels.npix(); ++i) {
    short& label = labels.pixels()[i];
    if (label >= 0 && !isWanted(features[static_cast<std::size_t>(label)])) label = -1;
  }
  orva::bip::relabel(labels);
  std::erase_if(features, [&](const RegionFeature& f) { return !isWanted(f); });
}

// The regions of the mask, with their holes if they are to be filled.
orva::image<short> labelled(orva::image<unsigned char>& mask, bool fill, int& n) {
  if (fill) orva::bip::silent::removeInternalStructures(mask);
  auto result = orva::bip::silent::regions(mask, 255, 1, orva::NEIGHBORHOOD_4);
  if (!result.areAllLabelled) {
    throw FileError("has more than 32768 regions; smooth it or raise the threshold");
  }
  n = result.n;
  return result.labels;
}

}  // namespace

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
          .add("--threshold", threshold_, "Regions are made of pixels of at least T")
          .check(numberIn(-3e38F, 3e38F))
          .valueText("T");
  options()
      .add("--auto", scale_,
           "Threshold half way between the means inside and outside bright blobs of this "
           "scale in pixels, about the radius of the objects; default 5")
      .check(numberIn(0.1F, 1000.0F))
      .excludes(threshold)
      .valueText("SCALE");
  const Check pixels = wholeNumberIn(1, std::numeric_limits<int>::max());
  options()
      .add("--min-size", minSize_, "Leave out regions of fewer pixels")
      .check(pixels)
      .valueText("N");
  options()
      .add("--max-size", maxSize_, "Leave out regions of more pixels")
      .check(pixels)
      .valueText("N");
  options().addFlag("--fill", fill_, "Fill the holes of regions first");
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

MeasureCommand::Regions MeasureCommand::measured(const Image& img) const {
  const float t = threshold_ ? *threshold_ : orva::bip::computeThreshold(img, scale_);
  if (!std::isfinite(t)) {
    throw FileError("has pixels that are no numbers or infinite; give a --threshold");
  }
  orva::image<unsigned char> mask = orva::bip::threshold(img, t);
  int n = 0;
  orva::image<short> labels = labelled(mask, fill_, n);
  std::vector<RegionFeature> features = orva::bip::regionFeatures(labels, n, img);
  selectBySize(labels, features, minSize_, maxSize_.value_or(std::numeric_limits<int>::max()));
  return {t, std::move(features), labels};
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
    const Regions regions = measured(*img);
    tables.push_back(
        tableOf({input_, place.page, img->nx(), img->ny(), place.t, place.z}, regions.features));
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
  if (maxSize_ && *maxSize_ < minSize_) {
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
