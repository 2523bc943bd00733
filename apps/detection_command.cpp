#include "apps/detection_command.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "apps/child_process.h"
#include "apps/input_file.h"
#include "apps/progress.h"
#include "formats/file_error.h"
#include "formats/image_file.h"
#include "formats/image_list.h"
#include "formats/output_file.h"
#include "formats/size_text.h"
#include "formats/table_file.h"
#include "formats/text.h"
#include "formats/thread_pool.h"
#include "orva/util/parallel.h"

namespace orva::apps {
namespace {

namespace fs = std::filesystem;

std::string seconds(std::chrono::steady_clock::duration time) {
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%lld.%03lld",
                static_cast<long long>(milliseconds / 1000),
                static_cast<long long>(milliseconds % 1000));
  return text.data();
}

constexpr char kLinesFollow = '\0';  // between the rows of the summary and the lines for people

// What is said of a file whose pixels are not square, or "".
std::string oblongNote(const PixelSize& size) {
  if (!size.x || !size.y || squarePixelSize(size)) return "";
  return "a pixel is " + shortestDecimal(static_cast<float>(*size.x)) + " x " +
         shortestDecimal(static_cast<float>(*size.y)) +
         " um, not square; sizes are in pixels only; --pixel-size gives another";
}

}  // namespace

DetectionCommand::DetectionCommand(const Options& options, std::string summaryColumns)
    : Subcommand(options), summaryColumns_(std::move(summaryColumns)) {}

void DetectionCommand::addImages() {
  options()
      .add(
          "image", images_,
          std::string(kImageFiles) + "; also a folder of images or a pattern such as 'plate/*.tif'")
      .required();
}

void DetectionCommand::addFileOptions(const FileOptions& files) {
  addPlaneOptions(planes_, kSlicesByThemselves);
  std::vector<Option> single;
  single.push_back(options().add(files.tableOption, tableFile_, files.table).valueText("FILE"));
  options().addChoice<std::optional<TableFormat>>(
      "--format", format_,
      {{"csv", TableFormat::kCsv},
       {"json", TableFormat::kJson},
       {"geojson", TableFormat::kGeoJson},
       {"roi", TableFormat::kRoi},
       {"napari", TableFormat::kNapari}},
      "csv, json, geojson for QuPath, roi for ImageJ (a ZIP file), or napari (its CSV of points); "
      "default by the extension of FILE (.csv, .json, .geojson, .geojson.gz, .zip), or csv");
  // The options refer to the elements.
  others_.resize(files.others.size());
  for (std::size_t i = 0; i < others_.size(); ++i) {
    const ResultFile& other = files.others[i];
    others_[i].ending = other.ending;
    single.push_back(
        options().add(other.option, others_[i].file, other.help).valueText(other.valueText));
    if (other.check) single.back().check(other.check);
  }
  const Option out = options().add("--out", outDirectory_, files.out);
  out.check([](const std::string& name) { return name.empty() ? "must name a folder" : ""; });
  for (const Option& option : single) out.excludes(option);
  out.valueText("DIR");
  options().addFlag("--quiet", quiet_, files.quiet);
  addThreadsOption();
}

void DetectionCommand::addPixelSizeOption() {
  options()
      .add("--pixel-size", pixelSizeText_,
           "Width and height of a pixel, in micrometres unless it has a unit; default what the "
           "file says")
      .check([](const std::string& text) {
        const std::optional<Size> size = lengthIn(text);
        return size && size->value > 0 ? "" : text + " is not a length above 0, such as 0.25um";
      })
      .valueText("S");
}

TableFormat DetectionCommand::format() const {
  if (format_) return *format_;
  return tableFile_ ? formatOf(*tableFile_) : TableFormat::kCsv;
}

void DetectionCommand::checkFiles() const {
  if (format() == TableFormat::kRoi && !outDirectory_ && !tableFile_) {
    throw UsageError("--format", "roi makes a ZIP file; name it, or - for standard output");
  }
  if (images_.size() > 1 && !outDirectory_) {
    throw UsageError("image", "several images need --out DIR");
  }
  std::vector<fs::path> results;
  if (!outDirectory_) results.emplace_back(isPrinted() ? "-" : *tableFile_);
  for (const Other& other : others_) {
    if (other.file) results.emplace_back(*other.file);
  }
  if (outDirectory_) {
    results.push_back(fs::path(*outDirectory_) / "summary.csv");
    for (const std::string& image : images_) {
      const std::vector<fs::path> files =
          mayShareNames(image) ? numberedFiles(image) : batchFiles(image);
      results.insert(results.end(), files.begin(), files.end());
    }
  }
  requireSeparate(inputs(), results);
}

bool DetectionCommand::mayShareNames(const std::string& image) const {
  const std::string stem = stemOf(image);
  return std::any_of(images_.begin(), images_.end(), [&](const std::string& other) {
    const std::string name = stemOf(other);
    const std::string& shorter = name.size() < stem.size() ? name : stem;
    const std::string& longer = name.size() < stem.size() ? stem : name;
    const std::string rest = longer.starts_with(shorter) ? longer.substr(shorter.size()) : "";
    return rest.starts_with("_t") || rest.starts_with("_z");
  });
}

std::vector<fs::path> DetectionCommand::numberedFiles(const std::string& image) const {
  std::vector<fs::path> single = batchFiles(image);
  try {
    if (isStandardStream(image) || kindOf(image) != FileKind::kTiff) return single;
    const InputImages images(image, planes_);
    std::vector<fs::path> files{single.front()};
    for (std::size_t i = 0; i < images.count(); ++i) {
      for (auto other = single.begin() + 1; other != single.end(); ++other) {
        files.push_back(withEnding(*other, endingOf(images.placeOf(i))));
      }
    }
    return files;
  } catch (const FileError&) {
    return single;  // reported when the image's turn comes
  }
}

std::vector<fs::path> DetectionCommand::batchFiles(const std::string& image) const {
  const fs::path out(*outDirectory_);
  const std::string stem = stemOf(image);
  std::vector<fs::path> files{out / (stem + extensionOf(format()))};
  for (const Other& other : others_) files.push_back(out / (stem + other.ending));
  return files;
}

// Whether the table of a single image goes to standard output.
bool DetectionCommand::isPrinted() const { return !tableFile_ || isStandardStream(*tableFile_); }

ImageFacts DetectionCommand::factsOf(const Input& input) {
  const InputImages::Place& place = input.place;
  return {input.file, place.page,     input.img.nx(),   input.img.ny(), place.t,
          place.z,    place.position, place.projection, place.level,    input.pixelSize};
}

PixelSize DetectionCommand::pixelSizesOf(const InputImages& images, const Image& img) const {
  if (!pixelSizeText_) return images.axesOf(img).pixelSize;
  const double full = lengthIn(*pixelSizeText_)->value;  // in micrometres with and without a unit
  const double size = full * images.reductionOf(img);
  return {size, size, {}};
}

std::pair<std::unique_ptr<Image>, std::optional<double>> DetectionCommand::readFirst(
    const std::string& file) const {
  const InputImages images(file, planes_);
  std::unique_ptr<Image> img = images.read(0);
  const std::optional<double> pixelSize = squarePixelSize(pixelSizesOf(images, *img));
  return {std::move(img), pixelSize};
}

void DetectionCommand::forEachImage(
    const std::function<void(std::size_t)>& begun,
    const std::function<std::string(std::size_t)>& work,
    const std::function<void(std::size_t, const Outcome&)>& ended) const {
  const std::size_t count = images_.size();
  const auto all = static_cast<std::size_t>(threads());
  const auto workOnThreads = [&](std::size_t i) {
    // Fewer images than threads share them; the last ones have those that the others have left.
    const std::size_t remaining = std::min(all, count < all ? count : count - i);
    ThreadPool pool(static_cast<int>((all + remaining - 1) / remaining));
    const ParallelScope scope(ThreadPool::run, &pool);
    return work(i);
  };
  inChildProcesses(count, all, begun, workOnThreads, ended);
}

std::string DetectionCommand::workOn(const std::string& file,
                                     const std::optional<std::string>& stem,
                                     const std::optional<fs::path>& table,
                                     const std::vector<std::optional<fs::path>>& files,
                                     const Say& say) const {
  const auto show = [&](const std::string& name, const std::string& text) {
    if (!quiet_ && !text.empty()) say("orva: " + name + ": " + text + '\n');
  };
  auto start = std::chrono::steady_clock::now();
  const InputImages images(file, planes_);
  show(file, images.note());
  for (const std::optional<fs::path>& each : files) {
    if (each) requireOnePicture(images.count(), each->string());
  }
  std::string summary;
  std::vector<Detections> found;
  std::vector<FileContent> contents;
  std::vector<std::pair<std::string, std::string>> reports;
  for (std::size_t i = 0; i < images.count(); ++i) {
    const std::unique_ptr<Image> img = images.read(i);
    const PixelSize size = pixelSizesOf(images, *img);
    if (i == 0 && !pixelSizeText_) show(file, oblongNote(size));
    Input input{file, images, *img, i, images.placeOf(i), size, squarePixelSize(size), stem, files};
    const std::string ending = endingOf(input.place);
    if (input.stem) *input.stem += ending;
    for (std::optional<fs::path>& each : input.files) {
      if (each) each = withEnding(*each, ending);
    }
    Findings findings = findIn(input);
    found.push_back(std::move(findings.found));
    contents = std::move(findings.files);
    // Those of several images would fill the memory.
    if (images.count() > 1) {
      requireNoInputs(inputs(), contents);
      writeFiles(contents);
      contents.clear();
    }
    const std::string name = file + fragmentOf(input.place);
    reports.emplace_back(name, findings.report);
    const auto now = std::chrono::steady_clock::now();
    summary += csvField(name) + ',' + std::to_string(img->nx()) + ',' + std::to_string(img->ny()) +
               ',' + findings.summary + ',' + seconds(now - start) + '\n';
    start = now;
  }
  FileContent tableContent = tableFile(table.value_or(""), std::move(found), format());
  // In a directory the table is the first.
  if (table) contents.insert(stem ? contents.begin() : contents.end(), tableContent);
  writeResults(std::move(contents));
  if (!table) print(tableContent, "the table");
  for (const auto& [name, report] : reports) show(name, report);
  return summary;
}

void DetectionCommand::workOnOne() const {
  std::vector<std::optional<fs::path>> files;
  for (const Other& other : others_) files.emplace_back(other.file);
  const auto table = isPrinted() ? std::nullopt : std::optional<fs::path>(*tableFile_);
  StepLine steps(images_.front(), quiet_);
  workOn(images_.front(), {}, table, files, [&](const std::string& line) {
    steps.clear();
    std::cerr << line;
  });
}

int DetectionCommand::workOnAll() {
  const fs::path out(*outDirectory_);
  std::error_code made;
  fs::create_directories(out, made);
  if (made) throw FileError(out.string() + " can not be created: " + made.message());
  prepare();
  const Progress progress(images_.size(), quiet_);
  std::string summary = "file,width,height," + summaryColumns_ + ",seconds\n";
  int status = 0;
  const auto begun = [&](std::size_t i) { progress.show(i, images_[i]); };
  // Several images at the same time would write over each other's steps.
  const bool hidesSteps = quiet_ || (images_.size() > 1 && threads() > 1);
  // The library ends the process when memory runs out; the other images are to be done still.
  const auto work = [&](std::size_t i) {
    const std::string& file = images_[i];
    const std::vector<fs::path> results = batchFiles(file);
    std::string lines;
    const auto say = [&](const std::string& line) { lines += line; };
    const StepLine steps(progress.label(i, file), hidesSteps);
    try {
      return workOn(file, stemOf(file), results.front(), {results.begin() + 1, results.end()},
                    say) +
             kLinesFollow + lines;
    } catch (...) {
      std::cerr << lines;
      throw;
    }
  };
  const auto ended = [&](std::size_t i, const Outcome& outcome) {
    progress.clear();
    if (outcome.text) {
      const std::size_t rows = outcome.text->find(kLinesFollow);
      summary += outcome.text->substr(0, rows);
      std::cerr << outcome.text->substr(rows + 1);
    } else {
      reportFailure(images_[i], FileError(outcome.error));
      status = 1;
    }
  };
  forEachImage(begun, work, ended);
  writeFile(out / "summary.csv", summary);
  return status;
}

// Replaces folders and patterns by the images that they stand for.
void DetectionCommand::expandImages() {
  std::vector<std::string> all;
  for (const std::string& name : images_) {
    const std::vector<std::string> files = imagesNamed(name);
    all.insert(all.end(), files.begin(), files.end());
  }
  images_ = std::move(all);
}

int DetectionCommand::run() {
  expandImages();
  check();
  checkFiles();
  if (outDirectory_) return workOnAll();
  prepare();
  return statusOf(images_.front(), [this] { workOnOne(); });
}

}  // namespace orva::apps
