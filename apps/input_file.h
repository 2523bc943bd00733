// Image files that a command reads, one of which may come from standard input.
#ifndef ORVA_APPS_INPUT_FILE_H
#define ORVA_APPS_INPUT_FILE_H

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "apps/subcommand.h"
#include "formats/image_source.h"
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

// The images that a command works on, of a file by its name on the command line.
class InputImages {
 public:
  // What slices become without a choice: their maximum, or a volume, which pages of unknown meaning
  // are taken for, too.
  enum class Slices { kProjected, kVolume };

  // Reads no pixels of a TIFF file. Throws FileError as ImageSource and selectPlanes().
  InputImages(const std::string& name, const PlaneOptions& options,
              Slices slices = Slices::kProjected);

  std::size_t count() const { return selection_.images.size(); }
  // What was chosen without being asked for, or "".
  const std::string& note() const { return selection_.note; }

  // Where an image is in the file; `t` and `z` for one of several only.
  struct Place {
    std::optional<int> t;
    std::optional<int> z;
    int page;  // of the file; the first of a projection
    formats::StackPosition position{};
  };
  Place placeOf(std::size_t i) const;
  std::unique_ptr<orva::Image> read(std::size_t i) const;

  // As the file has it, of the full size; nothing with --frame of a file of unclear axes.
  formats::PixelSize pixelSize() const;
  // How many pixels of the full size a pixel of an image that was read covers in each direction.
  double reductionOf(const orva::Image& img) const;

 private:
  InputFile file_;
  std::optional<formats::ImageSource> source_;
  formats::PlaneSelection selection_;
  std::optional<int> frame_;
  int level_;
  bool isVolume_ = false;
};

// What tells the results of one of several images apart: in their names "_t0003_z0001", behind the
// name of the file "#t=3&z=1".
std::string endingOf(const InputImages::Place& place);
std::string fragmentOf(const InputImages::Place& place);

// The path with the ending before the extension.
std::filesystem::path withEnding(const std::filesystem::path& path, const std::string& ending);

}  // namespace orva::apps

#endif
