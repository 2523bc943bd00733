// Image files that a command reads, one of which may come from standard input.
#ifndef ORVA_APPS_INPUT_FILE_H
#define ORVA_APPS_INPUT_FILE_H

#include <memory>
#include <optional>
#include <string>

#include "formats/raster.h"
#include "formats/temporary.h"
#include "orva/image/image.h"

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

// As readImageFile(), from a file by its name on the command line.
std::unique_ptr<orva::Image> readInput(const std::string& name, std::optional<int> frame,
                                       formats::ColourUse colour);

}  // namespace orva::apps

#endif
