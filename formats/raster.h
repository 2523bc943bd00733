// Decoded samples of an image file, on their way to an image of the library.
#ifndef ORVA_FORMATS_RASTER_H
#define ORVA_FORMATS_RASTER_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "orva/image/image.h"

namespace orva::formats {

enum class SampleType { kUint8, kInt8, kUint16, kInt16, kUint32, kInt32, kFloat32 };

// Bytes of one sample.
std::size_t sizeOf(SampleType type);

// The maximum bytes of the samples of one image: those of the largest image in colour with alpha.
inline constexpr std::uint64_t kMaxBytes = std::uint64_t{1} << 34U;

// Whether the first sample of a pixel is its grey value, or the first three are red, green and
// blue.
enum class ColourModel { kGrey, kRgb };

// How colour is read: as its luminance in floats; as the colours themselves; or as the colours
// where they are bytes, else as luminance.
enum class ColourUse { kLuminance, kKept, kKeptIfBytes };

// The brightness of a colour pixel. Red is component 0.
template <class T>
float brightnessOf(const orva::GenericRgb<T>& p) {
  // The library's weights stand in the order blue, green, red.
  return orva::luminance(orva::GenericRgb<T>{p.c2, p.c1, p.c0});
}

// `height` rows of `width` pixels of `channels` samples. The first one counts as grey, or the first
// three as red, green and blue; further ones are not used.
class Raster {
 public:
  // Throws FileError for sizes of 0 and for more pixels than an image can have, std::bad_alloc for
  // lack of memory.
  Raster(std::size_t width, std::size_t height, std::size_t channels, ColourModel model,
         SampleType type);

  std::size_t width() const { return width_; }
  std::size_t height() const { return height_; }
  SampleType type() const { return type_; }
  bool isColour() const { return model_ == ColourModel::kRgb; }
  std::size_t pixelBytes() const { return channels_ * sizeOf(type_); }
  std::size_t rowBytes() const { return width_ * pixelBytes(); }
  // The start of row `y`; memory is as allocated until written.
  unsigned char* row(std::size_t y) { return data_.get() + y * rowBytes(); }
  const unsigned char* row(std::size_t y) const { return data_.get() + y * rowBytes(); }

  Raster copy() const;

  // Inverts the order of the grey values: unsigned samples v become maximum - v.
  void invert();

  // Grey in the narrowest pixel type that holds the samples. Colour as asked; throws FileError for
  // colour to be kept of other samples than bytes.
  std::unique_ptr<orva::Image> toImage(ColourUse colour) const;

 private:
  template <class Sample, class Pixel>
  std::unique_ptr<orva::Image> convert() const;
  std::unique_ptr<orva::Image> keepColour() const;

  template <class Sample>
  void invertSamples();

  std::size_t width_;
  std::size_t height_;
  std::size_t channels_;
  ColourModel model_;
  SampleType type_;
  std::unique_ptr<unsigned char[]> data_;
};

}  // namespace orva::formats

#endif
