// What the subcommands that find objects have in common: of every image a table and a picture, of
// several images a directory of them with a summary.
#ifndef ORVA_APPS_DETECTION_COMMAND_H
#define ORVA_APPS_DETECTION_COMMAND_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/subcommand.h"
#include "formats/result_table.h"

namespace orva::apps {

class DetectionCommand : public Subcommand {
 public:
  int run() override;

 protected:
  // An image to work on.
  struct Input {
    std::string file;
    const Image& img;
    std::optional<std::string> stem;  // of the results' names; none for a single image
  };

  // The results of one image.
  struct Findings {
    std::string table;
    std::string overlay;  // a PNG file; empty unless wantsOverlay()
    std::string summary;  // its fields of the summary
    std::string report;   // for people, unless --quiet; may be empty
  };

  // `summaryColumns` names the fields of Findings::summary.
  DetectionCommand(const Options& options, std::string summaryColumns);

  // What the help says of the options for files.
  struct FileOptions {
    const char* tableOption;
    const char* table;
    const char* overlay;
    const char* quiet;
  };

  // For the constructors of the subcommands, in the order of the help.
  void addImages();
  void addFileOptions(const FileOptions& help);

  // What the options' own checks do not see. Nothing has been written yet. Throws UsageError.
  virtual void check() {}

  // Called once before the first image.
  virtual void prepare() {}

  virtual Findings findIn(const Input& input) const = 0;

  const std::vector<std::string>& images() const { return images_; }
  TableFormat format() const { return format_; }
  bool isQuiet() const { return quiet_; }
  bool wantsOverlay() const { return overlayFile_ || outDirectory_; }
  ImageFacts factsOf(const Input& input) const;
  std::unique_ptr<Image> read(const std::string& file) const;

 private:
  void checkFiles() const;
  void showReport(const std::string& file, const Findings& findings) const;
  bool isPrinted() const;
  void workOnOne() const;
  int workOnAll();
  // Writes the results of one image of several and returns its row of the summary.
  std::string workInBatch(const std::string& file) const;
  const char* extension() const { return format_ == TableFormat::kCsv ? ".csv" : ".json"; }

  std::string summaryColumns_;
  std::vector<std::string> images_;
  int frame_ = 0;
  std::optional<std::string> tableFile_;
  TableFormat format_ = TableFormat::kCsv;
  std::optional<std::string> overlayFile_;
  std::optional<std::string> outDirectory_;
  bool quiet_ = false;
};

}  // namespace orva::apps

#endif
