// The images that a user chooses of a file: planes, projections of slices, or volumes.
#ifndef ORVA_FORMATS_CHOSEN_IMAGES_H
#define ORVA_FORMATS_CHOSEN_IMAGES_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "formats/image_axes.h"
#include "formats/image_source.h"
#include "formats/plane_choice.h"
#include "orva/image/image.h"

namespace orva::formats {

// What is asked for of a file.
struct FileChoice {
  PlaneChoice planes{};
  std::optional<int> frame{};  // a page or plane by its number, instead of all others
  std::optional<int> series{};
  int level = 0;
};

class ChosenImages {
 public:
  // What slices become without a choice: their maximum, or a volume, which pages of unknown meaning
  // are taken for, too.
  enum class Slices { kProjected, kVolume };

  // Reads no pixels of a TIFF file. Throws FileError as ImageSource and selectPlanes().
  ChosenImages(const std::string& path, const FileChoice& choice,
               Slices slices = Slices::kProjected);

  std::size_t count() const { return selection_.images.size(); }
  // What was chosen without being asked for, or "".
  const std::string& note() const { return selection_.note; }

  // Where an image is in the file; `t` and `z` for one of several only.
  struct Place {
    std::optional<int> t;
    std::optional<int> z;
    int page;  // of the file; the first of a projection
    StackPosition position{};
    const char* projection = "";  // "max" or "mean" of several slices
    int level = 0;
  };
  Place placeOf(std::size_t i) const;
  // Image `i` below count(). Throws FileError as readPlanar(), readVolume() and, for a frame,
  // readImageFile().
  std::unique_ptr<orva::Image> read(std::size_t i) const;
  // Whether the first page holds unsigned 16-bit samples.
  bool isUnsigned16() const;

  // The same of another channel, by its number or name. Not for frames.
  std::unique_ptr<orva::Image> readOfChannel(std::size_t i, const std::string& channel) const;

  // The axes of an image that was read, one plane or slices, with the size of its pixels. A frame
  // has none in a file of unclear axes, nor if its size is not that of the image that the file
  // describes.
  ImageAxes axesOf(const orva::Image& img) const;
  ImageAxes axesOf(int nx, int ny, int nz = 1) const;
  // How many pixels of the full size a pixel of an image that was read covers in each direction.
  double reductionOf(const orva::Image& img) const;

 private:
  PixelSize pixelSizeOf(int nx, int ny) const;

  std::string path_;
  std::optional<ImageSource> source_;
  PlaneSelection selection_;
  std::optional<int> frame_;
  int level_;
  bool isVolume_ = false;
};

// What tells the results of one of several images apart: in their names "_t0003_z0001", behind the
// name of the file "#t=3&z=1".
std::string endingOf(const ChosenImages::Place& place);
std::string fragmentOf(const ChosenImages::Place& place);

}  // namespace orva::formats

#endif
