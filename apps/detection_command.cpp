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

void DetectionCommand::addFileOptions(const FileOptions& files) {
  options()
      .add("--frame", frame_, "Page of a TIFF file or plane of a stack, counted from 0; default 0")
      .check(frameNumber())
      .valueText("K");
  std::vector<Option> single;
  single.push_back(options().add(files.tableOption, tableFile_, files.table).valueText("FILE"));
  options().addChoice<TableFormat>("--format", format_,
                                   {{"csv", TableFormat::kCsv}, {"json", TableFormat::kJson}},
                                   "csv or json; default csv");
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
  for (const Option& option : single) out.excludes(option);
  out.valueText("DIR");
  options().addFlag("--quiet", quiet_, files.quiet);
}

void DetectionCommand::checkFiles() const {
  if (images_.size() > 1 && !outDirectory_) {
    throw UsageError("image", "several images need --out DIR");
  }
  std::vector<fs::path> results;
  if (!isPrinted()) results.emplace_back(*tableFile_);
  for (const Other& other : others_) {
    if (other.file) results.emplace_back(*other.file);
  }
  if (outDirectory_) {
    results.push_back(fs::path(*outDirectory_) / "summary.csv");
    for (const std::string& image : images_) {
      const std::vector<fs::path> files = batchFiles(image);
      results.insert(results.end(), files.begin(), files.end());
    }
  }
  requireSeparate(inputs(), results);
}

std::vector<fs::path> DetectionCommand::batchFiles(const std::string& image) const {
  const fs::path out(*outDirectory_);
  const std::string stem = stemOf(image);
  std::vector<fs::path> files{out / (stem + extension())};
  for (const Other& other : others_) files.push_back(out / (stem + other.ending));
  return files;
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
  Input input{file, *img, {}, {}};
  for (const Other& other : others_) input.files.emplace_back(other.file);
  Findings findings = findIn(input);
  if (!isPrinted()) findings.files.push_back({*tableFile_, findings.table});
  writeFiles(findings.files);
  if (isPrinted()) print(findings.table, "the table");
  showReport(file, findings);
}

std::string DetectionCommand::workInBatch(const std::string& file) const {
  const auto start = std::chrono::steady_clock::now();
  const std::vector<fs::path> results = batchFiles(file);
  const std::unique_ptr<Image> img = read(file);
  Findings findings = findIn({file, *img, stemOf(file), {results.begin() + 1, results.end()}});
  findings.files.insert(findings.files.begin(), {results.front(), findings.table});
  writeFiles(findings.files);
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
