#include "formats/raster.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "formats/file_error.h"

namespace orva::formats {

std::size_t sizeOf(SampleType type) {
  switch (type) {
    case SampleType::kUint8:
    case SampleType::kInt8:
      return 1;
    case SampleType::kUint16:
    case SampleType::kInt16:
      return 2;
    default:
      return 4;
  }
}

Raster::Raster(std::size_t width, std::size_t height, std::size_t channels, ColourModel model,
               SampleType type)
    : width_(width), height_(height), channels_(channels), model_(model), type_(type) {
  constexpr std::size_t kMaxPixels = std::numeric_limits<std::int32_t>::max();
  if (width == 0 || height == 0 || channels == 0) throw FileError("the image has no pixels");
  // An address may have 32 bits only.
  constexpr std::uint64_t kMax =
      std::min<std::uint64_t>(kMaxBytes, std::numeric_limits<std::size_t>::max());
  if (width > kMaxPixels / height || channels > kMaxBytes / kMaxPixels ||
      std::uint64_t{width} * height > kMax / pixelBytes())
    throw FileError("the image is too large");
  // Not initialised: a file that promises more pixels than it holds costs no memory.
  data_.reset(new unsigned char[height * rowBytes()]);
}

Raster Raster::copy() const {
  Raster result(width_, height_, channels_, model_, type_);
  std::copy_n(data_.get(), height_ * rowBytes(), result.data_.get());
  return result;
}

template <class Sample>
void Raster::invertSamples() {
  auto* samples = reinterpret_cast<Sample*>(data_.get());
  std::for_each(samples, samples + width_ * height_ * channels_, [](Sample& v) {
    if constexpr (std::is_floating_point_v<Sample>) {
      v = -v;
    } else {
      v = static_cast<Sample>(~v);
    }
  });
}

// Inverting the bits does not depend on the sign of a type.
void Raster::invert() {
  switch (type_) {
    case SampleType::kUint8:
    case SampleType::kInt8:
      return invertSamples<std::uint8_t>();
    case SampleType::kUint16:
    case SampleType::kInt16:
      return invertSamples<std::uint16_t>();
    case SampleType::kUint32:
    case SampleType::kInt32:
      return invertSamples<std::uint32_t>();
    default:
      return invertSamples<float>();
  }
}

template <class Sample, class Pixel>
std::unique_ptr<orva::Image> Raster::convert() const {
  const int nx = static_cast<int>(width_);
  const int ny = static_cast<int>(height_);
  const auto* from = reinterpret_cast<const Sample*>(data_.get());
  if (model_ == ColourModel::kGrey) {
    auto grey = std::make_unique<orva::image<Pixel>>(nx, ny, 1, 1, 1);
    for (int i = 0; i < grey->npix(); ++i, from += channels_) {
      grey->pixels()[i] = static_cast<Pixel>(*from);
    }
    return grey;
  }
  auto brightness = std::make_unique<orva::image<float>>(nx, ny, 1, 1, 1);
  for (int i = 0; i < brightness->npix(); ++i, from += channels_) {
    brightness->pixels()[i] = brightnessOf(orva::GenericRgb<Sample>{from[0], from[1], from[2]});
  }
  return brightness;
}

std::unique_ptr<orva::Image> Raster::keepColour() const {
  if (type_ != SampleType::kUint8) {
    throw FileError("has colour of other samples than bytes, which can not be kept");
  }
  using Rgb = orva::GenericRgb<unsigned char>;
  auto picture = std::make_unique<orva::image<Rgb>>(static_cast<int>(width_),
                                                    static_cast<int>(height_), 1, 1, 1);
  const unsigned char* from = data_.get();
  for (int i = 0; i < picture->npix(); ++i, from += channels_) {
    picture->pixels()[i] = {from[0], from[1], from[2]};
  }
  return picture;
}

std::unique_ptr<orva::Image> Raster::toImage(ColourUse colour) const {
  const bool isColour = model_ == ColourModel::kRgb;
  const bool keeps = colour == ColourUse::kKept ||
                     (colour == ColourUse::kKeptIfBytes && type_ == SampleType::kUint8);
  if (isColour && keeps) return keepColour();
  switch (type_) {
    case SampleType::kUint8:
      return convert<std::uint8_t, unsigned char>();
    case SampleType::kInt8:
      return convert<std::int8_t, short>();
    case SampleType::kUint16:
      return convert<std::uint16_t, int>();
    case SampleType::kInt16:
      return convert<std::int16_t, short>();
    case SampleType::kUint32:
      return convert<std::uint32_t, unsigned int>();
    case SampleType::kInt32:
      return convert<std::int32_t, int>();
    default:
      return convert<float, float>();
  }
}

}  // namespace orva::formats
