// An image file whose planes are read one by one, by channel, slice and time.
#ifndef ORVA_FORMATS_IMAGE_SOURCE_H
#define ORVA_FORMATS_IMAGE_SOURCE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/image_axes.h"
#include "formats/image_file.h"
#include "formats/raster.h"
#include "orva/image/image.h"

namespace orva::formats {

class TiffFile;

class ImageSource {
 public:
  // The names of the images of a file, "" for one without: several only of an OME-TIFF file. Throws
  // FileError as the constructor.
  static std::vector<std::string> imagesOf(const std::string& path);

  // Opens a file of any kind that is read. Of an OME-TIFF file of several images, `series` is the
  // number of the one to read; other files have one image, 0. Throws FileError as readImageFile(),
  // and for a description that does not fit the file.
  explicit ImageSource(const std::string& path, std::optional<int> series = {});
  ~ImageSource();

  // The pixel size is that of the full size.
  const ImageAxes& axes() const { return axes_; }
  // Who described the axes: "OME", "ImageJ", or "" for pages without a description.
  const char* description() const { return description_; }
  // The size of the first plane that the image has, at level 0.
  int nx() const { return nx_; }
  int ny() const { return ny_; }

  // The number of sizes in which the first plane is stored, the full one first.
  int levels() const { return levels_; }

  // The plane of page `page`, a number in axes().pages, at a level, and no pixels of other pages of
  // a TIFF file. Throws FileError for a page that is damaged or of another size than the first, and
  // for a level that it does not have.
  std::unique_ptr<orva::Image> read(int page, ColourUse colour, int level = 0) const;

  // The samples of a page of a file that holds them in rasters (TIFF, PNG, PPM), else null. Throws
  // FileError as read().
  std::unique_ptr<Raster> readRaster(int page, int level = 0) const;

  // Of an image with `nx` by `ny` pixels that shows all of a plane, at whatever level.
  PixelSize pixelSizeOf(int nx, int ny) const;

  // Whether the first page holds unsigned 16-bit samples.
  bool isUnsigned16() const;
  // The same in colour.
  bool isColour16() const;

 private:
  void openTiff(const std::string& path, std::optional<int> series);
  void requireLevel(int page, int level) const;
  void requireSizeOfFirst(std::size_t nx, std::size_t ny, int level) const;

  ImageAxes axes_;
  const char* description_ = "";
  int nx_ = 0;
  int ny_ = 0;
  int levels_ = 1;
  int firstPage_ = 0;  // that the image has
  // One of these, by the kind of the file.
  std::unique_ptr<TiffFile> tiff_;
  std::unique_ptr<Raster> raster_;
  std::unique_ptr<orva::Image> image_;
};

}  // namespace orva::formats

#endif
