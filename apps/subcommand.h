// What the subcommands of `orva` have in common.
#ifndef ORVA_APPS_SUBCOMMAND_H
#define ORVA_APPS_SUBCOMMAND_H

#include <cstddef>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "apps/command_line.h"
#include "formats/chosen_images.h"
#include "formats/image_writer.h"
#include "formats/output_file.h"
#include "formats/thread_pool.h"

namespace orva::apps {

using namespace formats;  // every subcommand reads and writes files

// Which planes of a file a command works on.
struct PlaneOptions {
  std::optional<int> frame;  // a page or plane by its number, instead of the others
  std::optional<std::string> channel;
  std::optional<std::string> z;
  std::optional<std::string> t;
  std::optional<int> series;
  int level = 0;

  FileChoice chosen() const;
};

inline constexpr const char* kSlicesByThemselves =
    "Slice, counted from 0, or all: their maximum, their mean, or each by itself; default max";
inline constexpr const char* kSlicesAsVolume =
    "Slice, counted from 0, or the maximum or the mean of all, or all as a volume; default all";

inline constexpr const char* kSlicesKept =
    "Slice, counted from 0, or the maximum or the mean of all, or all of them; default all";

class Subcommand {
 public:
  Subcommand(const Subcommand&) = delete;
  Subcommand& operator=(const Subcommand&) = delete;
  virtual ~Subcommand() = default;

  bool isChosen() const { return options_.areChosen(); }

  // Throws UsageError for options that do not go together. Returns the exit status.
  virtual int run() = 0;

  // How many threads the command is to use.
  int threads() const { return threads_.value_or(coreCount()); }

 protected:
  explicit Subcommand(const Options& options) : options_(options) {}

  Options& options() { return options_; }

  void addThreadsOption();

  // Adds --channel, --z, --time, --series and --level, for a command that takes one image at a
  // time, and --frame instead of them. `zHelp` describes --z.
  void addPlaneOptions(PlaneOptions& planes, const std::string& zHelp);

 private:
  Options options_;
  std::optional<int> threads_;
};

// The message of an error, to follow the name of a file.
const char* reasonOf(const std::exception& error);

// The line "orva: FILE: what is wrong" on standard error.
void reportFailure(const std::string& file, const std::exception& error);

// Calls work() and returns the exit status: 0, or 1 after reportFailure() for what it throws.
template <class Work>
int statusOf(const std::string& file, Work work) {
  try {
    work();
    return 0;
  } catch (const std::exception& error) {
    reportFailure(file, error);
    return 1;
  }
}

std::string joined(const std::vector<std::string>& words, const std::string& separator);

// The name of a file that writeImageFile() knows, of these extensions if some are given, or "-".
Check writableFile(const std::vector<std::string>& extensions);

// A page of a TIFF file or a plane of a stack.
Check frameNumber();

// Writes `text` to standard output and flushes it. If that fails, throws FileError, whose message
// calls the text `what`.
void print(const std::string& text, const std::string& what);
void print(const FileContent& content, const std::string& what);

// As encodeImage(); for the path "-" in the format that `extension` names, which takes one file.
std::vector<FileContent> encodeResult(const std::string& path, const std::string& extension,
                                      const Image& img, Fit fit, const Origin& origin = {});

// Throws FileError for several pictures that would go to standard output ("-").
void requireOnePicture(std::size_t count, const std::string& path);

// As writeFiles(), and what has the path "-" is then written to standard output.
void writeResults(std::vector<FileContent> results);

// Throws UsageError when standard input is named twice, when two results would go to one file,
// whatever its names, or to standard output ("-"), or when a result would replace an input.
void requireSeparate(const std::vector<std::string>& inputs,
                     const std::vector<std::filesystem::path>& results);

// Throws FileError for a result, of a name that the command line does not tell, that would replace
// an input.
void requireNoInputs(const std::vector<std::string>& inputs,
                     const std::vector<FileContent>& results);

}  // namespace orva::apps

#endif
