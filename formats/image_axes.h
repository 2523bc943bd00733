// The axes of an image file: which of its pages are slices, channels and times, what the channels
// are called and how large a pixel is.
#ifndef ORVA_FORMATS_IMAGE_AXES_H
#define ORVA_FORMATS_IMAGE_AXES_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orva::formats {

// In micrometres; none where the file does not say.
struct PixelSize {
  std::optional<double> x;
  std::optional<double> y;
  std::optional<double> z;

  bool operator==(const PixelSize&) const = default;
};

// The micrometres per pixel of square pixels: the mean of two sizes that differ by less than 1 %.
// None for others, and where one is not known.
std::optional<double> squarePixelSize(const PixelSize& size);

// A plane by its numbers, each counted from 0.
struct PlaneIndex {
  int c = 0;
  int z = 0;
  int t = 0;
};

// Of a plane among those of `nc` channels and `nz` slices, channels varying fastest.
inline std::size_t placeOf(const PlaneIndex& p, int nc, int nz) {
  return static_cast<std::size_t>(p.c) +
         static_cast<std::size_t>(nc) *
             (static_cast<std::size_t>(p.z) +
              static_cast<std::size_t>(nz) * static_cast<std::size_t>(p.t));
}

// The place of an image in a file, each number where the file has several along that axis; no slice
// for a projection.
struct StackPosition {
  std::optional<int> c{};
  std::optional<int> z{};
  std::optional<int> t{};
  // Whether several axes of the file have more than one plane, also those without a number here.
  bool isInHyperstack = false;
};

struct ImageAxes {
  int nc = 1;
  int nz = 1;
  int nt = 1;
  // Whether the file says what its pages are. Otherwise they are counted in nz.
  bool areKnown = true;
  std::vector<std::string> channelNames;  // nc of them, "" for a channel without one
  PixelSize pixelSize;
  std::optional<int> bitDepth;  // significant bits of a sample, where the file states them
  // Width and height that the description states for the pages of this image, and the samples per
  // pixel where it states several.
  std::optional<std::array<int, 2>> statedSize;
  std::optional<int> statedSamples;
  // The page of the plane (c, z, t) at c + nc * (z + nz * t), counted from 0; -1 where the file
  // has none.
  std::vector<int> pages;

  int pageOf(const PlaneIndex& p) const { return pages[placeOf(p, nc, nz)]; }
};

// What a TIFF file says apart from the description of its first page.
struct PageFacts {
  int pages;
  // Pixels per unit along x and y, 0 where not stated, and the unit as the tag has it: "inch",
  // "cm" or "".
  double xResolution = 0;
  double yResolution = 0;
  std::string_view resolutionUnit{};
};

// No file has more planes or pages.
inline constexpr int kMaxPlanes = 1 << 24;

// Pages without a description: one plane, or pages of unknown meaning. The resolution counts as the
// size of a pixel where that is below 20 micrometres; coarser ones are those of screens and
// printers, which most programs write into every file.
ImageAxes axesOfPages(const PageFacts& facts);

// Whether a description is that of ImageJ, and the axes that it gives: `channels`, `slices` and
// `frames` with channels varying fastest, `spacing` and `unit`; the resolution counts in that unit,
// whatever its size. Pages of unknown meaning where their number is another one.
bool isImageJDescription(std::string_view description);
ImageAxes imageJAxes(std::string_view description, const PageFacts& facts);

// The description that ImageJ reads, of a file whose pages are the planes of `axes` with channels
// varying fastest, then slices; its resolution tags are pixels per micrometre. It has no place for
// the names of channels.
std::string imageJDescription(const ImageAxes& axes);

}  // namespace orva::formats

#endif
