#include "formats/tiff_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <new>
#include <optional>
#include <utility>

#include "formats/tiff_handle.h"

namespace orva::formats {
namespace {

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

std::string encode(const Pages& pages) {
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

std::string encodeTiff(const Image& img) {
  return encode({img.data(), img.nx(), img.ny(), img.nframes(), formOf(img)});
}

std::string encodeTiff(const std::uint16_t* pixels, int width, int height) {
  return encode({pixels, width, height, 1, {16, SAMPLEFORMAT_UINT}});
}

}  // namespace orva::formats
