#include "formats/tiff_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <new>
#include <optional>
#include <utility>

#include "formats/ome_xml.h"
#include "formats/tiff_handle.h"

namespace orva::formats {
namespace {

constexpr double kCentimetre = 10000;  // in micrometres

struct SampleForm {
  int bits;
  int format;
  int samples = 1;

  int pixelBytes() const { return samples * bits / 8; }
};

// Pages of the same size, one after the other.
struct Pages {
  const void* pixels;
  int width;
  int height;
  int count;
  SampleForm form;
};

SampleForm formOf(const Image& img) {
  switch (img.format()) {
    case SHORT:
      return {16, SAMPLEFORMAT_INT};
    case INT:
      return {32, SAMPLEFORMAT_INT};
    case UINT:
      return {32, SAMPLEFORMAT_UINT};
    case FLOAT:
      return {32, SAMPLEFORMAT_IEEEFP};
    case RGB:
      return {8, SAMPLEFORMAT_UINT, 3};
    default:
      return {8, SAMPLEFORMAT_UINT};
  }
}

void describePage(const TiffHandle& out, const Pages& pages) {
  TIFF* tiff = out.handle();
  const SampleForm& form = pages.form;
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(pages.width));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(pages.height));
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, form.samples);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, form.format);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
               form.samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
}

// The file that libtiff writes, in memory.
class MemoryFile {
 public:
  TIFF* open(const char* mode, TIFFOpenOptions* options) {
    return TIFFClientOpenExt("TIFF", mode, this, read, write, seek, close, size, nullptr, nullptr,
                             options);
  }

  void reserve(std::size_t bytes) { content_.reserve(bytes); }
  bool isOutOfMemory() const { return isOutOfMemory_; }
  std::string takeContent() { return std::move(content_); }

 private:
  static MemoryFile& at(thandle_t self) { return *static_cast<MemoryFile*>(self); }

  static tmsize_t read(thandle_t self, void* to, tmsize_t size) {
    MemoryFile& file = at(self);
    const std::size_t left = file.content_.size() - std::min(file.place_, file.content_.size());
    const std::size_t count = std::min(static_cast<std::size_t>(size), left);
    std::copy_n(file.content_.data() + file.place_, count, static_cast<char*>(to));
    file.place_ += count;
    return static_cast<tmsize_t>(count);
  }
  static tmsize_t write(thandle_t self, void* from, tmsize_t size) {
    MemoryFile& file = at(self);
    const std::size_t end = file.place_ + static_cast<std::size_t>(size);
    // No exception passes through libtiff.
    try {
      if (end > file.content_.size()) file.content_.resize(end);
    } catch (const std::bad_alloc&) {
      file.isOutOfMemory_ = true;
      return -1;
    }
    std::copy_n(static_cast<const char*>(from), size, file.content_.data() + file.place_);
    file.place_ = end;
    return size;
  }
  static toff_t seek(thandle_t self, toff_t offset, int whence) {
    MemoryFile& file = at(self);
    if (whence == SEEK_SET) file.place_ = 0;
    if (whence == SEEK_END) file.place_ = file.content_.size();
    file.place_ += offset;  // a negative offset wraps, as libtiff means it
    return file.place_;
  }
  static int close(thandle_t /*self*/) { return 0; }
  static toff_t size(thandle_t self) { return at(self).content_.size(); }

  std::string content_;
  std::size_t place_ = 0;
  bool isOutOfMemory_ = false;
};

const char* omeTypeOf(const SampleForm& form) {
  if (form.format == SAMPLEFORMAT_IEEEFP) return "float";
  const bool isSigned = form.format == SAMPLEFORMAT_INT;
  if (form.bits == 8) return isSigned ? "int8" : "uint8";
  if (form.bits == 16) return isSigned ? "int16" : "uint16";
  return isSigned ? "int32" : "uint32";
}

// What the first page says of all.
struct Notes {
  std::string description;
  PixelSize pixelSize;
};

Notes notesOf(const Pages& pages, const ImageAxes& axes, Description description) {
  const bool isStack =
      axes.areKnown && pages.count > 1 && axes.nc * axes.nz * axes.nt == pages.count;
  const bool isCalibrated = axes.pixelSize.x && axes.pixelSize.y;
  const bool isNamed = std::any_of(axes.channelNames.begin(), axes.channelNames.end(),
                                   [](const std::string& name) { return !name.empty(); });
  if (!isStack && !(pages.count == 1 && (isCalibrated || isNamed))) return {"", axes.pixelSize};
  if (description == Description::kImageJ) return {imageJDescription(axes), axes.pixelSize};
  ImageAxes described = axes;
  const bool isWhole = pages.form.format != SAMPLEFORMAT_IEEEFP;
  if (axes.bitDepth && !(isWhole && *axes.bitDepth < pages.form.bits)) described.bitDepth.reset();
  return {omeXml(described, pages.width, pages.height, omeTypeOf(pages.form), pages.form.samples),
          axes.pixelSize};
}

void addNotes(const TiffHandle& out, const Notes& notes) {
  TIFF* tiff = out.handle();
  if (!notes.description.empty()) {
    TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, notes.description.c_str());
  }
  if (!notes.pixelSize.x || !notes.pixelSize.y) return;
  // Pixels per micrometre, the unit of the description, or where there is none per centimetre.
  const bool isDescribed = !notes.description.empty();
  const double unit = isDescribed ? 1 : kCentimetre;
  TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, isDescribed ? RESUNIT_NONE : RESUNIT_CENTIMETER);
  TIFFSetField(tiff, TIFFTAG_XRESOLUTION, unit / *notes.pixelSize.x);
  TIFFSetField(tiff, TIFFTAG_YRESOLUTION, unit / *notes.pixelSize.y);
}

std::string encode(const Pages& pages, const Notes& notes = {}) {
  const std::int64_t rowBytes = std::int64_t{pages.width} * pages.form.pixelBytes();
  const std::int64_t bytes = rowBytes * pages.height * pages.count;
  constexpr std::int64_t kMaxClassic = 4000000000;  // with room for the directories
  MemoryFile file;
  file.reserve(static_cast<std::size_t>(bytes));
  std::optional<TiffHandle> handle(std::in_place, [&](TIFFOpenOptions* options) {
    return file.open(bytes < kMaxClassic ? "w" : "w8", options);
  });
  const TiffHandle& out = *handle;
  const auto require = [&](bool isWritten) {
    if (file.isOutOfMemory()) throw std::bad_alloc();
    if (!isWritten) out.fail();
  };
  // libtiff takes rows without const and leaves them alone.
  auto* row = static_cast<unsigned char*>(const_cast<void*>(pages.pixels));
  for (int page = 0; page < pages.count; ++page) {
    describePage(out, pages);
    if (page == 0) addNotes(out, notes);
    for (int y = 0; y < pages.height; ++y, row += rowBytes) {
      require(TIFFWriteScanline(out.handle(), row, static_cast<std::uint32_t>(y), 0) >= 0);
    }
    require(TIFFWriteDirectory(out.handle()) != 0);
  }
  handle.reset();  // closes the file, which may write
  if (file.isOutOfMemory()) throw std::bad_alloc();
  return file.takeContent();
}

}  // namespace

std::string encodeTiff(const Image& img) { return encodeTiff(img, {}, Description::kImageJ); }

std::string encodeTiff(const Image& img, const ImageAxes& axes, Description description) {
  const Pages pages{img.data(), img.nx(), img.ny(), img.nframes(), formOf(img)};
  return encode(pages, notesOf(pages, axes, description));
}

std::string encodeTiff(const std::uint16_t* pixels, int width, int height, int count,
                       const ImageAxes& axes, Description description) {
  const Pages pages{pixels, width, height, count, {16, SAMPLEFORMAT_UINT}};
  return encode(pages, notesOf(pages, axes, description));
}

std::string encodeTiff(const orva::GenericRgb<std::uint16_t>* pixels, int width, int height,
                       int count, const ImageAxes& axes, Description description) {
  const Pages pages{pixels, width, height, count, {16, SAMPLEFORMAT_UINT, 3}};
  return encode(pages, notesOf(pages, axes, description));
}

}  // namespace orva::formats
