// Colour of 8 or 16 bits, of which no image of the library holds the latter.
#ifndef ORVA_FORMATS_COLOUR_PLANES_H
#define ORVA_FORMATS_COLOUR_PLANES_H

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "formats/image_file.h"
#include "formats/image_source.h"
#include "formats/plane_choice.h"
#include "formats/raster.h"
#include "orva/image/image.h"

namespace orva::formats {

// Planes of one size, their pixels plane by plane.
template <class Sample>
struct ColourPlanes {
  static_assert(std::is_same_v<Sample, std::uint8_t> || std::is_same_v<Sample, std::uint16_t>);

  using Value = Sample;

  int nx = 0;
  int ny = 0;
  std::vector<GenericRgb<Sample>> pixels;

  // Whether these are colour pixels of these samples.
  static bool holds(const Raster& raster) {
    constexpr SampleType kType = sizeof(Sample) == 1 ? SampleType::kUint8 : SampleType::kUint16;
    return raster.isColour() && raster.type() == kType;
  }

  // Throws FileError for a plane of another kind or size than the others.
  void add(const Raster& raster) {
    const auto width = static_cast<int>(raster.width());
    const auto height = static_cast<int>(raster.height());
    if (!holds(raster) || (!pixels.empty() && (width != nx || height != ny))) failForPages();
    nx = width;
    ny = height;
    const std::size_t samples = raster.pixelBytes() / sizeof(Sample);
    for (std::size_t y = 0; y < raster.height(); ++y) {
      const auto* from = reinterpret_cast<const Sample*>(raster.row(y));
      for (std::size_t x = 0; x < raster.width(); ++x, from += samples) {
        pixels.push_back({from[0], from[1], from[2]});
      }
    }
  }
};

// The planes that are kept of a file, at a level. Throws FileError as ImageSource::readRaster() and
// ColourPlanes::add().
template <class Sample>
ColourPlanes<Sample> colourPlanes(const ImageSource& source, const KeptPlanes& planes, int level) {
  ColourPlanes<Sample> colour;
  for (const PlanarImage& image : planes.images) {
    const int page = requiredPage(planes.axes, {image.c, image.z.value_or(0), image.t});
    colour.add(*source.readRaster(page, level));
  }
  return colour;
}

}  // namespace orva::formats

#endif
