#include "apps/detection_command.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>
#include <utility>

#include "apps/child_process.h"
#include "apps/input_file.h"
#include "apps/progress.h"
#include "formats/file_error.h"
#include "formats/output_file.h"
#include "formats/text.h"

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

}  // namespace

DetectionCommand::DetectionCommand(const Options& options, std::string summaryColumns)
    : Subcommand(options), summaryColumns_(std::move(summaryColumns)) {}

void DetectionCommand::addImages() { options().add("image", images_, kImageFiles).required(); }

void DetectionCommand::addFileOptions(const FileOptions& help) {
  options()
      .add("--frame", frame_, "Page of a TIFF file or plane of a stack, counted from 0; default 0")
      .check(frameNumber())
      .valueText("K");
  const Option table = options().add(help.tableOption, tableFile_, help.table).valueText("FILE");
  options().addChoice<TableFormat>("--format", format_,
                                   {{"csv", TableFormat::kCsv}, {"json", TableFormat::kJson}},
                                   "csv or json; default csv");
  const Option overlay =
      options().add("--overlay", overlayFile_, help.overlay).valueText("FILE.png");
  options()
      .add("--out", outDirectory_,
           "For each image NAME write DIR/NAME.csv and DIR/NAME.png, and DIR/summary.csv; "
           "standard input has the name stdin")
      .excludes(table)
      .excludes(overlay)
      .valueText("DIR");
  options().addFlag("--quiet", quiet_, help.quiet);
}

void DetectionCommand::checkFiles() const {
  if (images_.size() > 1 && !outDirectory_) {
    throw UsageError("image", "several images need --out DIR");
  }
  std::vector<fs::path> results;
  if (!isPrinted()) results.emplace_back(*tableFile_);
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
bool DetectionCommand::isPrinted() const { return !tableFile_ || isStandardStream(*tableFile_); }

ImageFacts DetectionCommand::factsOf(const Input& input) const {
  return {input.file, frame_, input.img.nx(), input.img.ny()};
}

std::unique_ptr<Image> DetectionCommand::read(const std::string& file) const {
  return readInput(file, frame_, ColourUse::kLuminance);
}

// After the results are written, over the progress line.
void DetectionCommand::showReport(const std::string& file, const Findings& findings) const {
  if (quiet_ || findings.report.empty()) return;
  const Progress line(images_.size(), quiet_);
  line.clear();
  std::cerr << "orva: " + file + ": " + findings.report + '\n';
}

void DetectionCommand::workOnOne() const {
  const std::string& file = images_.front();
  const std::unique_ptr<Image> img = read(file);
  const Findings findings = findIn({file, *img, {}});
  std::vector<FileContent> files;
  if (overlayFile_) files.push_back({*overlayFile_, findings.overlay});
  if (!isPrinted()) files.push_back({*tableFile_, findings.table});
  writeFiles(files);
  if (isPrinted()) print(findings.table, "the table");
  showReport(file, findings);
}

std::string DetectionCommand::workInBatch(const std::string& file) const {
  const auto start = std::chrono::steady_clock::now();
  const std::string stem = stemOf(file);
  const std::unique_ptr<Image> img = read(file);
  const Findings findings = findIn({file, *img, stem});
  const fs::path out(*outDirectory_);
  writeFiles(
      {{out / (stem + extension()), findings.table}, {out / (stem + ".png"), findings.overlay}});
  showReport(file, findings);
  const auto time = std::chrono::steady_clock::now() - start;
  return csvField(file) + ',' + std::to_string(img->nx()) + ',' + std::to_string(img->ny()) + ',' +
         findings.summary + ',' + seconds(time) + '\n';
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
  for (std::size_t i = 0; i < images_.size(); ++i) {
    const std::string& file = images_[i];
    progress.show(i, file);
    try {
      // The library ends the process when memory runs out; the other images are to be done still.
      summary += inChildProcess([&] { return workInBatch(file); });
    } catch (const std::exception& error) {
      progress.clear();
      reportFailure(file, error);
      status = 1;
    }
  }
  writeFile(out / "summary.csv", summary);
  return status;
}

int DetectionCommand::run() {
  check();
  checkFiles();
  if (outDirectory_) return workOnAll();
  prepare();
  return statusOf(images_.front(), [this] { workOnOne(); });
}

}  // namespace orva::apps
