// Image files that a command reads, one of which may come from standard input.
#ifndef ORVA_APPS_INPUT_FILE_H
#define ORVA_APPS_INPUT_FILE_H

#include <filesystem>
#include <optional>
#include <string>

#include "apps/subcommand.h"
#include "formats/chosen_images.h"
#include "formats/temporary.h"

namespace orva::apps {

// For the help of the commands that read images.
inline constexpr const char* kImageFiles =
    "PGM, PPM, PNG, TIFF, IHT or UIF file, or - for standard input";

// True for "-", which stands for standard input as an image and for standard output as a table. A
// file of this name is reached as ./-.
bool isStandardStream(const std::string& name);

// What the results of an image are named after: its name without directory and extension, or
// "stdin" for standard input.
std::string stemOf(const std::string& image);

// An image file by its name on the command line. All of standard input is copied into a temporary
// file, which goes away with this object or the process.
class InputFile {
 public:
  // Throws FileError, for standard input that is no image of a format known by its first bytes,
  // too.
  explicit InputFile(const std::string& name);

  const std::string& path() const { return path_; }

 private:
  void copyStandardInput();

  std::string path_;
  std::optional<formats::Temporary> copy_;
};

// The images that a command works on, of a file by its name on the command line.
class InputImages : private InputFile, public formats::ChosenImages {
 public:
  // Throws FileError as InputFile and ChosenImages.
  InputImages(const std::string& name, const PlaneOptions& options,
              Slices slices = Slices::kProjected);
};

// The path with the ending before the extension.
std::filesystem::path withEnding(const std::filesystem::path& path, const std::string& ending);

}  // namespace orva::apps

#endif
