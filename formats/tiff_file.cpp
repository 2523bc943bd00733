#include "formats/tiff_file.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

#include "formats/image_axes.h"
#include "formats/image_file.h"
#include "formats/tiff_layout.h"
#include "formats/tiff_page.h"

namespace orva::formats {
namespace {

constexpr std::size_t kMaxLevels = 64;

// A whole number of the file, in its byte order.
std::uint64_t numberOf(std::istream& file, std::size_t bytes, bool bigEndian) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes; ++i) {
    const auto byte = static_cast<std::uint64_t>(file.get() & 0xFF);
    value = bigEndian ? value << 8U | byte : value | byte << (8 * i);
  }
  return value;
}

// libtiff takes a page for the last one when the place of the next, at the end of its directory, is
// cut off.
void requireEnd(const TiffHandle& in, const std::string& path) {
  const bool isBig = TIFFIsBigTIFF(in.handle()) != 0;
  const std::uint64_t start = TIFFCurrentDirOffset(in.handle());
  const std::uint64_t counterBytes = isBig ? 8 : 2;
  std::ifstream file(path, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(start));
  const std::uint64_t entries = numberOf(file, counterBytes, TIFFIsBigEndian(in.handle()) != 0);
  const std::uint64_t end = start + counterBytes + entries * (isBig ? 20 : 12) + (isBig ? 8 : 4);
  if (!file || std::filesystem::file_size(path) < end) {
    throw FileError("is a damaged TIFF file: its last directory is cut off");
  }
}

}  // namespace

Raster readTiffFile(const std::string& path, int frame) {
  const TiffHandle in(path);
  requireNoPlanesBehindThePage(in);
  if (TIFFSetDirectory(in.handle(), static_cast<tdir_t>(frame)) == 0) {
    throw FileError("there is no frame " + std::to_string(frame) + " in this TIFF file");
  }
  return readPage(in);
}

void readTiffPages(const std::string& path, const std::function<void(const Raster&)>& take) {
  const TiffHandle in(path);
  requireNoPlanesBehindThePage(in);
  take(readPage(in));
  while (TIFFLastDirectory(in.handle()) == 0) {
    if (TIFFReadDirectory(in.handle()) == 0) in.fail();
    take(readPage(in));
  }
  requireEnd(in, path);
}

TiffFile::TiffFile(const std::string& path) : in_(path) {
  requireNoPlanesBehindThePage(in_);
  const char* description = nullptr;
  if (TIFFGetField(in_.handle(), TIFFTAG_IMAGEDESCRIPTION, &description) == 1 &&
      description != nullptr) {
    description_ = description;
  }
  const auto resolution = [this](std::uint32_t tag) {
    float value = 0;
    const bool isStated = TIFFGetField(in_.handle(), tag, &value) == 1;
    return isStated && std::isfinite(value) && value > 0 ? static_cast<double>(value) : 0.0;
  };
  xResolution_ = resolution(TIFFTAG_XRESOLUTION);
  yResolution_ = resolution(TIFFTAG_YRESOLUTION);
  switch (in_.tag<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH)) {
    case RESUNIT_INCH:
      resolutionUnit_ = "inch";
      break;
    case RESUNIT_CENTIMETER:
      resolutionUnit_ = "cm";
      break;
    default:
      break;
  }
  directories_.push_back(TIFFCurrentDirOffset(in_.handle()));
  while (TIFFLastDirectory(in_.handle()) == 0) {
    if (TIFFReadDirectory(in_.handle()) == 0) in_.fail();
    directories_.push_back(TIFFCurrentDirOffset(in_.handle()));
    if (directories_.size() > std::size_t{kMaxPlanes})
      throw FileError("is a TIFF file of too many pages");
  }
  requireEnd(in_, path);
}

void TiffFile::moveTo(std::uint64_t directory) const {
  if (TIFFSetSubDirectory(in_.handle(), directory) == 0) in_.fail();
}

std::vector<std::uint64_t> TiffFile::levelsOf(int page) const {
  const std::uint64_t own = directories_.at(static_cast<std::size_t>(page));
  moveTo(own);
  std::vector<std::uint64_t> places{own};
  std::uint16_t count = 0;
  const std::uint64_t* offsets = nullptr;
  if (TIFFGetField(in_.handle(), TIFFTAG_SUBIFD, &count, &offsets) != 1 || offsets == nullptr) {
    return places;
  }
  // libtiff's own list ends with the next directory.
  const std::vector<std::uint64_t> found(offsets,
                                         offsets + std::min<std::size_t>(count, kMaxLevels - 1));
  const TiffLayout full = layoutOf(in_);
  for (const std::uint64_t place : found) {
    if (TIFFSetSubDirectory(in_.handle(), place) == 0) continue;
    const TiffLayout layout = layoutOf(in_);
    const bool isReduced =
        (in_.tag<std::uint32_t>(TIFFTAG_SUBFILETYPE, 0) & FILETYPE_REDUCEDIMAGE) != 0;
    const bool isSmaller = layout.width <= full.width && layout.height <= full.height &&
                           (layout.width < full.width || layout.height < full.height);
    if (isReduced && isSmaller) places.push_back(place);
  }
  return places;
}

TiffFile::PageSize TiffFile::sizeOf(int page) const {
  moveTo(directories_.at(static_cast<std::size_t>(page)));
  const TiffLayout layout = layoutOf(in_);
  constexpr auto kMax = static_cast<std::size_t>(std::numeric_limits<int>::max());
  const bool isColour = !layout.isGrey() && layout.photometric != PHOTOMETRIC_PALETTE;
  return {static_cast<int>(std::min(layout.width, kMax)),
          static_cast<int>(std::min(layout.height, kMax)),
          isColour ? static_cast<int>(layout.samples) : 1, static_cast<int>(layout.samples)};
}

bool TiffFile::isUnsigned16(int page) const {
  moveTo(directories_.at(static_cast<std::size_t>(page)));
  const TiffLayout layout = layoutOf(in_);
  return layout.bits == 16 && layout.photometric != PHOTOMETRIC_PALETTE &&
         (layout.format == SAMPLEFORMAT_UINT || layout.format == SAMPLEFORMAT_VOID);
}

int TiffFile::levels(int page) const { return static_cast<int>(levelsOf(page).size()); }

Raster TiffFile::read(int page, int level) const {
  moveTo(level == 0 ? directories_.at(static_cast<std::size_t>(page))
                    : levelsOf(page).at(static_cast<std::size_t>(level)));
  return readPage(in_);
}

}  // namespace orva::formats
