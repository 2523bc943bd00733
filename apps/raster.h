// Decoded samples of an image file, on their way to an image of the library.
#ifndef ORVA_APPS_RASTER_H
#define ORVA_APPS_RASTER_H

#include <cstddef>
#include <memory>

#include "orva/image/image.h"

namespace orva_app {

enum class SampleType { kUint8, kInt8, kUint16, kInt16, kUint32, kInt32, kFloat32 };

// Bytes of one sample.
std::size_t sizeOf(SampleType type);

// `height` rows of `width` pixels of `channels` samples: 1 for grey, 3 for red, green and blue,
// more where the file has some that are not used.
class Raster {
 public:
  // Throws FileError for sizes of 0 and for sides past those that voting can address.
  Raster(std::size_t width, std::size_t height, std::size_t channels, SampleType type);

  std::size_t width() const { return width_; }
  std::size_t height() const { return height_; }
  std::size_t pixelBytes() const { return channels_ * sizeOf(type_); }
  std::size_t rowBytes() const { return width_ * pixelBytes(); }
  // The start of row `y`; memory is as allocated until written.
  unsigned char* row(std::size_t y) { return data_.get() + y * rowBytes(); }

  // Unsigned samples v become largest - v.
  void invert();

  // Grey in the narrowest pixel type that holds the samples; colour as luminance.
  std::unique_ptr<orva::Image> toImage() const;

 private:
  template <class Sample, class Pixel>
  std::unique_ptr<orva::Image> convert() const;

  template <class Sample>
  void invertSamples();

  std::size_t width_;
  std::size_t height_;
  std::size_t channels_;
  SampleType type_;
  std::unique_ptr<unsigned char[]> data_;
};

}  // namespace orva_app

#endif
