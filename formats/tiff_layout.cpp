#include "formats/tiff_layout.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "formats/file_error.h"

namespace orva::formats {
namespace {

constexpr std::uint32_t kMetaMorphPlanes = 33629;  // a tag with an entry per plane

[[noreturn]] void failForPlanes(const std::string& kind, std::uint64_t planes) {
  throw FileError("is a TIFF file with " + std::to_string(planes) + " planes in one page" + kind +
                  ", of which only the first could be read; save each plane as a page of its own");
}

// Whether no sample is left out: grey or colour alone, or with a sample of alpha.
bool isWithoutFurtherSamples(const TiffHandle& in) {
  std::uint16_t count = 0;
  const std::uint16_t* kinds = nullptr;
  // libtiff counts samples beyond those of the colour space as unspecified ones if the file says
  // nothing of them.
  if (TIFFGetFieldDefaulted(in.handle(), TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1) return true;
  return count == 0 || (count == 1 && kinds[0] != EXTRASAMPLE_UNSPECIFIED);
}

// The number behind "images=" in the description that ImageJ writes, or 0.
std::uint64_t imageJPlanes(const TiffHandle& in) {
  const char* text = nullptr;
  if (TIFFGetField(in.handle(), TIFFTAG_IMAGEDESCRIPTION, &text) != 1 || text == nullptr) return 0;
  const std::string_view description(text);
  constexpr std::string_view kKey = "\nimages=";
  const std::size_t at = description.find(kKey);
  if (!description.starts_with("ImageJ=") || at == std::string_view::npos) return 0;
  std::uint64_t planes = 0;
  std::from_chars(description.data() + at + kKey.size(), description.data() + description.size(),
                  planes);
  return planes;
}

// The planes of the array whose shape stands in the description that tifffile writes, as JSON, or
// 0.
double tifffilePlanes(const TiffHandle& in) {
  const char* text = nullptr;
  if (TIFFGetField(in.handle(), TIFFTAG_IMAGEDESCRIPTION, &text) != 1 || text == nullptr) return 0;
  const std::string_view description(text);
  constexpr std::string_view kKey = "\"shape\": [";
  const std::size_t at = description.find(kKey);
  if (!description.starts_with('{') || at == std::string_view::npos) return 0;
  double samples = 1;
  const char* next = description.data() + at + kKey.size();
  const char* const end = description.data() + description.size();
  for (bool isLast = false; !isLast; next += 2) {  // behind ", "
    std::uint64_t n = 0;
    const auto [rest, error] = std::from_chars(next, end, n);
    if (error != std::errc() || end - rest < 2) return 0;
    samples *= static_cast<double>(n);
    isLast = *rest == ']';
    if (!isLast && *rest != ',') return 0;
    next = rest;
  }
  const TiffLayout layout = layoutOf(in);
  return samples / (static_cast<double>(layout.width) * static_cast<double>(layout.height) *
                    static_cast<double>(layout.samples));
}

// Whether the file has as many bytes as two uncompressed planes take from the first one on. One
// page of a stack, saved by itself, may keep the stack's description, but not the planes.
bool hasRoomForTwoPlanes(const TiffHandle& in) {
  if (in.tag<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) != COMPRESSION_NONE) {
    return false;
  }
  TIFF* tiff = in.handle();
  const TiffLayout layout = layoutOf(in);
  const std::uint64_t start = TIFFGetStrileOffset(tiff, 0);
  const std::uint64_t size = TIFFGetSizeProc(tiff)(TIFFClientdata(tiff));
  // As floating point, for sizes of damaged files.
  const double plane = static_cast<double>(layout.width) * static_cast<double>(layout.height) *
                       static_cast<double>(layout.samples) * layout.bits / 8;
  return start < size && static_cast<double>(size - start) >= 2 * plane;
}

}  // namespace

bool TiffLayout::isGrey() const {
  return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
}

TiffLayout layoutOf(const TiffHandle& in) {
  return {
      in.tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0),
      in.tag<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0),
      in.tag<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1),
      in.tag<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1),
      in.tag<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT),
      in.tag<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK),
      in.tag<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE};
}

void requireNothingLeftOut(const TiffHandle& in, const TiffLayout& layout) {
  const auto depth = in.tag<std::uint32_t>(TIFFTAG_IMAGEDEPTH, 1);
  if (depth > 1) failForPlanes(" (ImageDepth)", depth);
  if (isWithoutFurtherSamples(in)) return;
  throw FileError("is a TIFF file with " + std::to_string(layout.samples) +
                  " samples per pixel, more than grey or colour and alpha have; save each channel "
                  "as a page of its own");
}

void requireKnownSamples(const TiffLayout& layout) {
  if (!layout.isGrey() && layout.photometric != PHOTOMETRIC_RGB) return;
  const std::string start = "is a TIFF file of ";
  const std::string bits = std::to_string(layout.bits) + "-bit ";
  if (layout.format == SAMPLEFORMAT_COMPLEXIEEEFP || layout.format == SAMPLEFORMAT_COMPLEXINT) {
    throw FileError(start + "complex numbers, which is not read; save their magnitude");
  }
  if (layout.format == SAMPLEFORMAT_IEEEFP && layout.bits != 32) {
    throw FileError(start + bits +
                    "floating point, which is not read; convert it to 32-bit floating point");
  }
  if (layout.bits == 64) {
    throw FileError(start + bits +
                    "whole numbers, which is not read; convert it to 32-bit whole numbers");
  }
}

void requireNoPlanesBehindThePage(const TiffHandle& in) {
  if (TIFFLastDirectory(in.handle()) == 0) return;
  std::uint32_t entries = 0;
  const void* values = nullptr;
  if (TIFFGetField(in.handle(), kMetaMorphPlanes, &entries, &values) == 1 && entries > 1) {
    failForPlanes(", as MetaMorph writes stacks", entries);
  }
  const std::uint64_t planes = imageJPlanes(in);
  const double shaped = tifffilePlanes(in);
  if ((planes <= 1 && !(shaped > 1)) || !hasRoomForTwoPlanes(in)) return;
  if (planes > 1) failForPlanes(", as ImageJ writes stacks of over 4 GB", planes);
  constexpr double kMaxShown = 1e15;
  failForPlanes(", as tifffile writes truncated stacks",
                static_cast<std::uint64_t>(std::min(shaped, kMaxShown)));
}

}  // namespace orva::formats
