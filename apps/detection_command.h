// What the subcommands that find objects have in common: of every image a table and further files,
// of several images a directory of them with a summary.
#ifndef ORVA_APPS_DETECTION_COMMAND_H
#define ORVA_APPS_DETECTION_COMMAND_H

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/child_process.h"
#include "apps/input_file.h"
#include "apps/subcommand.h"
#include "formats/output_file.h"
#include "formats/result_table.h"

namespace orva::apps {

class DetectionCommand : public Subcommand {
 public:
  int run() override;

 protected:
  // An image to work on: one of those that the options choose of a file.
  struct Input {
    std::string file;
    const InputImages& images;  // of the file
    const Image& img;
    std::size_t index;  // of the image
    InputImages::Place place;
    PixelSize pixelSizes;             // along x and y
    std::optional<double> pixelSize;  // micrometres per pixel of square pixels, where known
    // Of the names of results that have no option of their own; none for a single image.
    std::optional<std::string> stem;
    // Where the further results go, in their order; none for those that are not asked for.
    std::vector<std::optional<std::filesystem::path>> files;
  };

  // The results of one image.
  struct Findings {
    Detections found;
    std::vector<FileContent> files;  // those that the input asks for
    std::string summary;             // its fields of the summary
    std::string report;              // for people, unless --quiet; may be empty
  };

  // `summaryColumns` names the fields of Findings::summary.
  DetectionCommand(const Options& options, std::string summaryColumns);

  // A result besides the table.
  struct ResultFile {
    const char* option;
    const char* valueText;
    const char* help;
    const char* ending;  // of its name in a directory, behind the stem
    Check check;         // of its name on the command line; may be empty
  };

  // The options for files, and what the help says of them.
  struct FileOptions {
    const char* tableOption;
    const char* table;
    std::vector<ResultFile> others;
    const char* out;
    const char* quiet;
  };

  // For the constructors of the subcommands, in the order of the help.
  void addImages();
  void addFileOptions(const FileOptions& options);
  void addPixelSizeOption();

  // What the options' own checks do not see. Nothing has been written yet. Throws UsageError.
  virtual void check() {}

  // All files to read, which no result may replace.
  virtual std::vector<std::string> inputs() const { return images_; }

  // Called once before the first image.
  virtual void prepare() {}

  virtual Findings findIn(const Input& input) const = 0;

  const std::vector<std::string>& images() const { return images_; }
  TableFormat format() const;
  bool isQuiet() const { return quiet_; }
  bool isBatch() const { return outDirectory_.has_value(); }
  const PlaneOptions& planes() const { return planes_; }
  static ImageFacts factsOf(const Input& input);
  // Calls work(i) for the image of each i in a child process, several at the same time, on as many
  // threads in all as the command may use; begun() and ended() as by inChildProcesses().
  void forEachImage(const std::function<void(std::size_t)>& begun,
                    const std::function<std::string(std::size_t)>& work,
                    const std::function<void(std::size_t, const Outcome&)>& ended) const;
  // The first of the images of a file that the options choose, and its Input::pixelSize.
  std::pair<std::unique_ptr<Image>, std::optional<double>> readFirst(const std::string& file) const;

 private:
  void expandImages();
  void checkFiles() const;
  // Writes a line for people.
  using Say = std::function<void(const std::string& line)>;
  bool isPrinted() const;
  void workOnOne() const;
  int workOnAll();
  PixelSize pixelSizesOf(const InputImages& images, const Image& img) const;
  // Writes the results of all images of a file; without `table`, the table goes to standard output.
  // Returns their rows of the summary.
  std::string workOn(const std::string& file, const std::optional<std::string>& stem,
                     const std::optional<std::filesystem::path>& table,
                     const std::vector<std::optional<std::filesystem::path>>& files,
                     const Say& say) const;
  // The files that the results of an image go to in a directory, the table's first.
  std::vector<std::filesystem::path> batchFiles(const std::string& image) const;
  // Whether the numbers behind the name of this image or another could make their results' names
  // the same, and the files of such an image with their numbers.
  bool mayShareNames(const std::string& image) const;
  std::vector<std::filesystem::path> numberedFiles(const std::string& image) const;

  std::string summaryColumns_;
  std::vector<std::string> images_;
  PlaneOptions planes_;
  std::optional<std::string> tableFile_;
  std::optional<TableFormat> format_;
  std::optional<std::string> pixelSizeText_;
  struct Other {
    std::string ending;
    std::optional<std::string> file;
  };
  std::vector<Other> others_;
  std::optional<std::string> outDirectory_;
  bool quiet_ = false;
};

}  // namespace orva::apps

#endif
