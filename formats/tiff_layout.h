// The layout of a page of a TIFF file, as its directory states it.
#ifndef ORVA_FORMATS_TIFF_LAYOUT_H
#define ORVA_FORMATS_TIFF_LAYOUT_H

#include <cstddef>
#include <cstdint>

#include "formats/tiff_handle.h"

namespace orva::formats {

struct TiffLayout {
  std::size_t width;
  std::size_t height;
  std::size_t samples;
  std::uint16_t bits;
  std::uint16_t format;
  std::uint16_t photometric;
  bool separatePlanes;

  bool isGrey() const;
};

TiffLayout layoutOf(const TiffHandle& in);

// Throws FileError for a page of several planes, or of samples beside grey or colour that are not
// marked as alpha: they would be left out.
void requireNothingLeftOut(const TiffHandle& in, const TiffLayout& layout);

// Throws FileError for grey or colour in floating point of other than 32 bits, in complex numbers,
// or in whole numbers of 64 bits.
void requireKnownSamples(const TiffLayout& layout);

// For a file that stands at its first page. Throws FileError for a stack that keeps its planes
// behind the only page, as ImageJ does with stacks of over 4 GB, tifffile with those that are told
// to be truncated, and MetaMorph with all.
void requireNoPlanesBehindThePage(const TiffHandle& in);

}  // namespace orva::formats

#endif
