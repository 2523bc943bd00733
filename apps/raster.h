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

// The most bytes that samples of one image take: those of the largest one in colour with alpha.
inline constexpr std::size_t kMostBytes = std::size_t{1} << 34U;

enum class Colours { kGrey, kRgb };

// `height` rows of `width` pixels of `channels` samples. The first one counts as grey, or the first
// three as red, green and blue; further ones are not used.
class Raster {
 public:
  // Throws FileError for sizes of 0, for sides past those that voting can address and for lack of
  // memory.
  Raster(std::size_t width, std::size_t height, std::size_t channels, Colours colours,
         SampleType type);

  std::size_t width() const { return width_; }
  std::size_t height() const { return height_; }
  std::size_t pixelBytes() const { return channels_ * sizeOf(type_); }
  std::size_t rowBytes() const { return width_ * pixelBytes(); }
  // The start of row `y`; memory is as allocated until written.
  unsigned char* row(std::size_t y) { return data_.get() + y * rowBytes(); }

  // Turns the order of the greys round: unsigned samples v become largest - v.
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
  Colours colours_;
  SampleType type_;
  std::unique_ptr<unsigned char[]> data_;
};

}  // namespace orva_app

#endif
